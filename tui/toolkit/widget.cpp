#include "tui/toolkit/widget.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>

#include "framework/conversion.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/text_columns.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr std::size_t MAX_FORMATTED = 65536;  // Characters; far more than any screen shows.

}  // namespace

bool CWidget::bOnKeyEvent(int /*nKey*/) {
    return false;
}

bool CWidget::bSetFocus(int bNewFocus) {
    if (bEnabled == 0) {
        return false;
    }
    _ShowCursor();
    bFocus = bNewFocus;
    return true;
}

void CWidget::_ShowCursor() const {
    if (!bWithCursor()) {
        ::curs_set(0);
        return;
    }
    const int nFormer = ::curs_set(2);
    if (nFormer == ERR) {
        ::curs_set(1);
    } else if (nFormer == 0) {
        // On some terminals only the plain visible one takes the hidden one back.
        ::curs_set(1);
        ::curs_set(2);
    }
}

void CWidget::SetEnable(int bEnable) {
    bEnabled = bEnable;
}

bool CWidget::bEnable() const {
    return bEnabled != 0;
}

bool CWidget::bOnEvent(CWidget* /*pclSender*/, eEVENT /*eEvent*/) {
    return false;
}

bool CWidget::bWithCursor() const {
    return false;
}

WINDOW* CWidget::pGetWindow() const {
    return pParent == nullptr ? nullptr : pParent->pGetWindow();
}

void CWidget::_PrintAttributSansFormatW(WINDOW* pWindow, int nRow, int nColumn, chtype attr,
                                        const wchar_t* pszText) {
    if (pszText != nullptr) {
        DrawTextLine(pWindow, nRow, nColumn, attr, pszText, INT_MAX);
    }
}

void CWidget::_PrintAttributSansFormatA(WINDOW* pWindow, int nRow, int nColumn, chtype attr,
                                        const char* pszText) {
    if (pszText != nullptr) {
        DrawTextLine(pWindow, nRow, nColumn, attr, csFromUTF8(pszText), INT_MAX);
    }
}

void CWidget::_PrintW(WINDOW* pWindow, int nRow, int nColumn, const wchar_t* pszFormat, ...) {
    // Unlike its narrow sister, vswprintf does not tell how much room it lacked.
    std::wstring csText(256, L'\0');
    int nLength = -1;
    while (nLength < 0 && csText.size() <= MAX_FORMATTED) {
        std::va_list stArguments;
        va_start(stArguments, pszFormat);
        nLength = std::vswprintf(csText.data(), csText.size(), pszFormat, stArguments);
        va_end(stArguments);
        csText.resize(nLength < 0 ? 2 * csText.size() : static_cast<std::size_t>(nLength));
    }
    if (nLength > 0) {
        DrawTextLine(pWindow, nRow, nColumn, A_NORMAL, csText, INT_MAX);
    }
}

void CWidget::_PrintA(WINDOW* pWindow, int nRow, int nColumn, const char* pszFormat, ...) {
    std::va_list stArguments;
    va_start(stArguments, pszFormat);
    char* pszText = nullptr;
    const int nLength = ::vasprintf(&pszText, pszFormat, stArguments);
    va_end(stArguments);
    if (nLength >= 0) {
        _PrintAttributSansFormatA(pWindow, nRow, nColumn, A_NORMAL, pszText);
        std::free(pszText);
    }
}

int CWidget::_nSmartPrint(int nRow, int nColumn, const wchar_t* pszText, chtype attr, int nMaxWidth,
                          int nEndRow) {
    if (pszText == nullptr) {
        return 0;
    }
    const int nLeft = pParent == nullptr ? 0 : x;
    const int nTop = pParent == nullptr ? 0 : y;
    const int nColumns = nMaxWidth == -1 ? width - nColumn - 2 : nMaxWidth;
    int nLines = 0;
    for (const std::wstring_view svLine : tabWrapWords(pszText, nColumns)) {
        if (nRow + nLines >= nEndRow) {
            break;
        }
        std::wstring csLine(svLine);
        std::replace(csLine.begin(), csLine.end(), L'\t', L' ');
        DrawTextLine(pGetWindow(), nTop + nRow + nLines, nLeft + nColumn, attr, csLine, nColumns);
        ++nLines;
    }
    return nLines;
}

void CWidget::_Redraw() {
    if (bFocus != 0) {
        Draw();
    } else {
        const CCursorKept clKept(pGetWindow());
        Draw();
    }
    if (WINDOW* const pWindow = pGetWindow(); pWindow != nullptr) {
        ::wrefresh(pWindow);
    }
}

bool CWidget::_bSendEvent(eEVENT eEvent) {
    return pParent != nullptr && pParent->bOnEvent(this, eEvent);
}

}  // namespace kalmo
