#include "services/child_setup.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <limits>

namespace kalmo {
namespace {

// Takes the next word off the text. False when only spaces are left.
bool bTakeWord(std::string_view* psvText, std::string* pcsWord) {
    psvText->remove_prefix(std::min(psvText->find_first_not_of(' '), psvText->size()));
    if (psvText->empty()) {
        return false;
    }
    pcsWord->clear();
    bool bGroup = false;
    std::size_t n = 0;
    for (; n < psvText->size() && (bGroup || (*psvText)[n] != ' '); ++n) {
        if ((*psvText)[n] == '"') {
            bGroup = !bGroup;
        } else {
            *pcsWord += (*psvText)[n];
        }
    }
    psvText->remove_prefix(n);
    return true;
}

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

CArgumentVector tabSplitArguments(std::string_view svProgram, std::string_view svArguments) {
    CArgumentVector tabWord{std::string(svProgram)};
    for (std::string csWord; tabWord.size() < MAX_ARGUMENT_VECTOR && bTakeWord(&svArguments, &csWord);) {
        tabWord.push_back(csWord);
    }
    return tabWord;
}

CArgumentVector tabSplitCommandLine(std::string_view svCommandLine) {
    CArgumentVector tabWord;
    for (std::string csWord; bTakeWord(&svCommandLine, &csWord);) {
        csWord.erase(csWord.find_last_not_of(' ') + 1);
        tabWord.push_back(csWord);
    }
    return tabWord;
}

std::vector<char*> tabExecVector(CArgumentVector& rtabArgument) {
    std::vector<char*> tabPointer;
    tabPointer.reserve(rtabArgument.size() + 1);
    for (std::string& rcs : rtabArgument) {
        tabPointer.push_back(rcs.data());
    }
    tabPointer.push_back(nullptr);
    return tabPointer;
}

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
