#include "archive/end_record.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <string>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr std::size_t TAILLE_END_RECORD = 22;
constexpr std::size_t TAILLE_ZIP64_END_RECORD = 56;
// The bytes of a Zip64 end record that its own size field does not count.
constexpr std::uint64_t TAILLE_ZIP64_NOT_COUNTED = 12;
constexpr std::int64_t MAX_COMMENT = 0xFFFF;

constexpr std::uint32_t SIGNATURE_END = 0x06054B50;
constexpr std::uint32_t SIGNATURE_ZIP64_LOCATOR = 0x07064B50;
constexpr std::uint32_t SIGNATURE_ZIP64_END = 0x06064B50;

// Reads the comment behind the end record, which may be longer than any record.
std::string csReadComment(IXStream& rclStream, std::uint64_t u64Position, std::size_t nLength) {
    std::string cs(nLength, '\0');
    std::size_t nRead = 0;
    if (!rclStream.bSeek(static_cast<std::int64_t>(u64Position)) ||
        !rclStream.bRead(cs.data(), nLength, &nRead)) {
        nRead = 0;
    }
    cs.resize(nRead);
    return cs;
}

}  // namespace

std::optional<std::uint64_t> u64FindEndRecord(IXStream& rclStream) {
    constexpr std::int64_t OVERLAP = 4;  // a signature that two chunks share lies whole in one of them
    constexpr std::int64_t STEP = 1024;
    static constexpr std::array<unsigned char, 4> SIGNATURE = {'P', 'K', 5, 6};
    const std::int64_t i64Length = rclStream.i64GetLength();
    const std::int64_t i64Reach = std::min<std::int64_t>(i64Length, MAX_COMMENT + TAILLE_END_RECORD);
    std::array<unsigned char, STEP + OVERLAP> tabChunk{};

    for (std::int64_t i64Back = OVERLAP; i64Back < i64Reach;) {
        i64Back = std::min(i64Back + STEP, i64Reach);
        const std::int64_t i64Position = i64Length - i64Back;
        const std::size_t nSize = std::min(tabChunk.size(), static_cast<std::size_t>(i64Back));
        if (!rclStream.bSeek(i64Position) || !rclStream.bReadAll(tabChunk.data(), nSize)) {
            return std::nullopt;
        }
        for (std::size_t n = nSize - SIGNATURE.size() + 1; n-- > 0;) {
            if (std::memcmp(tabChunk.data() + n, SIGNATURE.data(), SIGNATURE.size()) == 0) {
                return static_cast<std::uint64_t>(i64Position) + n;
            }
        }
    }
    return std::nullopt;
}

STZipFault stReadEndRecord(IXStream& rclStream, CRecordBuffer& rclBuffer, std::uint64_t u64Position,
                           STEndRecord* pstEnd) try {
    const CMemoryScope clScope;
    if (!rclBuffer.bFill(rclStream, u64Position, TAILLE_END_RECORD)) {
        return {ARCHIVE_READ, "end record: cannot be read", u64Position};
    }
    CLeCursor cl = rclBuffer.clCursor();
    const std::uint32_t dwSignature = cl.dwNext();
    pstEnd->dwThisDisk = cl.wNext();
    pstEnd->dwDirectoryDisk = cl.wNext();
    pstEnd->u64EntriesOnDisk = cl.wNext();
    pstEnd->u64Entries = cl.wNext();
    pstEnd->u64DirectorySize = cl.dwNext();
    pstEnd->u64DirectoryOffset = cl.dwNext();
    pstEnd->wCommentLength = cl.wNext();
    pstEnd->u64EndPosition = u64Position;
    if (!cl.bOk()) {
        return {ARCHIVE_READ, "end record: cut short", u64Position};
    }
    if (dwSignature != SIGNATURE_END) {
        return {ARCHIVE_BAD, "end record: wrong signature", u64Position};
    }
    pstEnd->csComment =
        csFromCodePage(eCODEPAGE::Ansi1252,
                       csReadComment(rclStream, u64Position + TAILLE_END_RECORD, pstEnd->wCommentLength));
    return {};
} catch (const std::exception&) {
    return NoMemory(STZipFault{ARCHIVE_BAD, "end record: no memory for it", u64Position});
}

