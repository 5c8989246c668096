#include "tui/drawing.h"

#include <algorithm>
#include <string>

#include "tui/text_columns.h"

namespace kalmo {
namespace {

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
    ::waddnwstr(pWindow, csText.data(), static_cast<int>(csText.size()));
    ::wattr_off(pWindow, attr, nullptr);
}

}  // namespace kalmo
