#include "samples/server/service_loop.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace kalmo::sample {
namespace {

sockaddr_un stUnixAddress(const char* pszPath) {
    sockaddr_un st{};
    st.sun_family = AF_UNIX;
    std::strncpy(st.sun_path, pszPath, sizeof st.sun_path - 1);
    return st;
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

void ServeUntilTerminated(const CUniqueFd& clListener, const std::function<std::string()>& fnAnswer,
                          const std::function<void()>& fnReload) {
    sigset_t stSignals;
    sigemptyset(&stSignals);
    for (const int nSignal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&stSignals, nSignal);
    }
    ::sigprocmask(SIG_BLOCK, &stSignals, nullptr);
    const CUniqueFd clSignals(::signalfd(-1, &stSignals, SFD_CLOEXEC));

    pollfd tabPoll[2] = {{clListener.nGet(), POLLIN, 0}, {clSignals.nGet(), POLLIN, 0}};
    for (;;) {
        if (::poll(tabPoll, 2, -1) < 0) {
            if (errno == EINTR) {
                continue;  // a child that ended, such as the logger; what poll told last time is over
            }
            return;
        }
        signalfd_siginfo stSignal{};
        if (tabPoll[1].revents != 0 && ::read(clSignals.nGet(), &stSignal, sizeof stSignal) > 0) {
            if (stSignal.ssi_signo != SIGHUP) {
                return;
            }
            fnReload();
        }
        if (tabPoll[0].revents != 0) {
            const CUniqueFd clClient(::accept4(clListener.nGet(), nullptr, nullptr, SOCK_CLOEXEC));
            const std::string csAnswer = fnAnswer();
            static_cast<void>(::send(clClient.nGet(), csAnswer.data(), csAnswer.size(), MSG_NOSIGNAL));
        }
    }
}

}  // namespace kalmo::sample
