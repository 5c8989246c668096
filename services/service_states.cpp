#include "services/service_states.h"

#include <algorithm>
#include <span>

#include "services/child_setup.h"
#include "services/service_manager.h"
#include "services/systemctl.h"
#include "services/systemctl_output.h"

namespace kalmo {
namespace {

using CServices = std::span<const CXPtr_deleteRCV<CService>>;

constexpr std::wstring_view SV_ASK_STATES = L"--property=ActiveState show";

// What remains of a launch's arguments for names.
constexpr std::size_t MAX_ASKED = MAX_ARGUMENT_VECTOR - 3;

eSERVICESTATUS eAskOne(CService& rclService) {
    int nError = 0;
    const eSERVICESTATUS eStatus = rclService.eGetStatus(&nError);
    return nError == 0 ? eStatus : eServiceUnknown;
}

// The states of a few units. Fewer answers than names: nobody knows whose is missing, and each is asked.
void AskSystemd(CServices tabService, std::vector<eSERVICESTATUS>* ptabStatus) {
    CTString csArguments(SV_ASK_STATES);
    for (const auto& rpclService : tabService) {
        csArguments += L" " + CTString(rpclService->pszGetName()) + L".service";
    }
    CXYString<char> csOutput;
    const bool bAsked = bAskSystemctl(csArguments, &csOutput, nullptr);
    const std::vector<CTString> tabState = tabReadValues(csOutput, L"ActiveState");
    for (std::size_t n = 0; n < tabService.size(); ++n) {
        ptabStatus->push_back(!bAsked                                ? eServiceUnknown
                              : tabState.size() == tabService.size() ? eReadActiveState(tabState[n])
                                                                     : eAskOne(*tabService[n]));
    }
}

}  // namespace

std::vector<eSERVICESTATUS> tabGetStatus(const CServiceList& rtabService) {
    const std::size_t nAtOnce = CServiceManager::ms_eDistri == eSystemd ? MAX_ASKED : 1;
    std::vector<eSERVICESTATUS> tabStatus;
    CServices tabLeft(rtabService.begin(), rtabService.end());
    while (!tabLeft.empty()) {
        const CServices tabSome = tabLeft.first(std::min(nAtOnce, tabLeft.size()));
        if (tabSome.size() > 1) {
            AskSystemd(tabSome, &tabStatus);
        } else {
            tabStatus.push_back(eAskOne(*tabSome.front()));
        }
        tabLeft = tabLeft.subspan(tabSome.size());
    }
    return tabStatus;
}

}  // namespace kalmo
