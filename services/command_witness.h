#ifndef KALMO_SERVICES_COMMAND_WITNESS_H
#define KALMO_SERVICES_COMMAND_WITNESS_H

#include <cstddef>
#include <string_view>

namespace kalmo {

/// How much is kept of what a command says.
inline constexpr std::size_t MAX_SAID = 4096;

/// A command that worked on a service, when it has ended.
struct STCommandEnd {
    std::wstring_view
        svCommand;  ///< As it was run: "/bin/systemctl stop ZDCS-x", "chkconfig --del x >/dev/null".
    int nStatus;    ///< A status of waitpid(2); -1 when it could not be run, with the reason in errno.
    std::wstring_view svSaid;  ///< What it wrote to standard error (systemctl: to both), the first MAX_SAID
                               ///< bytes of it; may hold line feeds.
};

/// Is told how commands on services ended, before anything further is done: every systemctl command and every
/// command of an init script that failed, every tool of the boot sequence in any case, and every command that
/// an interrupt or a quit from the keyboard ended.
///
/// Implemented by the program around the services, which keeps it and outlives no command by it. Called by
/// the operations of CService, on their thread, outside any signal handler; errno is put back afterwards.
class ICommandWitness {
  public:
    /// The texts are borrowed for the call. It may not return: it may end the program.
    virtual void CommandEnded(const STCommandEnd& rst) noexcept = 0;

  protected:
    ~ICommandWitness() = default;
};

/// Names the one witness of the process, which is not owned; null: nobody is told. Called before work on
/// services begins, and again before the witness goes.
void SetCommandWitness(ICommandWitness* pcl) noexcept;

/// Tells the witness, if there is one. Keeps errno.
void TellCommandEnd(const STCommandEnd& rst) noexcept;

/// True when an interrupt or a quit ended a shell command: the shell itself, or a command of it, which the
/// shell passes on as 128 and the signal's number.
bool bInterrupted(int nStatus) noexcept;

}  // namespace kalmo

#endif
