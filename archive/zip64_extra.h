#ifndef KALMO_ARCHIVE_ZIP64_EXTRA_H
#define KALMO_ARCHIVE_ZIP64_EXTRA_H

#include <cstdint>
#include <initializer_list>
#include <span>

namespace kalmo {

/// The value of a 32-bit field whose real value stands in the Zip64 extra block.
inline constexpr std::uint32_t SATURE = 0xFFFFFFFF;

/// Version needed to extract of an entry that uses Zip64 (APPNOTE 4.4.3).
inline constexpr std::uint16_t VERSION_ZIP64 = 45;

/// Replaces those fields that hold 0xFFFFFFFF by the values of the Zip64 block (APPNOTE 4.5.3).
///
/// The block counts only as the first one of the extra field. Its values stand in the order of the fields
/// given here. Most writers store only the values that are needed, some store all: as many values as there
/// are fields to replace are taken as theirs, any other number as the values of all fields from the first on.
/// A field whose value is not there stays as it is; so do all when there is no such block or a broken one.
void ApplyZip64Extra(std::span<const unsigned char> tabExtra,
                     std::initializer_list<std::uint64_t*> tabField) noexcept;

}  // namespace kalmo

#endif
