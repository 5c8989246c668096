#include "archive/local_header.h"

#include <algorithm>
#include <exception>

#include "archive/zip64_extra.h"
#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr std::size_t TAILLE_FIXE_LOCALE = 30;
constexpr std::uint32_t SIGNATURE_LOCAL = 0x04034B50;

}  // namespace

STZipFault stReadLocalHeader(IXStream& rclStream, CRecordBuffer& rclBuffer, std::uint64_t u64Position,
                             STLocalHeader* pstHeader) try {
    const CMemoryScope clScope;
    // One read for the fixed part and the name: an archive has many entries.
    if (!rclBuffer.bFill(rclStream, u64Position, TAILLE_FIXE_LOCALE + TAILLE_MAX_NOM_ENTREE)) {
        return {ARCHIVE_BAD, "local header: cannot be read", u64Position};
    }
    CLeCursor cl = rclBuffer.clCursor();
    if (cl.dwNext() != SIGNATURE_LOCAL) {
        return {ARCHIVE_BAD, "local header: wrong signature", u64Position};
    }
    pstHeader->wVersionNeeded = cl.wNext();
    pstHeader->wFlags = cl.wNext();
    pstHeader->wMethode = cl.wNext();
    pstHeader->dwDosDate = cl.dwNext();
    pstHeader->dwCrc = cl.dwNext();
    pstHeader->u64TailleCompresse = cl.dwNext();
    pstHeader->u64TailleOriginale = cl.dwNext();
    pstHeader->wNameLength = cl.wNext();
    pstHeader->wExtraLength = cl.wNext();
    const std::size_t nUsedName = std::min<std::size_t>(pstHeader->wNameLength, TAILLE_MAX_NOM_ENTREE);
    pstHeader->csNom = csDecodeEntryName(cl.svNext(nUsedName), pstHeader->wFlags);
    if (!cl.bOk()) {
        return {ARCHIVE_BAD, "local header: cut short", u64Position};
    }
    const std::uint64_t u64Extra = u64Position + TAILLE_FIXE_LOCALE + pstHeader->wNameLength;
    pstHeader->u64DataPosition = u64Extra + pstHeader->wExtraLength;

    if (pstHeader->wVersionNeeded == VERSION_ZIP64 &&
        (pstHeader->u64TailleCompresse == SATURE || pstHeader->u64TailleOriginale == SATURE)) {
        constexpr std::size_t TAILLE_ZIP64 = 4 + 2 * 8;  // its header and two sizes
        const std::size_t nExtra = std::min<std::size_t>(pstHeader->wExtraLength, TAILLE_ZIP64);
        if (!rclBuffer.bFill(rclStream, u64Extra, nExtra)) {
            return {ARCHIVE_BAD, "local header: extra field cannot be read", u64Position};
        }
        ApplyZip64Extra(rclBuffer.clCursor().tabNext(rclBuffer.nGetFilled()),
                        {&pstHeader->u64TailleOriginale, &pstHeader->u64TailleCompresse});
    }
    return {};
} catch (const std::exception&) {
    return NoMemory(STZipFault{ARCHIVE_BAD, "local header: no memory for it", u64Position});
}

STZipFault stCompareHeaders(const STLocalHeader& rstLocal, const STCentralHeader& rstCentral,
                            std::uint64_t u64Position) {
    if (rstLocal.wMethode != METHODE_STOCKE && rstLocal.wMethode != METHODE_DEFLATE) {
        return {ARCHIVE_BAD, "local header: unsupported method", u64Position};
    }
    if (rstLocal.wMethode != rstCentral.wMethode) {
        return {ARCHIVE_BAD, "local header: not the method of the directory", u64Position};
    }
    if ((rstLocal.wFlags & FLAG_DESCRIPTEUR) == 0 && rstLocal.dwCrc != rstCentral.dwCrc) {
        return {ARCHIVE_BAD, "local header: not the CRC of the directory", u64Position};
    }
    if (rstLocal.wNameLength != rstCentral.wNameLength || !bEgalSansCasse(rstLocal.csNom, rstCentral.csNom)) {
        return {ARCHIVE_BAD, "local header: not the name of the directory", u64Position};
    }
    return {};
}

}  // namespace kalmo
