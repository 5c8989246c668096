#ifndef KALMO_FRAMEWORK_HASH_TABLE_H
#define KALMO_FRAMEWORK_HASH_TABLE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "framework/conversion.h"
#include "framework/xy_string.h"

namespace kalmo {

/// A table from names to values; names are compared without regard to case.
///
/// A name's hash starts at 5381 and takes, for each character, hash * 33 + the upper-case character. Names
/// with one hash are easily made up, and names come from files: only the first name of a hash stands in the
/// table itself, the others are kept in order, so that no choice of names makes it slow.
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
    struct CLess {
        using is_transparent = void;
        bool operator()(std::wstring_view svLeft, std::wstring_view svRight) const {
            return nCompareSansCasse(svLeft, svRight) < 0;
        }
    };

    std::unordered_map<std::uint32_t, std::pair<CTString, T>> m_tabFirst;
    std::map<CTString, T, CLess> m_tabOther;
};

}  // namespace kalmo

#endif
