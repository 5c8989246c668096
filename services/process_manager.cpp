#include "services/process_manager.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <memory>
#include <utility>

#include "framework/errno_kept.h"
#include "framework/memory_scope.h"
#include "framework/signal_block.h"
#include "services/wait_status.h"

extern "C" void lance_processus_child_sigaction(int nSignal, siginfo_t* pstInfo, void* pContext) {
    if (kalmo::CProcessManager::m_gpclManager != nullptr) {
        kalmo::CProcessManager::m_gpclManager->SigAction(nSignal, pstInfo, pContext);
    }
}

namespace kalmo {

CProcessManager* CProcessManager::m_gpclManager = nullptr;

namespace {

// The status of waitpid(2) that belongs to what a SIGCHLD tells: a number of an exit or of a signal.
int nStatusOfSignal(const siginfo_t& rst) noexcept {
    return rst.si_code == CLD_EXITED ? (rst.si_status & 0xFF) << 8 : rst.si_status;
}

}  // namespace

// The right to work on the table. Whoever holds the lock has SIGCHLD blocked, so a handler that finds it held
// waits for another thread and never for the one that it interrupted.
class CProcessManager::CLock {
  public:
    explicit CLock(CProcessManager& rclManager) noexcept
        : m_clBlock({rclManager.m_nSignal}), m_rnLock(rclManager.m_nLock) {
        for (int nFree = 0; !m_rnLock.compare_exchange_strong(nFree, 1); nFree = 0) {
            ::usleep(10000);
        }
    }
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;
    ~CLock() { m_rnLock.store(0); }

