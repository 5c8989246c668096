#include "app/engine/run_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <string>

#include "app/engine/process_list.h"
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

int CRunLock::nHolder() {
    const std::vector<std::string> tabLock = tabKernelLines(L"/proc/locks");
    for (const char* const pszLock : TAB_LOCK) {
        struct stat st {};
        if (::stat(pszLock, &st) != 0) {
            continue;
        }
        // See proc(5): number, kind, "ADVISORY", access, process, major:minor:inode, start, end.
        for (const std::string& rcsLine : tabLock) {
            int nProcess = 0;
            unsigned unMajor = 0;
            unsigned unMinor = 0;
            unsigned long long ullInode = 0;
            if (std::sscanf(rcsLine.c_str(), "%*s FLOCK %*s WRITE %d %x:%x:%llu", &nProcess, &unMajor,
                            &unMinor, &ullInode) == 4 &&
                ::makedev(unMajor, unMinor) == st.st_dev && ullInode == st.st_ino) {
                return nProcess;
            }
        }
    }
    return 0;
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
