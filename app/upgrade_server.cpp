#include "app/upgrade_server.h"

#include "app/config/server_config.h"
#include "app/data_extractor.h"
#include "app/message.h"
#include "app/new_server.h"
#include "app/texts.h"
#include "app/trace.h"
#include "app/upgrade_win.h"
#include "tui/placement.h"

namespace kalmo {

void UpgradeServer(CDataExtractor* pclExtractor, CService* pclService) {
    if (csGetProgramDirectory(pclService).bEmpty()) {
        pclExtractor->rclGetTrace().Step(L"upgrade " + CTString(pclService->pszGetName()),
                                         L"failed: the service tells no program");
        ShowErrorBox(csFormatText(TEXTE_SANS_PROGRAMME, csGetDisplayName(*pclService)));
        return;
    }
    CPathBuffer szConfPath;
    GetZDConfPath(pclService, szConfPath);
    int nTelemetryOn = 0;
    if (bChooseTelemetry(eReadTelemetry(szConfPath), nTelemetryOn)) {
        DoUpgradeServer(pclExtractor, pclService, nTelemetryOn);
    }
}

void DoUpgradeServer(CDataExtractor* pclExtractor, CService* pclService, int nTelemetryOn) {
    auto clWindow = clMakeCentred<CUpgradeWin>(CUpgradeWin::PREFERRED_WIDTH, CUpgradeWin::PREFERRED_HEIGHT,
                                               pclService, pclExtractor, nTelemetryOn);
    clWindow.Draw();
    clWindow.MainLoop();
}

}  // namespace kalmo
