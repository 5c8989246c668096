#ifndef KALMO_SERVICES_SHELL_COMMAND_H
#define KALMO_SERVICES_SHELL_COMMAND_H

#include <string_view>

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

}  // namespace kalmo

#endif
