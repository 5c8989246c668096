#ifndef KALMO_SERVICES_SERVICE_MANAGER_H
#define KALMO_SERVICES_SERVICE_MANAGER_H

#include <mutex>
#include <string_view>
#include <vector>

#include "framework/array.h"
#include "framework/file_search.h"
#include "framework/xy_string.h"
#include "services/service.h"

namespace kalmo {

/// The init systems and distributions that are told apart. All but systemd work with SysV init scripts.
enum eDISTRI : int {
    eDebian = 0,
    eRedHat = 1,
    eMandriva = 2,
    eFedora = 3,
    eSuSE = 4,
    eGentoo = 5,
    eSlackware = 6,
    eSystemd = 7,
    eNotDetected = 8,
};

/// Finds out how the machine runs its services, and finds services.
///
/// Owned by whoever works with services; several may live at the same time. bInit comes first, after
/// CLanceProcessus::sInit. The records that it hands out belong to the caller and may outlive it. It makes
/// one listing at a time.
///
/// Its methods lie in service_manager.cpp; those for the detection of the init system in
/// service_manager_detection.cpp.
class CServiceManager : public CTableauDeBuffer {
  public:
    /// What the machine runs, an eDISTRI; the same for all managers and read by every operation of CService.
    /// Written by the first bInit, on the main thread before any other work with services. Until then
    /// operations behave as SysV ones of an unknown distribution.
    static int ms_eDistri;

    CServiceManager();
    CServiceManager(const CServiceManager&) = delete;
    CServiceManager& operator=(const CServiceManager&) = delete;
    ~CServiceManager();

    /// Detects the init system unless that has been done. Both arguments are ignored. Always true.
    bool bInit(const wchar_t* pszMachine, unsigned dwAccess);
    /// Why an existing systemctl could not be asked when the init system was detected: an error number, 0
    /// when it answered or just refused.
    [[nodiscard]] static int nGetSystemctlError() noexcept { return ms_nSystemctlError; }

    /// The service of that name, null when there is none. dwAccess is ignored.
    ///
    /// Under SysV the script may have the name written as a script's name (" ", tab, "/" and "." replaced)
    /// or, failing that, as it stands.
    [[nodiscard]] CXPtr_deleteRCV<CService> pclGetService(const wchar_t* pszName, unsigned dwAccess);

    /// The next service whose name begins with pszPrefix as a script's name would be written; null at the
    /// end or when the listing fails. A null or empty prefix finds every service. dwAccess is ignored. Under
    /// systemd the units that it has loaded come first, then those that just have a unit file.
    ///
    /// *pdwCursor is 0 to begin a listing, which ends one that was going on, and is then only passed back.
    /// At the end it keeps its last value: whoever lists again sets it to 0. Under systemd it is an index; a
    /// directory being read does not fit into it and stays in the manager, so that a stale cursor is
    /// harmless: the listing is over.
    [[nodiscard]] CXPtr_deleteRCV<CService> pclEnumService(unsigned* pdwCursor, const wchar_t* pszPrefix,
                                                           unsigned dwAccess);
    /// Ends a listing before its end and sets the cursor to 0.
    void AbortEnumService(unsigned* pdwCursor);

    /// The value of one property of a systemd unit; empty when it is unknown. *pnError, unless it is null,
    /// tells why it could not be asked for, EIO when systemctl refused to answer; else it is 0.
    static CTString csGetSystemdProp(const char* pszProperty, const wchar_t* pszName, int* pnError = nullptr);

  private:
    static int ms_nSystemctlError;
    static eDISTRI __eFindDistri();
    static void __GetScriptName(CTString* pcsName);

    CXPtr_deleteRCV<CService> __pclGetServiceSystemd(const wchar_t* pszName);
    CXPtr_deleteRCV<CService> __pclGetServiceSysV(const wchar_t* pszName);
    bool __bListSystemd(std::wstring_view svPrefix);
    void __AddSystemd(const std::vector<CTString>& rtabName);
    CXPtr_deleteRCV<CService> __pclNextSystemd(unsigned* pdwCursor, std::wstring_view svPrefix);
    CXPtr_deleteRCV<CService> __pclNextSysV(unsigned* pdwCursor, std::wstring_view svPrefix);
    void __EndListing();

    CUniqueDir m_pclScripts;         ///< The directory of a SysV listing that is going on.
    std::recursive_mutex m_clMutex;  ///< For code that shares a manager; no operation here locks it.
};

}  // namespace kalmo

#endif
