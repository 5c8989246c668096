#include "services/child_setup.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <limits>

namespace kalmo {
namespace {

constexpr int FIRST_OTHER = STDERR_FILENO + 1;

void CloseOthers() noexcept {
    if (::close_range(FIRST_OTHER, std::numeric_limits<unsigned>::max(), 0) == 0) {
        return;
    }
    for (int nFd = FIRST_OTHER; nFd < ::getdtablesize(); ++nFd) {
        ::close(nFd);
    }
}

void ResetSignals() noexcept {
    struct sigaction stDefault {};
    stDefault.sa_handler = SIG_DFL;
    for (int nSignal = 1; nSignal < NSIG; ++nSignal) {
        struct sigaction st {};
        const bool bOurs = nSignal == SIGCHLD || nSignal == SIGALRM || nSignal == SIGPIPE;
        // An ignored signal stays ignored: that is how nohup reaches the programs started below it.
        if (::sigaction(nSignal, nullptr, &st) == 0 && (bOurs || st.sa_handler != SIG_IGN)) {
            ::sigaction(nSignal, &stDefault, nullptr);
        }
    }
    sigset_t stNone;
    ::sigemptyset(&stNone);
    ::sigprocmask(SIG_SETMASK, &stNone, nullptr);
}

}  // namespace

bool bChildRedirect(int nInput, int nOutput) noexcept {
    // A parent with closed standard descriptors has its pipes at those very places.
    const int nSafeInput = ::fcntl(nInput, F_DUPFD, FIRST_OTHER);
    const int nSafeOutput = ::fcntl(nOutput, F_DUPFD, FIRST_OTHER);
    const bool bDone = ::dup2(nSafeInput, STDIN_FILENO) >= 0 && ::dup2(nSafeOutput, STDOUT_FILENO) >= 0 &&
                       ::dup2(nSafeOutput, STDERR_FILENO) >= 0;
    CloseOthers();
    return bDone;
}

void ChildExec(const char* pszProgram, char* const* ppszArgument) noexcept {
    ResetSignals();
    ::execvp(pszProgram, ppszArgument);
    ::_exit(CODE_EXEC_FAILED);
}

}  // namespace kalmo
