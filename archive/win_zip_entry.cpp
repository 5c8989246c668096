#include <algorithm>
#include <cstring>
#include <exception>

#include "archive/crc32.h"
#include "archive/local_header.h"
#include "archive/win_zip.h"
#include "framework/memory_scope.h"

// The data of the current entry: local header, deciphering, inflating, CRC.

namespace kalmo {

eARCHIVE CWinZip::OpenCurrentFileInZip() try {
    const CMemoryScope clScope;
    const STCentralHeader* const pst = pstGetCurrent();
    if (pst == nullptr) {
        return ARCHIVE_NO_CURRENT;
    }
    (void)CloseCurrentFileInZip(0, 0);
    m_stFault = {};
    const STZipFault st = __stOpenEntry(*pst);
    if (st.eCode != ARCHIVE_OK) {
        m_clVolumes.Release();
    }
    m_stLecture.bOuvert = st.eCode == ARCHIVE_OK;
    return __eFaute(st);
} catch (const std::exception&) {
    m_clVolumes.Release();
    return NoMemory(ARCHIVE_BAD);
}

STZipFault CWinZip::__stOpenEntry(const STCentralHeader& rst) {
    if (rst.u64LocalOffset > UINT64_MAX - m_u64Prefixe) {
        return {ARCHIVE_BAD, "local header: out of range", rst.u64LocalOffset};
    }
    const std::uint64_t u64Position = m_u64Prefixe + rst.u64LocalOffset;
    IXStream* const pclSource = m_clVolumes.pclFrom(rst.wDiskStart);
    STLocalHeader stLocal;
    std::span<unsigned char> tabRead = __tabReadStart(*pclSource, rst, u64Position);
    STZipFault st{ARCHIVE_BAD, "local header: cannot be read", u64Position};
    if (tabRead.data() != nullptr) {
        st = stReadLocalHeader(*pclSource, tabRead, u64Position, &stLocal);
    }
    if (st.eCode == ARCHIVE_OK) {
        st = stCompareHeaders(stLocal, rst, u64Position);
    }
    if (st.eCode != ARCHIVE_OK) {
        const bool bMissing =
            m_clVolumes.bEarlier(rst.wDiskStart) && m_clVolumes.bInArchiveFile(rst.wDiskStart);
        return bMissing ? STZipFault{ARCHIVE_BAD, "local header: its volume is missing", u64Position} : st;
    }
    m_stLecture = {};
    m_stLecture.pclSource = pclSource;
    m_stLecture.i64Position = static_cast<std::int64_t>(stLocal.u64DataPosition);
    m_stLecture.u64ResteCompresse = rst.u64TailleDonnees();
    m_stLecture.u64ResteOriginal = rst.u64TailleOriginale;
    m_stLecture.dwCrcAttendu = rst.dwCrc;
    m_stLecture.wMethode = rst.wMethode;
    m_stLecture.bCrypte = rst.bCrypte();
    tabRead = tabRead.subspan(std::min(tabRead.size(), stLocal.nTaille()));
    if (m_stLecture.bCrypte) {
        st = __stOpenCipher(rst, &tabRead);
    }
    // What came along with the header is the data's beginning.
    __Take(tabRead.first(std::min<std::uint64_t>(tabRead.size(), m_stLecture.u64ResteCompresse)));
    if (st.eCode == ARCHIVE_OK && rst.wMethode == METHODE_DEFLATE && !m_clInflater.bStart()) {
        st = {ARCHIVE_BAD, "entry: inflating cannot start", u64Position};
    }
    return st;
}

std::span<unsigned char> CWinZip::__tabReadStart(IXStream& rclSource, const STCentralHeader& rst,
                                                 std::uint64_t u64Position) {
    if (u64Position > INT64_MAX) {
        return {};
    }
    // One read for the header and a small entry's data: an archive has many entries. A local extra field is
    // often a little longer than the directory's. Data that cannot be read is not the header's fault.
    constexpr std::size_t MORE_EXTRA = 32;
    const std::size_t nHeader = TAILLE_MAX_ENTETE_LOCAL;
    const std::uint64_t u64All = std::max<std::uint64_t>(
        nHeader, TAILLE_ENTETE_LOCAL + MORE_EXTRA + rst.wNameLength + rst.wExtraLength +
                     std::min<std::uint64_t>(rst.u64TailleCompresse, m_tabInput.size()));
    for (const std::size_t nSize : {std::min<std::size_t>(u64All, m_tabInput.size()), nHeader}) {
        std::size_t nRead = 0;
        if (rclSource.bSeek(static_cast<std::int64_t>(u64Position)) &&
            rclSource.bRead(m_tabInput.data(), nSize, &nRead)) {
            return std::span(m_tabInput).first(nRead);
        }
    }
    return {};
}

void CWinZip::__Take(std::span<unsigned char> tabNew) {
    if (m_stLecture.bCrypte) {
        m_clCipher.CryptDecodeBuffer(tabNew);
    }
    m_stLecture.i64Position += static_cast<std::int64_t>(tabNew.size());
    m_stLecture.u64ResteCompresse -= tabNew.size();
    m_stLecture.tabEntree = tabNew;
}

STZipFault CWinZip::__stOpenCipher(const STCentralHeader& rst, std::span<unsigned char>* ptabRead) {
    CCryptHeader tabHeader;
    const auto u64Position = static_cast<std::uint64_t>(m_stLecture.i64Position);
    const std::size_t nHere = std::min(ptabRead->size(), tabHeader.size());
    std::copy_n(ptabRead->begin(), nHere, tabHeader.begin());
    *ptabRead = ptabRead->subspan(nHere);
    if (rst.u64TailleCompresse < tabHeader.size() ||
        !m_stLecture.pclSource->bSeek(m_stLecture.i64Position + static_cast<std::int64_t>(nHere)) ||
        !m_stLecture.pclSource->bReadAll(tabHeader.data() + nHere, tabHeader.size() - nHere)) {
        return {ARCHIVE_BAD, "encipherment header: cut short", u64Position};
    }
    m_stLecture.i64Position += static_cast<std::int64_t>(tabHeader.size());
    // A streamed entry is enciphered before its CRC is known; its time stands in for it.
    const bool bStreamed = (rst.wFlags & FLAG_DESCRIPTEUR) != 0;
    const std::uint32_t dwCheck = bStreamed ? rst.dwDosDate << 16 : rst.dwCrc;
    m_clCipher.CryptInitKeys(m_csPassword);
    if (!m_clCipher.bCryptCheck(tabHeader, static_cast<unsigned char>(dwCheck >> 24))) {
        return {ARCHIVE_CIPHER, "encipherment header: not this password", u64Position};
    }
    return {};
}

bool CWinZip::__bFillInput() {
    constexpr std::size_t NEARLY_FULL = INPUT_BYTES / 8 * 7;
    const std::size_t nKept = m_stLecture.tabEntree.size();
    const auto nSize = static_cast<std::size_t>(
        std::min<std::uint64_t>(m_tabInput.size() - nKept, m_stLecture.u64ResteCompresse));
    if (nSize == 0 || nKept >= NEARLY_FULL) {
        return true;
    }
    if (nKept > 0) {
        std::memmove(m_tabInput.data(), m_stLecture.tabEntree.data(), nKept);
    }
    const auto tabNew = std::span(m_tabInput).subspan(nKept, nSize);
    if (!m_stLecture.pclSource->bSeek(m_stLecture.i64Position) ||
        !m_stLecture.pclSource->bReadAll(tabNew.data(), tabNew.size())) {
        return false;
    }
    __Take(tabNew);
    m_stLecture.tabEntree = std::span(m_tabInput).first(nKept + nSize);
    return true;
}

bool CWinZip::__bProduce(std::span<unsigned char>& rtabRoom, bool* pbEnd) {
    if (m_stLecture.wMethode == METHODE_DEFLATE) {
        const CInflater::eETAT eState = m_clInflater.eInflate(m_stLecture.tabEntree, rtabRoom);
        *pbEnd = eState == CInflater::eETAT::Ended;
        return eState != CInflater::eETAT::Failed;
    }
    const std::size_t nCount = std::min(m_stLecture.tabEntree.size(), rtabRoom.size());
    if (nCount > 0) {
        std::memcpy(rtabRoom.data(), m_stLecture.tabEntree.data(), nCount);
    }
    m_stLecture.tabEntree = m_stLecture.tabEntree.subspan(nCount);
    rtabRoom = rtabRoom.subspan(nCount);
    *pbEnd = m_stLecture.tabEntree.empty() && m_stLecture.u64ResteCompresse == 0;
    return true;
}

bool CWinZip::__bFauteDonnees(const char* pszWhat) {
    (void)__eFaute({ARCHIVE_DATA, pszWhat, static_cast<std::uint64_t>(m_stLecture.i64Position)});
    return false;
}

bool CWinZip::bReadCurrentFileInZip(void* pBuffer, std::size_t nSize, std::size_t* pnRead) {
    *pnRead = 0;
    if (!m_stLecture.bOuvert) {
        return false;
    }
    const auto nWanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(nSize, m_stLecture.u64ResteOriginal));
    const std::span tabOut(static_cast<unsigned char*>(pBuffer), nWanted);
    std::span<unsigned char> tabRoom = tabOut;
    for (bool bEnd = false; !bEnd && !tabRoom.empty();) {
        // A buffer that is nearly full each time: an inflate that stops in the middle of the room for want of
        // input costs a copy of its whole window.
        if (!__bFillInput()) {
            return __bFauteDonnees("entry: its data cannot be read");
        }
        if (!__bProduce(tabRoom, &bEnd)) {
            return __bFauteDonnees("entry: its data does not inflate");
        }
    }
    const auto tabDone = tabOut.first(nWanted - tabRoom.size());
    m_stLecture.dwCrc = dwCrc32(m_stLecture.dwCrc, tabDone);
    m_stLecture.u64ResteOriginal -= tabDone.size();
    *pnRead = tabDone.size();
    return true;
}

eARCHIVE CWinZip::CloseCurrentFileInZip(int /*nReserve1*/, int /*nReserve2*/) {
    if (!m_stLecture.bOuvert) {
        return ARCHIVE_OK;
    }
    m_stLecture.bOuvert = false;
    m_clInflater.End();
    m_clVolumes.Release();
    if (m_stLecture.u64ResteOriginal == 0 && m_stLecture.dwCrc != m_stLecture.dwCrcAttendu) {
        return __eFaute({ARCHIVE_CRC, "entry: not the CRC of the directory",
                         static_cast<std::uint64_t>(m_stLecture.i64Position)});
    }
    return ARCHIVE_OK;
}

}  // namespace kalmo
