// "kalmo": the daemon of one server instance.
//
//   kalmo --INSTALLER   registers and starts the service "ZDCS-" + name; 255 when it fails; behind it
//                       --CREATEUSER NAME --PWDC HEX makes an account
//   kalmo --service     serves until SIGTERM: greets every TCP connection on "AccessPort" with a line, and
//                       answers "LOGIN name password" with "OK" or "NO"
//   kalmo --version     prints the version

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "app/config/server_config.h"
#include "framework/account.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "samples/server/accounts.h"
#include "samples/server/failure.h"
#include "samples/server/first_answer.h"
#include "samples/server/install_log.h"
#include "samples/server/instance.h"
#include "samples/server/registration.h"
#include "samples/server/service_loop.h"
#include "samples/server/tvzdsrv.h"
#include "services/lance_processus.h"
#include "services/service_manager.h"

namespace kalmo::sample {
namespace {

constexpr int INSTALLER_FAILED = 255;

// The directory of the server's own tables and what an earlier daemon left in it, owned by the account that
// the daemon runs as now.
bool bPrepareDatabase(const STInstance& rst, CInstallLog& rclLog) {
    CFSPath clSystem = rst.clDatabaseRoot;
    if (rst.clDatabaseRoot.bEmpty() || !clSystem.bAppend(L"__system/") ||
        !CDiskFile::bCreateDirectory(clSystem.svGet())) {
        rclLog.Line(L"cannot create the database directory " + clSystem.csGet());
        return false;
    }
    const CTString csUser = rst.csDaemonUser.bEmpty() ? CTString(L"root") : rst.csDaemonUser;
    const std::optional<STAccount> stUser = stFindAccount(csToUTF8(csUser).pszGet());
    if (!stUser) {
        rclLog.Line(L"no such account: " + csUser);
        return false;
    }
    const auto bOwn = [&stUser](std::wstring_view svPath) {
        return CDiskFile::bSetFileOwnerUnix(svPath, stUser->nUser, stUser->nGroup);
    };
    bool bOwned = bOwn(rst.clDatabaseRoot.svGet()) && bOwn(clSystem.svGet());
    for (const wchar_t* const psz : {L"accounts", L"kalmo.log"}) {
        CFSPath clFile = clSystem;
        bOwned = bOwned && clFile.bAppend(psz) && (bOwn(clFile.svGet()) || errno == ENOENT);
    }
    rclLog.Line(L"databases of account " + csUser + (bOwned ? L": ok" : L": failed"));
    return bOwned;
}

// The account that the arguments behind "--INSTALLER" ask for.
struct STNewAccount {
    std::string csName;  // Empty: none.
    std::string csPassword;
};

// False, and told, when they make no sense.
bool bReadArguments(CArguments tabArgument, STNewAccount* pst, CInstallLog& rclLog) {
    if (tabArgument.empty()) {
        return true;
    }
    if (tabArgument.size() != 4 || tabArgument[0] != "--CREATEUSER" || tabArgument[1].empty() ||
        tabArgument[2] != "--PWDC") {
        rclLog.Line(L"an account takes --CREATEUSER NAME --PWDC HEX");
        return false;
    }
    const std::optional<std::string> csPassword = csDecipherPassword(tabArgument[1], tabArgument[3]);
    if (!csPassword) {
        rclLog.Line(L"no password of account " + csFromUTF8(tabArgument[1]) + L" stands behind --PWDC");
        return false;
    }
    *pst = {std::string(tabArgument[1]), *csPassword};
    return true;
}

bool bCreateAccount(const STInstance& rst, const STNewAccount& rstAccount, CInstallLog& rclLog) {
    if (rstAccount.csName.empty()) {
        return true;
    }
    const bool bMade = CAccounts(rst.clDatabaseRoot).bCreate(rstAccount.csName, rstAccount.csPassword);
    rclLog.Line(L"account " + csFromUTF8(rstAccount.csName) + (bMade ? L": ok" : L": failed"));
    return bMade;
}

// What a version of the instance says to those who connect, without the line's end.
std::string csGreeting(const STInstance& rst, const CXYString<char>& rcsVersion) {
    std::array<char, 256> szLine{};
    tvzdsrv_Greeting(szLine.data(), szLine.size(), csToUTF8(rst.csName).pszGet(), rcsVersion.pszGet());
    return szLine.data();
}

int nInstall(const STInstance& rst, CArguments tabArgument) {
    CInstallLog clLog(rst.clDirectory);
    if (const std::optional<int> nCode = nToldToFail(rst, L"kalmo", clLog)) {
        return *nCode;
    }
    STNewAccount stAccount;
    if (!bReadArguments(tabArgument, &stAccount, clLog)) {
        return INSTALLER_FAILED;
    }
    if (!bNameAllowed(rst.csName)) {
        clLog.Line(L"the instance name \"" + rst.csName +
                   L"\" may hold letters, digits, \"_\" and \"-\" only");
        return INSTALLER_FAILED;
    }
    CServiceManager clManager;
    STRegistration stService{L"ZDCS-" + rst.csName, L"ZDSQL server " + rst.csName, rst.clDirectory,
                             rst.csDaemonUser};
    if (!stService.clProgram.bAppend(L"kalmo")) {
        clLog.Line(L"the program's path is too long: " + rst.clDirectory.csGet());
        return INSTALLER_FAILED;
    }
    const bool bDone =
        clManager.bInit(nullptr, 0) && bPrepareDatabase(rst, clLog) &&
        bCreateAccount(rst, stAccount, clLog) && bRegister(stService, clLog) &&
        bAwaitGreeting(stService.csService, rst.nPort, csGreeting(rst, csToUTF8(csGetOwnVersion())), clLog);
    return bDone ? 0 : INSTALLER_FAILED;
}

// The name of the SQL dialect, from the library beside the program.
std::string csDialect(const STInstance& rst) {
#ifdef KALMO_PORTABLE
    static_cast<void>(rst);
    return tvsqlsrv_Dialect();
#else
    const std::string csLibrary = std::string(rst.clDirectory.csGetUTF8().svGet()) + "tvsqlsrv.so";
    void* const pLibrary = ::dlopen(csLibrary.c_str(), RTLD_NOW);
    if (pLibrary == nullptr) {
        return "none";
    }
    const auto pfnDialect = reinterpret_cast<tvsqlsrv_Dialect_t>(::dlsym(pLibrary, "tvsqlsrv_Dialect"));
    std::string csName = pfnDialect != nullptr ? pfnDialect() : "none";
    ::dlclose(pLibrary);
    return csName;
#endif
}

int nServe(STInstance& rst) {
    const CUniqueFd clListener = clListenTcp(rst.nPort);
    if (!clListener.bValid()) {
        std::fprintf(stderr, "kalmo: cannot listen on port %d\n", rst.nPort);
        return 1;
    }
    CLanceProcessus clLogger;
    CFSPath clLog = rst.clDatabaseRoot;
    if (!clLog.bAppend(L"__system/kalmo.log")) {
        clLog = {};
    }
    const wchar_t* tabLog[] = {clLog.pszGet()};
    clLogger.bLanceProcessus((rst.clDirectory.csGet() + L"zdlogger").pszGet(), 1, tabLog, nullptr);
    const auto Log = [&clLogger](const std::string& cs) {
        clLogger.bEcritEntree((cs + "\n").data(), static_cast<unsigned>(cs.size() + 1));
    };

    const CXYString<char> csVersion = csToUTF8(csGetOwnVersion());
    Log("start " + std::string(csVersion.svGet()) + ", dialect " + csDialect(rst));
    const auto Greeting = [&] { return csGreeting(rst, csVersion) + "\n"; };
    const auto Answer = [&](std::string_view svLine) -> std::string {
        static constexpr std::string_view SV_LOGIN = "LOGIN ";
        const bool bIn = svLine.starts_with(SV_LOGIN) &&
                         CAccounts(rst.clDatabaseRoot).bLogin(svLine.substr(SV_LOGIN.size()));
        return bIn ? "OK\n" : "NO\n";
    };
    const auto Reload = [&] {
        bReadInstance(&rst);
        Log("configuration read again");
    };
    ServeUntilTerminated(clListener, {Greeting, Answer, Reload});
    Log("stop");
    return 0;
}

int nMain(CArguments tabArgument) {
    const std::string_view svMode = svModeOf(tabArgument);
    STInstance st;
    if (!bReadInstance(&st)) {
        std::fputs("kalmo: the path of the configuration or of the databases is too long\n", stderr);
        if (svMode == "--INSTALLER") {
            CInstallLog(st.clDirectory)
                .Line(L"the path of the configuration or of the databases is too long");
        }
        return INSTALLER_FAILED;
    }
    if (svMode == "--INSTALLER") {
        return nInstall(st, tabArgument.subspan(1));
    }
    if (svMode == "--service") {
        return nServe(st);
    }
    if (svMode == "--version") {
        std::printf("kalmo %s\n", csToUTF8(csGetOwnVersion()).pszGet());
        return 0;
    }
    std::fputs("Usage: kalmo --INSTALLER [--CREATEUSER NAME --PWDC HEX] | --service | --version\n", stderr);
    return 2;
}

}  // namespace
}  // namespace kalmo::sample

int main(int nArgc, char** ppszArgv) {
    return kalmo::sample::nRunProgram(nArgc, ppszArgv, kalmo::sample::nMain);
}
