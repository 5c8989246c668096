#ifndef KALMO_FRAMEWORK_HASH_TABLE_H
#define KALMO_FRAMEWORK_HASH_TABLE_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/conversion.h"
#include "framework/random_bytes.h"
#include "framework/xy_string.h"

namespace kalmo {

/// A table from names to values; names are compared without regard to case.
///
/// A name's hash starts at 5381 and takes, for each character, hash * 33 + the upper-case character. Names
/// with one hash are easily made up, and names come from files: only the first name of a hash stands in the
/// table itself, the others are kept in order; and which hashes share a bucket differs from run to run. So no
/// choice of names makes it slow.
///
/// The names stand one behind the other in one block of memory, those of a bucket chained by their numbers:
/// an archive may have a million of them.
template <class T>
class CTHashTableTi {
  public:
    explicit CTHashTableTi(std::size_t nBuckets) : m_tabBucket(std::bit_ceil(nBuckets), NONE) {}

    /// Makes room for that many names.
    void Reserve(std::size_t nCount) {
        m_tabFirst.reserve(nCount);
        if (nCount > m_tabBucket.size()) {
            __Spread(std::bit_ceil(nCount));
        }
    }
    /// Adds a name. A name that is there already keeps its first value.
    void Ajoute(const CTString& csName, T value) {
        const std::uint32_t unHash = __unHash(csName);
        if (const STFirst* const pst = __pstFirst(unHash)) {
            if (!bEgalSansCasse(pst->csName, csName)) {
                m_tabOther.try_emplace(csName, value);
            }
            return;
        }
        if (m_tabFirst.size() == m_tabBucket.size()) {
            __Spread(std::bit_ceil(m_tabBucket.size() + 1));
        }
        m_tabFirst.push_back({csName, unHash, NONE, value});
        __Chain(m_tabFirst.size() - 1);
    }
    /// Finds a name's value; null when it is absent. Valid until the table is changed.
    [[nodiscard]] const T* pTrouve(std::wstring_view svName) const {
        const STFirst* const pst = __pstFirst(__unHash(svName));
        if (pst == nullptr) {
            return nullptr;
        }
        if (bEgalSansCasse(pst->csName, svName)) {
            return &pst->value;
        }
        const auto itOther = m_tabOther.find(svName);
        return itOther == m_tabOther.end() ? nullptr : &itOther->second;
    }
    void Vide() noexcept {
        m_tabFirst = std::vector<STFirst>();
        m_tabBucket = std::vector<std::uint32_t>();
        m_tabOther.clear();
    }

  private:
    static std::uint32_t __unHash(std::wstring_view sv) {
        std::uint32_t unHash = 5381;
        for (const wchar_t c : sv) {
            unHash = unHash * 33 + static_cast<std::uint32_t>(cMajuscule(c));
        }
        return unHash;
    }
    static constexpr std::uint32_t NONE = UINT32_MAX;

    struct STFirst {
        CTString csName;
        std::uint32_t unHash;
        std::uint32_t unNext;  ///< The one behind it in its bucket.
        T value;
    };
    struct STLess {
        using is_transparent = void;
        bool operator()(std::wstring_view svLeft, std::wstring_view svRight) const {
            return nCompareSansCasse(svLeft, svRight) < 0;
        }
    };

    /// The factor that spreads the hashes over the buckets: one that nobody knows beforehand. Without random
    /// bytes it is one that everybody knows: whoever makes a payload could choose names that meet in one
    /// bucket, and it opens slowly.
    static std::uint64_t __u64Factor() noexcept {
        static const std::uint64_t FACTOR = [] {
            std::uint64_t u64 = 0;
            return (bRandomBytes(&u64, sizeof u64) ? u64 : 0x9E3779B97F4A7C15) | 1;
        }();
        return FACTOR;
    }
    [[nodiscard]] std::size_t __nBucket(std::uint32_t unHash) const noexcept {
        return static_cast<std::size_t>(unHash * __u64Factor() >> 32) & (m_tabBucket.size() - 1);
    }
    [[nodiscard]] const STFirst* __pstFirst(std::uint32_t unHash) const noexcept {
        std::uint32_t un = m_tabFirst.empty() ? NONE : m_tabBucket[__nBucket(unHash)];
        while (un != NONE && m_tabFirst[un].unHash != unHash) {
            un = m_tabFirst[un].unNext;
        }
        return un != NONE ? &m_tabFirst[un] : nullptr;
    }
    void __Chain(std::size_t nFirst) noexcept {
        std::uint32_t& runBucket = m_tabBucket[__nBucket(m_tabFirst[nFirst].unHash)];
        m_tabFirst[nFirst].unNext = std::exchange(runBucket, static_cast<std::uint32_t>(nFirst));
    }
    /// Makes that many buckets, a power of two.
    void __Spread(std::size_t nBuckets) {
        m_tabBucket = std::vector<std::uint32_t>(nBuckets, NONE);
        for (std::size_t n = 0; n < m_tabFirst.size(); ++n) {
            __Chain(n);
        }
    }

    std::vector<STFirst> m_tabFirst;
    std::vector<std::uint32_t> m_tabBucket;
    std::map<CTString, T, STLess> m_tabOther;
};

}  // namespace kalmo

#endif
