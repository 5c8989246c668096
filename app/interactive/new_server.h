#ifndef KALMO_APP_INTERACTIVE_NEW_SERVER_H
#define KALMO_APP_INTERACTIVE_NEW_SERVER_H

#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "framework/fs_path.h"
#include "services/service.h"

/// The interactive installation of a new instance: its questions in their order, then the engine's work. An
/// operator who cancels a question ends it, with nothing done to the machine.
namespace kalmo {

class CRecorder;
class CServiceManager;
class CTrace;

/// The whole installation. The payload is open; the list holds what is installed already. A directory that
/// holds an instance turns it into the upgrade of that instance.
void InstallNewServer(CDataExtractor* pclExtractor, CServiceManager* pclManager, CServiceList& rtabServer,
                      const CRecorder& rclRecorder);

/// Asks for the install directory, an absolute path in which an instance can be installed and found again, or
/// the directory of one that is listed. False when cancelled.
bool bFindInstallDir(CPathBuffer& rszDir, CServiceList& rtabServer, CTrace& rclTrace);

/// Asks for all settings but the telemetry choice. An administrator account that the server's program in the
/// install directory could not be told is refused. False when cancelled.
bool bConfigNewServer(CServiceList& rtabServer, CDataExtractor::STInstallParam& rstParam,
                      const wchar_t* pszDir);

/// Gives the telemetry choice, 1 or 0: the known one or, when none is known, the operator's. False when
/// cancelled.
bool bChooseTelemetry(ETelemetryState eKnown, int& rnOn);

/// Installs with a progress window. A shared manager that runs from the directory stands still meanwhile.
void ExecuteInstallServer(CDataExtractor* pclExtractor, const wchar_t* pszDir, CServiceManager* pclManager,
                          const CDataExtractor::STInstallParam& rstParam, const CRecorder& rclRecorder);

}  // namespace kalmo

#endif
