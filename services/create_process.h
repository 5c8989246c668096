#ifndef KALMO_SERVICES_CREATE_PROCESS_H
#define KALMO_SERVICES_CREATE_PROCESS_H

namespace kalmo {

/// Launching and waiting in the Windows manner: without pipes, by process id, with a coarse time limit.
///
/// Such a child is not in the table of CProcessManager: whoever starts one and does not wait for its end
/// calls WaitPid later, or leaves a zombie behind for the life of the program.

/// Installs the handler of SIGALRM, the tick that ends each second of WaitPid. A null handler does nothing
/// but wake the wait.
void InitAlarmHandler(void (*pfnHandler)(int));
/// Unblocks SIGALRM for the calling thread.
void ActiveSIGALRM();
/// Blocks SIGALRM for the calling thread.
void DesactiveSIGALRM();

/// Waits for a child at most dwTimeoutMs milliseconds, counted in whole seconds and at least one of them; 0
/// looks once and does not wait. A signal that interrupts the wait counts as a second gone by.
///
/// Returns the process id when the child has ended, 0 when it still runs, -1 on error (no such child).
/// *pnExitCode becomes the exit status byte, bits 8 to 15 of the status: 0 too for a child that still runs
/// or that a signal ended. SIGALRM is left unblocked, an alarm that was running is cancelled.
int WaitPid(int nPid, unsigned dwTimeoutMs, int* pnExitCode);

/// Starts a program.
///
/// The words of pszCommandLine (see tabSplitCommandLine) become its argument vector, the first one being the
/// program's own name; without any, pszProgram is that name. pszProgram, which must be executable and is not
/// searched for, is what runs; when it is null the command line's first word is, found through the path. The
/// child keeps the standard descriptors and gets no signal handlers and an empty signal mask.
///
/// With nWait 0 the result is true as soon as the child exists. Otherwise the child is waited for up to a
/// second: *pnStillRunning tells whether it still runs, *pnExitCode is as in WaitPid, and the result is
/// false when it ended with 255, which is the code of a child whose program could not be executed.
/// False as well when there is nothing to run, no right to run it, or no room for a process.
/// All pointers may be null.
bool CreateProcess(const wchar_t* pszProgram, const wchar_t* pszCommandLine, int* pnPid, int nWait,
                   int* pnStillRunning, int* pnExitCode);

}  // namespace kalmo

#endif
