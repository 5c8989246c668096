#ifndef KALMO_SERVICES_SERVICE_COMMAND_H
#define KALMO_SERVICES_SERVICE_COMMAND_H

#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// Runs a shell command line with system(3) and returns its result: -1 with errno set when there was no
/// process to run it, else a status of waitpid(2).
int nShellCommand(const char* pszCommand);
/// The same for wide text, which the shell gets in UTF-8.
int nShellCommand(std::wstring_view svCommand);

/// True when the exit status byte, bits 8 to 15 of a result of nShellCommand, is 0. -1 is no success.
constexpr bool bShellSuccess(int nResult) noexcept {
    return ((nResult >> 8) & 0xFF) == 0;
}

/// Shell commands on a service, run as nShellCommand does and told to the witness of commands. What a command
/// says on standard error is there when it has ended, and in the witness's report.

/// Runs a command of an init script. True when it succeeded. The witness is told of a failure or an
/// interrupt.
bool bRunScript(std::wstring_view svCommand);

/// The command that takes a script out of the boot sequence, by the distribution; its first word is the tool.
/// Empty where there is none. CServiceManager::bInit comes first.
CTString csBootCommand(const CTString& csName);

/// Runs a tool of the boot sequence and gives its status. The witness is always told.
int nRunBootTool(std::wstring_view svCommand);

}  // namespace kalmo

#endif
