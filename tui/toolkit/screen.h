#ifndef KALMO_TUI_TOOLKIT_SCREEN_H
#define KALMO_TUI_TOOLKIT_SCREEN_H

#include "tui/toolkit/terminal_description.h"

/// The screen as a whole. The interactive run opens it once, before it makes any window, and closes it at its
/// end. Single-threaded, as everything in this folder.
namespace kalmo {

/// Opens the screen: curses on standard input and output, keypad codes, keys one by one and without echo, the
/// colours, the background. From here on the terminal is given back in its former state on exit, at the
/// usual signals and at a crash (see terminal_guard.h).
///
/// False, with nothing printed and nothing changed, where there is no usable terminal: standard output is
/// none, or TERM is unset or names a terminal whose cursor cannot be placed. The caller then reports on
/// standard error. The locale must be set before (SetLocaleUTF8).
[[nodiscard]] bool init_dialog();

/// What the last init_dialog found: why it failed, and by which description the screen is drawn.
const STTerminal& rstTerminal();

/// True between a successful init_dialog and end_dialog.
[[nodiscard]] bool bDialogOpen();

/// Keeps curses from believing in a screen of a single column, where version 6.4 reads in front of its lines.
/// After each change of the terminal's size.
void CheckScreenSize();

/// Defines the colours and colour pairs of attribute.h. Does nothing on a terminal without colours, or where
/// the operator wants none (bColoursUnwanted): the same attributes then show in monochrome.
void color_setup();

/// Paints the background of the whole screen and queues it; the next refresh of a window shows it.
void dialog_clear();

/// Shows the whole screen again, after another program may have written on the terminal. Does nothing while
/// no screen is open.
void RepaintScreen();

/// Closes the screen and gives the terminal back. The windows may outlive it, but can no longer be drawn.
void end_dialog();

}  // namespace kalmo

#endif
