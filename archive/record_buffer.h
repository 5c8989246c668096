#ifndef KALMO_ARCHIVE_RECORD_BUFFER_H
#define KALMO_ARCHIVE_RECORD_BUFFER_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/le_cursor.h"
#include "framework/x_stream.h"

namespace kalmo {

/// The buffer that the records of an archive are read into, and the position it was read from.
///
/// Every fixed record and every name that is used fits. The record reader owns one and lends it to the
/// functions that read records; each fill replaces what was there.
class CRecordBuffer {
  public:
    static constexpr std::size_t TAILLE = 1024;

    /// Reads up to nSize bytes (at most TAILLE) at a position; fewer only at the end of the stream. False
    /// when the position is out of reach or the read fails: the buffer is then empty.
    bool bFill(IXStream& rclStream, std::uint64_t u64Position, std::size_t nSize);
    /// Reads up to nSize bytes at the stream's own position.
    bool bFillNext(IXStream& rclStream, std::size_t nSize);

    /// Reads the filled bytes from their start. Valid until the next fill.
    [[nodiscard]] CLeCursor clCursor() const noexcept { return CLeCursor({m_tabByte.data(), m_nFilled}); }
    [[nodiscard]] std::size_t nGetFilled() const noexcept { return m_nFilled; }
    /// The position in the stream of the first byte.
    [[nodiscard]] std::uint64_t u64GetPosition() const noexcept { return m_u64Position; }

  private:
    std::array<unsigned char, TAILLE> m_tabByte{};
    std::size_t m_nFilled = 0;
    std::uint64_t m_u64Position = 0;
};

}  // namespace kalmo

#endif
