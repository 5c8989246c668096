#ifndef KALMO_SERVICES_ERROR_CATCHER_H
#define KALMO_SERVICES_ERROR_CATCHER_H

#include <string>

#include "framework/unique_fd.h"

namespace kalmo {

/// Catches what commands say on standard error while it lives, then puts the descriptor back and passes on
/// what was said. A local variable around a command; one at a time.
///
/// Standard error is a pipe meanwhile that every holder of it can both read and write, without waiting: a
/// program that the command leaves behind may go on writing for ever. It is never stopped nor ended for it,
/// and what it writes into a pipe that is full (1 MiB where the system allows it) is lost. Unlike a sealed
/// file, a pipe can be opened anew by a script, as /dev/stderr; that has the ways of an ordinary pipe, so
/// that a program left behind with it alone is ended when it writes. Where no such pipe can be had, standard
/// error stays as it is and nothing is caught. Leaves errno alone.
class CErrorCatcher {
  public:
    CErrorCatcher() noexcept;
    CErrorCatcher(const CErrorCatcher&) = delete;
    CErrorCatcher& operator=(const CErrorCatcher&) = delete;
    ~CErrorCatcher() { csRelease(0); }

    /// Puts standard error back, writes there all that was said, and gives the first nMax bytes of it.
    std::string csRelease(std::size_t nMax);

  private:
    CUniqueFd m_clRead;    ///< Where it is read; none: nothing is caught.
    CUniqueFd m_clBefore;  ///< What standard error was; none: it was closed.
    int m_nFlags = 0;      ///< Descriptor flags of it.
};

}  // namespace kalmo

#endif
