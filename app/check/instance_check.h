#ifndef KALMO_APP_CHECK_INSTANCE_CHECK_H
#define KALMO_APP_CHECK_INSTANCE_CHECK_H

#include <span>

#include "app/check/finding.h"
#include "framework/fs_path.h"
#include "services/service.h"

namespace kalmo {

class CDataExtractor;
class CTrace;
struct STOrders;

/// An instance that orders name, looked up.
struct STInstance {
    CTString csService;              ///< The name that its service has, or would have.
    CService* pclService = nullptr;  ///< Null when there is none of that name.
    CServiceList& rtabServer;        ///< All that ListServer found.
};

/// Looks at the instance that is to be upgraded or uninstalled, or that an installation finds under its name.
/// Asks at most the instance and the manager whether they run, each once, and systemd what it refuses; what
/// cannot be asked is traced. The payload is open; an uninstallation needs none.
///
/// Adds no-instance, name-masked, foreign-program, no-program, directory-gone; of an installation is-upgrade,
/// other-directory, other-port; of an upgrade version, same-version, downgrade, version-unknown, stops, busy;
/// of an uninstallation unfinished, missing-file, stops, not-stopped and what CheckRemoval adds; not-by-hand;
/// missing-command for a script that cannot be run, which an upgrade needs.
void CheckInstance(const STOrders& rstOrders, const STInstance& rstInstance,
                   const CDataExtractor* pclExtractor, CTrace& rclTrace, CFindings& rclFindings);

/// Looks whether a program is being run that the payload would replace in a directory, by a process that does
/// not end with the services which the run stops. The extraction would give it up after ten seconds.
///
/// Under systemd a process ends with a service when it is counted to it: stopping ends them all, whatever
/// they run, and none that somebody started by hand. A script is only known to stop its own program, which
/// ends what it started itself.
///
/// Adds busy.
void CheckBusy(const CDataExtractor& rclExtractor, const CFSPath& rclDirectory,
               std::span<CService* const> tabStopped, CFindings& rclFindings);

}  // namespace kalmo

#endif
