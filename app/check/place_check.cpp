#include "app/check/place_check.h"

#include <cstdio>
#include <optional>
#include <string>

#include "app/check/finding_text.h"
#include "app/check/room_judge.h"
#include "app/config/server_config.h"
#include "app/engine/process_list.h"
#include "app/engine/refusal.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "app/unattended/orders.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"
#include "services/init_script.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

enum eLIEU : int { DIRECTORY_TAKEN, NAME_MASKED, LISTENED, LISTENED_BY };

// The inode of a socket that listens on a port; 0 where the machine does not tell it.
std::optional<unsigned long long> ullListening(int nPort) {
    constexpr unsigned LISTENING = 0x0A;
    for (const wchar_t* const pszTable : {L"/proc/net/tcp", L"/proc/net/tcp6"}) {
        for (const std::string& rcsLine : tabKernelLines(pszTable)) {
            unsigned unPort = 0;
            unsigned unState = 0;
            unsigned long long ullInode = 0;
            const int nRead =
                std::sscanf(rcsLine.c_str(), " %*[^:]: %*[0-9A-Fa-f]:%x %*s %x %*s %*s %*s %*s %*s %llu",
                            &unPort, &unState, &ullInode);
            if (nRead >= 2 && unState == LISTENING && static_cast<int>(unPort) == nPort) {
                return ullInode;
            }
        }
    }
    return std::nullopt;
}

void CheckPort(int nPort, CServiceList& rtabServer, CFindings& rclFindings) {
    for (const CXPtr_deleteRCV<CService>& rpclService : rtabServer) {
        if (!bIsManager(*rpclService) && nServerPort(*rpclService) == nPort) {
            rclFindings.Add(
                eSEVERITY::Error, "port-taken",
                csInOneLine(csFormatText(TEXTE_CONFLIT_PORT, nPort, csGetDisplayName(*rpclService))),
                KEY_PORT.pszKey);
        }
    }
    if (const auto ullInode = ullListening(nPort)) {
        const int nProcess = *ullInode == 0 ? 0 : nSocketHolder(*ullInode);
        rclFindings.Add(
            eSEVERITY::Error, "port-listened",
            csFormatLine(TEXTE_CHECK_LIEU, nProcess == 0 ? LISTENED : LISTENED_BY, std::to_wstring(nPort),
                         std::to_wstring(nProcess), csQuoted(csProcessName(nProcess))),
            KEY_PORT.pszKey);
    }
}

}  // namespace

void CheckPlace(const STOrders& rstOrders, const CTString& csService, CServiceList& rtabServer,
                CFindings& rclFindings) {
    const CFSPath& rclDir = rstOrders.clInstallDir;
    if (bUnitMasked(csService)) {
        rclFindings.Add(eSEVERITY::Error, "name-masked",
                        csFormatLine(TEXTE_CHECK_LIEU, NAME_MASKED, csQuoted(csService)), KEY_SERVER.pszKey);
    }
    if (CService* const pclOther = pclCheckPathConflict(rtabServer, rclDir.pszGet()); pclOther != nullptr) {
        rclFindings.Add(eSEVERITY::Error, "directory-taken",
                        csFormatLine(TEXTE_CHECK_LIEU, DIRECTORY_TAKEN, csQuoted(rclDir.csGet()),
                                     csQuoted(csGetDisplayName(*pclOther))),
                        KEY_DIRECTORY.pszKey);
    } else if (const CRefusal clRefusal = clRefuseDirectory(rclDir, rtabServer)) {
        rclFindings.Add(eSEVERITY::Error, clRefusal->pszCode, csInOneLine(clRefusal->csShown),
                        KEY_DIRECTORY.pszKey);
    }
    CheckPort(rstOrders.nPort, rtabServer, rclFindings);
    // The server's own programs make their service known, in the only place that is meant for it.
    CRoomJudge clRoom(rclFindings);
    const CTString csDefinition = CServiceManager::ms_eDistri == eSystemd
                                      ? L"/etc/systemd/system/" + csService + L".service"
                                      : csScriptPath(csService);
    clRoom.File(std::string(csToUTF8(csDefinition).svGet()), 1);
}

}  // namespace kalmo
