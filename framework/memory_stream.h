#ifndef KALMO_FRAMEWORK_MEMORY_STREAM_H
#define KALMO_FRAMEWORK_MEMORY_STREAM_H

#include <utility>
#include <vector>

#include "framework/x_stream.h"

namespace kalmo {

/// A growable run of bytes.
using CTLBIN = std::vector<unsigned char>;

/// A stream over bytes in memory, which it owns. Writing behind the end lengthens it.
class CMemoryStream final : public IXStream {
  public:
    CMemoryStream() = default;
    explicit CMemoryStream(CTLBIN tabByte) : m_tabByte(std::move(tabByte)) {}

    bool bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) override;
    bool bWrite(const void* pBuffer, std::size_t nSize) override;
    bool bSeek(std::int64_t i64Position) override;
    [[nodiscard]] std::int64_t i64GetPosition() const override { return m_i64Position; }
    std::int64_t i64GetLength() override { return static_cast<std::int64_t>(m_tabByte.size()); }
    bool bTruncate(std::int64_t i64Length) override;

    /// The bytes. Valid until the next write.
    [[nodiscard]] const CTLBIN& rtabGetBytes() const noexcept { return m_tabByte; }
    /// Gives the bytes to the caller; the stream is empty afterwards.
    [[nodiscard]] CTLBIN tabDetach() noexcept {
        m_i64Position = 0;
        return std::exchange(m_tabByte, {});
    }

  private:
    CTLBIN m_tabByte;
    std::int64_t m_i64Position = 0;
};

}  // namespace kalmo

#endif
