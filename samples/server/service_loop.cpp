#include "samples/server/service_loop.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace kalmo::sample {
namespace {

sockaddr_un stUnixAddress(const char* pszPath) {
    sockaddr_un st{};
    st.sun_family = AF_UNIX;
    std::strncpy(st.sun_path, pszPath, sizeof st.sun_path - 1);
    return st;
}

constexpr std::size_t MAX_CLIENTS = 100;
constexpr std::size_t MAX_LINE = 1000;

struct STClient {
    CUniqueFd clSocket;
    std::string csLine;  // What has come of it so far.
};

void Say(const STClient& rstClient, std::string_view svText) {
    static_cast<void>(
        ::send(rstClient.clSocket.nGet(), svText.data(), svText.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
}

// Takes what a client has sent. False when the conversation is over.
bool bKeep(STClient& rstClient, const STConversation& rst) {
    std::array<char, 1024> tabPiece{};
    const ssize_t n = ::recv(rstClient.clSocket.nGet(), tabPiece.data(), tabPiece.size(), MSG_DONTWAIT);
    if (n <= 0) {
        return n < 0 && (errno == EAGAIN || errno == EINTR);
    }
    rstClient.csLine.append(tabPiece.data(), static_cast<std::size_t>(n));
    const std::size_t nEnd = rstClient.csLine.find('\n');
    if (nEnd == std::string::npos) {
        return rstClient.csLine.size() < MAX_LINE;
    }
    std::string_view svLine = std::string_view(rstClient.csLine).substr(0, nEnd);
    if (svLine.ends_with('\r')) {
        svLine.remove_suffix(1);
    }
    Say(rstClient, rst.fnAnswer(svLine));
    return false;
}

}  // namespace

CUniqueFd clListenTcp(int nPort) {
    CUniqueFd clSocket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int nOn = 1;
    sockaddr_in st{};
    st.sin_family = AF_INET;
    st.sin_port = htons(static_cast<std::uint16_t>(nPort));
    if (nPort <= 0 || nPort > 65535 ||
        ::setsockopt(clSocket.nGet(), SOL_SOCKET, SO_REUSEADDR, &nOn, sizeof nOn) != 0 ||
        ::bind(clSocket.nGet(), reinterpret_cast<const sockaddr*>(&st), sizeof st) != 0 ||
        ::listen(clSocket.nGet(), SOMAXCONN) != 0) {
        return {};
    }
    return clSocket;
}

bool bAskUnix(const char* pszPath, std::string* pcsAnswer) {
    const CUniqueFd clSocket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un st = stUnixAddress(pszPath);
    if (::connect(clSocket.nGet(), reinterpret_cast<const sockaddr*>(&st), sizeof st) != 0) {
        return false;
    }
    std::array<char, 1024> tabPiece{};
    for (ssize_t n = 0; (n = ::recv(clSocket.nGet(), tabPiece.data(), tabPiece.size(), 0)) > 0;) {
        pcsAnswer->append(tabPiece.data(), static_cast<std::size_t>(n));
    }
    return true;
}

CUniqueFd clListenUnix(const char* pszPath) {
    CUniqueFd clSocket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un st = stUnixAddress(pszPath);
    ::unlink(pszPath);
    if (::bind(clSocket.nGet(), reinterpret_cast<const sockaddr*>(&st), sizeof st) != 0 ||
        ::listen(clSocket.nGet(), SOMAXCONN) != 0) {
        return {};
    }
    return clSocket;
}

void ServeUntilTerminated(const CUniqueFd& clListener, const STConversation& rst) {
    sigset_t stSignals;
    sigemptyset(&stSignals);
    for (const int nSignal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&stSignals, nSignal);
    }
    ::sigprocmask(SIG_BLOCK, &stSignals, nullptr);
    const CUniqueFd clSignals(::signalfd(-1, &stSignals, SFD_CLOEXEC));

    std::vector<STClient> tabClient;
    for (;;) {
        std::vector<pollfd> tabPoll = {{clListener.nGet(), POLLIN, 0}, {clSignals.nGet(), POLLIN, 0}};
        for (const STClient& rstClient : tabClient) {
            tabPoll.push_back({rstClient.clSocket.nGet(), POLLIN, 0});
        }
        if (::poll(tabPoll.data(), tabPoll.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;  // a child that ended, such as the logger
            }
            return;
        }
        signalfd_siginfo stSignal{};
        if (tabPoll[1].revents != 0 && ::read(clSignals.nGet(), &stSignal, sizeof stSignal) > 0) {
            if (stSignal.ssi_signo != SIGHUP) {
                return;
            }
            rst.fnReload();
        }
        for (std::size_t n = tabClient.size(); n-- > 0;) {
            if (tabPoll[n + 2].revents != 0 && !bKeep(tabClient[n], rst)) {
                tabClient.erase(tabClient.begin() + static_cast<std::ptrdiff_t>(n));
            }
        }
        if (tabPoll[0].revents != 0) {
            STClient stClient{CUniqueFd(::accept4(clListener.nGet(), nullptr, nullptr, SOCK_CLOEXEC)), {}};
            Say(stClient, rst.fnGreeting());
            if (rst.fnAnswer && tabClient.size() < MAX_CLIENTS) {
                tabClient.push_back(std::move(stClient));
            }
        }
    }
}

}  // namespace kalmo::sample
