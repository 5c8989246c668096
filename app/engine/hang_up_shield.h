#ifndef KALMO_APP_ENGINE_HANG_UP_SHIELD_H
#define KALMO_APP_ENGINE_HANG_UP_SHIELD_H

#include <csignal>

namespace kalmo {

/// While it lives, the loss of the terminal does not end the installer, nor the commands that it runs: work
/// that has begun is done to its end, and services that were stopped are started again. The first box or
/// question behind it finds no terminal to read from, and the run ends there.
///
/// A local variable of whatever changes the machine. Around questions there is none: an operator who hangs up
/// then has cancelled.
class CHangUpShield {
  public:
    CHangUpShield() noexcept {
        struct sigaction stIgnore {};
        stIgnore.sa_handler = SIG_IGN;  // programs that are started inherit this, and no handler
        ::sigaction(SIGHUP, &stIgnore, &m_stFormer);
    }
    CHangUpShield(const CHangUpShield&) = delete;
    CHangUpShield& operator=(const CHangUpShield&) = delete;
    ~CHangUpShield() { ::sigaction(SIGHUP, &m_stFormer, nullptr); }

  private:
    struct sigaction m_stFormer {};
};

}  // namespace kalmo

#endif
