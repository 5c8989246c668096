#ifndef KALMO_SERVICES_COMMAND_LINE_H
#define KALMO_SERVICES_COMMAND_LINE_H

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

}  // namespace kalmo

#endif
