#include "tui/dialogs/license_win.h"

#include "framework/text.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

constexpr int BUTTON_WIDTH = 12;
constexpr int TEXT_END = 8;  // rows of the window below the text

}  // namespace

CLicenseWin::CLicenseWin(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszText)
    : CWindow(nX, nY, nWidth, nHeight),
      m_clText(this, csBrokenAtWords(CTString(pszText), nWidth - 6).c_str(), 1, 2, nWidth - 3, nHeight - 9),
      m_clAccept(this, csLoadText(TEXTE_ACCEPTER).pszGet(), {nWidth, nHeight, 2, BUTTON_WIDTH}, 0),
      m_clRefuse(this, csLoadText(TEXTE_REFUSER).pszGet(), {nWidth, nHeight, 2, BUTTON_WIDTH}, 1),
      m_csTitle(csLoadText(TEXTE_TITRE_LICENCE)),
      m_bReadable(nWidth > 6 && nHeight > 11) {
    AddChild(&m_clText);
    AddChild(&m_clAccept);
    AddChild(&m_clRefuse);
    if (!m_bReadable || m_clText.bScrollable()) {
        m_clAccept.SetEnable(0);
    } else {
        bSetFocus(&m_clAccept);
    }
}

bool CLicenseWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (pclSender == &m_clText && eEvent == eEVENT_END_REACHED) {
        Draw();
        return true;
    }
    if (eEvent == eEVENT_PRESSED && (pclSender == &m_clAccept || pclSender == &m_clRefuse)) {
        m_bAccepted = pclSender == &m_clAccept;
        bRunning = 0;
        return true;
    }
    return false;
}

bool CLicenseWin::__bEndShown() const {
    return m_bReadable && m_clText.bAtEnd() && pWin != nullptr && getmaxy(pWin) >= height - TEXT_END &&
           getmaxx(pWin) >= width;
}

void CLicenseWin::_DrawWindow() {
    CWindow::_DrawWindow();
    _DrawTitle(1, 2, m_csTitle.pszGet());
    if (__bEndShown()) {
        m_clAccept.SetEnable(1);
    }
}

}  // namespace kalmo
