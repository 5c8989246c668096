#ifndef KALMO_APP_CHECK_REMOVAL_CHECK_H
#define KALMO_APP_CHECK_REMOVAL_CHECK_H

#include "app/check/finding.h"
#include "framework/xy_string.h"

namespace kalmo {

class CService;

/// Looks whether an uninstallation can delete all that it deletes, and write what it writes: the marker, the
/// files of the instance, what defines its service and starts it with the machine, and the note of an
/// uninstallation that is going on. The service is null when an earlier run has unregistered it.
///
/// Adds read-only, not-writable, in-the-way, too-long.
void CheckRemoval(const CTString& csService, CService* pclService, CFindings& rclFindings);

}  // namespace kalmo

#endif
