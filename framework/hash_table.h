#ifndef KALMO_FRAMEWORK_HASH_TABLE_H
#define KALMO_FRAMEWORK_HASH_TABLE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

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
template <class T>
class CTHashTableTi {
  public:
    explicit CTHashTableTi(std::size_t nBuckets) : m_tabFirst(nBuckets) {}

    /// Makes room for that many names.
    void Reserve(std::size_t nCount) { m_tabFirst.reserve(nCount); }
    /// Adds a name. A name that is there already keeps its first value.
    void Ajoute(const CTString& csName, T value) {
        const auto [it, bFirst] = m_tabFirst.try_emplace(__unHash(csName), csName, value);
        if (!bFirst && !bEgalSansCasse(it->second.first, csName)) {
            m_tabOther.try_emplace(csName, value);
        }
    }
    /// Finds a name's value; null when it is absent. Valid until the table is changed.
    [[nodiscard]] const T* pTrouve(std::wstring_view svName) const {
        const auto itFirst = m_tabFirst.find(__unHash(svName));
        if (itFirst == m_tabFirst.end()) {
            return nullptr;
        }
        if (bEgalSansCasse(itFirst->second.first, svName)) {
            return &itFirst->second.second;
        }
        const auto itOther = m_tabOther.find(svName);
        return itOther == m_tabOther.end() ? nullptr : &itOther->second;
    }
    void Vide() {
        m_tabFirst.clear();
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
    /// Spreads the hashes over the buckets, by a factor that nobody knows beforehand.
    struct STSpread {
        std::size_t operator()(std::uint32_t unHash) const noexcept {
            static const std::uint64_t FACTOR = __u64Random() | 1;
            return static_cast<std::size_t>(unHash * FACTOR >> 32);
        }

      private:
        // Without random bytes the factor is one that everybody knows: whoever makes a payload could choose
        // names that meet in one bucket, and it opens slowly.
        static std::uint64_t __u64Random() noexcept {
            std::uint64_t u64 = 0;
            if (!bRandomBytes(&u64, sizeof u64)) {
                u64 = 0x9E3779B97F4A7C15;
            }
            return u64;
        }
    };
    struct STLess {
        using is_transparent = void;
        bool operator()(std::wstring_view svLeft, std::wstring_view svRight) const {
            return nCompareSansCasse(svLeft, svRight) < 0;
        }
    };

    std::unordered_map<std::uint32_t, std::pair<CTString, T>, STSpread> m_tabFirst;
    std::map<CTString, T, STLess> m_tabOther;
};

}  // namespace kalmo

#endif
