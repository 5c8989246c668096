// "kalmomanager": the supervisor shared by all instances of a machine, service "KalmoManager".
//
//   kalmomanager --INSTALLER   registers and starts the service unless it is installed; 255 when it fails
//   kalmomanager --service     answers on its socket with one line an instance, until SIGTERM
//   kalmomanager --list        prints what the running service answers
//   kalmomanager --version     prints the version

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "app/config/server_config.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "samples/server/failure.h"
#include "samples/server/install_log.h"
#include "samples/server/instance.h"
#include "samples/server/registration.h"
#include "samples/server/service_loop.h"
#include "services/service.h"
#include "services/service_manager.h"

namespace kalmo::sample {
namespace {

constexpr int INSTALLER_FAILED = 255;
constexpr const wchar_t* PSZ_SERVICE = L"KalmoManager";
constexpr const char* PSZ_SOCKET = "/run/kalmomanager.sock";

// True when another directory's manager serves the machine: it is shared and stays.
bool bServedFromElsewhere(CServiceManager& rclManager, const STInstance& rst) {
    const CXPtr_deleteRCV<CService> pclOther = rclManager.pclGetService(PSZ_SERVICE, 0);
    return pclOther != nullptr && CDiskFile::bFileExists(csGetProgramWithoutArg(pclOther.get())) &&
           !CDiskFile::bSameDirectoryName(csGetProgramDirectory(pclOther.get()), rst.clDirectory.svGet());
}

int nInstall(const STInstance& rst) {
    CInstallLog clLog(rst.clDirectory);
    if (const std::optional<int> nCode = nToldToFail(rst, L"kalmomanager", clLog)) {
        return *nCode;
    }
    CServiceManager clManager;
    clManager.bInit(nullptr, 0);
    if (bServedFromElsewhere(clManager, rst)) {
        clLog.Line(L"KalmoManager is installed already");
        return 0;
    }
    STRegistration stService{PSZ_SERVICE, L"ZDSQL server manager", rst.clDirectory, L""};
    if (!stService.clProgram.bAppend(L"kalmomanager")) {
        clLog.Line(L"the program's path is too long: " + rst.clDirectory.csGet());
        return INSTALLER_FAILED;
    }
    return bRegister(stService, clLog) ? 0 : INSTALLER_FAILED;
}

// One line an instance: the name of its service and its status number.
std::string csInstances() {
    CServiceManager clManager;
    clManager.bInit(nullptr, 0);
    std::string cs;
    unsigned dwCursor = 0;
    while (const CXPtr_deleteRCV<CService> pcl = clManager.pclEnumService(&dwCursor, L"ZDCS-", 0)) {
        cs += csToUTF8(pcl->pszGetName()).pszGet();
        cs += ' ';
        cs += std::to_string(pcl->eGetStatus());
        cs += '\n';
    }
    return cs;
}

int nServe() {
    const CUniqueFd clListener = clListenUnix(PSZ_SOCKET);
    if (!clListener.bValid()) {
        std::fprintf(stderr, "kalmomanager: cannot listen on %s\n", PSZ_SOCKET);
        return 1;
    }
    ServeUntilTerminated(clListener, {.fnGreeting = csInstances});
    return 0;
}

int nList() {
    std::string csAnswer;
    const bool bAnswered = bAskUnix(PSZ_SOCKET, &csAnswer);
    std::fputs(csAnswer.c_str(), stdout);
    return bAnswered ? 0 : 1;
}

int nMain(CArguments tabArgument) {
    const std::string_view svMode = svModeOf(tabArgument);
    // The file is set-user-id root: whoever is not root may ask for the version and nothing else.
    if (svMode == "--version") {
        std::printf("kalmomanager %s\n", csToUTF8(csGetOwnVersion()).pszGet());
        return 0;
    }
    if (::getuid() != 0) {
        std::fputs("kalmomanager: only root may do this\n", stderr);
        return INSTALLER_FAILED;
    }
    STInstance st;
    if (svMode == "--INSTALLER") {
        // Of the settings it needs none.
        static_cast<void>(bReadInstance(&st));
        return st.clDirectory.bEmpty() ? INSTALLER_FAILED : nInstall(st);
    }
    if (svMode == "--service") {
        return nServe();
    }
    if (svMode == "--list") {
        return nList();
    }
    std::fputs("Usage: kalmomanager --INSTALLER | --service | --list | --version\n", stderr);
    return 2;
}

}  // namespace
}  // namespace kalmo::sample

int main(int nArgc, char** ppszArgv) {
    return kalmo::sample::nRunProgram(nArgc, ppszArgv, kalmo::sample::nMain);
}
