#ifndef KALMO_TUI_TERMINAL_GUARD_H
#define KALMO_TUI_TERMINAL_GUARD_H

/// Gives the terminal back when the process ends without closing the screen.
///
/// SIGINT, SIGTERM, SIGHUP and SIGQUIT (unless they are ignored or handled already), the signals of a crash,
/// exit() and the death of a program under the sanitizers all write a sequence prepared in advance and
/// restore the line settings, with async-signal-safe calls only. A signal then takes the effect it had
/// without us.
namespace kalmo {

/// Remembers the line settings of the terminal on this descriptor. Before curses changes them.
void SaveTerminal(int nFd);

/// Prepares the sequence that leaves the screen, and starts to watch. After curses knows the terminal.
void ArmTerminalGuard();

/// Stops watching; the signals get their former handlers back. Once curses has given the terminal back.
void DisarmTerminalGuard();

}  // namespace kalmo

#endif
