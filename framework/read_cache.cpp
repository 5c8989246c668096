#include "framework/read_cache.h"

#include <algorithm>
#include <cstring>

namespace kalmo {

bool CReadCache::__bFill() {
    std::size_t nRead = 0;
    m_nWindowLength = 0;  // a read that fails may have changed the window
    if (!m_rclBehind.bSeek(m_i64Position) ||
        !m_rclBehind.bRead(m_tabWindow.data(), m_tabWindow.size(), &nRead)) {
        return false;
    }
    m_i64WindowStart = m_i64Position;
    m_nWindowLength = nRead;
    return true;
}

bool CReadCache::bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) {
    const std::int64_t i64Before = m_i64Position;
    auto* pbyOut = static_cast<unsigned char*>(pBuffer);
    std::size_t nDone = 0;
    while (nDone < nSize) {
        const std::int64_t i64WindowEnd = m_i64WindowStart + static_cast<std::int64_t>(m_nWindowLength);
        if (m_i64Position < m_i64WindowStart || m_i64Position >= i64WindowEnd) {
            if (!__bFill()) {
                m_i64Position = i64Before;
                return false;
            }
            if (m_nWindowLength == 0) {
                break;
            }
            continue;
        }
        const auto nOffset = static_cast<std::size_t>(m_i64Position - m_i64WindowStart);
        const std::size_t nCount = std::min(nSize - nDone, m_nWindowLength - nOffset);
        std::memcpy(pbyOut + nDone, m_tabWindow.data() + nOffset, nCount);
        nDone += nCount;
        m_i64Position += static_cast<std::int64_t>(nCount);
    }
    *pnRead = nDone;
    return true;
}

bool CReadCache::bWrite(const void* /*pBuffer*/, std::size_t /*nSize*/) {
    return false;
}

bool CReadCache::bSeek(std::int64_t i64Position) {
    if (i64Position < 0) {
        return false;
    }
    m_i64Position = i64Position;
    return true;
}

}  // namespace kalmo
