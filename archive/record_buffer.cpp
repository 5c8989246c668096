#include "archive/record_buffer.h"

#include <algorithm>

namespace kalmo {

bool CRecordBuffer::bFill(IXStream& rclStream, std::uint64_t u64Position, std::size_t nSize) {
    m_nFilled = 0;
    m_u64Position = u64Position;
    return u64Position <= INT64_MAX && rclStream.bSeek(static_cast<std::int64_t>(u64Position)) &&
           bFillNext(rclStream, nSize);
}

bool CRecordBuffer::bFillNext(IXStream& rclStream, std::size_t nSize) {
    m_nFilled = 0;
    m_u64Position = static_cast<std::uint64_t>(rclStream.i64GetPosition());
    return rclStream.bRead(m_tabByte.data(), std::min(nSize, TAILLE), &m_nFilled);
}

}  // namespace kalmo
