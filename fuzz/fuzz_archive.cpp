// Archives: any bytes are opened, listed and extracted. What comes out as a success has the size and the CRC
// that the directory states, and no more than that is ever delivered.
//
// Input: one byte, whose lowest bit says whether a password is set; behind it the archive.

#include <cstddef>
#include <cstdint>

#include "archive/crc32.h"
#include "fuzz/extract_entries.h"

namespace {

using namespace kalmo;

// The record reader, in pieces that do not divide anything.
void ReadRecords(IXStream& rclStream, bool bPassword) {
    CWinZip cl;
    cl.SetStream(&rclStream, 0);
    Check(cl.bSetPassword(bPassword ? L"password" : L""));
    int nLeft = MAX_ENTRIES;
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
        } while (bRead && nRead > 0 && u64Total < MAX_BYTES);
        Check(u64Total <= rst.u64TailleOriginale);
        const bool bGood = cl.CloseCurrentFileInZip(1, 0) == ARCHIVE_OK;
        Check(!bGood || u64Total < rst.u64TailleOriginale || dwCrc == rst.dwCrc);
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
    CTVWinZip cl;
    Check(cl.eMotDePasse(bPassword ? L"password" : nullptr) == ARCHIVE_OK);
    ExtractEntries(cl, cl.eOuvreArchiveStream(&clStream, 0, 0));
    return 0;
}
