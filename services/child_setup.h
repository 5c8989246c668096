#ifndef KALMO_SERVICES_CHILD_SETUP_H
#define KALMO_SERVICES_CHILD_SETUP_H

#include <string>
#include <string_view>
#include <vector>

namespace kalmo {

/// The argument vector of a program: the words as the program sees them, the first one its own name.
using CArgumentVector = std::vector<std::string>;

/// How many words a launched program gets at most, its own name included.
inline constexpr std::size_t MAX_ARGUMENT_VECTOR = 50;

/// Splits the argument string of a launch; svProgram becomes the first word. UTF-8 in and out.
///
/// Only spaces separate words, a run of them as much as one. A double quote opens a group that runs to the
/// next double quote, or to the end of the text, and belongs to the word that it stands in with all its
/// spaces; the quotes themselves are dropped, so that "" is an empty word. What comes behind the fiftieth
/// word is dropped.
CArgumentVector tabSplitArguments(std::string_view svProgram, std::string_view svArguments);

/// Splits a whole command line, whose first word is the program's own name. UTF-8 in and out.
///
/// Spaces separate and double quotes group as above. The spaces at a word's end are cut, those inside its
/// quotes too. There is no limit on the words.
CArgumentVector tabSplitCommandLine(std::string_view svCommandLine);

/// The vector in the shape that exec takes: null-terminated, the strings borrowed from tabArgument, which
/// must stay unchanged as long as the result is in use.
std::vector<char*> tabExecVector(CArgumentVector& rtabArgument);

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
