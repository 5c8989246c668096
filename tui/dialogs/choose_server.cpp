#include "tui/dialogs/choose_server.h"

#include <algorithm>

#include "app/config/server_config.h"
#include "framework/text.h"
#include "tui/toolkit/attribute.h"

namespace kalmo {
namespace {

constexpr int MIN_LIST_HEIGHT = 3;  // Its frame and one server.

}  // namespace

int CChooseServer::nPreferredHeight(const CServiceList& rclServices) noexcept {
    return static_cast<int>(rclServices.nGetCount()) + 15;
}

CChooseServer::CChooseServer(int nX, int nY, int nWidth, int nHeight, CServiceList& rclServices,
                             int bHideManager)
    : COkCancelWin(nX, nY, nWidth, nHeight),
      m_rclServices(rclServices),
      m_csTitle(csLoadText(bHideManager != 0 ? TEXTE_TITRE_MISE_A_JOUR : TEXTE_TITRE_DESINSTALLATION)),
      m_clList(this, 2, 3, nWidth - 4, std::max(nHeight - 10, MIN_LIST_HEIGHT), 0) {
    __Fill(bHideManager);
    AddChild(&m_clList);
    _AddButtons();
}

void CChooseServer::__Fill(int bHideManager) {
    for (const auto& rpclService : m_rclServices) {
        const wchar_t* const pszName = rpclService->pszGetDisplayName();
        if (pszName != nullptr && (bHideManager == 0 || !bIsManager(*rpclService))) {
            m_clList.AddLine(pszName);
        }
    }
}

CService* CChooseServer::pclGetServerService() const {
    const auto nLine = static_cast<std::size_t>(m_clList.nGetSelectedLine());
    if (m_clList.pszGetSelectedLine() == nullptr || nLine >= m_rclServices.nGetCount()) {
        return nullptr;
    }
    return m_rclServices[nLine].get();
}

bool CChooseServer::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (pclSender == &m_clList && eEvent == eEVENT_VALIDATED) {
        return _bGoTo(&m_clOk);
    }
    return COkCancelWin::bOnEvent(pclSender, eEvent);
}

void CChooseServer::_DrawWindow() {
    COkCancelWin::_DrawWindow();
    SmartPrint(2, 2, m_csTitle.pszGet(), ATTR_BORDER, width - 4);
}

}  // namespace kalmo
