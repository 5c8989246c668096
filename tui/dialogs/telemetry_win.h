#ifndef KALMO_TUI_DIALOGS_TELEMETRY_WIN_H
#define KALMO_TUI_DIALOGS_TELEMETRY_WIN_H

#include "app/config/server_config.h"
#include "tui/toolkit/check_box.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/ok_cancel_win.h"

namespace kalmo {

/// Asks whether a server may send technical data about its use.
class CTelemetryWin : public COkCancelWin {
  public:
    static constexpr int PREFERRED_WIDTH = 70;
    static constexpr int PREFERRED_HEIGHT = 22;

    /// The box is checked at first unless the state is Off.
    CTelemetryWin(int nX, int nY, int nWidth, int nHeight, ETelemetryState eState);

    /// On or Off as answered; without an answer the state that the dialog was made with.
    [[nodiscard]] ETelemetryState eGetState() const noexcept { return m_eState; }

    /// Enter on the box goes to OK; the space bar toggles it.
    int OnKeyEvent(int nKey) override;

  protected:
    void _Confirm() override;

  private:
    void __InfoToWidget() noexcept;
    void __WidgetToInfo() noexcept;

    ETelemetryState m_eState;
    CLibel m_clText;
    CCheckBox m_clBox;
};

}  // namespace kalmo

#endif
