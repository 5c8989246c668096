#include "archive/win_zip.h"

#include <algorithm>
#include <climits>
#include <exception>
#include <string>

#include "framework/disk_file.h"
#include "framework/memory_scope.h"
#include "framework/read_cache.h"

// The archive's records: opening, the central directory and the current entry in it. Reading an entry's data
// is in win_zip_entry.cpp.

namespace kalmo {

eARCHIVE CWinZip::__eFaute(const STZipFault& rst) {
    if (rst.eCode != ARCHIVE_OK) {
        m_stFault = rst;
    }
    return rst.eCode;
}

eARCHIVE CWinZip::eVerifieVide() {
    m_stFault = {};
    const STCentralHeader& rst = *pstGetCurrent();
    return rst.dwCrc == 0 ? ARCHIVE_OK
                          : __eFaute({ARCHIVE_DATA, "entry: of size zero, but its CRC is not that of nothing",
                                      rst.u64LocalOffset});
}

CTString CWinZip::csGetDefaut() const {
    if (m_stFault.eCode == ARCHIVE_OK) {
        return {};
    }
    const std::string cs = std::string(m_stFault.pszWhat) + ", at byte " + std::to_string(m_stFault.u64Where);
    return CTString(std::wstring(cs.begin(), cs.end()));
}

void CWinZip::SetStream(IXStream* pclStream, std::int64_t i64Base) {
    FermeZip();
    m_pclStream = pclStream;
    m_u64Prefixe = i64Base > 0 ? static_cast<std::uint64_t>(i64Base) : 0;
}

void CWinZip::FermeZip() {
    (void)CloseCurrentFileInZip(0, 0);
    m_clVolumes.Release();
    m_stEnd = {};
    m_bDirectorySplit = false;
    m_tabHeader.clear();
    m_clIndex.Vide();
    m_nCurrent = -1;
    m_stFault = {};
}

eARCHIVE CWinZip::OuvreZip(std::wstring_view svPath, int /*nFlags*/) try {
    const CMemoryScope clScope;
    FermeZip();
    m_clVolumes.Attach(m_pclStream, svPath);
    // Records are small and lie close together.
    CReadCache clCache(*m_pclStream, TAILLE_CACHE);
    STZipFault st = __stReadEndRecords(clCache);
    if (st.eCode == ARCHIVE_OK) {
        st = __stReadDirectory(clCache);
    }
    m_clVolumes.Release();
    if (st.eCode != ARCHIVE_OK) {
        FermeZip();
    }
    return __eFaute(st);
} catch (const std::exception&) {
    FermeZip();
    return NoMemory(ARCHIVE_BAD);
}

STZipFault CWinZip::__stReadEndRecords(IXStream& rclCache) {
    const std::optional<std::uint64_t> u64Position = u64FindEndRecord(rclCache);
    if (!u64Position) {
        return {ARCHIVE_BAD, "end record: not found", 0};
    }
    STZipFault st = stReadEndRecord(rclCache, m_clRecord, *u64Position, &m_stEnd);
    if (st.eCode == ARCHIVE_OK && m_stEnd.bZip64()) {
        st = __stReadZip64(rclCache);
    }
    if (st.eCode != ARCHIVE_OK) {
        return st;
    }
    m_clVolumes.SetLastDisk(m_stEnd.dwLastDisk());
    m_bDirectorySplit = !m_clVolumes.bInArchiveFile(m_stEnd.dwDirectoryDisk);
    if (!m_bDirectorySplit) {
        m_clVolumes.SetLastDisk(m_stEnd.dwDirectoryDisk);
    }
    return __stFindPrefix();
}

STZipFault CWinZip::__stReadZip64(IXStream& rclCache) {
    STZip64Locator stLocator;
    const STZipFault st = stReadZip64Locator(rclCache, m_clRecord, m_stEnd, &stLocator);
    if (st.eCode != ARCHIVE_OK) {
        return st;
    }
    if (stLocator.u64Offset > UINT64_MAX - m_u64Prefixe) {
        return {ARCHIVE_BAD, "Zip64 locator: offset out of range", m_stEnd.u64EndPosition};
    }
    IXStream* pclSource = &rclCache;
    if (stLocator.dwTotalDisks > 1 && stLocator.dwDisk < stLocator.dwTotalDisks - 1) {
        m_clVolumes.SetLastDisk(stLocator.dwTotalDisks - 1);
        if (!m_clVolumes.bInArchiveFile(stLocator.dwDisk)) {
            pclSource = m_clVolumes.pclFrom(stLocator.dwDisk);
        }
    }
    return stReadZip64EndRecord(*pclSource, m_clRecord, stLocator.u64Offset + m_u64Prefixe, &m_stEnd);
}

STZipFault CWinZip::__stFindPrefix() {
    if (m_bDirectorySplit) {
        // The directory does not end in the volume it starts in. Such a set has nothing in front of it.
        m_u64Prefixe = 0;
        return {};
    }
    if (m_stEnd.u64Zip64Length > 0) {
        const STZipFault st = stPassZip64EndRecord(&m_stEnd);
        if (st.eCode != ARCHIVE_OK) {
            return st;
        }
    }
    const std::uint64_t u64Size = m_stEnd.u64DirectorySize;
    const std::uint64_t u64Offset = m_stEnd.u64DirectoryOffset;
    if (u64Offset > m_stEnd.u64EndPosition || u64Size > m_stEnd.u64EndPosition - u64Offset) {
        return {ARCHIVE_BAD, "end record: the directory does not fit in front of it", m_stEnd.u64EndPosition};
    }
    m_u64Prefixe = m_stEnd.u64EndPosition - u64Offset - u64Size;
    return {};
}

STZipFault CWinZip::__stReadDirectory(IXStream& rclCache) {
    if (m_stEnd.u64DirectorySize == 0) {
        return {};
    }
    if (!m_bDirectorySplit) {
        return __stReadHeaders(rclCache);
    }
    CReadCache clVolumeCache(*m_clVolumes.pclFrom(m_stEnd.dwDirectoryDisk), TAILLE_CACHE);
    return __stReadHeaders(clVolumeCache);
}

STZipFault CWinZip::__stReadHeaders(IXStream& rclStream) {
    const std::uint64_t u64Position = m_stEnd.u64DirectoryOffset + m_u64Prefixe;
    if (u64Position > INT64_MAX || !rclStream.bSeek(static_cast<std::int64_t>(u64Position))) {
        return {ARCHIVE_BAD, "end record: directory out of range", m_stEnd.u64EndPosition};
    }
    for (std::uint64_t u64Left = m_stEnd.u64Entries; u64Left > 0; --u64Left) {
        if (m_tabHeader.size() >= INT_MAX) {
            return {ARCHIVE_BAD, "end record: too many entries", m_stEnd.u64EndPosition};
        }
        const STZipFault st = stReadCentralHeader(rclStream, m_clRecord, &m_tabHeader.emplace_back());
        if (st.eCode != ARCHIVE_OK) {
            return st;  // and what was read is dropped
        }
    }
    // Only now is it known how many there really are.
    m_clIndex.Reserve(m_tabHeader.size());
    int nRang = 0;
    for (const STCentralHeader& rst : m_tabHeader) {
        m_clIndex.Ajoute(csWithSlashes(rst.csNom), nRang++);
    }
    return {};
}

bool CWinZip::bFichierZip(std::wstring_view svPath) try {
    const CMemoryScope clScope;
    CDiskFile clFile;
    if (!clFile.bOpen(svPath, CDiskFile::eMODE::Read)) {
        return false;
    }
    CReadCache clCache(clFile, TAILLE_CACHE);
    return u64FindEndRecord(clCache).has_value();
} catch (const std::exception&) {
    return NoMemory(false);
}

eARCHIVE CWinZip::FirstFile() {
    m_nCurrent = m_tabHeader.empty() ? -1 : 0;
    return m_nCurrent >= 0 ? ARCHIVE_OK : ARCHIVE_NO_CURRENT;
}

eARCHIVE CWinZip::NextFile(int /*nReserve*/) {
    const bool bMore = m_nCurrent >= 0 && static_cast<std::size_t>(m_nCurrent) + 1 < m_tabHeader.size();
    m_nCurrent = bMore ? m_nCurrent + 1 : -1;
    return bMore ? ARCHIVE_OK : ARCHIVE_NO_CURRENT;
}

eARCHIVE CWinZip::LocateFile(std::wstring_view svNom, bool bCasse) try {
    const CMemoryScope clScope;
    const CTString csNom = csWithSlashes(svNom);
    const int* const pnFirst = m_clIndex.pTrouve(csNom);
    if (pnFirst == nullptr) {
        return ARCHIVE_NOT_LOCATED;
    }
    auto n = static_cast<std::size_t>(*pnFirst);
    if (bCasse) {
        while (n < m_tabHeader.size() && !(csWithSlashes(m_tabHeader[n].csNom) == csNom)) {
            ++n;
        }
    }
    if (n >= m_tabHeader.size()) {
        return ARCHIVE_NOT_LOCATED;
    }
    m_nCurrent = static_cast<int>(n);
    return ARCHIVE_OK;
} catch (const std::exception&) {
    return NoMemory(ARCHIVE_BAD);
}

const STCentralHeader* CWinZip::pstGetCurrent() const noexcept {
    return m_nCurrent >= 0 ? &m_tabHeader[static_cast<std::size_t>(m_nCurrent)] : nullptr;
}

const wchar_t* CWinZip::CurrentFile_szName() const noexcept {
    const STCentralHeader* const pst = pstGetCurrent();
    return pst != nullptr ? pst->csNom.pszGet() : L"";
}

CTString CWinZip::CurrentFile_szExtZip(std::uint32_t dwDisk) const {
    return m_clVolumes.csExtension(dwDisk);
}

bool CWinZip::bSetPassword(const wchar_t* pszPassword) {
    return bSetPassword(pszPassword != nullptr ? std::wstring_view(pszPassword) : std::wstring_view());
}

bool CWinZip::bSetPassword(std::wstring_view svPassword) try {
    const CMemoryScope clScope;
    const bool bUsable = std::all_of(svPassword.begin(), svPassword.end(),
                                     [](wchar_t c) { return static_cast<std::int32_t>(c) > 0; });
    m_csPassword = bUsable ? CTString(svPassword) : CTString();
    return bUsable;
} catch (const std::exception&) {
    m_csPassword.Empty();
    return NoMemory(false);
}

}  // namespace kalmo
