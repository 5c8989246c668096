#ifndef KALMO_SERVICES_SERVICE_COMMAND_H
#define KALMO_SERVICES_SERVICE_COMMAND_H

#include <string_view>

namespace kalmo {

/// Shell commands on a service, run as nShellCommand does and told to the witness of commands. What a command
/// says on standard error is there when it has ended, and in the witness's report.

/// Runs a command of an init script. True when it succeeded. The witness is told of a failure or an
/// interrupt.
bool bRunScript(std::wstring_view svCommand);

/// Runs a tool of the boot sequence and gives its status. The witness is always told.
int nRunBootTool(std::wstring_view svCommand);

}  // namespace kalmo

#endif
