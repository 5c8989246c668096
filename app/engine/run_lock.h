#ifndef KALMO_APP_ENGINE_RUN_LOCK_H
#define KALMO_APP_ENGINE_RUN_LOCK_H

#include "framework/unique_fd.h"

namespace kalmo {

class CTrace;

/// Sees to it that one installer at a time works on a machine: what one has looked at (which names and ports
/// are taken, what runs) stays true until it has done its work.
///
/// A local variable of a run, which holds the machine for as long as the object lives; the system lets it go
/// when the process ends in any way. The programs that the installer runs do not hold it. Where the lock's
/// file cannot be made the run goes on without, and the trace tells.
class CRunLock {
  public:
    /// Takes the machine. False at once when another installer has it.
    bool bTake(CTrace& rclTrace);
    /// Takes the machine, waiting for another installer for ten minutes at most.
    bool bWait(CTrace& rclTrace);
    /// The process that has the machine; 0 when none is known to. Takes nothing, and makes no file.
    static int nHolder();

  private:
    CUniqueFd m_clFd;
};

}  // namespace kalmo

#endif
