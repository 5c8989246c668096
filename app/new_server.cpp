#include "app/new_server.h"

#include <cerrno>
#include <cstring>

#include "app/hang_up_shield.h"
#include "app/message.h"
#include "app/server_services.h"
#include "app/texts.h"
#include "app/trace.h"
#include "app/upgrade_server.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "tui/dialogs/config_account_win.h"
#include "tui/dialogs/config_win.h"
#include "tui/dialogs/install_progress_win.h"
#include "tui/dialogs/telemetry_win.h"
#include "tui/directory.h"
#include "tui/placement.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_DEFAULT_DIR = L"/usr/local/ZDSQL";
constexpr const wchar_t* PSZ_DB_ROOT = L"%%EXE%%/BDD";
constexpr int CHOOSER_WIDTH = 80;
constexpr int CHOOSER_HEIGHT = 40;

// Makes a dialog of its preferred size and shows it; gives pfnRead what was answered. False when cancelled.
template <class TDialog, class CReader, class... TArg>
bool bAsk(CReader pfnRead, TArg&&... arg) {
    auto clDialog = clMakeCentred<TDialog>(TDialog::PREFERRED_WIDTH, TDialog::PREFERRED_HEIGHT,
                                           std::forward<TArg>(arg)...);
    clDialog.Draw();
    clDialog.MainLoop();
    if (clDialog.nGetResult() == 0) {
        return false;
    }
    pfnRead(clDialog);
    return true;
}

}  // namespace

void InstallNewServer(CDataExtractor* pclExtractor, CServiceManager* pclManager, CServiceList& rtabServer) {
    CPathBuffer szDir;
    if (!bFindInstallDir(szDir)) {
        return;
    }
    if (CService* const pclInstalled = pclCheckPathConflict(rtabServer, szDir); pclInstalled != nullptr) {
        pclExtractor->rclGetTrace().Step(L"install in " + CTString(szDir),
                                         L"holds " + CTString(pclInstalled->pszGetName()) + L": upgrade");
        UpgradeServer(pclExtractor, pclInstalled);
        return;
    }
    CDataExtractor::STInstallParam stParam;
    if (bConfigNewServer(rtabServer, stParam) &&
        bChooseTelemetry(ETelemetryState::Unknown, stParam.nTelemetry)) {
        ExecuteInstallServer(pclExtractor, szDir, pclManager, stParam);
    }
}

bool bFindInstallDir(CPathBuffer& rszDir) {
    CTString csDir(PSZ_DEFAULT_DIR);
    while (true) {
        auto clChooser = clMakeCentred<CDirectory>(CHOOSER_WIDTH, CHOOSER_HEIGHT,
                                                   csLoadText(TEXTE_REPERTOIRE).pszGet(), csDir.pszGet());
        clChooser.Draw();
        clChooser.MainLoop();
        if (clChooser.nGetResult() == 0) {
            return false;
        }
        csDir = CTString(clChooser.pszGetDir());
        if (CFSPath clDir; clDir.bSet(csDir)) {
            clDir.CopyTo(rszDir);
            return true;
        }
        ShowErrorBox(csFromUTF8(std::strerror(ENAMETOOLONG)));
    }
}

CService* pclCheckPathConflict(CServiceList& rtabServer, const wchar_t* pszDir) {
    for (const CXPtr_deleteRCV<CService>& pclService : rtabServer) {
        if (!bIsManager(*pclService) &&
            CDiskFile::bSameDirectoryName(csGetProgramDirectory(pclService.get()), pszDir)) {
            return pclService.get();
        }
    }
    return nullptr;
}

bool bConfigNewServer(CServiceList& rtabServer, CDataExtractor::STInstallParam& rstParam) {
    return bAsk<CConfigWin>(
               [&rstParam](const CConfigWin& rclDialog) {
                   rstParam.csServerName = rclDialog.pszGetServerName();
                   rstParam.csPort = rclDialog.pszGetPort();
                   rstParam.csDaemonUser = rclDialog.pszGetDaemonUser();
               },
               rtabServer) &&
           bAsk<CConfigAccountWin>([&rstParam](const CConfigAccountWin& rclDialog) {
               rstParam.csAdminAccount = rclDialog.pszGetAccount();
               rstParam.csAdminPassword = rclDialog.pszGetPassword();
           });
}

bool bChooseTelemetry(ETelemetryState eKnown, int& rnOn) {
    if (eKnown != ETelemetryState::Unknown) {
        rnOn = eKnown == ETelemetryState::On ? 1 : 0;
        return true;
    }
    return bAsk<CTelemetryWin>(
        [&rnOn](const CTelemetryWin& rclDialog) {
            rnOn = rclDialog.eGetState() == ETelemetryState::On ? 1 : 0;
        },
        eKnown);
}

void ExecuteInstallServer(CDataExtractor* pclExtractor, const wchar_t* pszDir, CServiceManager* pclManager,
                          const CDataExtractor::STInstallParam& rstParam) {
    auto clProgress = clMakeCentred<CInstallProgressWin>(CInstallProgressWin::PREFERRED_WIDTH,
                                                         CInstallProgressWin::PREFERRED_HEIGHT);
    clProgress.Draw();
    const CHangUpShield clShield;
    CTrace& rclTrace = pclExtractor->rclGetTrace();
    const CXPtr_deleteRCV<CService> pclManagerHere = pclGetKalmoManagerInPath(pclManager, pszDir);
    if (pclManagerHere != nullptr) {
        StopService(*pclManagerHere, rclTrace);
    }
    const bool bInstalled = pclExtractor->bInstall(pszDir, PSZ_DB_ROOT, rstParam, &clProgress);
    rclTrace.Step(L"install", bInstalled ? L"ok" : L"failed");
    if (pclManagerHere != nullptr) {
        StartService(*pclManagerHere, rclTrace);
    }
}

}  // namespace kalmo
