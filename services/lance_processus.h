#ifndef KALMO_SERVICES_LANCE_PROCESSUS_H
#define KALMO_SERVICES_LANCE_PROCESSUS_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>

#include "framework/unique_fd.h"
#include "framework/xy_string.h"
#include "services/child_setup.h"

namespace kalmo {

class CXError;

/// Runs one program as a child process, with pipes on its standard input and output.
///
/// A passive object, owned by whoever needs the program: launch, write and read, wait, and let it go. One
/// child at a time; bLibere makes room for the next, the destructor does the same. A child that still runs
/// then is left to itself and collected when it ends.
///
/// The child has no descriptors beside its three standard ones, no blocked signals, and default handlers.
/// Its standard error goes into the same pipe as its standard output. All text is UTF-8 outside; input and
/// output are bytes. Operations return false on failure, with the reason in errno where the system gave one.
class CLanceProcessus {
  public:
    CLanceProcessus() = default;
    CLanceProcessus(const CLanceProcessus&) = delete;
    CLanceProcessus& operator=(const CLanceProcessus&) = delete;
    ~CLanceProcessus() { bLibere(); }

    /// Makes the table of children and installs its SIGCHLD handler. Called once at the start of the program
    /// before any launch; further calls do nothing.
    static void sInit();
    /// Removes handler and table at the program's end. Nothing can be launched after it.
    static void sTerm();

    /// Starts a program with the arguments that tabSplitArguments cuts out of pszArguments (may be null).
    ///
    /// The program must be a file that this process may execute; it is not searched for, so callers pass
    /// absolute paths. False, with pclError filled when one is given, when it is not, when the system has no
    /// room, or when this object has a child already. A file that cannot be executed in spite of its
    /// permissions shows as a child that ends with 255.
    bool bLanceProcessus(const wchar_t* pszProgram, const wchar_t* pszArguments, CXError* pclError);
    /// The same with one argument an element, passed on as they are.
    bool bLanceProcessus(const wchar_t* pszProgram, int nCount, const wchar_t** ppszArgument,
                         CXError* pclError);

    /// What children launched from now on are given before they are ended with SIGKILL: a time from their
    /// launch on, and a number of bytes that are read of them. Whoever waits for the child's end or reads all
    /// its output then fails, with errno ETIMEDOUT or EOVERFLOW. Without it there is no limit.
    void SetLimits(std::chrono::milliseconds clLongest, std::size_t nMaxOutput) noexcept {
        m_clLongest = clLongest;
        m_nMaxOutput = nMaxOutput;
    }

    /// The limits of a question that is answered at once or, by a program that hangs or never stops to write,
    /// not at all.
    void ExpectAnswer() noexcept { SetLimits(std::chrono::seconds(30), std::size_t{16} << 20U); }

    /// Keeps no more than nMax bytes of the output that bLitSortieEtAttendFinExecution reads; the rest is
    /// read and dropped. Without it all is kept.
    void KeepAtMost(std::size_t nMax) noexcept { m_nMaxKept = nMax; }

    /// Writes all bytes to the child's standard input; waits while the pipe is full. False, without a
    /// SIGPIPE, when the child has closed its input or has ended.
    bool bEcritEntree(const void* pBuffer, unsigned dwSize);
    /// Appends what the child has written, waiting until it has written something. False at the end of the
    /// output.
    bool bLitSortieA(CXYString<char>* pcsOutput);
    /// Appends what the child has written up to now, 64 KiB at most a call, without waiting; nothing to read
    /// is a success. False at the end of the output.
    bool bLitSortie_NonBloquant(CXYString<char>* pcsOutput);

    /// Closes the child's input, so that a child that reads it sees its end, appends all output until the
    /// last process that holds the pipe has closed it, then waits for the child. Both arguments may be null;
    /// the output is read in any case. False when reading or waiting failed.
    bool bLitSortieEtAttendFinExecution(CXYString<char>* pcsOutput, unsigned* pdwExitCode);
    /// Closes the child's input and waits for its end. Output that the child writes meanwhile is taken out of
    /// the pipe, so that a full one cannot stop it, and the first 64 KiB are there to be read afterwards;
    /// what comes behind them is dropped. Processes that it left behind with the pipe are not waited for. May
    /// be asked again. The exit code counts as CProcessManager::nCodeOfStatus says; pdwExitCode may be null.
    /// False when no child was launched or its code is lost.
    bool bAttendFinExecution(unsigned* pdwExitCode);
    /// How the child that was waited for ended, as waitpid(2) tells it: a signal that ended it is no exit
    /// code there. Unspecified before a wait that succeeded.
    [[nodiscard]] int nGetStatus() const noexcept { return m_nStatus; }
    /// Whether the child has ended. True as well when none was launched.
    bool bProcessusTermine();
    /// Ends a child that still runs, with SIGKILL. Waiting for it then yields 9.
    void Kill();
    /// Lets go of the child and the pipes, and of output that was not read. Always true.
    bool bLibere();

  private:
    enum class eETAT {
        Libre,    ///< No child.
        EnCours,  ///< Launched, not known to have ended.
        Termine,  ///< Ended, m_nStatus tells how.
        Perdu,    ///< Ended, but somebody else took its status.
    };

    bool __bLance(CArgumentVector tabArgument, CXError* pclError);
    bool __bFork(CArgumentVector& rtabArgument);
    ssize_t __nLit(CXYString<char>* pcsOutput, std::size_t nMax = SIZE_MAX);
    ssize_t __nPrend(CXYString<char>* pcsOutput, std::size_t nMax = SIZE_MAX);
    bool __bAttendSortie();
    bool __bVideSortie();
    bool __bEnRetard() const;
    /// Ends a child that has gone beyond a limit. Returns false.
    bool __bArrete(int nErrno);
    void __Attend(int nOptions);

    eETAT m_eEtat = eETAT::Libre;
    pid_t m_nPid = -1;
    int m_nStatus = 0;
    std::chrono::milliseconds m_clLongest = std::chrono::milliseconds::max();
    std::size_t m_nMaxOutput = SIZE_MAX;
    std::size_t m_nMaxKept = SIZE_MAX;
    std::chrono::steady_clock::time_point m_clLaunch;
    CXYString<char> m_csMise;     ///< Output that was taken out of the pipe while its end was waited for.
    CUniqueFd m_clSortie;         ///< Read end of the child's output.
    CUniqueFd m_clStandardInput;  ///< Write end of the child's input.
};

}  // namespace kalmo

#endif
