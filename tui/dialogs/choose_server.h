#ifndef KALMO_TUI_DIALOGS_CHOOSE_SERVER_H
#define KALMO_TUI_DIALOGS_CHOOSE_SERVER_H

#include <cstddef>

#include "framework/xy_string.h"
#include "services/service.h"
#include "tui/toolkit/list.h"
#include "tui/toolkit/ok_cancel_win.h"

namespace kalmo {

/// Asks for one of the installed servers, to upgrade or to uninstall it.
///
/// Shows the display names in the order of the list that it is given; a service without one is left out.
/// Enter on a server goes to OK, so that a second one confirms.
class CChooseServer : public COkCancelWin {
  public:
    static constexpr int PREFERRED_WIDTH = 63;
    /// Grows with the services.
    static int nPreferredHeight(const CServiceList& rclServices) noexcept;

    /// The services are borrowed and must outlive the dialog. bHideManager: leaves out the shared manager,
    /// which can be uninstalled but not upgraded, and asks for a server to upgrade.
    CChooseServer(int nX, int nY, int nWidth, int nHeight, CServiceList& rclServices, int bHideManager);

    /// The service whose place in the list is that of the selected line; null without a selected line or
    /// such a service. Services left out are not allowed for: precondition for the right answer is that none
    /// stands before one that is shown.
    [[nodiscard]] CService* pclGetServerService() const;

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _DrawWindow() override;

  private:
    void __Fill(int bHideManager);

    CServiceList& m_rclServices;
    CTString m_csTitle;
    CList m_clList;
};

}  // namespace kalmo

#endif
