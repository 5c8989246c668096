#include "tui/dialogs/config_account_win.h"

#include <utility>

#include "framework/text.h"
#include "tui/toolkit/attribute.h"

namespace kalmo {

CConfigAccountWin::CConfigAccountWin(int nX, int nY, int nWidth, int nHeight, CCheck fnCheck)
    : COkCancelWin(nX, nY, nWidth, nHeight),
      m_fnCheck(std::move(fnCheck)),
      m_clTitle(this, csLoadText(TEXTE_TITRE_COMPTE).pszGet(), 2, 2, nWidth - 5, 3, 1, ATTR_BORDER),
      m_clAccount(this, L"Admin", 2, 6, nWidth - 5, 3, csLoadText(TEXTE_COMPTE).pszGet(), eBORDER_FRAME),
      m_clPassword(this, L"", 2, 10, nWidth - 5, 3, csLoadText(TEXTE_MOT_DE_PASSE).pszGet(), eBORDER_FRAME) {
    AddChild(&m_clTitle);
    AddChild(&m_clAccount);
    AddChild(&m_clPassword);
    _AddButtons();
    bSetFocus(&m_clAccount);
}

bool CConfigAccountWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (eEvent == eEVENT_ENTER) {
        return _bGoTo(pclSender == &m_clAccount ? static_cast<CWidget*>(&m_clPassword) : &m_clOk);
    }
    return COkCancelWin::bOnEvent(pclSender, eEvent);
}

void CConfigAccountWin::_Confirm() {
    if (!m_fnCheck || m_fnCheck(*this)) {
        COkCancelWin::_Confirm();
    } else {
        Draw();
    }
}

}  // namespace kalmo
