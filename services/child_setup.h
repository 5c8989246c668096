#ifndef KALMO_SERVICES_CHILD_SETUP_H
#define KALMO_SERVICES_CHILD_SETUP_H

namespace kalmo {

/// What a child process does between fork and exec. Everything here is async-signal-safe.
///
/// The parent forks with all signals blocked (CSignalBlock), so that none of its handlers runs in the child.

/// The exit code of a child whose program could not be executed.
inline constexpr int CODE_EXEC_FAILED = 255;

/// Makes nInput the standard input and nOutput both standard output and standard error, and closes every
/// other descriptor. False when a descriptor could not be duplicated.
bool bChildRedirect(int nInput, int nOutput) noexcept;

/// Gives signals the state that a fresh program expects, none blocked and all at their defaults but those
/// ignored from outside (SIGCHLD, SIGALRM and SIGPIPE in any case), then executes the program, which is
/// looked up in the path when its name has no slash. Ends the child with CODE_EXEC_FAILED when that fails.
[[noreturn]] void ChildExec(const char* pszProgram, char* const* ppszArgument) noexcept;

}  // namespace kalmo

#endif
