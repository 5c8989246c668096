#include "tui/dialogs/config_win.h"

#include <cwchar>
#include <string>

#include "app/config/server_config.h"
#include "framework/conversion.h"
#include "framework/profile_line.h"
#include "framework/text.h"
#include "tui/toolkit/msg_box.h"
#include "tui/toolkit/window.h"

namespace kalmo {
CConfigWin::CConfigWin(int nX, int nY, int nWidth, int nHeight, CServiceList& rclServices)
    : COkCancelWin(nX, nY, nWidth, nHeight),
      m_rclServices(rclServices),
      m_clName(this, csLoadText(TEXTE_NOM_SERVEUR_PROPOSE).pszGet(), 2, 2, nWidth - 5, 3,
               csLoadText(TEXTE_NOM_SERVEUR).pszGet(), eBORDER_FRAME),
      m_clPort(this, std::to_wstring(PORT_DEFAUT).c_str(), 2, 6, nWidth - 5, 3,
               csLoadText(TEXTE_PORT).pszGet(), eBORDER_FRAME),
      m_clDaemonUser(this, PSZ_ROOT, 2, 10, nWidth - 5, 3, csLoadText(TEXTE_COMPTE_SYSTEME).pszGet(),
                     eBORDER_FRAME) {
    AddChild(&m_clName);
    AddChild(&m_clPort);
    AddChild(&m_clDaemonUser);
    _AddButtons();
}

bool CConfigWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (eEvent == eEVENT_ENTER && pclSender == &m_clName) {
        return _bGoTo(&m_clPort);
    }
    if (eEvent == eEVENT_ENTER && pclSender == &m_clPort) {
        return _bGoTo(&m_clOk);
    }
    return COkCancelWin::bOnEvent(pclSender, eEvent);
}

void CConfigWin::_Confirm() {
    if (_bCheck()) {
        COkCancelWin::_Confirm();
    } else {
        Draw();
    }
}

bool CConfigWin::_bCheck() {
    if (!__bCheckAccount()) {
        return false;
    }
    // An empty field reads as 0, a number that no long holds as the nearest one.
    const long nPort = std::wcstol(m_clPort.pszGetText(), nullptr, 10);
    for (const auto& rpclService : m_rclServices) {
        if (!bIsManager(*rpclService) && (!__bCheckName(*rpclService) || !_bCheckPort(nPort, *rpclService))) {
            return false;
        }
    }
    return __bCheckNewName();
}

bool CConfigWin::__bCheckAccount() {
    const CTString csAccount = csValeurRelue(m_clDaemonUser.pszGetText());
    // Without a name the server runs as root; there is nothing to create.
    if (csAccount.bEmpty() || csAccount == PSZ_ROOT || bSystemAccountExists(csAccount)) {
        return true;
    }
    const CTString csQuestion = csFormatText(TEXTE_COMPTE_INCONNU, csAccount);
    const int nAnswer =
        CMsgBox::nShowCentred(60, 13, csLoadText(TEXTE_ATTENTION), csQuestion, CMsgBox::eTYPE::TwoButtons);
    Draw();
    return nAnswer == CMsgBox::RESULT_FIRST;
}

CTString CConfigWin::__csName() const {
    return csValeurRelue(m_clName.pszGetText());
}

bool CConfigWin::__bCheckName(const CService& rclService) {
    if (!bEgalSansCasse(__csName(), svInstanceName(rclService))) {
        return true;
    }
    _ShowConflict(csFormatText(TEXTE_CONFLIT_NOM, __csName()).pszGet());
    return false;
}

bool CConfigWin::__bCheckNewName() {
    const CTString csName = __csName();
    if (!bServiceCanBeNamed(csName)) {
        _ShowConflict(csFormatText(TEXTE_NOM_IMPOSSIBLE, csName).pszGet());
        return false;
    }
    if (bInstanceKnown(csName)) {
        _ShowConflict(csFormatText(TEXTE_CONFLIT_NOM, csName).pszGet());
        return false;
    }
    return true;
}

bool CConfigWin::_bCheckPort(long nPort, CService& rclService) {
    const int nUsed = nServerPort(rclService);
    if (nPort != nUsed) {
        return true;
    }
    _ShowConflict(csFormatText(TEXTE_CONFLIT_PORT, nUsed, csGetDisplayName(rclService)).pszGet());
    return false;
}

void CConfigWin::_ShowConflict(const wchar_t* pszText) {
    CMsgBox::nShowCentred(60, 20, csLoadText(TEXTE_ATTENTION), CTString(pszText), CMsgBox::eTYPE::OneButton);
}

}  // namespace kalmo
