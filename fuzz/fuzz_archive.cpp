// Archives: any bytes are opened, listed and extracted. What comes out as a success has the size and the CRC
// that the directory states, and no more than that is ever delivered.
//
// Input: one byte, whose lowest bit says whether a password is set; behind it the archive.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "archive/crc32.h"
#include "archive/tv_win_zip.h"

namespace {

using namespace kalmo;

constexpr int nMaxEntries = 40;  // many entries may share one run of data: enough of them is enough
constexpr std::size_t nMaxBytes = 1 << 20;

void Check(bool b) {
    if (!b) {
        std::abort();
    }
}

// The record reader, in pieces that do not divide anything.
void ReadRecords(IXStream& rclStream, bool bPassword) {
    CWinZip cl;
    cl.SetStream(&rclStream, 0);
    Check(cl.bSetPassword(bPassword ? L"password" : L""));
    int nLeft = nMaxEntries;
    for (eARCHIVE e = cl.OuvreZip(L"", 0) == ARCHIVE_OK ? cl.FirstFile() : ARCHIVE_NO_CURRENT;
         e == ARCHIVE_OK && nLeft > 0; e = cl.NextFile(0), --nLeft) {
        const STCentralHeader& rst = *cl.pstGetCurrent();
        if (cl.OpenCurrentFileInZip() != ARCHIVE_OK) {
            Check(!cl.csGetDefaut().bEmpty());
            continue;
        }
        unsigned char tabPiece[1009];
        std::uint32_t dwCrc = 0;
        std::uint64_t u64Total = 0;
        std::size_t nRead = 0;
        bool bRead = false;
        do {
            bRead = cl.bReadCurrentFileInZip(tabPiece, sizeof tabPiece, &nRead);
            dwCrc = dwCrc32(dwCrc, {tabPiece, nRead});
            u64Total += nRead;
        } while (bRead && nRead > 0 && u64Total < nMaxBytes);
        Check(u64Total <= rst.u64TailleOriginale);
        const bool bGood = cl.CloseCurrentFileInZip(1, 0) == ARCHIVE_OK;
        Check(!bGood || u64Total < rst.u64TailleOriginale || dwCrc == rst.dwCrc);
    }
}

void Extract(IXStream& rclStream, bool bPassword) {
    CTVWinZip cl;
    Check(cl.eMotDePasse(bPassword ? L"password" : nullptr) == ARCHIVE_OK);
    const eARCHIVE eOpened = cl.eOuvreArchiveStream(&rclStream, 0, 0);
    Check(eOpened == ARCHIVE_OK || (eOpened == ARCHIVE_BAD && cl.dwNombreFichier() == 0));
    const int nCount = static_cast<int>(cl.rclGetRepertoire().dwTaille());
    for (int n = 0; n < std::min(nCount, nMaxEntries); ++n) {
        CTString csInfo;
        Check(cl.eGetInfoFichier(n, csInfo) == ARCHIVE_OK);
        const CRepEntree& rcl = *cl.rclGetRepertoire().pclGetEntree(n);
        const int nFirst = cl.lRangFichier(rcl.csGetNom());
        Check(nFirst >= 0 && nFirst <= n);
        if (cl.rclGetRepertoire().pclGetEntree(nFirst)->u64GetTailleOriginale() > nMaxBytes) {
            continue;
        }
        CTLBIN tab;
        const eARCHIVE e = cl.eExtraitFichier(rcl.csGetNom(), &tab, 0, nullptr, 0, nullptr);
        Check(e == ARCHIVE_OK || e == ARCHIVE_BAD || e == ARCHIVE_PASSWORD || e == ARCHIVE_DATA);
        Check(tab.size() ==
              (e == ARCHIVE_OK ? cl.rclGetRepertoire().pclGetEntree(nFirst)->u64GetTailleOriginale() : 0));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    if (nSize == 0) {
        return 0;
    }
    const bool bPassword = (pbyData[0] & 1) != 0;
    CMemoryStream clStream(CTLBIN(pbyData + 1, pbyData + nSize));
    ReadRecords(clStream, bPassword);
    Extract(clStream, bPassword);
    return 0;
}
