#ifndef KALMO_APP_ENGINE_TRACED_COMMAND_H
#define KALMO_APP_ENGINE_TRACED_COMMAND_H

#include <string>
#include <string_view>

#include "framework/xy_string.h"
#include "services/command_witness.h"

/// Commands that go through the shell. Texts are bytes, UTF-8 for what the installer passes.
namespace kalmo {

class CTrace;

/// A text as one word of a command: quoted when it holds anything that means something to the shell, as it is
/// otherwise.
std::string csShellWord(std::string_view sv);

/// A text between double quotes, with a backslash before each character that means something there.
std::string csShellQuoted(std::string_view sv);

/// What a status of waitpid(2) says, for the trace.
CTString csStatus(int nStatus);

/// Runs a command and traces it with what came of it. Does not return where Ctrl-C or Ctrl-\ ended it
/// (EndInterruptedRun); a command that ends with 130 or 131 counts as one, for that is how a shell tells it.
/// Returns the status as system() does: -1 when no shell could run it. The screen, on which the command may
/// have written, is shown again.
///
/// The trace shows svTold instead of the command when that is given: a trace never holds a password.
int nRunShell(const std::string& csCommand, CTrace& rclTrace, std::string_view svTold = {});

/// The exit code in such a status; -1 when the command was not run or did not end by itself.
int nExitCode(int nStatus);

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
