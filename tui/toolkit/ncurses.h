#ifndef KALMO_TUI_TOOLKIT_NCURSES_H
#define KALMO_TUI_TOOLKIT_NCURSES_H

/// The one place that includes the curses library, so that everybody sees the same one: with wide characters
/// and with functions instead of macros, whose names ("move", "clear", "timeout") would collide with ours.
#ifndef NCURSES_WIDECHAR
#define NCURSES_WIDECHAR 1
#endif
#ifndef NCURSES_NOMACROS
#define NCURSES_NOMACROS 1
#endif
#include <curses.h>

#endif
