#ifndef KALMO_SERVICES_SERVICE_STATUS_H
#define KALMO_SERVICES_SERVICE_STATUS_H

namespace kalmo {

/// The states that a service can be in, numbered like those of a Windows service, and one more for failed.
enum eSERVICESTATUS : int {
    eServiceUnknown = -1,  ///< The state could not be asked for (SysV only).
    eServiceStopped = 1,
    eServiceStarting = 2,
    eServiceStopping = 3,
    eServiceRunning = 4,
    eServiceFailed = 8,
};

}  // namespace kalmo

#endif
