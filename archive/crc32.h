#ifndef KALMO_ARCHIVE_CRC32_H
#define KALMO_ARCHIVE_CRC32_H

#include <cstdint>
#include <span>

namespace kalmo {

/// The CRC-32 of ZIP archives (polynomial 0xEDB88320). A CRC starts at 0; the result over some bytes goes in
/// again as dwCrc for those that follow.
std::uint32_t dwCrc32(std::uint32_t dwCrc, std::span<const unsigned char> tabByte) noexcept;

/// The table that one step of it uses: 256 values, of which index (crc ^ byte) & 0xFF is taken. The step is
/// what the entry cipher is made of; it goes without the inversions before and after a whole CRC.
const std::uint32_t* pdwCrc32Table() noexcept;

}  // namespace kalmo

#endif
