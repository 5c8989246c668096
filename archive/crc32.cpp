#include "archive/crc32.h"

#include <zlib.h>

#include <type_traits>

#include "archive/inflate_engine.h"

namespace kalmo {

static_assert(std::is_same_v<z_crc_t, std::uint32_t>);

std::uint32_t dwCrc32(std::uint32_t dwCrc, std::span<const unsigned char> tabByte) noexcept {
    return tabByte.empty() ? dwCrc : rstInflateLibrary().pfnCrc32(dwCrc, tabByte);
}

const std::uint32_t* pdwCrc32Table() noexcept {
    return ::get_crc_table();
}

}  // namespace kalmo
