#ifndef KALMO_SERVICES_PROCESS_MANAGER_H
#define KALMO_SERVICES_PROCESS_MANAGER_H

#include <sys/types.h>

#include <atomic>
#include <csignal>

namespace kalmo {

/// The process-wide table of launched children and their exit codes, filled by a SIGCHLD handler.
///
/// One instance, made by CLanceProcessus::sInit and destroyed by sTerm; CLanceProcessus is its only user.
/// The handler collects every child of the table as soon as it ends, so that none stays a zombie, and
/// leaves all other children of the process alone.
///
/// Every operation blocks SIGCHLD for its thread and then takes a spin lock, so that neither the handler
/// nor another thread sees the table half changed. The handler neither allocates nor frees memory: records
/// that it drops go to a second list, which the next Fork or FreePid frees.
class CProcessManager {
  public:
    /// The one instance; null outside sInit and sTerm.
    static CProcessManager* m_gpclManager;

    /// Takes over nSignal (SIGCHLD): from now on it goes to lance_processus_child_sigaction.
    explicit CProcessManager(int nSignal);
    CProcessManager(const CProcessManager&) = delete;
    CProcessManager& operator=(const CProcessManager&) = delete;
    /// Gives the signal back to the handler that had it before.
    ~CProcessManager();

    /// fork(2) with a record for the child: its process id in the parent, 0 in the child, -1 on failure with
    /// errno set. The record is there before the child's end can be told.
    pid_t Fork();
    /// The exit code of a child that the handler collected, as nCodeOfStatus counts it. False when the child
    /// has no record or has not been collected.
    bool bGetCode(pid_t nPid, int* pnCode);
    /// The same as a status of waitpid(2), which tells a child that a signal ended from one that exited.
    bool bGetStatus(pid_t nPid, int* pnStatus);
    /// Gives up a child's record. A child that still runs is collected by the handler when it ends.
    void FreePid(pid_t nPid);
    /// The body of the SIGCHLD handler. A signal about a child that is not in the table goes on to the
    /// handler that was installed before. Async-signal-safe.
    void SigAction(int nSignal, siginfo_t* pstInfo, void* pContext) noexcept;

    /// The exit code in a status of waitpid(2): the exit status byte of a child that exited, the signal's
    /// number for one that a signal ended. That is what the kernel tells the handler as well, so the code
    /// does not depend on who collected the child, and a killed child never looks like a success.
    static int nCodeOfStatus(int nStatus) noexcept;

  private:
    struct STChild {
        pid_t nPid;
        int nStatus;       ///< As waitpid(2) gives it.
        bool bTerminated;  ///< The child was collected and its status is known.
        bool bInUse;       ///< A launcher still wants the status.
        STChild* pstNext;
    };
    class CLock;

    bool __bCollect(const siginfo_t* pstInfo) noexcept;
    void __CollectOthers() noexcept;
    void __Unlink(STChild** ppstChild) noexcept;
    static void __FreeList(STChild* pstChild) noexcept;

    const int m_nSignal;
    struct sigaction m_stPrevious {};
    std::atomic<int> m_nLock{0};
    STChild* m_pstChildren = nullptr;  ///< The table, newest first.
    STChild* m_pstDead = nullptr;      ///< Dropped records that wait to be freed outside the handler.
};

}  // namespace kalmo

/// The SIGCHLD handler: forwards to CProcessManager::SigAction.
extern "C" void lance_processus_child_sigaction(int nSignal, siginfo_t* pstInfo, void* pContext);

#endif
