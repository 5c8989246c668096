#include "samples/gallery/gallery_win.h"

#include "tui/geometry.h"

namespace kalmo {
namespace {

constexpr int PREFERRED_WIDTH = 64;
constexpr int PREFERRED_HEIGHT = 20;

}  // namespace

CGalleryWin::CGalleryWin(const wchar_t* pszTitle)
    : CWindow(nCentred(nDialogSize(PREFERRED_WIDTH, COLS), COLS),
              nCentred(nDialogSize(PREFERRED_HEIGHT, LINES), LINES), nDialogSize(PREFERRED_WIDTH, COLS),
              nDialogSize(PREFERRED_HEIGHT, LINES)),
      m_clNext(this, L"Next", width - 16, height - 6, 12, 4),
      m_csTitle(pszTitle) {}

void CGalleryWin::Show() {
    Draw();
    MainLoop();
}

bool CGalleryWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (pclSender == &m_clNext && eEvent == eEVENT_PRESSED) {
        bRunning = 0;
        return true;
    }
    return false;
}

void CGalleryWin::_DrawWindow() {
    CWindow::_DrawWindow();
    _DrawTitle(1, 2, m_csTitle.pszGet());
}

}  // namespace kalmo
