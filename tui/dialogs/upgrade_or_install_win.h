#ifndef KALMO_TUI_DIALOGS_UPGRADE_OR_INSTALL_WIN_H
#define KALMO_TUI_DIALOGS_UPGRADE_OR_INSTALL_WIN_H

#include "tui/toolkit/ok_cancel_win.h"
#include "tui/toolkit/radio_list.h"

namespace kalmo {

/// Asks what to do on a machine that has servers: upgrade one, install another one, uninstall one.
///
/// Enter on an action goes to OK, so that a second one confirms.
class CUpgradeOrInstallWin : public COkCancelWin {
  public:
    static constexpr int PREFERRED_WIDTH = 71;
    static constexpr int PREFERRED_HEIGHT = 23;

    /// bWithFirstOption: whether upgrading is offered.
    CUpgradeOrInstallWin(int nX, int nY, int nWidth, int nHeight, int bWithFirstOption);

    /// The chosen action: its index among those that are offered.
    [[nodiscard]] int nGetSelectedItem() const { return m_clAction.nGetSelectedItem(); }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  private:
    CRadioList m_clAction;
};

}  // namespace kalmo

#endif
