#ifndef KALMO_APP_ENGINE_SERVER_SERVICES_H
#define KALMO_APP_ENGINE_SERVER_SERVICES_H

#include <vector>

#include "framework/xy_string.h"
#include "services/service_manager.h"

/// The services of this product on a machine: the instances and the manager they share. Called by the
/// interactive and the unattended run alike.
namespace kalmo {

class CTrace;

/// Finds out what the machine runs its services with, and traces it. Before anything else here.
void InitServices(CServiceManager& rclManager, CTrace& rclTrace);

/// Fills the list: every instance in the order of the manager's listing, then the shared manager if it is
/// installed.
void ListServer(CServiceManager& rclManager, CServiceList& rtabServer);

/// The first listed service, the shared manager aside, whose program lies in that directory; null when there
/// is none. It stays the list's.
CService* pclCheckPathConflict(CServiceList& rtabServer, const wchar_t* pszDir);

/// The shared manager's service; null when it is not installed.
CXPtr_deleteRCV<CService> pclGetKalmoManager(CServiceManager& rclManager);
/// The shared manager's service when its program lies in that directory, else null. The second asks nobody
/// and looks in a list, whose the service stays.
CXPtr_deleteRCV<CService> pclGetKalmoManagerInPath(CServiceManager* pclManager, const wchar_t* pszDir);
CService* pclGetKalmoManagerInPath(CServiceList& rtabServer, const wchar_t* pszDir);

/// Whether a service runs. One that cannot be asked counts as not running, and the trace tells.
bool bRunning(CService& rclService, CTrace& rclTrace);
/// Stop and start a service and trace it. What comes of it decides nothing: the run goes on. A script may
/// have written on the screen, which is shown again. The result of stopping tells whether it was.
bool bStopService(CService& rclService, CTrace& rclTrace);
void StartService(CService& rclService, CTrace& rclTrace);

/// The services that an upgrade of one instance stops before and starts after it has replaced the files.
///
/// Owned by the upgrade. The shared manager is stopped only when it runs from this instance's directory, but
/// started after every upgrade that finds it stopped. After a failed replacement the owner starts nothing:
/// a half-replaced instance must not run.
class CUpgradeServices {
  public:
    /// Looks the manager up. The instance is borrowed, and so is the trace.
    CUpgradeServices(CService& rclInstance, CTrace& rclTrace);
    /// Takes the manager that was looked up; null when it is not installed.
    CUpgradeServices(CService& rclInstance, CXPtr_deleteRCV<CService> pclKalmoManager, CTrace& rclTrace);

    /// True when the manager ran from the instance's directory when this object was made.
    [[nodiscard]] bool bManagerHere() const noexcept { return m_bManagerHere; }
    [[nodiscard]] bool bInstanceRunning() { return bRunning(m_rclInstance, m_rclTrace); }
    /// The directory of the instance's program, with its trailing "/"; empty when the service tells none.
    [[nodiscard]] const CTString& csGetDirectory() const noexcept { return m_csDirectory; }

    void StopAll();
    void StartAll();
    /// What StopAll stopped and does not run now: the display names, each on a line of its own. Empty when
    /// all runs as before.
    [[nodiscard]] CTString csStoppedNow();

  private:
    CService& m_rclInstance;
    CTrace& m_rclTrace;
    CTString m_csDirectory;
    CXPtr_deleteRCV<CService> m_pclKalmoManager;  ///< Null when it is not installed.
    bool m_bManagerHere = false;
    bool m_bManagerStopped = false;  ///< By us: nobody has to be asked whether it runs.
    std::vector<CService*> m_tabStopped;
};

}  // namespace kalmo

#endif