  private:
    CSignalBlock m_clBlock;
    std::atomic<int>& m_rnLock;
};

CProcessManager::CProcessManager(int nSignal) : m_nSignal(nSignal) {
    struct sigaction st {};
    st.sa_sigaction = lance_processus_child_sigaction;
    // No signal for a child that merely stops; calls that the signal interrupts go on.
    st.sa_flags = SA_SIGINFO | SA_NOCLDSTOP | SA_RESTART;
    ::sigemptyset(&st.sa_mask);
    ::sigaction(m_nSignal, &st, &m_stPrevious);
}

CProcessManager::~CProcessManager() {
    ::sigaction(m_nSignal, &m_stPrevious, nullptr);
    __FreeList(m_pstChildren);
    __FreeList(m_pstDead);
}

pid_t CProcessManager::Fork() try {
    const CMemoryScope clScope;
    auto pstChild = std::make_unique<STChild>();
    STChild* pstDead = nullptr;
    pid_t nPid = -1;
    {
        // Held across the fork: the handler, in whatever thread, waits until the record is in its place.
        const CLock clLock(*this);
        nPid = ::fork();
        if (nPid > 0) {
            *pstChild = {nPid, 0, false, true, m_pstChildren};
            m_pstChildren = pstChild.release();
            pstDead = std::exchange(m_pstDead, nullptr);
        }
    }
    __FreeList(pstDead);
    return nPid;
} catch (const std::exception&) {
    return NoMemory(pid_t{-1});
}

bool CProcessManager::bGetCode(pid_t nPid, int* pnCode) {
    int nStatus = 0;
    const bool bKnown = bGetStatus(nPid, &nStatus);
    *pnCode = bKnown ? nCodeOfStatus(nStatus) : *pnCode;
    return bKnown;
}

bool CProcessManager::bGetStatus(pid_t nPid, int* pnStatus) {
    const CLock clLock(*this);
    for (const STChild* pst = m_pstChildren; pst != nullptr; pst = pst->pstNext) {
        if (pst->nPid == nPid && pst->bTerminated) {
            *pnStatus = pst->nStatus;
            return true;
        }
    }
    return false;
}

void CProcessManager::FreePid(pid_t nPid) {
    STChild* pstDead = nullptr;
    {
        const CLock clLock(*this);
        for (STChild** ppst = &m_pstChildren; *ppst != nullptr; ppst = &(*ppst)->pstNext) {
            if ((*ppst)->nPid != nPid || !(*ppst)->bInUse) {
                continue;
            }
            (*ppst)->bInUse = false;
            // A child that still runs, or whose signal was merged into another one, is left to the handler.
            if ((*ppst)->bTerminated) {
                __Unlink(ppst);
            }
            break;
        }
        pstDead = std::exchange(m_pstDead, nullptr);
    }
    __FreeList(pstDead);
}

void CProcessManager::SigAction(int nSignal, siginfo_t* pstInfo, void* pContext) noexcept {
    const CErrnoKept clKept;
    bool bOurs = false;
    {
        const CLock clLock(*this);
        bOurs = __bCollect(pstInfo);
        __CollectOthers();
    }
    const bool bChain = !bOurs && m_stPrevious.sa_handler != SIG_DFL && m_stPrevious.sa_handler != SIG_IGN;
    if (bChain && (m_stPrevious.sa_flags & SA_SIGINFO) != 0) {
        m_stPrevious.sa_sigaction(nSignal, pstInfo, pContext);
    } else if (bChain) {
        m_stPrevious.sa_handler(nSignal);
    }
}

// Collects the child that the signal speaks of. False when it is not in the table.
bool CProcessManager::__bCollect(const siginfo_t* pstInfo) noexcept {
    STChild** ppst = &m_pstChildren;
    while (*ppst != nullptr && (*ppst)->nPid != pstInfo->si_pid) {
        ppst = &(*ppst)->pstNext;
    }
    if (*ppst == nullptr || (*ppst)->bTerminated) {
        return *ppst != nullptr;
    }
    // A child whose end the kernel tells is there to be collected at once; a SIGCHLD that the child sent by
    // hand while it runs must not make the program wait for its end.
    int nStatus = 0;
    const pid_t nEnded = ::waitpid((*ppst)->nPid, &nStatus, WNOHANG);
    if (nEnded == 0) {
        return true;
    }
    if (!(*ppst)->bInUse) {
        __Unlink(ppst);
    } else if (nEnded > 0 || pstInfo->si_code > 0) {
        // Positive codes come from the kernel and carry the status, also for a child already waited for.
        (*ppst)->nStatus = nEnded > 0 ? nStatus : nStatusOfSignal(*pstInfo);
        (*ppst)->bTerminated = true;
    }
    return true;
}

// Signals of children that end close together are merged into one, which names only one of them.
void CProcessManager::__CollectOthers() noexcept {
    STChild** ppst = &m_pstChildren;
    while (*ppst != nullptr) {
        int nStatus = 0;
        const pid_t nEnded = (*ppst)->bTerminated ? 0 : ::waitpid((*ppst)->nPid, &nStatus, WNOHANG);
        if (nEnded != 0 && !(*ppst)->bInUse) {
            __Unlink(ppst);
            continue;
        }
        if (nEnded > 0) {
            (*ppst)->nStatus = nStatus;
            (*ppst)->bTerminated = true;
        }
        ppst = &(*ppst)->pstNext;
    }
}

// Moves a record to the list of those that are freed later.
void CProcessManager::__Unlink(STChild** ppstChild) noexcept {
    STChild* const pst = *ppstChild;
    *ppstChild = pst->pstNext;
    pst->pstNext = m_pstDead;
    m_pstDead = pst;
}

void CProcessManager::__FreeList(STChild* pstChild) noexcept {
    while (pstChild != nullptr) {
        const std::unique_ptr<STChild> pst(pstChild);
        pstChild = pst->pstNext;
    }
}

int CProcessManager::nCodeOfStatus(int nStatus) noexcept {
    const STWaitStatus st(nStatus);
    return st.nSignal != 0 ? st.nSignal : st.nExitCode;
}

}  // namespace kalmo
