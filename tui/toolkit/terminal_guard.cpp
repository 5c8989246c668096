#include "tui/toolkit/terminal_guard.h"

#include "framework/errno_kept.h"
#include "tui/toolkit/ncurses.h"
#include "tui/toolkit/terminal_description.h"
// Defines macros with everyday names, hence only here and last.
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <term.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>

// The sanitizers' runtime; null in a program without them.
extern "C" void __sanitizer_set_death_callback(void (*)()) __attribute__((weak));
// Called by that runtime before it reports a bad memory access, so that the report is not on the screen that
// goes away.
extern "C" void __asan_on_error();

namespace kalmo {
namespace {

constexpr int PATIENCE_MILLISECONDS = 1000;

// What the signal handlers use: written while they are not installed, only read by them.
struct STGuard {
    int nFd = -1;
    pid_t nOwner = 0;
    bool bLineSettings = false;
    termios stLineSettings{};
    std::array<char, 512> tabLeave{};  // The bytes that leave the screen.
    std::size_t nLeave = 0;
};
STGuard g_stGuard;
volatile std::sig_atomic_t g_nArmed = 0;

struct STWatched {
    int nSignal;
    bool bCrash;  // Watched even when it is handled already: the former handler goes on.
    bool bInstalled;
    struct sigaction stFormer;
};
std::array<STWatched, 10> g_tabWatched{{
    {SIGINT, false, false, {}},
    {SIGTERM, false, false, {}},
    {SIGHUP, false, false, {}},
    {SIGQUIT, false, false, {}},
    {SIGPIPE, false, false, {}},
    {SIGSEGV, true, false, {}},
    {SIGBUS, true, false, {}},
    {SIGFPE, true, false, {}},
    {SIGILL, true, false, {}},
    {SIGABRT, true, false, {}},
}};

// Async-signal-safe.
void GiveTerminalBack() {
    // A child between fork and exec has these handlers too, but not the terminal.
    if (g_nArmed == 0 || ::getpid() != g_stGuard.nOwner) {
        return;
    }
    g_nArmed = 0;
    // Output that the operator has stopped, or that nobody takes, must not keep the process from ending.
    // A stop made with the keyboard is undone only as the end of a stop of one's own.
    ::tcflow(g_stGuard.nFd, TCOOFF);
    ::tcflow(g_stGuard.nFd, TCOON);
    pollfd stOutput{.fd = g_stGuard.nFd, .events = POLLOUT, .revents = 0};
    std::size_t nDone = 0;
    while (nDone < g_stGuard.nLeave && ::poll(&stOutput, 1, PATIENCE_MILLISECONDS) == 1) {
        const ssize_t nWritten =
            ::write(g_stGuard.nFd, g_stGuard.tabLeave.data() + nDone, g_stGuard.nLeave - nDone);
        if (nWritten > 0) {
            nDone += static_cast<std::size_t>(nWritten);
        } else if (nWritten == 0 || errno != EINTR) {
            break;
        }
    }
    if (g_stGuard.bLineSettings) {
        ::tcsetattr(g_stGuard.nFd, TCSANOW, &g_stGuard.stLineSettings);
    }
}

extern "C" void KalmoOnFatalSignal(int nSignal, siginfo_t* pstInfo, void* /*pContext*/) {
    const CErrnoKept clKept;
    GiveTerminalBack();
    for (const STWatched& rstWatched : g_tabWatched) {
        if (rstWatched.nSignal != nSignal) {
            continue;
        }
        ::sigaction(nSignal, &rstWatched.stFormer, nullptr);
        // A faulting instruction faults again on return, with all its details; anything else is sent again.
        const bool bFault = rstWatched.bCrash && pstInfo->si_code > 0;
        if (!bFault) {
            ::raise(nSignal);
        }
    }
}

int nAppend(int nByte) {
    if (g_stGuard.nLeave < g_stGuard.tabLeave.size()) {
        g_stGuard.tabLeave[g_stGuard.nLeave++] = static_cast<char>(nByte);
    }
    return nByte;
}

bool bAppendCapability(const char* pszName) {
    const char* const psz = pszCapability(pszName);
    if (psz != nullptr) {
        ::tputs(psz, 1, nAppend);
    }
    return psz != nullptr;
}

// Attributes, colours, cursor and keypad as they were, then off the screen; at its bottom where there is no
// other one to go back to.
void PrepareLeaving() {
    g_stGuard.nLeave = 0;
    bAppendCapability("sgr0");
    bAppendCapability("op");
    // Else none was changed.
    if (!bColoursUnwanted() && ::tigetflag("ccc") > 0 && ::tigetnum("colors") > 8) {
        bAppendCapability("oc");
    }
    bAppendCapability("cnorm");
    bAppendCapability("rmkx");
    if (!bAppendCapability("rmcup")) {
        winsize stSize{};
        const bool bKnown = ::ioctl(g_stGuard.nFd, TIOCGWINSZ, &stSize) == 0 && stSize.ws_row > 0;
        const long nBottom = (bKnown ? stSize.ws_row : ::tigetnum("lines")) - 1;
        ::tputs(::tparm(pszCapability("cup"), nBottom, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L), 1, nAppend);
        nAppend('\n');
    }
}

bool bSame(const struct sigaction& rstAction, void (*pfn)(int, siginfo_t*, void*)) {
    return (rstAction.sa_flags & SA_SIGINFO) != 0 && rstAction.sa_sigaction == pfn;
}

bool bDefault(const struct sigaction& rstAction) {
    return (rstAction.sa_flags & SA_SIGINFO) == 0 && rstAction.sa_handler == SIG_DFL;
}

void WatchSignals() {
    struct sigaction stAction {};
    stAction.sa_sigaction = KalmoOnFatalSignal;
    stAction.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigfillset(&stAction.sa_mask);
    for (STWatched& rstWatched : g_tabWatched) {
        rstWatched.bInstalled = ::sigaction(rstWatched.nSignal, nullptr, &rstWatched.stFormer) == 0 &&
                                (rstWatched.bCrash || bDefault(rstWatched.stFormer)) &&
                                ::sigaction(rstWatched.nSignal, &stAction, nullptr) == 0;
    }
}

}  // namespace

extern "C" void __asan_on_error() {
    GiveTerminalBack();
}

bool bArmTerminalGuard(int nFd, const char* pszTerminal) {
    {
        const CCurrentDescription clDescription(pszTerminal, nFd);
        if (!clDescription.bLoaded()) {
            return false;
        }
        g_stGuard.nFd = nFd;
        g_stGuard.nOwner = ::getpid();
        g_stGuard.bLineSettings = ::tcgetattr(nFd, &g_stGuard.stLineSettings) == 0;
        PrepareLeaving();
    }
    g_nArmed = 1;
    WatchSignals();
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(GiveTerminalBack);
    }
    return true;
}

void DisarmTerminalGuard() {
    g_nArmed = 0;
    for (STWatched& rstWatched : g_tabWatched) {
        struct sigaction stNow {};
        const bool bOurs = rstWatched.bInstalled && ::sigaction(rstWatched.nSignal, nullptr, &stNow) == 0 &&
                           bSame(stNow, KalmoOnFatalSignal);
        if (bOurs) {
            ::sigaction(rstWatched.nSignal, &rstWatched.stFormer, nullptr);
        }
        rstWatched.bInstalled = false;
    }
}

}  // namespace kalmo
