#include "testkit/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace kalmo {
namespace {

[[noreturn]] void Die(const char* pszWhat) {
    std::perror(pszWhat);
    std::abort();
}

winsize stWindow(int nColumns, int nRows) {
    winsize st{};
    st.ws_col = static_cast<unsigned short>(nColumns);
    st.ws_row = static_cast<unsigned short>(nRows);
    return st;
}

// Whether something can be read. Asking also makes the kernel deliver what is still on its way there.
bool bReadable(int nFd) {
    pollfd st{.fd = nFd, .events = POLLIN, .revents = 0};
    return ::poll(&st, 1, 0) > 0 && (st.revents & POLLIN) != 0;
}

// Whether the process sleeps in a read of the terminal with the given device number.
bool bSleepsInRead(pid_t nPid, dev_t unTerminal) {
    const std::string csFolder = "/proc/" + std::to_string(nPid);
    std::ifstream clStat(csFolder + "/stat");
    std::string csStat;
    std::getline(clStat, csStat);
    // The program's name stands in brackets before the state and may hold anything.
    if (!csStat.substr(csStat.rfind(')') + 1).starts_with(" S")) {
        return false;
    }
    std::ifstream clCall(csFolder + "/syscall");
    long nCall = 0;
    unsigned long unFd = 0;
    struct stat st {};
    // The file says "running" when there is no call to tell of.
    return clCall >> nCall >> std::hex >> unFd && nCall == SYS_read &&
           ::stat((csFolder + "/fd/" + std::to_string(unFd)).c_str(), &st) == 0 && S_ISCHR(st.st_mode) &&
           (st.st_rdev == unTerminal || st.st_rdev == makedev(5, 0));
}

}  // namespace