STZipFault stReadZip64Locator(IXStream& rclStream, CRecordBuffer& rclBuffer, const STEndRecord& rstEnd,
                              STZip64Locator* pstLocator) {
    if (rstEnd.u64EndPosition < STZip64Locator::TAILLE) {
        return {ARCHIVE_BAD, "Zip64 locator: no room for it", rstEnd.u64EndPosition};
    }
    const std::uint64_t u64Position = rstEnd.u64EndPosition - STZip64Locator::TAILLE;
    if (!rclBuffer.bFill(rclStream, u64Position, STZip64Locator::TAILLE)) {
        return {ARCHIVE_READ, "Zip64 locator: cannot be read", u64Position};
    }
    CLeCursor cl = rclBuffer.clCursor();
    const std::uint32_t dwSignature = cl.dwNext();
    pstLocator->dwDisk = cl.dwNext();
    pstLocator->u64Offset = cl.u64Next();
    pstLocator->dwTotalDisks = cl.dwNext();
    if (!cl.bOk() || dwSignature != SIGNATURE_ZIP64_LOCATOR) {
        return {ARCHIVE_BAD, "Zip64 locator: wrong signature", u64Position};
    }
    return {};
}

STZipFault stReadZip64EndRecord(IXStream& rclStream, CRecordBuffer& rclBuffer, std::uint64_t u64Position,
                                STEndRecord* pstEnd) {
    if (!rclBuffer.bFill(rclStream, u64Position, TAILLE_ZIP64_END_RECORD)) {
        return {ARCHIVE_READ, "Zip64 end record: cannot be read", u64Position};
    }
    CLeCursor cl = rclBuffer.clCursor();
    const std::uint32_t dwSignature = cl.dwNext();
    const std::uint64_t u64Size = cl.u64Next();
    pstEnd->u64Zip64Length =
        u64Size <= UINT64_MAX - TAILLE_ZIP64_NOT_COUNTED ? u64Size + TAILLE_ZIP64_NOT_COUNTED : UINT64_MAX;
    cl.Skip(4);  // version made by, version needed
    const std::uint32_t dwThisDisk = cl.dwNext();
    const std::uint32_t dwDirectoryDisk = cl.dwNext();
    pstEnd->u64EntriesOnDisk = cl.u64Next();
    pstEnd->u64Entries = cl.u64Next();
    pstEnd->u64DirectorySize = cl.u64Next();
    pstEnd->u64DirectoryOffset = cl.u64Next();
    if (!cl.bOk()) {
        return {ARCHIVE_READ, "Zip64 end record: cut short", u64Position};
    }
    if (dwSignature != SIGNATURE_ZIP64_END) {
        return {ARCHIVE_BAD, "Zip64 end record: wrong signature", u64Position};
    }
    // Volume numbers stay those of the end record unless that one could not hold them.
    constexpr std::uint32_t SATURATED_DISK = 0xFFFF;
    if (pstEnd->dwThisDisk == SATURATED_DISK) {
        pstEnd->dwThisDisk = dwThisDisk;
    }
    if (pstEnd->dwDirectoryDisk == SATURATED_DISK) {
        pstEnd->dwDirectoryDisk = dwDirectoryDisk;
    }
    return {};
}

STZipFault stPassZip64EndRecord(STEndRecord* pstEnd) {
    const std::uint64_t u64Room = pstEnd->u64EndPosition - STZip64Locator::TAILLE;
    if (pstEnd->u64Zip64Length > u64Room) {
        return {ARCHIVE_BAD, "Zip64 end record: longer than the room before its locator", u64Room};
    }
    pstEnd->u64EndPosition = u64Room - pstEnd->u64Zip64Length;
    return {};
}

}  // namespace kalmo
