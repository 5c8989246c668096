#ifndef KALMO_FRAMEWORK_X_STREAM_H
#define KALMO_FRAMEWORK_X_STREAM_H

#include <cstddef>
#include <cstdint>

namespace kalmo {

/// A stream of bytes with a position: a file, a piece of memory, or a cache in front of another stream.
///
/// Every operation returns false on failure and then leaves the position as it was; errno holds the reason
/// where the system gave one. Positions and lengths are bytes from the stream's start.
class IXStream {
  public:
    IXStream() = default;
    IXStream(const IXStream&) = delete;
    IXStream& operator=(const IXStream&) = delete;
    virtual ~IXStream() = default;

    /// Reads up to nSize bytes at the position and moves it behind them. *pnRead is smaller than nSize only
    /// at the end of the stream; 0 there is no failure.
    virtual bool bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) = 0;
    /// Writes all nSize bytes at the position and moves it behind them.
    virtual bool bWrite(const void* pBuffer, std::size_t nSize) = 0;
    /// Sets the position. It may lie behind the end: a read there reads nothing. False for a negative one.
    virtual bool bSeek(std::int64_t i64Position) = 0;
    [[nodiscard]] virtual std::int64_t i64GetPosition() const = 0;
    /// The length; -1 when it cannot be told.
    virtual std::int64_t i64GetLength() = 0;
    /// Makes the stream end at the given length, cutting it or lengthening it with zeros. The position stays.
    /// False where that cannot be done: a stream for reading, a negative length.
    virtual bool bTruncate(std::int64_t /*i64Length*/) { return false; }
    /// Makes room for the stream to grow to the given length, so that writing up to there does not fail for
    /// want of it; length, position and content stay. True too where room cannot be had beforehand.
    virtual bool bReserve(std::int64_t /*i64Length*/) { return true; }

    /// Reads exactly nSize bytes; false too when the stream ends before.
    bool bReadAll(void* pBuffer, std::size_t nSize) {
        std::size_t nRead = 0;
        return bRead(pBuffer, nSize, &nRead) && nRead == nSize;
    }
};

}  // namespace kalmo

#endif
