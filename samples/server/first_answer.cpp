#include "samples/server/first_answer.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <string>
#include <utility>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/unique_fd.h"
#include "services/service.h"
#include "services/service_manager.h"

namespace kalmo::sample {
namespace {

constexpr std::chrono::seconds LONGEST(60);
constexpr int STEP = 50;  // milliseconds
// The service's state is asked for every so many steps. systemd starts again what has failed: only one that
// stays so has ended.
constexpr int STEPS_A_QUESTION = 6;
constexpr std::chrono::seconds SURELY_ENDED(10);
constexpr std::size_t MAX_ANSWER = 255;

// The first line of whoever listens on a port. Nobody is waited for longer than a step.
class CFirstLine {
  public:
    explicit CFirstLine(int nPort) {
        m_st.sin_family = AF_INET;
        m_st.sin_port = htons(static_cast<std::uint16_t>(nPort));
        m_st.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }

    // Goes on for a step. True when the line is there, whole or as long as a line may be.
    bool bCame() {
        if (!m_clSocket.bValid() && !__bConnect()) {
            ::poll(nullptr, 0, STEP);
            return false;
        }
        pollfd st{m_clSocket.nGet(), POLLIN, 0};
        if (::poll(&st, 1, STEP) <= 0) {
            return false;
        }
        std::array<char, MAX_ANSWER> tabPiece{};
        const ssize_t n = ::recv(m_clSocket.nGet(), tabPiece.data(), tabPiece.size(), MSG_DONTWAIT);
        if (n <= 0) {
            Forget();
            ::poll(nullptr, 0, STEP);
            return false;
        }
        m_csText.append(tabPiece.data(), static_cast<std::size_t>(n));
        return m_csText.find('\n') != m_csText.npos || m_csText.size() >= MAX_ANSWER;
    }

    [[nodiscard]] std::string_view svLine() const {
        return std::string_view(m_csText).substr(0, std::min(m_csText.find('\n'), MAX_ANSWER));
    }
    [[nodiscard]] bool bConnected() const { return m_clSocket.bValid(); }
    // Hangs up; the next step connects again.
    void Forget() {
        m_clSocket.Reset();
        m_csText.clear();
    }

  private:
    bool __bConnect() {
        CUniqueFd clSocket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        sockaddr_in stOwn{};
        socklen_t unSize = sizeof stOwn;
        const bool bBegun =
            ::connect(clSocket.nGet(), reinterpret_cast<const sockaddr*>(&m_st), sizeof m_st) == 0 ||
            errno == EINPROGRESS;
        // A socket that was given this very port as its own is connected with itself, and keeps the port
        // busy.
        if (bBegun && ::getsockname(clSocket.nGet(), reinterpret_cast<sockaddr*>(&stOwn), &unSize) == 0 &&
            stOwn.sin_port != m_st.sin_port) {
            m_clSocket = std::move(clSocket);
        }
        return m_clSocket.bValid();
    }

    sockaddr_in m_st{};
    CUniqueFd m_clSocket;
    std::string m_csText;
};

// Whether the process that an init script has started lives. The script itself takes a program that is still
// being started for a dead one, which on a busy machine may be so for long.
bool bStarted(const CTString& csService) {
    std::string csPid;
    pid_t nPid = 0;
    return CDiskFile::bLoad(L"/run/" + csService + L".pid", 32, &csPid) &&
           std::from_chars(csPid.data(), csPid.data() + csPid.size(), nPid).ec == std::errc() && nPid > 0 &&
           ::kill(nPid, 0) == 0;
}

// What a stranger says, fit for a log.
CTString csPrintable(std::string_view sv) {
    CTString cs;
    for (const char c : sv) {
        cs += c >= ' ' && c <= '~' ? static_cast<wchar_t>(c) : L'?';
    }
    return cs;
}

}  // namespace

bool bAwaitGreeting(const CTString& csService, int nPort, std::string_view svGreeting, CInstallLog& rclLog) {
    CServiceManager clManager;
    CService clService(&clManager, csService.pszGet());
    CFirstLine clLine(nPort);
    const CTString csPort = L"port " + CTString(std::to_wstring(nPort));
    const auto clNow = [] { return std::chrono::steady_clock::now(); };
    const auto clEnd = clNow() + LONGEST;
    auto clLastAlive = clNow();
    const auto bEnded = [&] { return clNow() - clLastAlive > SURELY_ENDED; };
    bool bStranger = false;
    for (int n = 1; clNow() < clEnd && !bEnded(); ++n) {
        const bool bCame = clLine.bCame();
        if (bCame && clLine.svLine() != svGreeting) {
            rclLog.Line(csPort + L" is another program's, which answers: " + csPrintable(clLine.svLine()));
            return false;
        }
        if (!bCame && n % STEPS_A_QUESTION != 0) {
            continue;
        }
        const eSERVICESTATUS eStatus = clService.eGetStatus();
        if (bCame && eStatus == eServiceRunning) {
            rclLog.Line(csPort + L" answers: " + csPrintable(clLine.svLine()));
            return true;
        }
        if ((eStatus != eServiceStopped && eStatus != eServiceFailed) || bStarted(csService)) {
            clLastAlive = clNow();
        }
        bStranger = bCame || clLine.bConnected();
        if (bCame) {
            // The same instance, but not as this service: started by hand, say.
            clLine.Forget();
            ::poll(nullptr, 0, STEP * STEPS_A_QUESTION);
        }
    }
    if (!bEnded()) {
        rclLog.Line(csService + L" does not answer in time on " + csPort);
    } else {
        rclLog.Line(csService + L" has ended; " + csPort +
                    (bStranger ? L" is another program's" : L" is free"));
    }
    return false;
}

}  // namespace kalmo::sample
