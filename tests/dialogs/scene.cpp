// Runs one of the installer's dialogs and prints its result and its answers.
//
//     dialog_scene DIALOG NUMBER [SERVICE DISPLAY-NAME PROGRAM]...
//
// NUMBER is the dialog's own argument; "-" as a display name stands for none. The progress window moves its
// gauge with each key.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/process_info.h"
#include "services/service_manager.h"
#include "tui/dialogs/choose_server.h"
#include "tui/dialogs/config_account_win.h"
#include "tui/dialogs/config_win.h"
#include "tui/dialogs/install_progress_win.h"
#include "tui/dialogs/telemetry_win.h"
#include "tui/dialogs/upgrade_or_install_win.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/screen.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

std::string csUtf8(const wchar_t* psz) {
    return csToUTF8(psz).pszGet();
}

template <class TDialog, class... TArg>
TDialog clMake(TArg&&... arg) {
    return clMakeCentred<TDialog>(TDialog::PREFERRED_WIDTH, TDialog::PREFERRED_HEIGHT,
                                  std::forward<TArg>(arg)...);
}

// Runs a dialog; its result, followed by its answers.
template <class TDialog, class TAnswers>
std::string csRun(TDialog&& rclDialog, TAnswers Answers) {
    rclDialog.Draw();
    rclDialog.MainLoop();
    return std::to_string(rclDialog.nGetResult()) + " " + Answers(rclDialog);
}

std::string csProgress(int nMaximum) {
    auto clDialog = clMake<CInstallProgressWin>();
    clDialog.InitJauge(nMaximum);
    clDialog.Draw();
    for (int nKey = 0; bReadKey(&nKey);) {
        clDialog.IncJauge();
        ::wrefresh(clDialog.pGetWindow());
    }
    return {};
}

std::string csDialog(std::string_view svName, int nNumber, CServiceList& rclServices) {
    if (svName == "action") {
        return csRun(clMake<CUpgradeOrInstallWin>(nNumber),
                     [](auto& rcl) { return std::to_string(rcl.nGetSelectedItem()); });
    }
    if (svName == "choose") {
        const int nHeight = CChooseServer::nPreferredHeight(rclServices);
        return csRun(
            clMakeCentred<CChooseServer>(CChooseServer::PREFERRED_WIDTH, nHeight, rclServices, nNumber),
            [](auto& rcl) {
                const CService* const pclService = rcl.pclGetServerService();
                return pclService == nullptr ? "none" : csUtf8(pclService->pszGetName());
            });
    }
    if (svName == "config") {
        return csRun(clMake<CConfigWin>(rclServices), [](auto& rcl) {
            return csUtf8(rcl.pszGetServerName()) + "|" + csUtf8(rcl.pszGetPort()) + "|" +
                   csUtf8(rcl.pszGetDaemonUser());
        });
    }
    if (svName == "account") {
        return csRun(clMake<CConfigAccountWin>(), [](auto& rcl) {
            return csUtf8(rcl.pszGetAccount()) + "|" + csUtf8(rcl.pszGetPassword());
        });
    }
    if (svName == "telemetry") {
        return csRun(clMake<CTelemetryWin>(static_cast<ETelemetryState>(nNumber)),
                     [](auto& rcl) { return std::to_string(static_cast<int>(rcl.eGetState())); });
    }
    return csProgress(nNumber);
}

int nMain(int nArgc, char** ppszArgv) {
    SetLocaleUTF8();
    SetLangueFramework();
    CServiceManager::ms_eDistri = eSystemd;  // What is not told about a service is not looked for either.
    CServiceList clServices;
    for (int n = 3; n + 2 < nArgc; n += 3) {
        const CTString csDisplayName = csFromUTF8(ppszArgv[n + 1]);
        clServices.Add(CXPtr_deleteRCV<CService>(new CService(
            nullptr, csFromUTF8(ppszArgv[n]).pszGet(),
            csDisplayName == L"-" ? nullptr : csDisplayName.pszGet(), csFromUTF8(ppszArgv[n + 2]).pszGet())));
    }
    if (nArgc < 3 || !init_dialog()) {
        return 3;
    }
    const std::string csReport = csDialog(ppszArgv[1], std::atoi(ppszArgv[2]), clServices);
    end_dialog();
    std::printf("%s\n", csReport.c_str());
    return 0;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    return kalmo::nMain(nArgc, ppszArgv);
}
