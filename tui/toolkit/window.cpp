#include "tui/toolkit/window.h"

#include <algorithm>
#include <vector>

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/screen.h"

namespace kalmo {
namespace {

// Every living window, the lowest first: what has to be drawn again when the terminal changes its size.
std::vector<CWindow*> g_tabWindow;

}  // namespace

CWindow::CWindow(int nX, int nY, int nWidth, int nHeight) : CWidget(nullptr, nX, nY, nWidth, nHeight) {
    g_tabWindow.push_back(this);
    __OpenCursesWindow();
}

CWindow::~CWindow() {
    __CloseCursesWindow();
    std::erase(g_tabWindow, this);
    dialog_clear();
}

// A curses window beyond the screen's edge is beaten into shape by curses at each change of the screen's size
// and never gets its own back, so only the part on the screen is made.
void CWindow::__OpenCursesWindow() {
    if (!bDialogOpen() || x < 0 || y < 0) {
        return;
    }
    const int nRows = std::min(height, LINES - y);
    const int nColumns = std::min(width, COLS - x);
    if (nRows > 0 && nColumns > 0) {
        pWin = ::newwin(nRows, nColumns, y, x);
        // The two corners beside the shadow are never drawn: what is behind the window stays to be seen
        // there.
        ::untouchwin(pWin);
    }
}

void CWindow::__CloseCursesWindow() {
    if (pWin != nullptr) {
        ::delwin(pWin);
        pWin = nullptr;
    }
}

void CWindow::__RebuildScreen() {
    dialog_clear();
    for (CWindow* const pclWindow : g_tabWindow) {
        pclWindow->__CloseCursesWindow();
        pclWindow->__OpenCursesWindow();
        if (pclWindow->m_bShown) {
            pclWindow->Draw();
        }
    }
}

void CWindow::Draw() {
    m_bShown = true;
    _DrawWindow();
    if (pFocus != nullptr) {
        for (CWidget* pclChild = pFocus->next; pclChild != pFocus; pclChild = pclChild->next) {
            pclChild->Draw();
        }
        pFocus->Draw();
        if (pFocus->bFocus != 0) {
            pFocus->_ShowCursor();  // A dialog that was on top may have left another one.
        } else {
            PlaceCursor(pWin, pFocus->y, pFocus->x);  // A window that only tells: where it begins to.
        }
    }
    if (pWin != nullptr) {
        ::wnoutrefresh(pWin);
    }
    if (bDialogOpen()) {
        ::doupdate();
    }
}

void CWindow::_DrawWindow() {
    DrawRectWithBorderAndShadow(pWin, 0, 0, width, height, ATTR_BORDER, ATTR_WINDOW_FILL, ATTR_NORMAL,
                                ATTR_BACKGROUND);
}

void CWindow::_DrawTitle(int nRow, int nColumn, const wchar_t* pszTitle) {
    if (pszTitle != nullptr) {
        DrawTextLine(pWin, nRow, nColumn, ATTR_BORDER, pszTitle, width - 2 - nColumn);
    }
}

void CWindow::AddChild(CWidget* pclChild) {
    if (pFocus == nullptr) {
        pclChild->next = pclChild;
        pclChild->prev = pclChild;
        pFocus = pclChild;
        pclChild->bSetFocus(1);
        return;
    }
    pclChild->next = pFocus;
    pclChild->prev = pFocus->prev;
    pFocus->prev->next = pclChild;
    pFocus->prev = pclChild;
}

bool CWindow::bSetFocus(CWidget* pclChild) {
    if (pFocus != nullptr) {
        pFocus->bSetFocus(0);
    }
    pFocus = pclChild;
    return pclChild->bSetFocus(1);
}

int CWindow::OnKeyEvent(int nKey) {
    if (pFocus == nullptr) {
        return 1;
    }
    if (nKey == TOUCHE_TAB && pFocus->next != nullptr) {
        pFocus->bSetFocus(0);
        do {
            pFocus = pFocus->next;
        } while (!pFocus->bSetFocus(1));
        Draw();
    } else {
        pFocus->bOnKeyEvent(nKey);
    }
    return 1;
}

void CWindow::MainLoop() {
    bRunning = 1;
    while (bRunning != 0) {
        int nKey = -1;
        if (!bReadKey(&nKey)) {
            bRunning = 0;
            break;
        }
        OnKeyEvent(nKey);
        if (nKey == KEY_RESIZE) {
            __RebuildScreen();
        }
    }
}

}  // namespace kalmo
