#ifndef KALMO_APP_SHELL_WORD_H
#define KALMO_APP_SHELL_WORD_H

#include <string>
#include <string_view>

namespace kalmo {

/// A text as one word of a shell command: quoted when it holds anything that means something to the shell, as
/// it is otherwise. Both are bytes, UTF-8 for what the installer passes.
std::string csShellWord(std::string_view sv);

/// What the status of system() says, for a trace: "exit code 3", "killed by signal 9", "not run".
std::wstring csShellStatus(int nStatus);

}  // namespace kalmo

#endif
