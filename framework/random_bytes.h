#ifndef KALMO_FRAMEWORK_RANDOM_BYTES_H
#define KALMO_FRAMEWORK_RANDOM_BYTES_H

#include <cstddef>

namespace kalmo {

/// Fills a buffer of at most 256 bytes with random ones, from the kernel or, where that is too old to be
/// asked, from /dev/urandom. It never waits: early at its start a system may give bytes that could be
/// guessed. False, with the buffer unspecified, when there are none.
bool bRandomBytes(void* pBuffer, std::size_t nSize) noexcept;

}  // namespace kalmo

#endif
