#include "app/interactive/new_server.h"

#include <cerrno>
#include <cstring>

#include "app/engine/hang_up_shield.h"
#include "app/engine/refusal.h"
#include "app/engine/run_view.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "app/interactive/message.h"
#include "app/interactive/upgrade_win.h"
#include "app/record/recorder.h"
#include "framework/conversion.h"
#include "framework/profile_line.h"
#include "framework/text.h"
#include "tui/dialogs/config_account_win.h"
#include "tui/dialogs/config_win.h"
#include "tui/dialogs/install_progress_win.h"
#include "tui/dialogs/telemetry_win.h"
#include "tui/toolkit/directory.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_DEFAULT_DIR = L"/usr/local/ZDSQL";
constexpr const wchar_t* PSZ_DB_ROOT = L"%%EXE%%/BDD";
constexpr int CHOOSER_WIDTH = 80;
constexpr int CHOOSER_HEIGHT = 40;

// What speaks against a directory that was chosen. One that holds an instance stands for the instance.
CRefusal clRefuseInstallDir(CFSPath clDir, CServiceList& rtabServer) {
    if (pclCheckPathConflict(rtabServer, clDir.pszGet()) != nullptr) {
        return {};
    }
    // One that has no room for the slash has none for a command either.
    static_cast<void>(clDir.bAddTrailingSlash());
    const CRefusal clTooLong = clRefuseCommandRoom(clDir);
    return clTooLong ? clTooLong : clRefuseDirectory(clDir, rtabServer);
}

// The progress of an installation, in its window.
class CShownProgress final : public IInstallProgress {
  public:
    explicit CShownProgress(CInstallProgressWin& rclWindow) noexcept : m_rclWindow(rclWindow) {}

    void Begin(int nSteps) override { m_rclWindow.InitJauge(nSteps); }
    void FileDone() override { ShowFileDone(*m_rclWindow.pclGetJauge(), m_rclWindow); }
    void StepDone() override {
        m_rclWindow.IncJauge();
        m_rclWindow.Draw();
    }
    void Redraw() override { m_rclWindow.Draw(); }

  private:
    CInstallProgressWin& m_rclWindow;
};

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

void InstallNewServer(CDataExtractor* pclExtractor, CServiceManager* pclManager, CServiceList& rtabServer,
                      const CRecorder& rclRecorder) {
    CPathBuffer szDir;
    if (!bFindInstallDir(szDir, rtabServer, pclExtractor->rclGetTrace())) {
        return;
    }
    if (CService* const pclInstalled = pclCheckPathConflict(rtabServer, szDir); pclInstalled != nullptr) {
        pclExtractor->rclGetTrace().Step(L"install in " + CTString(szDir),
                                         L"holds " + CTString(pclInstalled->pszGetName()) + L": upgrade");
        UpgradeServer(pclExtractor, pclInstalled, rclRecorder);
        return;
    }
    CDataExtractor::STInstallParam stParam;
    if (bConfigNewServer(rtabServer, stParam, szDir) &&
        bChooseTelemetry(ETelemetryState::Unknown, stParam.nTelemetry)) {
        ExecuteInstallServer(pclExtractor, szDir, pclManager, stParam, rclRecorder);
    }
}

bool bFindInstallDir(CPathBuffer& rszDir, CServiceList& rtabServer, CTrace& rclTrace) {
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
        CFSPath clDir;
        if (!clDir.bSet(csDir)) {
            ShowErrorBox(csFromUTF8(std::strerror(ENAMETOOLONG)));
        } else if (const CRefusal clRefusal = clRefuseInstallDir(clDir, rtabServer)) {
            bTellRefusal(L"install directory", *clRefusal, rclTrace);
        } else {
            clDir.CopyTo(rszDir);
            return true;
        }
    }
}

bool bConfigNewServer(CServiceList& rtabServer, CDataExtractor::STInstallParam& rstParam,
                      const wchar_t* pszDir) {
    // As the server will read them.
    const auto ReadSettings = [&rstParam](const CConfigWin& rclDialog) {
        rstParam.csServerName = csValeurRelue(rclDialog.pszGetServerName());
        rstParam.csPort = rclDialog.pszGetPort();
        rstParam.csDaemonUser = csValeurRelue(rclDialog.pszGetDaemonUser());
    };
    const auto ReadAccount = [&rstParam](const CConfigAccountWin& rclDialog) {
        rstParam.csAdminAccount = rclDialog.pszGetAccount();
        rstParam.csAdminPassword = rclDialog.pszGetPassword();
    };
    const auto bAccountFits = [&](const CConfigAccountWin& rclDialog) {
        ReadAccount(rclDialog);
        const std::size_t nTooMany = CDataExtractor::nCommandExcess(pszDir, rstParam);
        if (nTooMany > 0) {
            ShowErrorBox(csFormatText(TEXTE_COMPTE_TROP_LONG, static_cast<int>(nTooMany)));
        }
        return nTooMany == 0;
    };
    return bAsk<CConfigWin>(ReadSettings, rtabServer) && bAsk<CConfigAccountWin>(ReadAccount, bAccountFits);
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
                          const CDataExtractor::STInstallParam& rstParam, const CRecorder& rclRecorder) {
    const CHangUpShield clShield;  // whoever sees the window knows that work has begun
    auto clWindow = clMakeCentred<CInstallProgressWin>(CInstallProgressWin::PREFERRED_WIDTH,
                                                       CInstallProgressWin::PREFERRED_HEIGHT);
    clWindow.Draw();
    CShownProgress clProgress(clWindow);
    CTrace& rclTrace = pclExtractor->rclGetTrace();
    const CXPtr_deleteRCV<CService> pclManagerHere = pclGetKalmoManagerInPath(pclManager, pszDir);
    if (pclManagerHere != nullptr) {
        bStopService(*pclManagerHere, rclTrace);
    }
    const bool bInstalled = pclExtractor->bInstall(pszDir, PSZ_DB_ROOT, rstParam, &clProgress);
    rclTrace.Outcome(L"install", bInstalled ? 0 : NO_REASON);
    if (pclManagerHere != nullptr) {
        StartService(*pclManagerHere, rclTrace);
    }
    if (bInstalled) {
        rclRecorder.Installed(pszDir, rstParam);
    }
}

}  // namespace kalmo