CTerminal::CTerminal(const std::vector<std::string>& tabArgument, STOptions stOptions)
    : m_stOptions(std::move(stOptions)),
      m_clEmulator(m_stOptions.nRows, m_stOptions.nColumns, [this](std::string_view sv) { Send(sv); }) {
    // env sets the environment and becomes the program.
    std::vector<std::string> tabCommand{
        "env", "-u", "LINES", "-u", "COLUMNS", "TERM=" + m_stOptions.csType, "LC_ALL=C.UTF-8"};
    tabCommand.insert(tabCommand.end(), m_stOptions.tabEnvironment.begin(), m_stOptions.tabEnvironment.end());
    tabCommand.insert(tabCommand.end(), tabArgument.begin(), tabArgument.end());
    std::vector<char*> tabArgv(tabCommand.size() + 1);
    std::transform(tabCommand.begin(), tabCommand.end(), tabArgv.begin(),
                   [](std::string& rcs) { return rcs.data(); });
    const winsize stSize = stWindow(m_stOptions.nColumns, m_stOptions.nRows);
    int nMaster = -1;
    m_nPid = ::forkpty(&nMaster, nullptr, nullptr, &stSize);
    if (m_nPid == 0) {
        // A test that runs in the background inherits signals ignored; a program at its terminal does not.
        for (const int nSignal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
            ::signal(nSignal, SIG_DFL);
        }
        ::execvp(tabArgv[0], tabArgv.data());
        ::_exit(127);
    }
    m_clMaster.Reset(nMaster);
    m_clSlave.Reset(::ioctl(nMaster, TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (m_nPid < 0 || ::fcntl(nMaster, F_SETFD, FD_CLOEXEC) != 0 || !m_clSlave.bValid()) {
        Die("pseudo-terminal");
    }
}

CTerminal::~CTerminal() {
    HangUp();
    if (!__bEnded()) {
        ::kill(-m_nPid, SIGKILL);
        ::kill(m_nPid, SIGKILL);
        ::waitpid(m_nPid, nullptr, 0);
    }
}

bool CTerminal::bPress(std::string_view svKeys) {
    bool bSettled = bSettle();
    std::istringstream clItems{std::string(svKeys)};
    for (std::string csItem; clItems >> csItem;) {
        const std::size_t nStar = csItem.find('*');
        const std::string csKey = csItem.substr(0, nStar);
        for (int n = nStar == csItem.npos ? 1 : std::stoi(csItem.substr(nStar + 1)); bSettled && n > 0; --n) {
            if (!m_clEmulator.bPressKey(csKey)) {
                Send(csKey == "Space" ? " " : csKey);
            }
            bSettled = bSettle();
        }
    }
    return bSettled;
}

void CTerminal::Send(std::string_view svBytes) {
    while (!svBytes.empty() && m_clMaster.bValid()) {
        const ssize_t nWritten = ::write(m_clMaster.nGet(), svBytes.data(), svBytes.size());
        if (nWritten < 0) {
            Die("write to the pseudo-terminal");
        }
        svBytes.remove_prefix(static_cast<std::size_t>(nWritten));
    }
}

bool CTerminal::bSettle() {
    // Ended, or asleep after all keys were taken; only then is the output complete.
    return __bPoll([this] { return __bEnded() || __bWaitsForKey(); });
}

bool CTerminal::bWaitText(std::string_view svText) {
    const auto bShown = [&] { return csText().find(svText) != std::string::npos; };
    __bPoll([&] { return bShown() || __bEnded(); });
    return bShown();
}

int CTerminal::nWaitEnd() {
    __bPoll([this] { return __bEnded(); });
    return m_nStatus.value_or(-1);
}

void CTerminal::Resize(int nColumns, int nRows) {
    m_clEmulator.Resize(nRows, nColumns);
    const winsize st = stWindow(nColumns, nRows);
    ::ioctl(m_clMaster.nGet(), TIOCSWINSZ, &st);
}

void CTerminal::HangUp() {
    m_clMaster.Reset();
}

void CTerminal::Signal(int nSignal) const {
    ::kill(m_nPid, nSignal);
}

bool CTerminal::bCooked() const {
    termios st{};
    return ::tcgetattr(m_clSlave.nGet(), &st) == 0 && (st.c_lflag & ICANON) != 0 &&
           (st.c_lflag & ECHO) != 0 && (st.c_lflag & ISIG) != 0 && (st.c_iflag & ICRNL) != 0 &&
           (st.c_oflag & OPOST) != 0;
}

bool CTerminal::bGivenBack() const {
    return bCooked() && !m_clEmulator.bAlternateScreen() && m_clEmulator.stCursor().bVisible &&
           m_clEmulator.unPaletteColour(8) == 0x808080 && m_clEmulator.bAtRest();
}

bool CTerminal::bPicture(const std::string& rcsPath, bool bDraw) const {
    if (bDraw) {
        std::ofstream clFile(rcsPath, std::ios::binary);
        return (clFile << m_clEmulator.csSvg()).flush().good();
    }
    std::ifstream clFile(rcsPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(clFile), {}) == m_clEmulator.csSvg();
}

// Shows on the screen what the program has sent up to now.
void CTerminal::__Drain() {
    std::array<char, 4096> tabBuffer;
    while (m_clMaster.bValid() && bReadable(m_clMaster.nGet())) {
        const ssize_t nRead = ::read(m_clMaster.nGet(), tabBuffer.data(), tabBuffer.size());
        if (nRead <= 0) {
            return;
        }
        m_u64Received += static_cast<std::uint64_t>(nRead);
        m_clEmulator.Feed({tabBuffer.data(), static_cast<std::size_t>(nRead)});
    }
}

bool CTerminal::__bEnded() {
    int nStatus = 0;
    if (!m_nStatus && ::waitpid(m_nPid, &nStatus, WNOHANG) == m_nPid) {
        m_nStatus = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128 + WTERMSIG(nStatus);
    }
    return m_nStatus.has_value();
}

bool CTerminal::__bWaitsForKey() const {
    struct stat st {};
    return m_clMaster.bValid() && !bReadable(m_clSlave.nGet()) && ::fstat(m_clSlave.nGet(), &st) == 0 &&
           bSleepsInRead(::tcgetpgrp(m_clMaster.nGet()), st.st_rdev);
}

// Asks until the condition holds or patience ends; between two questions the program's output is taken in,
// whose arrival ends the pause.
bool CTerminal::__bPoll(const std::function<bool()>& Condition) {
    const CClock::time_point stEnd = CClock::now() + m_stOptions.stPatience;
    for (;;) {
        __Drain();
        if (Condition()) {
            __Drain();
            return true;
        }
        if (CClock::now() > stEnd) {
            return false;
        }
        pollfd st{.fd = m_clMaster.nGet(), .events = POLLIN, .revents = 0};
        const timespec stPause{.tv_sec = 0, .tv_nsec = 100'000};
        ::ppoll(&st, 1, &stPause, nullptr);
    }
}

}  // namespace kalmo
