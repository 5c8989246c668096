#ifndef KALMO_ARCHIVE_DOS_DATE_H
#define KALMO_ARCHIVE_DOS_DATE_H

#include <cstdint>

#include "framework/disk_file.h"

namespace kalmo {

/// Unpacks the date (high word) and time (low word) of an entry: local time, steps of two seconds, years from
/// 1980. The fields come out as they stand, also those that no calendar knows (hour 31, month 0).
CDiskFile::STFileTime stFromDosDate(std::uint32_t dwDosDate) noexcept;

/// A moment as text: year, month, day, hour, minute, second ("20240131235958").
CTString csFileTimeText(const CDiskFile::STFileTime& rstTime);

}  // namespace kalmo

#endif
