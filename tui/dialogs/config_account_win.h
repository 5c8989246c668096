#ifndef KALMO_TUI_DIALOGS_CONFIG_ACCOUNT_WIN_H
#define KALMO_TUI_DIALOGS_CONFIG_ACCOUNT_WIN_H

#include "tui/entry.h"
#include "tui/libel.h"
#include "tui/ok_cancel_win.h"

namespace kalmo {

/// Asks for the administrator account of a new server's databases. Takes whatever is typed; the password is
/// shown and may be empty.
class CConfigAccountWin : public COkCancelWin {
  public:
    static constexpr int PREFERRED_WIDTH = 70;
    static constexpr int PREFERRED_HEIGHT = 24;

    CConfigAccountWin(int nX, int nY, int nWidth, int nHeight);

    /// What stands in the fields; each is valid until its field changes.
    [[nodiscard]] const wchar_t* pszGetAccount() const noexcept { return m_clAccount.pszGetText(); }
    [[nodiscard]] const wchar_t* pszGetPassword() const noexcept { return m_clPassword.pszGetText(); }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  private:
    CLibel m_clTitle;
    CEntry m_clAccount;
    CEntry m_clPassword;
};

}  // namespace kalmo

#endif
