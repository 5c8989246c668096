// "kalmo": the daemon of one server instance.
//
//   kalmo --INSTALLER   registers and starts the service "ZDCS-" + name; 255 when it fails
//   kalmo --service     serves until SIGTERM: greets every TCP connection on "AccessPort" with a line
//   kalmo --version     prints the version

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "samples/server/install_log.h"
#include "samples/server/instance.h"
#include "samples/server/registration.h"
#include "samples/server/service_loop.h"
#include "samples/server/tvzdsrv.h"
#include "services/lance_processus.h"
#include "services/service_manager.h"

namespace kalmo::sample {
namespace {

constexpr int nInstallerFailed = 255;

// The directory of the server's own tables, owned by the account that the daemon runs as.
bool bPrepareDatabase(const STInstance& rst, CInstallLog& rclLog) {
    CFSPath clSystem = rst.clDatabaseRoot;
    if (rst.clDatabaseRoot.bEmpty() || !clSystem.bAppend(L"__system/") ||
        !CDiskFile::bCreateDirectory(clSystem.svGet())) {
        rclLog.Line(L"cannot create the database directory " + clSystem.csGet());
        return false;
    }
    if (rst.csDaemonUser.bEmpty()) {
        return true;
    }
    const passwd* const pstUser = ::getpwnam(csToUTF8(rst.csDaemonUser).pszGet());
    if (pstUser == nullptr) {
        rclLog.Line(L"no such account: " + rst.csDaemonUser);
        return false;
    }
    const bool bOwned =
        CDiskFile::bSetFileOwnerUnix(rst.clDatabaseRoot.svGet(), pstUser->pw_uid, pstUser->pw_gid) &&
        CDiskFile::bSetFileOwnerUnix(clSystem.svGet(), pstUser->pw_uid, pstUser->pw_gid);
    rclLog.Line(L"databases of account " + rst.csDaemonUser + (bOwned ? L": ok" : L": failed"));
    return bOwned;
}

int nInstall(const STInstance& rst) {
    CInstallLog clLog(rst.clDirectory);
    if (!bNameAllowed(rst.csName)) {
        clLog.Line(L"the instance name \"" + rst.csName +
                   L"\" may hold letters, digits, \"_\" and \"-\" only");
        return nInstallerFailed;
    }
    CServiceManager clManager;
    STRegistration stService{L"ZDCS-" + rst.csName, L"ZDSQL server " + rst.csName, rst.clDirectory,
                             rst.csDaemonUser};
    const bool bDone = clManager.bInit(nullptr, 0) && stService.clProgram.bAppend(L"kalmo") &&
                       bPrepareDatabase(rst, clLog) && bRegister(stService, clLog);
    return bDone ? 0 : nInstallerFailed;
}

// The name of the SQL dialect, from the library beside the program.
std::string csDialect(const STInstance& rst) {
    const std::string csLibrary = std::string(rst.clDirectory.csGetUTF8().svGet()) + "tvsqlsrv.so";
    void* const pLibrary = ::dlopen(csLibrary.c_str(), RTLD_NOW);
    if (pLibrary == nullptr) {
        return "none";
    }
    const auto pfnDialect = reinterpret_cast<tvsqlsrv_Dialect_t>(::dlsym(pLibrary, "tvsqlsrv_Dialect"));
    std::string csName = pfnDialect != nullptr ? pfnDialect() : "none";
    ::dlclose(pLibrary);
    return csName;
}

int nServe(STInstance& rst) {
    const CUniqueFd clListener = clListenTcp(rst.nPort);
    if (!clListener.bValid()) {
        std::fprintf(stderr, "kalmo: cannot listen on port %d\n", rst.nPort);
        return 1;
    }
    CLanceProcessus clLogger;
    const CTString csLog = rst.clDatabaseRoot.csGet() + L"__system/kalmo.log";
    const wchar_t* tabLog[] = {csLog.pszGet()};
    clLogger.bLanceProcessus((rst.clDirectory.csGet() + L"zdlogger").pszGet(), 1, tabLog, nullptr);
    const auto Log = [&clLogger](const std::string& cs) {
        clLogger.bEcritEntree((cs + "\n").data(), static_cast<unsigned>(cs.size() + 1));
    };

    const CXYString<char> csVersion = csOwnVersion();
    Log("start " + std::string(csVersion.svGet()) + ", dialect " + csDialect(rst));
    ServeUntilTerminated(
        clListener,
        [&] {
            std::array<char, 256> szLine{};
            tvzdsrv_Greeting(szLine.data(), szLine.size(), csToUTF8(rst.csName).pszGet(), csVersion.pszGet());
            return std::string(szLine.data()) + "\n";
        },
        [&] {
            bReadInstance(&rst);
            Log("configuration read again");
        });
    Log("stop");
    return 0;
}

int nMain(std::string_view svMode) {
    STInstance st;
    if (!bReadInstance(&st)) {
        std::fputs("kalmo: the path of the configuration is too long\n", stderr);
        return nInstallerFailed;
    }
    if (svMode == "--INSTALLER") {
        return nInstall(st);
    }
    if (svMode == "--service") {
        return nServe(st);
    }
    if (svMode == "--version") {
        std::printf("kalmo %s\n", csOwnVersion().pszGet());
        return 0;
    }
    std::fputs("Usage: kalmo --INSTALLER | --service | --version\n", stderr);
    return 2;
}

}  // namespace
}  // namespace kalmo::sample

int main(int nArgc, char** ppszArgv) {
    return kalmo::sample::nRunProgram(nArgc, ppszArgv, kalmo::sample::nMain);
}
