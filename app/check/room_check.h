#ifndef KALMO_APP_CHECK_ROOM_CHECK_H
#define KALMO_APP_CHECK_ROOM_CHECK_H

#include "app/check/finding.h"
#include "framework/fs_path.h"

namespace kalmo {

class CDataExtractor;

/// Looks whether all that the payload brings, and what the run adds to it, can be put into a directory, which
/// ends in "/" and need not exist: bNew for a new instance, with its configuration and database directory.
/// The payload is open.
///
/// Files are emptied in place and written one after the other, so that what counts on each file system is the
/// greatest sum on the way. What the server itself writes, quotas and the like are left out.
///
/// Adds disk-full, inodes-full, read-only, noexec, not-writable, in-the-way, too-long.
void CheckRoom(const CDataExtractor& rclExtractor, const CFSPath& rclDirectory, bool bNew,
               CFindings& rclFindings);

}  // namespace kalmo

#endif
