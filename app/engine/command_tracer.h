#ifndef KALMO_APP_ENGINE_COMMAND_TRACER_H
#define KALMO_APP_ENGINE_COMMAND_TRACER_H

#include <string_view>

#include "services/command_witness.h"

namespace kalmo {

class CTrace;

/// Traces how commands on services ended, and ends the run where the keyboard ended one of them.
///
/// A local variable of the program's run: the witness of the services for as long as it lives.
class CCommandTracer final : public ICommandWitness {
  public:
    /// The trace is borrowed.
    explicit CCommandTracer(CTrace& rclTrace) noexcept : m_rclTrace(rclTrace) { SetCommandWitness(this); }
    CCommandTracer(const CCommandTracer&) = delete;
    CCommandTracer& operator=(const CCommandTracer&) = delete;
    ~CCommandTracer() { SetCommandWitness(nullptr); }

    void CommandEnded(const STCommandEnd& rst) noexcept override;

  private:
    CTrace& m_rclTrace;
};

/// Ends the run, because Ctrl-C or Ctrl-\ ended one of its commands: whoever pressed it wants nothing more to
/// be done, but while a shell command runs the key does not reach the installer itself. Traces where that
/// was, gives the terminal back, and exits with the status of every run, 0.
[[noreturn]] void EndInterruptedRun(std::wstring_view svCommand, CTrace& rclTrace);

}  // namespace kalmo

#endif
