#ifndef KALMO_TUI_TOOLKIT_ATTRIBUTE_H
#define KALMO_TUI_TOOLKIT_ATTRIBUTE_H

#include "tui/toolkit/ncurses.h"

/// The attributes that everything on the screen is drawn with.
///
/// A value is a colour pair, at times in reverse video, and, where a cell is filled, the fill character in
/// the low byte. Windows are reverse pair 2: black on white, on a blue screen.
namespace kalmo {

/// Colour pairs, as color_setup defines them.
constexpr short PAIR_SELECTED = 1;    ///< white on blue
constexpr short PAIR_NORMAL = 2;      ///< white on black
constexpr short PAIR_BUTTON = 3;      ///< white on red
constexpr short PAIR_GAUGE = 4;       ///< white on yellow
constexpr short PAIR_BACKGROUND = 5;  ///< blue on blue
constexpr short PAIR_MARK_FOCUS = 6;  ///< red on blue
constexpr short PAIR_MARK = 7;        ///< red on black
constexpr short PAIR_DISABLED = 8;    ///< white on dark grey, or on black
constexpr short COLOR_DARK_GREY = 8;  ///< The colour that PAIR_DISABLED redefines where it can.

constexpr chtype ATTR_NORMAL = 0x200;           ///< Normal text, shadows, text of an enabled entry field.
constexpr chtype ATTR_FIELD_FILL = 0x220;       ///< Fill of entry fields, lists, radio lists and gauges.
constexpr chtype ATTR_BORDER = 0x40200;         ///< Borders, captions on them, selected line with focus.
constexpr chtype ATTR_WINDOW_FILL = 0x40220;    ///< Fill of windows, thumb of a scroll bar.
constexpr chtype ATTR_SEPARATOR = 0x4022D;      ///< The line of "-" under the title of a radio list.
constexpr chtype ATTR_SELECTED = 0x100;         ///< Selected line without focus; text of a focused box.
constexpr chtype ATTR_TRACK = 0x120;            ///< Track of a scroll bar.
constexpr chtype ATTR_CAPTION_FOCUS = 0x40300;  ///< Caption of an enabled button with focus.
constexpr chtype ATTR_CAPTION = 0x300;          ///< Caption of an enabled button without focus.
constexpr chtype ATTR_BUTTON_FILL = 0x320;      ///< Face and border of an enabled button.
constexpr chtype ATTR_GAUGE_BAR = 0x420;        ///< Bar of a gauge.
constexpr chtype ATTR_BACKGROUND = 0x500;       ///< The screen behind the windows.
constexpr chtype ATTR_MARK_FOCUS = 0x600;       ///< "X" of a box or option with focus.
constexpr chtype ATTR_MARK = 0x700;             ///< "X" of a box or option without focus.
constexpr chtype ATTR_DISABLED = 0x800;         ///< Text of a disabled entry field.

static_assert(ATTR_BORDER == (PAIR_NORMAL << NCURSES_ATTR_SHIFT | A_REVERSE) &&
                  ATTR_DISABLED == PAIR_DISABLED << NCURSES_ATTR_SHIFT,
              "the values above are those of the curses library");

}  // namespace kalmo

#endif
