#include "services/create_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <exception>

#include "framework/conversion.h"
#include "framework/memory_scope.h"
#include "framework/signal_block.h"
#include "services/child_setup.h"
#include "services/wait_status.h"

namespace kalmo {
namespace {

constexpr unsigned TICK_MS = 1000;

void OnTick(int /*nSignal*/) {}

void MaskSigalrm(int nHow) {
    sigset_t st;
    ::sigemptyset(&st);
    ::sigaddset(&st, SIGALRM);
    ::pthread_sigmask(nHow, &st, nullptr);
}

// Sees to it that SIGALRM wakes the wait: its default would end the program, ignored it would wake nobody.
class CTickHandler {
  public:
    CTickHandler() {
        ::sigaction(SIGALRM, nullptr, &m_stBefore);
        m_bMissing = m_stBefore.sa_handler == SIG_DFL || m_stBefore.sa_handler == SIG_IGN;
        if (m_bMissing) {
            InitAlarmHandler(nullptr);
        }
    }
    CTickHandler(const CTickHandler&) = delete;
    CTickHandler& operator=(const CTickHandler&) = delete;
    ~CTickHandler() {
        if (m_bMissing) {
            ::sigaction(SIGALRM, &m_stBefore, nullptr);
        }
    }

  private:
    struct sigaction m_stBefore {};
    bool m_bMissing = false;
};

// Sleeps until the tick or another signal. Precondition: the tick and SIGCHLD are blocked, so that neither
// is lost between the look at the child and the sleep; rstBefore is the mask from before.
void PauseForTick(const sigset_t& rstBefore) {
    sigset_t stAsleep = rstBefore;
    ::sigdelset(&stAsleep, SIGALRM);
    ::sigdelset(&stAsleep, SIGCHLD);
    ::alarm(TICK_MS / 1000);
    ::sigsuspend(&stAsleep);
    ::alarm(0);
}

}  // namespace

void InitAlarmHandler(void (*pfnHandler)(int)) {
    struct sigaction st {};
    st.sa_handler = pfnHandler == nullptr ? OnTick : pfnHandler;
    ::sigemptyset(&st.sa_mask);
    ::sigaction(SIGALRM, &st, nullptr);
}

void ActiveSIGALRM() {
    MaskSigalrm(SIG_UNBLOCK);
}

void DesactiveSIGALRM() {
    MaskSigalrm(SIG_BLOCK);
}

int WaitPid(int nPid, unsigned dwTimeoutMs, int* pnExitCode) {
    const CTickHandler clHandler;
    ActiveSIGALRM();
    int nStatus = 0;
    pid_t nEnded = 0;
    {
        const CSignalBlock clBlock{SIGALRM, SIGCHLD};
        nEnded = ::waitpid(nPid, &nStatus, WNOHANG);
        for (std::uint64_t u64Waited = 0; nEnded == 0 && u64Waited < dwTimeoutMs; u64Waited += TICK_MS) {
            PauseForTick(clBlock.rstGetBefore());
            nEnded = ::waitpid(nPid, &nStatus, WNOHANG);
        }
    }
    if (pnExitCode != nullptr) {
        *pnExitCode = nEnded > 0 ? STWaitStatus(nStatus).nExitCode : 0;
    }
    return nEnded;
}

bool CreateProcess(const wchar_t* pszProgram, const wchar_t* pszCommandLine, int* pnPid, int nWait,
                   int* pnStillRunning, int* pnExitCode) try {
    const CMemoryScope clScope;
    const CXYString<char> csProgram = csToUTF8(pszProgram == nullptr ? L"" : pszProgram);
    if (pszProgram != nullptr && ::access(csProgram.pszGet(), X_OK) != 0) {
        return false;
    }
    CArgumentVector tabWord = tabSplitCommandLine(csToUTF8(pszCommandLine == nullptr ? L"" : pszCommandLine));
    if (tabWord.empty() && pszProgram != nullptr) {
        tabWord.emplace_back(csProgram.svGet());
    }
    if (tabWord.empty()) {
        return false;
    }
    const std::vector<char*> tabPointer = tabExecVector(tabWord);
    pid_t nPid = -1;
    {
        const CSignalBlock clBlock;
        nPid = ::fork();
        if (nPid == 0) {
            ChildExec(pszProgram != nullptr ? csProgram.pszGet() : tabPointer.front(), tabPointer.data());
        }
    }
    if (pnPid != nullptr) {
        *pnPid = nPid;
    }
    if (nPid < 0 || nWait == 0) {
        return nPid > 0;
    }
    int nCode = 0;
    const int nEnded = WaitPid(nPid, TICK_MS, &nCode);
    if (pnStillRunning != nullptr) {
        *pnStillRunning = nEnded == 0 ? 1 : 0;
    }
    if (pnExitCode != nullptr) {
        *pnExitCode = nCode;
    }
    return nEnded <= 0 || nCode != CODE_EXEC_FAILED;
} catch (const std::exception&) {
    return NoMemory(false);
}

}  // namespace kalmo
