#include "tui/toolkit/ok_cancel_win.h"

#include "framework/text.h"

namespace kalmo {
namespace {

constexpr int OK_BUTTON_WIDTH = 10;

}  // namespace

COkCancelWin::COkCancelWin(int nX, int nY, int nWidth, int nHeight)
    : CWindow(nX, nY, nWidth, nHeight),
      m_clOk(this, csLoadText(TEXTE_OK).pszGet(), {nWidth, nHeight, 2, OK_BUTTON_WIDTH}, 0),
      m_clCancel(this, csLoadText(TEXTE_ANNULER).pszGet(), {nWidth, nHeight, 2, OK_BUTTON_WIDTH}, 1) {}

void COkCancelWin::_AddButtons() {
    AddChild(&m_clOk);
    AddChild(&m_clCancel);
}

bool COkCancelWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (eEvent != eEVENT_PRESSED) {
        return false;
    }
    if (pclSender == &m_clOk) {
        _Confirm();
        return true;
    }
    if (pclSender == &m_clCancel) {
        bRunning = 0;
        return true;
    }
    return false;
}

void COkCancelWin::_Confirm() {
    m_nResult = 1;
    bRunning = 0;
}

bool COkCancelWin::_bGoTo(CWidget* pclChild) {
    bSetFocus(pclChild);
    Draw();
    return true;
}

}  // namespace kalmo
