#ifndef KALMO_SERVICES_TOLD_PROGRAM_H
#define KALMO_SERVICES_TOLD_PROGRAM_H

#include <optional>

#include "framework/xy_string.h"

namespace kalmo {

/// What pszBinaryPathName would tell of a service whose program has this command line, by the rules of the
/// machine's init system: a place whose name they would cut or change is never found again.
///
/// Under systemd the program as "systemctl show" prints it (with the blank that it leaves behind it), else
/// the one in a script's line Program="...". Nothing when none would be told, nor when it would be taken for
/// an init script that systemd wraps. For whoever chooses such a place, after CServiceManager::bInit. Pure:
/// nothing is run or read.
std::optional<CTString> csProgramAsTold(const CTString& csCommandLine);

}  // namespace kalmo

#endif
