#include "tui/dialogs/upgrade_or_install_win.h"

#include <algorithm>

#include "framework/text.h"

namespace kalmo {

CUpgradeOrInstallWin::CUpgradeOrInstallWin(int nX, int nY, int nWidth, int nHeight, int bWithFirstOption)
    : COkCancelWin(nX, nY, nWidth, nHeight),
      // On a low screen the title stays in the window.
      m_clAction(this, (nWidth - 60) / 2, std::max(0, (nHeight - 20) / 2), 60, 14,
                 csLoadText(TEXTE_TITRE_ACTION).pszGet(), 1, 0) {
    if (bWithFirstOption != 0) {
        m_clAction.AddOption(csLoadText(TEXTE_ACTION_MISE_A_JOUR).pszGet());
    }
    m_clAction.AddOption(csLoadText(TEXTE_ACTION_INSTALLER).pszGet());
    m_clAction.AddOption(csLoadText(TEXTE_ACTION_DESINSTALLER).pszGet());
    AddChild(&m_clAction);
    _AddButtons();
}

bool CUpgradeOrInstallWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (pclSender == &m_clAction && eEvent == eEVENT_VALIDATED) {
        return _bGoTo(&m_clOk);
    }
    return COkCancelWin::bOnEvent(pclSender, eEvent);
}

}  // namespace kalmo
