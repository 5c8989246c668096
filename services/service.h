#ifndef KALMO_SERVICES_SERVICE_H
#define KALMO_SERVICES_SERVICE_H

#include <memory>
#include <string_view>

#include "framework/array.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The states that a service can be in, numbered like those of a Windows service, and one more for failed.
enum eSERVICESTATUS : int {
    eServiceUnknown = -1,  ///< The state could not be asked for (SysV only).
    eServiceStopped = 1,
    eServiceStarting = 2,
    eServiceStopping = 3,
    eServiceRunning = 4,
    eServiceFailed = 8,
};

class CServiceManager;

/// The control codes that a service understands.
inline constexpr unsigned CONTROL_STOP = 1;
inline constexpr unsigned CONTROL_RELOAD = 6;

/// One system service: a systemd unit or a SysV init script, and what the installer does with it.
///
/// Made by CServiceManager, owned by whoever asked it for the service. Every operation works through
/// systemctl or through the script, whichever CServiceManager::ms_eDistri says, so the manager must have
/// been initialised. An operation that fails returns false and leaves the record as it was; it is over when
/// it returns. Pointers to texts stay valid as long as the record, unless stated otherwise.
///
/// Names are passed to systemctl and to the shell as they are. They are not input of strangers: only root
/// can create a service or run the installer.
///
/// Its methods lie in service.cpp; those for the removal in service_removal.cpp.
class CService {
  public:
    /// A SysV service, whose two other texts are read from its script when they are asked for.
    CService(CServiceManager* pclManager, const wchar_t* pszName);
    /// A service whose texts are known. Each may be null: the record keeps copies of those that are not.
    CService(CServiceManager* pclManager, const wchar_t* pszName, const wchar_t* pszDisplayName,
             const wchar_t* pszBinaryPath);

    /// Who made this record; not owned.
    [[nodiscard]] CServiceManager* pclGetManager() const noexcept { return m_pclManager; }
    /// The unit's name without ".service", or the script's file name.
    [[nodiscard]] const wchar_t* pszGetName() const noexcept { return m_pszName.get(); }
    /// The description; null for a systemd unit without one. Under SysV the text behind Name=" in the
    /// script, kept once read; the service's name where the script has none.
    const wchar_t* pszGetDisplayName();
    /// The command line of the service's program, null when unknown. Under SysV the text behind Program=" in
    /// the script, kept once read. Valid until SetBinaryPathFromSysVScript.
    const wchar_t* pszBinaryPathName();
    /// Takes the program's command line from the script "/etc/init.d/" + name. Nothing changes when the
    /// script cannot be read or does not tell.
    void SetBinaryPathFromSysVScript();

    [[nodiscard]] const wchar_t* pszGetStartName() const noexcept { return L"root"; }
    [[nodiscard]] int nGetStartType() const noexcept { return 2; }
    [[nodiscard]] int nGetErrorControl() const noexcept { return 1; }
    [[nodiscard]] int nGetServiceType() const noexcept { return 0x10; }

    /// Starts the service. pszArgs, which may be null or empty, goes to the script; systemd gets none.
    bool bStart(const wchar_t* pszArgs);
    bool bStop();
    bool bRestart();
    /// CONTROL_STOP or CONTROL_RELOAD; any other code is false and does nothing.
    bool bSendControlCommand(unsigned dwCode);
    /// The state now. *pnError, unless it is null, tells why it could not be asked for; else it is 0. A state
    /// that systemd does not know counts as stopped, and so does a script whose "status" ends neither with 0
    /// (running) nor with 1 (failed).
    eSERVICESTATUS eGetStatus(int* pnError = nullptr);
    /// Takes the service out of the boot sequence and deletes its unit file or script.
    ///
    /// Under systemd a refused "disable" is a failure that changes nothing; afterwards the service is
    /// stopped too. Under SysV only the last step counts, and a script that is already gone is a success.
    /// Nothing but files and symbolic links is deleted.
    /// On failure errno tells the reason, under systemd that of systemctl: EPERM where it lacked a right,
    /// ECANCELED where its words name no reason of the system; it may be 0 where no init system is known.
    /// On success *pnStays, unless it is null, tells why a unit file or a script stays, or could not be asked
    /// for and may stay, which does not count: an error number, else 0.
    bool bRemove(int* pnStays = nullptr);

  private:
    using CText = std::unique_ptr<wchar_t[]>;

    [[nodiscard]] std::wstring_view __svName() const noexcept;
    [[nodiscard]] bool __bSysVCommand(std::wstring_view svAction) const;
    [[nodiscard]] bool __bReadScript(std::string_view svMarker, std::size_t nMaxLine, CText* pText) const;
    bool __bRemoveSystemd(int* pnStays);
    bool __bRemoveSysV(int* pnStays);

    CServiceManager* m_pclManager;
    CText m_pszName;
    CText m_pszBinaryPath;
    CText m_pszDisplayName;
};

/// The services found on a machine. The list owns its records.
using CServiceList = CXArraySingle<CXPtr_deleteRCV<CService>>;

}  // namespace kalmo

#endif
