#ifndef KALMO_SAMPLES_SERVER_REGISTRATION_H
#define KALMO_SAMPLES_SERVER_REGISTRATION_H

#include "framework/fs_path.h"
#include "framework/xy_string.h"
#include "samples/server/install_log.h"

namespace kalmo::sample {

/// A service to be: what an installer mode registers.
struct STRegistration {
    CTString csService;      ///< Unit name without ".service", and script name under SysV.
    CTString csDescription;  ///< One line.
    CFSPath clProgram;       ///< The program; it is started with the argument " --service".
    CTString csUser;         ///< The account it runs as; empty: root.
};

/// Registers a service with the machine's init system, so that it starts at boot, and (re)starts it now.
///
/// systemd: unit file in "/etc/systemd/system/", enable, restart. SysV: script in "/etc/init.d/" with the
/// marker lines that the installer reads, then the distribution's tool for the boot links.
/// Precondition: CServiceManager::bInit ran. False when a step failed; every step is told in the log.
bool bRegister(const STRegistration& rst, CInstallLog& rclLog);

}  // namespace kalmo::sample

#endif
