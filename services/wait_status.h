#ifndef KALMO_SERVICES_WAIT_STATUS_H
#define KALMO_SERVICES_WAIT_STATUS_H

#include <sys/wait.h>

namespace kalmo {

/// What a status of waitpid(2) says of a child that ended. Async-signal-safe.
struct STWaitStatus {
    explicit STWaitStatus(int nStatus) noexcept
        : nSignal(WIFSIGNALED(nStatus) ? WTERMSIG(nStatus) : 0),
          nExitCode(WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 0) {}

    int nSignal;    ///< The signal that ended it; 0 when it ended by itself.
    int nExitCode;  ///< Its exit code; 0 when a signal ended it.
};

}  // namespace kalmo

#endif
