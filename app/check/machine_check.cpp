#include "app/check/machine_check.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/check/finding_text.h"
#include "app/engine/run_lock.h"
#include "app/engine/trace.h"
#include "app/unattended/orders.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"
#include "services/service_command.h"
#include "services/service_manager.h"
#include "services/systemctl.h"

namespace kalmo {
namespace {

enum eMACHINE : int { LOCKED, NO_ANSWER, INIT_UNKNOWN, COMMAND_MISSING, BOOT_TOOL_MISSING, BOOT_TOOL_WANTED };

bool bOnPath(std::string_view svTool) {
    const char* const pszPath = std::getenv("PATH");
    std::string_view svRest = pszPath == nullptr ? "" : pszPath;
    while (!svRest.empty()) {
        const std::string_view svFolder = svRest.substr(0, svRest.find(':'));
        svRest.remove_prefix(std::min(svRest.size(), svFolder.size() + 1));
        if (::access((std::string(svFolder) + "/" + std::string(svTool)).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

void CheckMachine(int nOperation, CFindings& rclFindings) {
    const auto Tell = [&rclFindings](eSEVERITY eSeverity, const char* pszCode, int nText,
                                     const CTString& csWhat = {}) {
        rclFindings.Add(eSeverity, pszCode, csFormatLine(TEXTE_CHECK_MACHINE, nText, csWhat));
    };
    if (::geteuid() != 0) {
        rclFindings.Add(eSEVERITY::Error, "not-root", csInOneLine(csLoadText(TEXTE_PAS_ROOT)));
    }
    if (const int nHolder = CRunLock::nHolder(); nHolder != 0) {
        Tell(eSEVERITY::Warning, "locked", LOCKED, std::to_wstring(nHolder));
    }
    const bool bSystemd = CServiceManager::ms_eDistri == eSystemd;
    if (CServiceManager::ms_eDistri == eNotDetected) {
        Tell(eSEVERITY::Error, "init-unknown", INIT_UNKNOWN);
    } else if (const int nError = CServiceManager::nGetSystemctlError();
               !bSystemd && nError != 0 && CDiskFile::bFileExists(PSZ_SYSTEMCTL)) {
        Tell(eSEVERITY::Warning, "init-no-answer", NO_ANSWER, csReason(nError));
    }
    if ((nOperation == OP_INSTALL || !bSystemd) && ::access("/bin/sh", X_OK) != 0) {
        Tell(eSEVERITY::Error, "missing-command", COMMAND_MISSING, L"/bin/sh");
    }
    if (nOperation != OP_UPGRADE && !bSystemd) {
        // An uninstallation goes on without it, and fails in the end; what the server's own programs make of
        // it they know.
        const bool bUninstall = nOperation == OP_UNINSTALL;
        const std::wstring csCommand(csBootCommand(L"x").svGet());
        const std::wstring csTool = csCommand.substr(0, csCommand.find(L' '));
        if (!csTool.empty() && !bOnPath(csToUTF8(csTool).svGet())) {
            Tell(bUninstall ? eSEVERITY::Error : eSEVERITY::Warning, "missing-command",
                 bUninstall ? BOOT_TOOL_MISSING : BOOT_TOOL_WANTED, csTool);
        }
    }
}

}  // namespace kalmo
