#ifndef KALMO_TUI_DIALOGS_INSTALL_PROGRESS_WIN_H
#define KALMO_TUI_DIALOGS_INSTALL_PROGRESS_WIN_H

#include "tui/toolkit/jauge.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/window.h"

namespace kalmo {

/// How far an installation has come: a text and a gauge, nothing to press.
///
/// The installation draws it, lends it to the install engine and destroys it at the end; MainLoop is never
/// called.
class CInstallProgressWin : public CWindow {
  public:
    static constexpr int PREFERRED_WIDTH = 70;
    static constexpr int PREFERRED_HEIGHT = 24;

    CInstallProgressWin(int nX, int nY, int nWidth, int nHeight);

    /// Sets the gauge's maximum.
    void InitJauge(int nMaximum) noexcept { m_clJauge.SetMaximum(nMaximum); }
    /// Moves the gauge on by one and draws it; the caller brings it to the screen.
    void IncJauge();
    /// For an extraction, which moves it by itself.
    [[nodiscard]] CJauge* pclGetJauge() noexcept { return &m_clJauge; }

  private:
    CLibel m_clText;
    CJauge m_clJauge;
};

}  // namespace kalmo

#endif
