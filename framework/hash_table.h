#ifndef KALMO_FRAMEWORK_HASH_TABLE_H
#define KALMO_FRAMEWORK_HASH_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "framework/conversion.h"
#include "framework/xy_string.h"

namespace kalmo {

/// A table from names to values; names are compared without regard to case.
///
/// A name's hash starts at 5381 and takes, for each character, hash * 33 + the upper-case character.
template <class T>
class CTHashTableTi {
  public:
    explicit CTHashTableTi(std::size_t nBuckets) : m_tabValue(nBuckets) {}

    /// Adds a name. A name that is there already keeps its first value.
    void Ajoute(const CTString& csName, T value) { m_tabValue.emplace(csName, value); }
    /// Finds a name's value; null when it is absent. Valid until the table is changed.
    [[nodiscard]] const T* pTrouve(std::wstring_view svName) const {
        const auto it = m_tabValue.find(svName);
        return it == m_tabValue.end() ? nullptr : &it->second;
    }
    void Vide() { m_tabValue.clear(); }

  private:
    struct CHash {
        using is_transparent = void;
        // Not noexcept: the table then keeps each name's hash instead of computing it again as it grows.
        std::size_t operator()(std::wstring_view sv) const {
            std::uint32_t unHash = 5381;
            for (const wchar_t c : sv) {
                unHash = unHash * 33 + static_cast<std::uint32_t>(cMajuscule(c));
            }
            return unHash;
        }
    };
    struct CEqual {
        using is_transparent = void;
        bool operator()(std::wstring_view svLeft, std::wstring_view svRight) const noexcept {
            return bEgalSansCasse(svLeft, svRight);
        }
    };

    std::unordered_map<CTString, T, CHash, CEqual> m_tabValue;
};

}  // namespace kalmo

#endif
