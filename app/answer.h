#ifndef KALMO_APP_ANSWER_H
#define KALMO_APP_ANSWER_H

#include <optional>

namespace kalmo {

/// Answers an option that only asks: --help, --version, --list, --check; the first of them counts. Prints the
/// answer and changes nothing on the machine. Called once, by main, before the run.
///
/// The exit status of the answer, 1 when it could not be written; none when nothing is asked, and the program
/// is to do its work.
std::optional<int> nAnswer(int nArgc, char** ppszArgv);

}  // namespace kalmo

#endif
