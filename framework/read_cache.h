#ifndef KALMO_FRAMEWORK_READ_CACHE_H
#define KALMO_FRAMEWORK_READ_CACHE_H

#include <vector>

#include "framework/x_stream.h"

namespace kalmo {

/// A read-only window of fixed size in front of another stream, for many small reads that lie close together.
///
/// Put in front of a stream for the time of such reads and dropped afterwards; it moves the position of the
/// stream behind it, which must live longer and must not be written to meanwhile.
class CReadCache final : public IXStream {
  public:
    /// Precondition: nSize > 0.
    CReadCache(IXStream& rclBehind, std::size_t nSize) : m_rclBehind(rclBehind), m_tabWindow(nSize) {}

    bool bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) override;
    /// Always false: the cache is for reading.
    bool bWrite(const void* pBuffer, std::size_t nSize) override;
    bool bSeek(std::int64_t i64Position) override;
    [[nodiscard]] std::int64_t i64GetPosition() const override { return m_i64Position; }
    std::int64_t i64GetLength() override { return m_rclBehind.i64GetLength(); }

  private:
    /// Makes the window start at the position. False when the stream behind fails.
    bool __bFill();

    IXStream& m_rclBehind;
    std::vector<unsigned char> m_tabWindow;
    std::int64_t m_i64WindowStart = 0;  ///< Position in the stream of the window's first byte.
    std::size_t m_nWindowLength = 0;    ///< How many of the window's bytes are filled.
    std::int64_t m_i64Position = 0;
};

}  // namespace kalmo

#endif
