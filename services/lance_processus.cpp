#include "services/lance_processus.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <exception>
#include <utility>

#include "framework/conversion.h"
#include "framework/memory_scope.h"
#include "framework/signal_block.h"
#include "framework/x_error.h"
#include "services/child_setup.h"
#include "services/process_manager.h"

namespace kalmo {
namespace {

struct STPipe {
    CUniqueFd clRead;
    CUniqueFd clWrite;
};

constexpr int TICK_MILLIS = 100;

// What is kept of the output of a child that is waited for.
constexpr std::size_t MAX_PUT_ASIDE = 65536;

bool bMakePipe(STPipe* pst) {
    int tabFd[2];
    if (::pipe2(tabFd, O_CLOEXEC) != 0) {
        return false;
    }
    pst->clRead.Reset(tabFd[0]);
    pst->clWrite.Reset(tabFd[1]);
    return true;
}

CXYString<char> csNarrow(const wchar_t* psz) {
    return psz == nullptr ? CXYString<char>() : csToUTF8(psz);
}

// Fills the error object of a launch that failed, which may be null. Always false, with the reason in errno.
bool bTellFailure(int nErrno, const wchar_t* pszProgram, CXError* pclError) {
    if (pclError != nullptr) {
        pclError->SetSystemErrorParam(static_cast<unsigned>(nErrno), pszProgram);
        pclError->SetErrorLevel(eERRORLEVEL::Error);
        pclError->SetFunctionName(L"CLanceProcessus::bLanceProcessus");
    }
    errno = nErrno;
    return false;
}

}  // namespace

void CLanceProcessus::sInit() {
    // Blocked while the one instance and its handler come up together.
    const CSignalBlock clBlock{SIGCHLD};
    if (CProcessManager::m_gpclManager == nullptr) {
        CProcessManager::m_gpclManager = new CProcessManager(SIGCHLD);
    }
}

void CLanceProcessus::sTerm() {
    const CSignalBlock clBlock{SIGCHLD};
    delete std::exchange(CProcessManager::m_gpclManager, nullptr);
}

bool CLanceProcessus::bLanceProcessus(const wchar_t* pszProgram, const wchar_t* pszArguments,
                                      CXError* pclError) try {
    const CMemoryScope clScope;
    return __bLance(tabSplitArguments(csNarrow(pszProgram), csNarrow(pszArguments)), pclError);
} catch (const std::exception&) {
    return bTellFailure(ENOMEM, pszProgram, pclError);
}

bool CLanceProcessus::bLanceProcessus(const wchar_t* pszProgram, int nCount, const wchar_t** ppszArgument,
                                      CXError* pclError) try {
    const CMemoryScope clScope;
    CArgumentVector tabArgument{std::string(csNarrow(pszProgram).svGet())};
    for (int n = 0; n < nCount; ++n) {
        tabArgument.emplace_back(csNarrow(ppszArgument[n]).svGet());
    }
    return __bLance(std::move(tabArgument), pclError);
} catch (const std::exception&) {
    return bTellFailure(ENOMEM, pszProgram, pclError);
}

bool CLanceProcessus::__bLance(CArgumentVector tabArgument, CXError* pclError) {
    if (m_eEtat != eETAT::Libre || CProcessManager::m_gpclManager == nullptr) {
        errno = EBUSY;
    } else if (::access(tabArgument.front().c_str(), X_OK) == 0 && __bFork(tabArgument)) {
        return true;
    }
    const int nErrno = errno;
    return bTellFailure(nErrno, csFromUTF8(tabArgument.front()).pszGet(), pclError);
}

bool CLanceProcessus::__bFork(CArgumentVector& rtabArgument) {
    STPipe stOutput;
    STPipe stInput;
    if (!bMakePipe(&stOutput) || !bMakePipe(&stInput)) {
        return false;
    }
    const std::vector<char*> tabPointer = tabExecVector(rtabArgument);
    {
        const CSignalBlock clBlock;
        m_nPid = CProcessManager::m_gpclManager->Fork();
        if (m_nPid == 0) {
            if (!bChildRedirect(stInput.clRead.nGet(), stOutput.clWrite.nGet())) {
                ::_exit(CODE_EXEC_FAILED);
            }
            ChildExec(tabPointer.front(), tabPointer.data());
        }
    }
    if (m_nPid < 0) {
        return false;
    }
    m_eEtat = eETAT::EnCours;
    m_clLaunch = std::chrono::steady_clock::now();
    m_clSortie = std::move(stOutput.clRead);
    m_clStandardInput = std::move(stInput.clWrite);
    return true;
}

bool CLanceProcessus::bEcritEntree(const void* pBuffer, unsigned dwSize) {
    const auto* pbyNext = static_cast<const unsigned char*>(pBuffer);
    const CSigpipeBlock clBlock;
    while (dwSize > 0) {
        const ssize_t nPut = ::write(m_clStandardInput.nGet(), pbyNext, dwSize);
        if (nPut < 0 && errno == EINTR) {
            continue;
        }
        if (nPut <= 0) {
            return false;
        }
        pbyNext += nPut;
        dwSize -= static_cast<unsigned>(nPut);
    }
    return true;
}

// Reads the pipe once, appending as far as nMax bytes when pcsOutput is given. The number of bytes read, 0 at
// the end, negative on failure.
ssize_t CLanceProcessus::__nLit(CXYString<char>* pcsOutput, std::size_t nMax) {
    if (!m_clSortie.bValid()) {
        return 0;
    }
    std::array<char, 65536> tabPiece;
    ssize_t nGot = -1;
    do {
        nGot = ::read(m_clSortie.nGet(), tabPiece.data(), tabPiece.size());
    } while (nGot < 0 && errno == EINTR);
    if (nGot > 0 && pcsOutput != nullptr) {
        *pcsOutput += std::string_view(tabPiece.data(), std::min(static_cast<std::size_t>(nGot), nMax));
    }
    return nGot;
}

// The same, with what was put aside first.
ssize_t CLanceProcessus::__nPrend(CXYString<char>* pcsOutput, std::size_t nMax) {
    if (m_csMise.bEmpty()) {
        return __nLit(pcsOutput, nMax);
    }
    const CXYString<char> csMise = std::exchange(m_csMise, {});
    if (pcsOutput != nullptr) {
        *pcsOutput += csMise.svGet().substr(0, nMax);
    }
    return static_cast<ssize_t>(csMise.nGetLength());
}

bool CLanceProcessus::bLitSortieA(CXYString<char>* pcsOutput) try {
    const CMemoryScope clScope;
    return __nPrend(pcsOutput) > 0;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CLanceProcessus::bLitSortie_NonBloquant(CXYString<char>* pcsOutput) try {
    const CMemoryScope clScope;
    if (!m_csMise.bEmpty()) {
        return __nPrend(pcsOutput) > 0;
    }
    pollfd st{m_clSortie.nGet(), POLLIN, 0};
    const int nReady = ::poll(&st, 1, 0);
    return m_clSortie.bValid() && (nReady == 0 || (nReady > 0 && __nLit(pcsOutput) > 0));
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CLanceProcessus::bLitSortieEtAttendFinExecution(CXYString<char>* pcsOutput, unsigned* pdwExitCode) try {
    const CMemoryScope clScope;
    m_clStandardInput.Reset();
    std::size_t nRead = 0;
    ssize_t nGot = 0;
    do {
        if (m_csMise.bEmpty() && !__bAttendSortie()) {
            return __bArrete(ETIMEDOUT);
        }
        nGot = __nPrend(pcsOutput, m_nMaxKept - std::min(nRead, m_nMaxKept));
        nRead += static_cast<std::size_t>(std::max<ssize_t>(nGot, 0));
        if (nRead > m_nMaxOutput) {
            return __bArrete(EOVERFLOW);
        }
    } while (nGot > 0);
    const int nErrno = errno;
    m_clSortie.Reset();
    const bool bEnded = bAttendFinExecution(pdwExitCode);
    errno = nGot < 0 ? nErrno : errno;
    return bEnded && nGot == 0;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CLanceProcessus::bAttendFinExecution(unsigned* pdwExitCode) {
    m_clStandardInput.Reset();
    if (!__bVideSortie()) {
        return __bArrete(ETIMEDOUT);
    }
    __Attend(0);
    if (m_eEtat != eETAT::Termine) {
        return false;
    }
    if (pdwExitCode != nullptr) {
        *pdwExitCode = static_cast<unsigned>(CProcessManager::nCodeOfStatus(m_nStatus));
    }
    return true;
}

bool CLanceProcessus::__bEnRetard() const {
    return m_eEtat == eETAT::EnCours && m_clLongest != std::chrono::milliseconds::max() &&
           std::chrono::steady_clock::now() - m_clLaunch > m_clLongest;
}

bool CLanceProcessus::__bArrete(int nErrno) {
    Kill();
    m_clSortie.Reset();
    __Attend(0);
    errno = nErrno;
    return false;
}

// Waits until the child has written or closed its output. False when its time is over.
bool CLanceProcessus::__bAttendSortie() {
    pollfd st{m_clSortie.nGet(), POLLIN, 0};
    do {
        if (__bEnRetard()) {
            return false;
        }
    } while (m_clSortie.bValid() && ::poll(&st, 1, TICK_MILLIS) <= 0);
    return true;
}

// Takes what the child writes, until it ends. False when its time is over before.
bool CLanceProcessus::__bVideSortie() {
    // SIGCHLD comes only while ppoll sleeps, so the child's end is not missed between look and sleep. The
    // tick is for programs with other threads, which may be given the signal instead, and for the limit.
    const CSignalBlock clBlock{SIGCHLD};
    sigset_t stAsleep = clBlock.rstGetBefore();
    ::sigdelset(&stAsleep, SIGCHLD);
    const timespec stTick{0, TICK_MILLIS * 1'000'000L};
    bool bDropped = false;
    while (!bProcessusTermine()) {
        if (__bEnRetard()) {
            return false;
        }
        pollfd st{m_clSortie.nGet(), POLLIN, 0};
        if (::ppoll(&st, m_clSortie.bValid() ? 1 : 0, &stTick, &stAsleep) <= 0) {
            continue;
        }
        const std::size_t nRoom = MAX_PUT_ASIDE - m_csMise.nGetLength();
        const ssize_t nGot = __nLit(&m_csMise, nRoom);
        bDropped = bDropped || nGot > static_cast<ssize_t>(nRoom);
        if (nGot <= 0) {
            m_clSortie.Reset();
        }
    }
    if (bDropped) {
        m_clSortie.Reset();  // what is left there does not follow on what was kept
    }
    return true;
}

// Asks for the child's end with the given options of waitpid(2). errno changes only when its status is lost.
void CLanceProcessus::__Attend(int nOptions) {
    if (m_eEtat != eETAT::EnCours) {
        return;
    }
    const int nErrno = errno;
    int nStatus = 0;
    pid_t nEnded = -1;
    do {
        nEnded = ::waitpid(m_nPid, &nStatus, nOptions);
    } while (nEnded < 0 && errno == EINTR);
    if (nEnded > 0) {
        m_nStatus = nStatus;
        m_eEtat = eETAT::Termine;
    } else if (nEnded < 0) {
        // The handler was faster and has the status.
        const bool bKnown = CProcessManager::m_gpclManager != nullptr &&
                            CProcessManager::m_gpclManager->bGetStatus(m_nPid, &m_nStatus);
        m_eEtat = bKnown ? eETAT::Termine : eETAT::Perdu;
    }
    errno = m_eEtat == eETAT::Perdu ? errno : nErrno;
}

bool CLanceProcessus::bProcessusTermine() {
    __Attend(WNOHANG);
    return m_eEtat != eETAT::EnCours;
}

void CLanceProcessus::Kill() {
    // Without the handler a child that ends keeps its process id until it is asked for here, so the signal
    // cannot hit another process that got the id meanwhile.
    const CSignalBlock clBlock{SIGCHLD};
    if (!bProcessusTermine()) {
        ::kill(m_nPid, SIGKILL);
    }
}

bool CLanceProcessus::bLibere() {
    m_clSortie.Reset();
    m_clStandardInput.Reset();
    m_csMise.Empty();
    if (m_eEtat != eETAT::Libre && CProcessManager::m_gpclManager != nullptr) {
        CProcessManager::m_gpclManager->FreePid(m_nPid);
    }
    m_eEtat = eETAT::Libre;
    m_nPid = -1;
    return true;
}

}  // namespace kalmo
