#ifndef KALMO_FRAMEWORK_SIGNAL_BLOCK_H
#define KALMO_FRAMEWORK_SIGNAL_BLOCK_H

#include <csignal>
#include <ctime>
#include <initializer_list>

#include "framework/errno_kept.h"

namespace kalmo {

/// Blocks signals for the calling thread while it lives, then puts back the mask that it found.
///
/// Async-signal-safe; leaves errno alone.
class CSignalBlock {
  public:
    /// Blocks every signal that can be blocked.
    CSignalBlock() noexcept {
        sigset_t st;
        ::sigfillset(&st);
        ::pthread_sigmask(SIG_BLOCK, &st, &m_stBefore);
    }
    /// Blocks the given signals.
    CSignalBlock(std::initializer_list<int> tabSignal) noexcept {
        sigset_t st;
        ::sigemptyset(&st);
        for (const int nSignal : tabSignal) {
            ::sigaddset(&st, nSignal);
        }
        ::pthread_sigmask(SIG_BLOCK, &st, &m_stBefore);
    }
    CSignalBlock(const CSignalBlock&) = delete;
    CSignalBlock& operator=(const CSignalBlock&) = delete;
    ~CSignalBlock() { ::pthread_sigmask(SIG_SETMASK, &m_stBefore, nullptr); }

    /// The mask that was in force before: what to sleep under so that a blocked signal ends the sleep.
    [[nodiscard]] const sigset_t& rstGetBefore() const noexcept { return m_stBefore; }

  private:
    sigset_t m_stBefore;
};

/// Blocks SIGPIPE for the calling thread while it lives and takes back the one that a write of this thread
/// has caused meanwhile. Leaves errno alone.
class CSigpipeBlock {
  public:
    CSigpipeBlock() noexcept : m_bPendingBefore(__bPending()) {}
    CSigpipeBlock(const CSigpipeBlock&) = delete;
    CSigpipeBlock& operator=(const CSigpipeBlock&) = delete;
    ~CSigpipeBlock() {
        if (m_bPendingBefore || !__bPending()) {
            return;
        }
        const CErrnoKept clKept;
        sigset_t st;
        ::sigemptyset(&st);
        ::sigaddset(&st, SIGPIPE);
        const timespec stNow{};
        ::sigtimedwait(&st, nullptr, &stNow);
    }

  private:
    static bool __bPending() noexcept {
        sigset_t st;
        return ::sigpending(&st) == 0 && ::sigismember(&st, SIGPIPE) == 1;
    }

    CSignalBlock m_clBlock{SIGPIPE};
    bool m_bPendingBefore;
};

}  // namespace kalmo

#endif
