#ifndef KALMO_TUI_DIALOGS_CONFIG_WIN_H
#define KALMO_TUI_DIALOGS_CONFIG_WIN_H

#include "services/service.h"
#include "tui/toolkit/entry.h"
#include "tui/toolkit/ok_cancel_win.h"

namespace kalmo {

/// Asks for a new server's name, its port and the system account that it runs as.
///
/// OK ends the dialog only when these go together with the machine and the servers on it; else a box tells
/// why not, and the dialog goes on.
class CConfigWin : public COkCancelWin {
  public:
    static constexpr int PREFERRED_WIDTH = 70;
    static constexpr int PREFERRED_HEIGHT = 24;

    /// The services are the installed ones; they are borrowed and must outlive the dialog.
    CConfigWin(int nX, int nY, int nWidth, int nHeight, CServiceList& rclServices);

    /// What stands in the fields; each is valid until its field changes.
    [[nodiscard]] const wchar_t* pszGetServerName() const noexcept { return m_clName.pszGetText(); }
    /// Decimal digits; may be empty or any number.
    [[nodiscard]] const wchar_t* pszGetPort() const noexcept { return m_clPort.pszGetText(); }
    [[nodiscard]] const wchar_t* pszGetDaemonUser() const noexcept { return m_clDaemonUser.pszGetText(); }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _Confirm() override;
    /// Whether the settings can be used: the account exists or is to be created, no installed server but the
    /// shared manager has the same name or port, the machine knows no service of that name, and one can have
    /// it. Names count as the server will read them. What speaks against the settings has been shown.
    bool _bCheck();
    /// False, and shown, when that server has this port.
    bool _bCheckPort(long nPort, CService& rclService);
    /// Shows why the settings cannot be used.
    static void _ShowConflict(const wchar_t* pszText);

  private:
    /// False when the account does not exist and is not to be created either.
    bool __bCheckAccount();
    bool __bCheckName(const CService& rclService);
    /// False, and shown, when the machine has a service of that name, listed or not, or none can have it.
    bool __bCheckNewName();
    [[nodiscard]] CTString __csName() const;

    CServiceList& m_rclServices;
    CEntry m_clName;
    CNumEntry m_clPort;
    CEntryLower m_clDaemonUser;
};

}  // namespace kalmo

#endif
