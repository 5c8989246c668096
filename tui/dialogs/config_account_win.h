#ifndef KALMO_TUI_DIALOGS_CONFIG_ACCOUNT_WIN_H
#define KALMO_TUI_DIALOGS_CONFIG_ACCOUNT_WIN_H

#include <functional>

#include "tui/toolkit/entry.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/ok_cancel_win.h"

namespace kalmo {

/// Asks for the administrator account of a new server's databases. The dialog itself takes whatever is typed,
/// unless whoever shows it lends it a check; the password is shown and may be empty.
class CConfigAccountWin : public COkCancelWin {
  public:
    static constexpr int PREFERRED_WIDTH = 70;
    static constexpr int PREFERRED_HEIGHT = 24;

    /// Is asked when OK is pressed; when false, and shown, the dialog goes on.
    using CCheck = std::function<bool(const CConfigAccountWin& rclDialog)>;

    CConfigAccountWin(int nX, int nY, int nWidth, int nHeight, CCheck fnCheck = {});

    /// What stands in the fields; each is valid until its field changes.
    [[nodiscard]] const wchar_t* pszGetAccount() const noexcept { return m_clAccount.pszGetText(); }
    [[nodiscard]] const wchar_t* pszGetPassword() const noexcept { return m_clPassword.pszGetText(); }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _Confirm() override;

  private:
    CCheck m_fnCheck;
    CLibel m_clTitle;
    CEntry m_clAccount;
    CEntry m_clPassword;
};

}  // namespace kalmo

#endif
