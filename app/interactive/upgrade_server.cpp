#include "app/interactive/upgrade_server.h"

#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/refusal.h"
#include "app/interactive/new_server.h"
#include "app/interactive/upgrade_win.h"
#include "tui/toolkit/placement.h"

namespace kalmo {

void UpgradeServer(CDataExtractor* pclExtractor, CService* pclService) {
    if (const CRefusal clRefusal = clRefuseUpgrade(*pclService)) {
        bTellRefusal(L"upgrade " + CTString(pclService->pszGetName()), *clRefusal,
                     pclExtractor->rclGetTrace());
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
