#ifndef KALMO_APP_CHECK_PAYLOAD_CHECK_H
#define KALMO_APP_CHECK_PAYLOAD_CHECK_H

#include "app/check/finding.h"
#include "framework/fs_path.h"

namespace kalmo {

class CDataExtractor;

/// Reads every entry of the payload to its end, in the time of one extraction, and judges the names for a
/// directory, which ends in "/" and need not exist. Writes nothing. The payload is what bInit opened; one
/// that it could not open is told as well.
///
/// Adds no-payload, bad-payload (of the licence text, which no unattended run needs, a warning),
/// incomplete-payload, entry-outside, entry-too-long, same-target; bNew for a new instance, with its
/// configuration and database directory.
void CheckPayload(CDataExtractor& rclExtractor, const CFSPath& rclDirectory, bool bNew,
                  CFindings& rclFindings);

}  // namespace kalmo

#endif
