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
/// An archive may have a million names: they stand one behind the other in one block of memory, and apart
/// from them, in one that the processor's caches hold longer, the chains of the buckets with the hashes.
template <class T>
class CTHashTableTi {
  public:
    explicit CTHashTableTi(std::size_t nBuckets) : m_tabBucket(std::bit_ceil(nBuckets), NONE) {}

    /// Makes room for that many names.
    void Reserve(std::size_t nCount) {
        m_tabFirst.reserve(nCount);
        m_tabChain.reserve(nCount);
        if (nCount > m_tabBucket.size()) {
            __Spread(std::bit_ceil(nCount));
        }
    }
    /// Adds a name. A name that is there already keeps its first value.
    void Ajoute(const CTString& csName, T value) {
        const std::uint32_t unHash = __unHash(csName);
        if (const std::uint32_t unFirst = __unFirst(unHash); unFirst != NONE) {
            if (!bEgalSansCasse(m_tabFirst[unFirst].csName, csName)) {
                m_tabOther.try_emplace(csName, value);
            }
            return;
        }
        if (m_tabChain.size() == m_tabBucket.size()) {
            __Spread(std::bit_ceil(m_tabBucket.size() + 1));
        }
        m_tabFirst.resize(m_tabChain.size());  // less what an addition has left that found no memory
        m_tabFirst.push_back({csName, value});
        m_tabChain.push_back({unHash, NONE});
        __Chain(m_tabChain.size() - 1);
    }
    /// Finds a name's value; null when it is absent. Valid until the table is changed.
    [[nodiscard]] const T* pTrouve(std::wstring_view svName) const {
        const std::uint32_t unFirst = __unFirst(__unHash(svName));
        if (unFirst == NONE) {
            return nullptr;
        }
        if (bEgalSansCasse(m_tabFirst[unFirst].csName, svName)) {
            return &m_tabFirst[unFirst].value;
        }
        const auto itOther = m_tabOther.find(svName);
        return itOther == m_tabOther.end() ? nullptr : &itOther->second;
    }
    void Vide() noexcept {
        m_tabFirst = std::vector<STFirst>();
        m_tabChain = std::vector<STLink>();
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
        T value;
    };
    struct STLink {
        std::uint32_t unHash;
        std::uint32_t unNext;  ///< The name behind it in its bucket.
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
    /// The number of the name in the table that has this hash; NONE when there is none.
    [[nodiscard]] std::uint32_t __unFirst(std::uint32_t unHash) const noexcept {
        std::uint32_t un = m_tabChain.empty() ? NONE : m_tabBucket[__nBucket(unHash)];
        while (un != NONE && m_tabChain[un].unHash != unHash) {
            un = m_tabChain[un].unNext;
        }
        return un;
    }
    void __Chain(std::size_t nName) noexcept {
        STLink& rst = m_tabChain[nName];
        rst.unNext = std::exchange(m_tabBucket[__nBucket(rst.unHash)], static_cast<std::uint32_t>(nName));
    }
    /// Makes that many buckets, a power of two.
    void __Spread(std::size_t nBuckets) {
        m_tabBucket = std::vector<std::uint32_t>(nBuckets, NONE);
        for (std::size_t n = 0; n < m_tabChain.size(); ++n) {
            __Chain(n);
        }
    }

    std::vector<STFirst> m_tabFirst;
    std::vector<STLink> m_tabChain;  ///< One for each of them.
    std::vector<std::uint32_t> m_tabBucket;
    std::map<CTString, T, STLess> m_tabOther;
};

}  // namespace kalmo

#endif
