#ifndef KALMO_ARCHIVE_ENTRY_NAME_H
#define KALMO_ARCHIVE_ENTRY_NAME_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// How many bytes of an entry's name are used; the rest of a longer one is dropped.
inline constexpr std::size_t TAILLE_MAX_NOM_ENTREE = 260;

/// General purpose flags of an entry (APPNOTE 4.4.4).
inline constexpr std::uint16_t FLAG_CRYPTE = 1U << 0;
inline constexpr std::uint16_t FLAG_DESCRIPTEUR = 1U << 3;  ///< CRC and sizes follow the data.
inline constexpr std::uint16_t FLAG_UTF8 = 1U << 11;        ///< The name is UTF-8, not of the OEM code page.

/// The text of a stored name.
CTString csDecodeEntryName(std::string_view svStored, std::uint16_t wFlags);

/// The name with "/" for every separator: the form that names are listed and looked up in.
CTString csWithSlashes(CTString csName);

}  // namespace kalmo

#endif
