#include "services/error_catcher.h"

#include <fcntl.h>
#include <poll.h>

#include <array>
#include <cstdio>
#include <string_view>

#include "framework/errno_kept.h"
#include "framework/signal_block.h"

namespace kalmo {
namespace {

constexpr int PIPE_ROOM = 1 << 20;
constexpr int FIRST_TO_KEEP = STDERR_FILENO + 1;

// Moves a descriptor above the standard ones, which may be closed and given out anew.
CUniqueFd clAbove(int nFd) noexcept {
    const CUniqueFd clFd(nFd);
    return CUniqueFd(::fcntl(nFd, F_DUPFD_CLOEXEC, FIRST_TO_KEEP));
}

// Writes what the descriptor takes, as a command would have done itself; its reader may be gone.
void PassOn(int nFd, std::string_view sv) noexcept {
    const CSigpipeBlock clBlock;
    while (!sv.empty()) {
        const ssize_t nPut = ::write(nFd, sv.data(), sv.size());
        if (nPut > 0) {
            sv.remove_prefix(static_cast<std::size_t>(nPut));
        } else if (nPut < 0 && errno == EAGAIN) {
            pollfd st{nFd, POLLOUT, 0};
            ::poll(&st, 1, -1);
        } else if (nPut == 0 || errno != EINTR) {
            return;
        }
    }
}

}  // namespace

CErrorCatcher::CErrorCatcher() noexcept {
    const CErrnoKept clKept;
    int tabFd[2];
    if (::pipe2(tabFd, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    CUniqueFd clRead = clAbove(tabFd[0]);
    const CUniqueFd clWrite = clAbove(tabFd[1]);
    ::fcntl(clWrite.nGet(), F_SETPIPE_SZ, PIPE_ROOM);
    std::array<char, 32> szOwn{};
    static_cast<void>(std::snprintf(szOwn.data(), szOwn.size(), "/proc/self/fd/%d", clWrite.nGet()));
    const CUniqueFd clBoth = clAbove(::open(szOwn.data(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    m_nFlags = ::fcntl(STDERR_FILENO, F_GETFD);
    m_clBefore.Reset(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, FIRST_TO_KEEP));
    const bool bKept = m_clBefore.bValid() || m_nFlags == -1;
    if (clRead.bValid() && clBoth.bValid() && bKept && ::dup2(clBoth.nGet(), STDERR_FILENO) >= 0) {
        m_clRead = std::move(clRead);
    }
}

std::string CErrorCatcher::csRelease(std::size_t nMax) {
    const CErrnoKept clKept;
    std::string csSaid;
    if (!m_clRead.bValid()) {
        return csSaid;
    }
    if (m_clBefore.bValid()) {
        ::dup2(m_clBefore.nGet(), STDERR_FILENO);
        ::fcntl(STDERR_FILENO, F_SETFD, m_nFlags);
    } else {
        ::close(STDERR_FILENO);
    }
    // What is there now, and not what somebody left behind goes on writing.
    std::array<char, 65536> tabPiece;
    ssize_t nGot = 0;
    for (int nLeft = PIPE_ROOM; nLeft > 0; nLeft -= static_cast<int>(nGot)) {
        nGot = ::read(m_clRead.nGet(), tabPiece.data(), tabPiece.size());
        if (nGot < 0 && errno == EINTR) {
            nGot = 0;
            continue;
        }
        if (nGot <= 0) {
            break;
        }
        const std::string_view svPiece(tabPiece.data(), static_cast<std::size_t>(nGot));
        csSaid += svPiece.substr(0, nMax - csSaid.size());
        if (m_clBefore.bValid()) {
            PassOn(m_clBefore.nGet(), svPiece);
        }
    }
    m_clRead.Reset();
    m_clBefore.Reset();
    return csSaid;
}

}  // namespace kalmo
