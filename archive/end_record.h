#ifndef KALMO_ARCHIVE_END_RECORD_H
#define KALMO_ARCHIVE_END_RECORD_H

#include <cstdint>
#include <optional>

#include "archive/record_buffer.h"
#include "archive/result.h"
#include "framework/x_stream.h"
#include "framework/xy_string.h"

/// The records at the end of a ZIP archive (PKWARE APPNOTE 4.3.14 to 4.3.16).
namespace kalmo {

/// The end of central directory record, widened by the Zip64 one where there is one.
struct STEndRecord {
    std::uint32_t dwThisDisk = 0;       ///< Number of the volume that holds the end record, from 0.
    std::uint32_t dwDirectoryDisk = 0;  ///< Number of the volume in which the central directory starts.
    std::uint64_t u64EntriesOnDisk = 0;
    std::uint64_t u64Entries = 0;
    std::uint64_t u64DirectorySize = 0;    ///< In bytes.
    std::uint64_t u64DirectoryOffset = 0;  ///< As stored: without the prefix.
    std::uint16_t wCommentLength = 0;
    CTString csComment;                ///< Converted from code page 1252.
    std::uint64_t u64EndPosition = 0;  ///< Where the first of the end records starts, this one at first.
    std::uint64_t u64Zip64Length = 0;  ///< Of the Zip64 end record as it says; 0 where there is none.

    /// The volume that the archive file itself is, as far as the records tell. A set made in one go may begin
    /// its directory on an earlier volume than the one that holds the end record.
    [[nodiscard]] std::uint32_t dwLastDisk() const noexcept {
        return dwThisDisk > dwDirectoryDisk ? dwThisDisk : dwDirectoryDisk;
    }
    /// True when the Zip64 records hold the real values. The offset alone decides it.
    [[nodiscard]] bool bZip64() const noexcept { return u64DirectoryOffset == 0xFFFFFFFF; }
};

/// The Zip64 end of central directory locator, which lies right before the end record.
struct STZip64Locator {
    static constexpr std::size_t TAILLE = 20;

    std::uint32_t dwDisk = 0;        ///< The volume that holds the Zip64 end record.
    std::uint64_t u64Offset = 0;     ///< Where that record lies in it.
    std::uint32_t dwTotalDisks = 0;  ///< How many volumes there are.
};

/// Finds the last end record signature of the stream; nothing when there is none within reach. A record is
/// in reach when it ends at most 65535 bytes, the longest comment, before the end of the stream.
std::optional<std::uint64_t> u64FindEndRecord(IXStream& rclStream);

/// Reads the end record at a position with its comment. A comment that the file cuts short is kept as far as
/// it goes.
STZipFault stReadEndRecord(IXStream& rclStream, CRecordBuffer& rclBuffer, std::uint64_t u64Position,
                           STEndRecord* pstEnd);

/// Reads the locator in front of the end record.
STZipFault stReadZip64Locator(IXStream& rclStream, CRecordBuffer& rclBuffer, const STEndRecord& rstEnd,
                              STZip64Locator* pstLocator);

/// Reads the Zip64 end record at a position and puts its values into the end record's place.
STZipFault stReadZip64EndRecord(IXStream& rclStream, CRecordBuffer& rclBuffer, std::uint64_t u64Position,
                                STEndRecord* pstEnd);

/// Moves the end position in front of the Zip64 end record, which lies, by its own length, right before its
/// locator. For an archive whose directory is in the same file.
STZipFault stPassZip64EndRecord(STEndRecord* pstEnd);

}  // namespace kalmo

#endif
