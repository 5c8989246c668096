#include "framework/memory_stream.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "framework/memory_scope.h"

namespace kalmo {

bool CMemoryStream::bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) {
    const std::size_t nStart = std::min(static_cast<std::size_t>(m_i64Position), m_tabByte.size());
    const std::size_t nCount = std::min(nSize, m_tabByte.size() - nStart);
    if (nCount > 0) {
        std::memcpy(pBuffer, m_tabByte.data() + nStart, nCount);
    }
    m_i64Position += static_cast<std::int64_t>(nCount);
    *pnRead = nCount;
    return true;
}

bool CMemoryStream::bWrite(const void* pBuffer, std::size_t nSize) try {
    const CMemoryScope clScope;
    if (nSize == 0) {
        return true;
    }
    const auto nStart = static_cast<std::size_t>(m_i64Position);
    if (nStart > m_tabByte.max_size() - nSize) {
        return false;
    }
    m_tabByte.resize(std::max(m_tabByte.size(), nStart + nSize));
    std::memcpy(m_tabByte.data() + nStart, pBuffer, nSize);
    m_i64Position += static_cast<std::int64_t>(nSize);
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CMemoryStream::bSeek(std::int64_t i64Position) {
    if (i64Position < 0) {
        return false;
    }
    m_i64Position = i64Position;
    return true;
}

bool CMemoryStream::bTruncate(std::int64_t i64Length) try {
    const CMemoryScope clScope;
    if (i64Length < 0) {
        return false;
    }
    m_tabByte.resize(static_cast<std::size_t>(i64Length));
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

}  // namespace kalmo
