#ifndef KALMO_TUI_TOOLKIT_TERMINAL_GUARD_H
#define KALMO_TUI_TOOLKIT_TERMINAL_GUARD_H

/// Gives the terminal back when the process ends without closing the screen.
///
/// SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE (unless they are ignored or handled already), the signals of
/// a crash and the death of a program under the sanitizers all write a sequence prepared in advance and
/// restore the line settings, with async-signal-safe calls only. A signal then takes the effect it had
/// without us. exit() is not the guard's: the screen closes itself there (init_dialog). SIGKILL and _exit
/// leave the terminal as it is.
namespace kalmo {

/// Starts to watch over the terminal on this descriptor: remembers its line settings and prepares the
/// sequence that leaves the screen. Called before curses touches the terminal. False, and nothing changes,
/// when there is no description of that name; it must have the cursor placed (see terminal_description.h).
bool bArmTerminalGuard(int nFd, const char* pszTerminal);

/// Stops watching; the signals get their former handlers back. Called once curses has given the terminal
/// back.
void DisarmTerminalGuard();

}  // namespace kalmo

#endif
