#ifndef KALMO_TUI_TOOLKIT_DRAWING_H
#define KALMO_TUI_TOOLKIT_DRAWING_H

#include <string_view>

#include "tui/toolkit/ncurses.h"

/// Drawing into a curses window. Positions are columns and rows of that window; what starts outside of it is
/// skipped, what reaches beyond its right edge is cut. A null window draws nothing.
namespace kalmo {

/// Fills a rectangle with a character and its attribute.
void DrawRect(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype ch);

/// Draws a frame of "-", "|" and "+" that spans nWidth + 1 columns and nHeight + 1 rows. ASCII rather than
/// line drawing characters: it looks the same on every terminal. Nothing for a negative width or height.
void DrawBorder(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype attr);

/// Draws a filled box with its frame that takes exactly nWidth by nHeight cells.
void DrawRectWithBorder(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype attrBorder,
                        chtype chFill);

/// The same with a shadow one cell right of and below the box; all of it takes nWidth by nHeight cells. The
/// last argument keeps the calls alike and is not used.
void DrawRectWithBorderAndShadow(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype attrBorder,
                                 chtype chFill, chtype attrShadow, chtype attrExtra);

/// Draws one line of text in at most nMaxColumns columns, its first nSkip columns left out; see csVisible.
void DrawTextLine(WINDOW* pWindow, int nRow, int nColumn, chtype attr, std::wstring_view svText,
                  int nMaxColumns, int nSkip = 0);

/// Puts a window's cursor on a cell. The terminal's own goes there with the window's next refresh, shown or
/// not: screen readers and braille lines follow it.
void PlaceCursor(WINDOW* pWindow, int nRow, int nColumn);

/// Brings a window's cursor back at the end of its life: for what is drawn beside the control with the focus.
class CCursorKept {
  public:
    explicit CCursorKept(WINDOW* pWindow);
    CCursorKept(const CCursorKept&) = delete;
    CCursorKept& operator=(const CCursorKept&) = delete;
    ~CCursorKept();

  private:
    WINDOW* m_pWindow;
    int m_nRow;
    int m_nColumn;
};

}  // namespace kalmo

#endif
