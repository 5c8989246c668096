#include "app/engine/run_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "app/engine/trace.h"

namespace kalmo {
namespace {

// In directories that only root can write: nobody else can hold the machine. Older ones have no /run.
constexpr const char* TAB_LOCK[] = {"/run/kalmoinstall.lock", "/var/run/kalmoinstall.lock"};
constexpr const wchar_t* PSZ_STEP = L"have the machine alone";
constexpr std::chrono::minutes LONGEST_WAIT{10};
constexpr useconds_t LOOK_AGAIN_MICROS = 200'000;

}  // namespace

bool CRunLock::bTake(CTrace& rclTrace) {
    for (const char* const pszLock : TAB_LOCK) {
        if (!m_clFd.bValid()) {
            m_clFd.Reset(::open(pszLock, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
        }
    }
    const bool bMine = m_clFd.bValid() && ::flock(m_clFd.nGet(), LOCK_EX | LOCK_NB) == 0;
    if (!bMine && m_clFd.bValid() && errno == EWOULDBLOCK) {
        return false;
    }
    if (!bMine) {
        rclTrace.Note(PSZ_STEP, nOutcome(false));
    }
    return true;
}

bool CRunLock::bWait(CTrace& rclTrace) {
    const auto clStart = std::chrono::steady_clock::now();
    bool bTold = false;
    while (!bTake(rclTrace)) {
        if (std::chrono::steady_clock::now() - clStart > LONGEST_WAIT) {
            rclTrace.Failed(PSZ_STEP, L"another installer has it for ten minutes");
            return false;
        }
        if (!bTold) {
            rclTrace.Step(PSZ_STEP, L"another installer works on it; waiting");
            bTold = true;
        }
        ::usleep(LOOK_AGAIN_MICROS);
    }
    return true;
}

}  // namespace kalmo
