#include "app/listing/listing.h"

#include <cerrno>
#include <string_view>

#include "app/config/server_config.h"
#include "app/engine/refusal.h"
#include "app/engine/server_services.h"
#include "framework/disk_file.h"
#include "services/service_manager.h"
#include "services/service_states.h"

namespace kalmo {
namespace {

CTString csNameInOrders(const CService& rclService) {
    const std::wstring_view svService = rclService.pszGetName();
    return bIsManager(rclService) ? CTString(PSZ_MANAGER_PROGRAM)
                                  : CTString(svService.substr(std::wstring_view(PSZ_SERVICE_PREFIX).size()));
}

// A file that cannot be read tells no port, while one without the key tells the default.
std::optional<int> nPortOf(CService& rclService) {
    CPathBuffer szConfPath;
    GetZDConfPath(&rclService, szConfPath);
    CDiskFile clConf;
    const bool bReadable = !bIsManager(rclService) && CDiskFile::bFileExists(szConfPath) &&
                           clConf.bOpen(szConfPath, CDiskFile::eMODE::Read);
    return bReadable ? std::optional(nReadServerPort(szConfPath)) : std::nullopt;
}

CTString csVersionOf(CService& rclService) {
    const CTString csVersion = csGetProgramVersion(csGetProgramWithoutArg(&rclService));
    return csVersion == L"?" ? CTString() : csVersion;
}

// Whether whoever knows the services answers at all; the reason is in errno. Scripts need nobody.
bool bAnswers() {
    int nError = 0;
    if (CServiceManager::ms_eDistri == eSystemd) {
        CServiceManager::csGetSystemdProp("Version", L"", &nError);
    }
    errno = nError;
    return nError == 0;
}

}  // namespace

std::optional<std::vector<STListed>> tabListInstances() {
    CServiceManager clManager;
    clManager.bInit(nullptr, 0);
    CServiceList tabService;
    ListServer(clManager, tabService);
    if (tabService.bEmpty() && !bAnswers()) {
        return std::nullopt;
    }
    const std::vector<eSERVICESTATUS> tabState = tabGetStatus(tabService);
    std::vector<STListed> tabListed;
    for (std::size_t n = 0; n < tabService.nGetCount(); ++n) {
        CService& rclService = *tabService[n];
        tabListed.push_back({bIsManager(rclService), csNameInOrders(rclService), rclService.pszGetName(),
                             nPortOf(rclService), csVersionOf(rclService), csGetProgramDirectory(&rclService),
                             tabState[n], !clRefuseRemoval(rclService)});
    }
    return tabListed;
}

}  // namespace kalmo
