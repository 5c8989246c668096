#include "tui/toolkit/drawing.h"

#include <wchar.h>

#include <algorithm>
#include <string>

#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

static_assert(MAX_MARKS == CCHARW_MAX - 1, "curses keeps as many");

bool bMove(WINDOW* pWindow, int nRow, int nColumn) {
    return pWindow != nullptr && ::wmove(pWindow, nRow, nColumn) == OK;
}

// The line functions of curses stop at the window's edge, where adding characters would go on in the next
// row.
void DrawRow(WINDOW* pWindow, int nX, int nY, int nLength, chtype ch) {
    if (nLength > 0 && bMove(pWindow, nY, nX)) {
        ::whline(pWindow, ch, nLength);
    }
}

void DrawColumn(WINDOW* pWindow, int nX, int nY, int nLength, chtype ch) {
    if (nLength > 0 && bMove(pWindow, nY, nX)) {
        ::wvline(pWindow, ch, nLength);
    }
}

// Adds text cell by cell: the functions for whole strings lose the marks behind a wide character. Every cell
// is one character with its marks, as csVisible hands them out.
void AddCells(WINDOW* pWindow, std::wstring_view sv) {
    while (!sv.empty()) {
        wchar_t szCell[MAX_MARKS + 2] = {sv.front()};
        std::size_t n = 1;
        while (n < sv.size() && n <= MAX_MARKS && ::wcwidth(sv[n]) == 0) {
            szCell[n] = sv[n];
            ++n;
        }
        cchar_t st;
        if (::setcchar(&st, szCell, A_NORMAL, 0, nullptr) == OK) {
            ::wadd_wch(pWindow, &st);
        }
        sv.remove_prefix(n);
    }
}

constexpr chtype chWith(char c, chtype attr) {
    return static_cast<unsigned char>(c) | attr;
}

}  // namespace

void DrawRect(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype ch) {
    for (int nRow = nY; nRow < nY + nHeight; ++nRow) {
        DrawRow(pWindow, nX, nRow, nWidth, ch);
    }
}

void DrawBorder(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype attr) {
    if (nWidth < 0 || nHeight < 0) {
        return;
    }
    for (const int nRow : {nY, nY + nHeight}) {
        DrawRow(pWindow, nX, nRow, nWidth, chWith('-', attr));
    }
    for (const int nColumn : {nX + nWidth, nX}) {
        DrawColumn(pWindow, nColumn, nY, nHeight, chWith('|', attr));
    }
    for (const int nRow : {nY, nY + nHeight}) {
        for (const int nColumn : {nX, nX + nWidth}) {
            DrawRow(pWindow, nColumn, nRow, 1, chWith('+', attr));
        }
    }
}

void DrawRectWithBorder(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype attrBorder,
                        chtype chFill) {
    DrawRect(pWindow, nX, nY, nWidth - 1, nHeight - 1, chFill);
    DrawBorder(pWindow, nX, nY, nWidth - 1, nHeight - 1, attrBorder);
}

void DrawRectWithBorderAndShadow(WINDOW* pWindow, int nX, int nY, int nWidth, int nHeight, chtype attrBorder,
                                 chtype chFill, chtype attrShadow, chtype /*attrExtra*/) {
    DrawRect(pWindow, nX, nY, nWidth - 2, nHeight - 2, chFill);
    DrawBorder(pWindow, nX, nY, nWidth - 2, nHeight - 2, attrBorder);
    DrawRow(pWindow, nX + 1, nY + nHeight - 1, nWidth - 1, chWith(' ', attrShadow));
    DrawColumn(pWindow, nX + nWidth - 1, nY + 1, nHeight - 1, chWith(' ', attrShadow));
}

void DrawTextLine(WINDOW* pWindow, int nRow, int nColumn, chtype attr, std::wstring_view svText,
                  int nMaxColumns, int nSkip) {
    if (!bMove(pWindow, nRow, nColumn)) {
        return;
    }
    const int nRoom = std::min(nMaxColumns, ::getmaxx(pWindow) - nColumn);
    const std::wstring csText = csVisible(svText, nSkip, nRoom);
    ::wattr_on(pWindow, attr, nullptr);
    AddCells(pWindow, csText);
    ::wattr_off(pWindow, attr, nullptr);
}

void PlaceCursor(WINDOW* pWindow, int nRow, int nColumn) {
    bMove(pWindow, nRow, nColumn);
}

CCursorKept::CCursorKept(WINDOW* pWindow)
    : m_pWindow(pWindow), m_nRow(::getcury(pWindow)), m_nColumn(::getcurx(pWindow)) {}

CCursorKept::~CCursorKept() {
    PlaceCursor(m_pWindow, m_nRow, m_nColumn);
}

}  // namespace kalmo
