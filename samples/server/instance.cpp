#include "samples/server/instance.h"

#include <array>
#include <vector>

#include "app/config/server_config.h"
#include "framework/conversion.h"
#include "framework/process_info.h"
#include "framework/profile.h"
#include "services/lance_processus.h"

namespace kalmo::sample {
namespace {

constexpr std::wstring_view SV_EXE_PREFIX = L"%%EXE%%";

CTString csReadInit(const wchar_t* pszKey, const CFSPath& clConf) {
    std::array<wchar_t, TAILLE_MAX_PATH + 1> szValue{};
    GetPrivateProfileString(PSZ_SECTION_INIT, pszKey, L"", szValue.data(), szValue.size(), clConf.pszGet());
    return CTString(szValue.data());
}

}  // namespace

bool bReadInstance(STInstance* pstOut) {
    CPathBuffer szProgram;
    if (!GetModuleFileNameW(szProgram) || !pstOut->clDirectory.bSet(szProgram)) {
        return false;
    }
    pstOut->clDirectory.KeepDirectory();
    CPathBuffer szConfPath;
    CFSPath clConf;
    if (!bConfPath(pstOut->clDirectory.svGet(), szConfPath) || !clConf.bSet(szConfPath)) {
        return false;
    }
    pstOut->csName = csReadInit(L"Name", clConf);
    pstOut->nPort = GetPrivateProfileInt(PSZ_SECTION_INIT, L"AccessPort", PORT_DEFAUT, clConf.pszGet());
    pstOut->csDaemonUser = csReadInit(PSZ_KEY_DAEMON_USER, clConf);

    const CTString csRoot = csReadInit(L"DBRootPath", clConf);
    std::wstring_view svRoot = csRoot;
    if (!svRoot.starts_with(SV_EXE_PREFIX)) {
        return pstOut->clDatabaseRoot.bSet(svRoot);
    }
    svRoot.remove_prefix(SV_EXE_PREFIX.size());
    while (svRoot.starts_with(L'/')) {
        svRoot.remove_prefix(1);
    }
    pstOut->clDatabaseRoot = pstOut->clDirectory;
    return pstOut->clDatabaseRoot.bAppend(svRoot);
}

bool bNameAllowed(std::wstring_view svName) {
    static constexpr std::wstring_view SV_ALLOWED =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
    return !svName.empty() && svName.size() <= 100 && svName.find_first_not_of(SV_ALLOWED) == svName.npos;
}

int nRunProgram(int nArgc, char** ppszArgv, int (*fnMain)(CArguments)) {
    SetLocaleUTF8();
    CLanceProcessus::sInit();
    const std::vector<std::string_view> tabArgument(ppszArgv + (nArgc > 0 ? 1 : 0), ppszArgv + nArgc);
    const int nCode = fnMain(tabArgument);
    CLanceProcessus::sTerm();
    return nCode;
}

}  // namespace kalmo::sample
