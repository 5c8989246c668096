#include "archive/volume_set.h"

#include <array>
#include <cerrno>
#include <cwchar>
#include <exception>

#include "framework/fs_path.h"
#include "framework/memory_scope.h"

namespace kalmo {

void CVolumeSet::Attach(IXStream* pclLast, std::wstring_view svPath) {
    Release();
    m_pclLast = pclLast;
    m_csPath = CTString(svPath);
    m_dwLast = 0;
}

CTString CVolumeSet::csExtension(std::uint32_t dwDisk) const {
    if (dwDisk >= m_dwLast) {
        return CTString(L".zip");
    }
    std::array<wchar_t, 16> szExtension{};
    const int nLength = std::swprintf(szExtension.data(), szExtension.size(), L".z%02u", dwDisk + 1);
    return nLength > 0 ? CTString(szExtension.data()) : CTString();
}

bool CVolumeSet::__bPathOf(std::uint32_t dwDisk, CPathBuffer& rszOut) const {
    if (m_csPath.bEmpty()) {
        errno = ENOENT;
        return false;
    }
    const STPathParts stPath = CFSPath::stSplit(m_csPath);
    const CTString cs = csExtension(dwDisk);
    errno = 0;
    if (!CDiskFile::MakePath(rszOut, stPath.svDirectory, stPath.svBaseName, cs.svGet().substr(1))) {
        errno = errno == ENOMEM ? ENOMEM : ENAMETOOLONG;
        return false;
    }
    return true;
}

bool CVolumeSet::bInArchiveFile(std::uint32_t dwDisk) const {
    CPathBuffer szPath;
    return !bEarlier(dwDisk) || !__bPathOf(dwDisk, szPath) || !CDiskFile::bFileExists(szPath);
}

IXStream* CVolumeSet::pclFrom(std::uint32_t dwDisk) {
    Release();
    if (bInArchiveFile(dwDisk)) {
        return m_pclLast;
    }
    m_pclJoined = std::make_unique<CJoined>(*this, dwDisk);
    return m_pclJoined.get();
}

bool CVolumeSet::CJoined::__bOpen(std::uint32_t dwDisk, std::int64_t i64Start) {
    m_bOpen = false;
    m_dwDisk = dwDisk;
    m_i64Start = i64Start;
    if (!__bOnLast()) {
        CPathBuffer szPath;
        if (!m_rclSet.__bPathOf(dwDisk, szPath) || !m_clFile.bOpen(szPath, CDiskFile::eMODE::Read)) {
            return false;
        }
        m_i64Length = m_clFile.i64GetLength();
        if (m_i64Length < 0) {
            return false;
        }
    }
    m_bOpen = true;
    return true;
}

bool CVolumeSet::CJoined::__bEnter(std::int64_t i64Position) {
    if ((!m_bOpen || i64Position < m_i64Start) && !__bOpen(m_dwFirst, 0)) {
        return false;
    }
    while (!__bOnLast() && i64Position - m_i64Start >= m_i64Length) {
        if (!__bOpen(m_dwDisk + 1, m_i64Start + m_i64Length)) {
            return false;
        }
    }
    return true;
}

bool CVolumeSet::CJoined::bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) try {
    const CMemoryScope clScope;
    auto* const pbyBuffer = static_cast<unsigned char*>(pBuffer);
    std::size_t nDone = 0;
    while (nDone < nSize) {
        const std::int64_t i64Position = m_i64Position + static_cast<std::int64_t>(nDone);
        if (!__bEnter(i64Position)) {
            if (nDone == 0) {
                return false;
            }
            break;  // what is there is given; the next read fails
        }
        IXStream& rclVolume = __bOnLast() ? *m_rclSet.m_pclLast : m_clFile;
        std::size_t nGot = 0;
        if (!rclVolume.bSeek(i64Position - m_i64Start) ||
            !rclVolume.bRead(pbyBuffer + nDone, nSize - nDone, &nGot)) {
            return false;
        }
        if (nGot == 0) {
            break;
        }
        nDone += nGot;
    }
    m_i64Position += static_cast<std::int64_t>(nDone);
    *pnRead = nDone;
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CVolumeSet::CJoined::bWrite(const void* /*pBuffer*/, std::size_t /*nSize*/) {
    return false;
}

bool CVolumeSet::CJoined::bSeek(std::int64_t i64Position) {
    if (i64Position < 0) {
        errno = EINVAL;
        return false;
    }
    m_i64Position = i64Position;
    return true;
}

}  // namespace kalmo
