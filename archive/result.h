#ifndef KALMO_ARCHIVE_RESULT_H
#define KALMO_ARCHIVE_RESULT_H

#include <cstdint>

namespace kalmo {

/// The result of an operation on an archive. The numbers are fixed: the installer looks its messages up by
/// them, and administrators find them in traces. The first two each stand for two failures, which the texts
/// below tell apart. An operation for which memory does not suffice returns ARCHIVE_BAD, or the code of the
/// write that it was at, with errno ENOMEM.
enum [[nodiscard]] eARCHIVE : int{
    ARCHIVE_OK = 0,
    ARCHIVE_NOT_FOUND = 1,    ///< The archive file cannot be opened (errno), or there is no such entry.
    ARCHIVE_CREATE = 2,       ///< The destination cannot be created, or the archive not reopened (errno).
    ARCHIVE_BAD = 3,          ///< A record is wrong, an entry cannot be opened, or its size is not as stated.
    ARCHIVE_NO_CURRENT = 4,   ///< Record reader: there is no current entry.
    ARCHIVE_NOT_LOCATED = 5,  ///< Record reader: no entry has that name.
    ARCHIVE_READ = 5,         ///< Record reader: an end record is cut short.
    ARCHIVE_CRC = 13,         ///< Record reader: the data is not what its CRC-32 says.
    ARCHIVE_CIPHER = 14,      ///< Record reader: the password does not open the entry.
    ARCHIVE_PASSWORD = 21,    ///< The password does not open the entry.
    ARCHIVE_DATA = 30,        ///< Reading, inflating or the CRC failed while an entry was extracted.
    ARCHIVE_DISK_FULL = 35,   ///< The destination's disk is full.
    ARCHIVE_WRITE = 36,       ///< The destination could not be written for another reason (errno).
    ARCHIVE_NOT_OPEN = 1000,  ///< No archive is open.
};

/// A result of the record reader with, for people, what was wrong and where.
struct STZipFault {
    eARCHIVE eCode = ARCHIVE_OK;
    const char* pszWhat = "";    ///< A text that lives as long as the program.
    std::uint64_t u64Where = 0;  ///< Position of the record in its file, in bytes.
};

}  // namespace kalmo

#endif
