#ifndef KALMO_ARCHIVE_INFLATE_ENGINE_H
#define KALMO_ARCHIVE_INFLATE_ENGINE_H

#include <cstdint>
#include <memory>
#include <span>

#include "archive/inflater.h"

namespace kalmo {

/// What one library does for a CInflater, which owns it and whose operations these are.
class IInflateEngine {
  public:
    IInflateEngine() = default;
    IInflateEngine(const IInflateEngine&) = delete;
    IInflateEngine& operator=(const IInflateEngine&) = delete;
    virtual ~IInflateEngine() = default;

    virtual bool bStart() = 0;
    virtual CInflater::eETAT eInflate(std::span<const unsigned char>& rtabInput,
                                      std::span<unsigned char>& rtabRoom) = 0;
};

/// A library that inflates and computes the CRC-32 of what came out (archive/crc32.h).
struct STInflateLibrary {
    std::unique_ptr<IInflateEngine> (*pfnNewEngine)();
    std::uint32_t (*pfnCrc32)(std::uint32_t dwCrc, std::span<const unsigned char> tabByte) noexcept;
};

const STInflateLibrary& rstZlib() noexcept;
/// In builds with KALMO_INFLATE=isal, and in those with tests, which hold one library against the other.
const STInflateLibrary& rstIsal() noexcept;
/// Whether ISA-L has code of its own for this processor. Its general code, which runs everywhere, is slower
/// than zlib.
bool bIsalRunsHere() noexcept;

/// The library in use, the same as long as the process lives. Alone in its source, so that a test that
/// defines it chooses for itself.
const STInflateLibrary& rstInflateLibrary() noexcept;

}  // namespace kalmo

#endif
