#include "samples/gallery/gallery_win.h"

namespace kalmo {

CGalleryWin::CGalleryWin(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle)
    : CWindow(nX, nY, nWidth, nHeight),
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
