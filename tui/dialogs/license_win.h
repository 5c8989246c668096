#ifndef KALMO_TUI_DIALOGS_LICENSE_WIN_H
#define KALMO_TUI_DIALOGS_LICENSE_WIN_H

#include "framework/xy_string.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/window.h"

namespace kalmo {

/// The licence agreement: its text, a button to accept and one to refuse.
///
/// Accepting is possible once the text's last line has been on the screen: at once when the text fits, never
/// in a window too small to show any of it. The caller makes the window, calls Draw and MainLoop and reads
/// bAccepted.
class CLicenseWin : public CWindow {
  public:
    static constexpr int PREFERRED_WIDTH = 76;
    static constexpr int PREFERRED_HEIGHT = 24;

    /// Position and size in cells of the screen. Lines longer than nWidth - 6 columns are broken at words.
    CLicenseWin(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszText);

    [[nodiscard]] bool bAccepted() const noexcept { return m_bAccepted; }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _DrawWindow() override;

  private:
    /// Whether the text's last line is on the screen, none of its rows being clipped.
    [[nodiscard]] bool __bEndShown() const;

    CScrollableLibel m_clText;
    CButton m_clAccept;
    CButton m_clRefuse;
    CTString m_csTitle;
    bool m_bReadable;  ///< The window has room for at least one line and column of the text.
    bool m_bAccepted = false;
};

}  // namespace kalmo

#endif
