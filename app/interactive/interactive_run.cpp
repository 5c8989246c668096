#include "app/interactive/interactive_run.h"

#include <unistd.h>

#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/run_lock.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"
#include "app/interactive/message.h"
#include "app/interactive/new_server.h"
#include "app/interactive/uninstall_win.h"
#include "app/interactive/upgrade_win.h"
#include "app/record/recorder.h"
#include "framework/console_message.h"
#include "framework/conversion.h"
#include "framework/text.h"
#include "services/service_manager.h"
#include "tui/dialogs/choose_server.h"
#include "tui/dialogs/upgrade_or_install_win.h"
#include "tui/toolkit/msg_box.h"
#include "tui/toolkit/screen.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr std::size_t MAX_TERMINAL_NAME = 64;

// A machine on which only the shared manager is left has nothing to upgrade.
bool bAnythingToUpgrade(CServiceList& rtabServer) {
    return rtabServer.nGetCount() >= 2 ||
           (rtabServer[0]->pszGetName() != nullptr && !bIsManager(*rtabServer[0]));
}

// False, and told, when another installer works on this machine.
bool bAlone(CRunLock& rclLock, CTrace& rclTrace) {
    const bool bMine = rclLock.bTake(rclTrace);
    if (!bMine) {
        rclTrace.Failed(L"have the machine alone", L"another installer works on it");
        ShowErrorBox(csLoadText(TEXTE_AUTRE_INSTALLATEUR));
    }
    return bMine;
}

void RunAction(CDataExtractor* pclExtractor, const CRecorder& rclRecorder) {
    CServiceManager clManager;
    InitServices(clManager, pclExtractor->rclGetTrace());
    CServiceList tabServer;
    ListServer(clManager, tabServer);
    if (tabServer.bEmpty()) {
        InstallNewServer(pclExtractor, &clManager, tabServer, rclRecorder);
        return;
    }
    eACTION eAction = eACTION::Install;
    if (!bChooseAction(&eAction, bAnythingToUpgrade(tabServer) ? 1 : 0)) {
        return;
    }
    switch (eAction) {
        case eACTION::Install: InstallNewServer(pclExtractor, &clManager, tabServer, rclRecorder); break;
        case eACTION::Upgrade: ChooseServer(1, pclExtractor, &tabServer, rclRecorder); break;
        case eACTION::Uninstall: ChooseServer(0, pclExtractor, &tabServer, rclRecorder); break;
    }
}

// TERM as it is told; what is much too long to be one is cut.
CTString csTerminalName(const STTerminal& rst) {
    return csQuoted(csFromUTF8(std::string_view(rst.csName).substr(0, MAX_TERMINAL_NAME)));
}

// Tells why there is no screen.
void RefuseTerminal(const STTerminal& rst, CTrace& rclTrace) {
    CTString csReason = L"no terminal";
    CTString csText = csLoadText(TEXTE_TERMINAL);
    if (rst.eState == eTERMINAL::NoName) {
        csReason = L"the variable TERM is not set";
        csText = csLoadText(TEXTE_TERMINAL_SANS_NOM);
    } else if (rst.eState == eTERMINAL::NoCursor) {
        csReason = L"no cursor on the terminal " + csTerminalName(rst);
        csText = csFormatText(TEXTE_TERMINAL_SANS_CURSEUR, csTerminalName(rst));
    }
    rclTrace.Failed(L"open the screen", csReason);
    ConsoleMessage(csLoadText(TEXTE_ATTENTION), csText);
}

// False, and told, where there is none.
bool bOpenScreen(CTrace& rclTrace) {
    if (::isatty(STDIN_FILENO) == 0) {
        RefuseTerminal({}, rclTrace);
        return false;
    }
    const bool bOpen = init_dialog();
    const STTerminal& rst = rstTerminal();
    if (!bOpen) {
        RefuseTerminal(rst, rclTrace);
    } else if (rst.bOurs) {
        rclTrace.Step(L"terminal",
                      csTerminalName(rst) + L" is not known here, shown as " + csFromUTF8(rst.csShown));
    }
    return bOpen;
}

}  // namespace

void RunInteractive(CTrace& rclTrace, const CTString& csRecordPath) {
    if (!bOpenScreen(rclTrace)) {
        return;
    }
    RepaintScreen();
    const CScreenView clView(rclTrace);
    const CRecorder clRecorder(csRecordPath, rclTrace);
    CRunLock clLock;
    if (bRoot() && bAlone(clLock, rclTrace) && clRecorder.bReady()) {
        CDataExtractor clExtractor(rclTrace);
        if (bDataExtractorInitialize(&clExtractor) && bLicense(&clExtractor)) {
            RunAction(&clExtractor, clRecorder);
        }
    }
    end_dialog();
    nRunShell("clear 2>/dev/null", rclTrace);
}

bool bRoot() {
    if (::geteuid() == 0) {
        return true;
    }
    CMsgBox::nShowCentred(50, 15, csLoadText(TEXTE_ATTENTION), csLoadText(TEXTE_PAS_ROOT),
                          CMsgBox::eTYPE::OneButton);
    return false;
}

bool bDataExtractorInitialize(CDataExtractor* pclExtractor) {
    if (pclExtractor->bInit()) {
        return true;
    }
    ShowDataError();
    return false;
}

bool bChooseAction(eACTION* peAction, int bOfferUpgrade) {
    auto clDialog = clMakeCentred<CUpgradeOrInstallWin>(
        CUpgradeOrInstallWin::PREFERRED_WIDTH, CUpgradeOrInstallWin::PREFERRED_HEIGHT, bOfferUpgrade);
    clDialog.Draw();
    clDialog.MainLoop();
    const int nFirst = static_cast<int>(bOfferUpgrade != 0 ? eACTION::Upgrade : eACTION::Install);
    *peAction = static_cast<eACTION>(clDialog.nGetSelectedItem() + nFirst);
    return clDialog.nGetResult() != 0;
}

void ChooseServer(int bUpgrade, CDataExtractor* pclExtractor, CServiceList* ptabServer,
                  const CRecorder& rclRecorder) {
    CService* pclService = nullptr;
    {
        auto clDialog =
            clMakeCentred<CChooseServer>(CChooseServer::PREFERRED_WIDTH,
                                         CChooseServer::nPreferredHeight(*ptabServer), *ptabServer, bUpgrade);
        clDialog.Draw();
        clDialog.MainLoop();
        pclService = clDialog.nGetResult() != 0 ? clDialog.pclGetServerService() : nullptr;
    }
    if (pclService == nullptr) {
        return;
    }
    if (bUpgrade != 0) {
        UpgradeServer(pclExtractor, pclService, rclRecorder);
    } else {
        UninstallServer(pclService, pclExtractor->rclGetTrace(), rclRecorder);
    }
}

}  // namespace kalmo
