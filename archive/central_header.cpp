#include "archive/central_header.h"

#include <algorithm>
#include <exception>
#include <span>

#include "archive/zip64_extra.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr std::size_t TAILLE_FIXE = 46;
constexpr std::uint32_t SIGNATURE_CENTRAL = 0x02014B50;
constexpr std::uint16_t HOST_UNIX = 3;
// Entries of other hosts carry no permissions: they get reading and writing for all.
constexpr std::uint32_t ATTRIBUT_AUTRES = 0666;

void ParseFixedPart(CLeCursor cl, STCentralHeader* pst) {
    cl.Skip(4);  // the signature
    pst->wVersionMadeBy = cl.wNext();
    pst->wVersionNeeded = cl.wNext();
    pst->wFlags = cl.wNext();
    pst->wMethode = cl.wNext();
    pst->dwDosDate = cl.dwNext();
    pst->dwCrc = cl.dwNext();
    pst->u64TailleCompresse = cl.dwNext();
    pst->u64TailleOriginale = cl.dwNext();
    pst->wNameLength = cl.wNext();
    pst->wExtraLength = cl.wNext();
    pst->wCommentLength = cl.wNext();
    pst->wDiskStart = cl.wNext();
    pst->wAttributInterne = cl.wNext();
    pst->dwAttribut = cl.dwNext();
    if (pst->wVersionMadeBy >> 8 != HOST_UNIX) {
        pst->dwAttribut += ATTRIBUT_AUTRES;
    }
    pst->u64LocalOffset = cl.dwNext();
}

}  // namespace

STZipFault stReadCentralHeader(IXStream& rclStream, CRecordBuffer& rclBuffer,
                               STCentralHeader* pstHeader) try {
    const CMemoryScope clScope;
    const auto u64Position = static_cast<std::uint64_t>(rclStream.i64GetPosition());
    if (!rclBuffer.bFillNext(rclStream, TAILLE_FIXE)) {
        return {ARCHIVE_BAD, "central header: cannot be read", u64Position};
    }
    if (rclBuffer.nGetFilled() < TAILLE_FIXE) {
        return {ARCHIVE_BAD, "central header: cut short", u64Position};
    }
    if (rclBuffer.clCursor().dwNext() != SIGNATURE_CENTRAL) {
        return {ARCHIVE_BAD, "central header: wrong signature", u64Position};
    }
    ParseFixedPart(rclBuffer.clCursor(), pstHeader);

    const std::size_t nUsedName = std::min<std::size_t>(pstHeader->wNameLength, TAILLE_MAX_NOM_ENTREE);
    if (!rclBuffer.bFillNext(rclStream, nUsedName) || rclBuffer.nGetFilled() < nUsedName) {
        return {ARCHIVE_BAD, "central header: name cut short", u64Position};
    }
    pstHeader->csNom = csDecodeEntryName(rclBuffer.clCursor().svNext(nUsedName), pstHeader->wFlags);

    const std::uint64_t u64Extra = u64Position + TAILLE_FIXE + pstHeader->wNameLength;
    if (pstHeader->wExtraLength > 0) {
        pstHeader->tabExtra = std::make_unique<unsigned char[]>(pstHeader->wExtraLength);
        const std::span tabExtra(pstHeader->tabExtra.get(), pstHeader->wExtraLength);
        if (!rclStream.bSeek(static_cast<std::int64_t>(u64Extra)) ||
            !rclStream.bReadAll(tabExtra.data(), tabExtra.size())) {
            return {ARCHIVE_BAD, "central header: extra field cut short", u64Position};
        }
        ApplyZip64Extra(tabExtra, {&pstHeader->u64TailleOriginale, &pstHeader->u64TailleCompresse,
                                   &pstHeader->u64LocalOffset});
    }

    const std::uint64_t u64Next = u64Extra + pstHeader->wExtraLength + pstHeader->wCommentLength;
    if (!rclStream.bSeek(static_cast<std::int64_t>(u64Next))) {
        return {ARCHIVE_BAD, "central header: no next one", u64Position};
    }
    return {};
} catch (const std::exception&) {
    return NoMemory(STZipFault{ARCHIVE_BAD, "central header: no memory for it", rclBuffer.u64GetPosition()});
}

}  // namespace kalmo
