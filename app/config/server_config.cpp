#include "app/config/server_config.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <string_view>

#include "framework/account.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/file_version.h"
#include "framework/process_info.h"
#include "framework/profile.h"
#include "services/service.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_SECTION_TELEMETRY = L"TELEMETRY";
constexpr const wchar_t* PSZ_KEY_ACTIVE = L"ACTIVE";

}  // namespace

bool WriteDBRootPath(const wchar_t* pszConfPath, const wchar_t* pszValue) {
    return WritePrivateProfileString(PSZ_SECTION_INIT, L"DBRootPath", pszValue, pszConfPath);
}

bool WriteServerPort(const wchar_t* pszConfPath, const wchar_t* pszValue) {
    return WritePrivateProfileString(PSZ_SECTION_INIT, PSZ_KEY_PORT, pszValue, pszConfPath);
}

bool WriteServerName(const wchar_t* pszConfPath, const wchar_t* pszValue) {
    return WritePrivateProfileString(PSZ_SECTION_INIT, L"Name", pszValue, pszConfPath);
}

void WriteTelemetryOn(const wchar_t* pszConfPath, int nOn) {
    WritePrivateProfileString(PSZ_SECTION_TELEMETRY, PSZ_KEY_ACTIVE, nOn != 0 ? L"1" : L"0", pszConfPath);
}

ETelemetryState eReadTelemetry(const wchar_t* pszConfPath) {
    // An integer and nothing behind it: a text that only begins with a digit is no choice that somebody made.
    std::array<wchar_t, 20> szValue{};
    GetPrivateProfileString(PSZ_SECTION_TELEMETRY, PSZ_KEY_ACTIVE, L"-1", szValue.data(),
                            static_cast<unsigned>(szValue.size()), pszConfPath);
    wchar_t* pszEnd = nullptr;
    const long nValue = std::wcstol(szValue.data(), &pszEnd, 10);
    const bool bInteger = pszEnd != szValue.data() &&
                          std::wstring_view(pszEnd).find_first_not_of(L" \t") == std::wstring_view::npos;
    if (!bInteger || (nValue != 0 && nValue != 1)) {
        return ETelemetryState::Unknown;
    }
    return nValue == 1 ? ETelemetryState::On : ETelemetryState::Off;
}

int nReadServerPort(const wchar_t* pszConfPath) {
    return GetPrivateProfileInt(PSZ_SECTION_INIT, PSZ_KEY_PORT, PORT_DEFAUT, pszConfPath);
}

int nServerPort(CService& rclService) {
    CPathBuffer szConf;
    GetZDConfPath(&rclService, szConf);
    return nReadServerPort(szConf);
}

bool bServiceCanBeNamed(const CTString& csName) {
    // systemctl takes a blank as the border of two names and "*" as every name.
    static constexpr std::wstring_view SV_UNIT_NAME =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789:-_.@";
    static constexpr std::wstring_view SV_SHELL = L"\"\\'`$&|;<>()[]{}*?!#~\t";
    static constexpr std::size_t MAX_BYTES = 242;  // 255 with "ZDCS-" and ".service"
    const std::wstring_view svName = csName;
    // With "@" at its end it would be a template, which is no service yet.
    const bool bPlain =
        CServiceManager::ms_eDistri == eSystemd
            ? svName.find_first_not_of(SV_UNIT_NAME) == std::wstring_view::npos && !svName.ends_with(L'@')
            : svName.find_first_of(SV_SHELL) == std::wstring_view::npos;
    return bPlain && !svName.empty() && csToUTF8(csName).nGetLength() <= MAX_BYTES;
}

bool bUnitMasked(const CTString& csService) {
    return CServiceManager::ms_eDistri == eSystemd && !csService.bEmpty() &&
           CServiceManager::csGetSystemdProp("LoadState", csService.pszGet()) == L"masked";
}

bool bInstanceKnown(const CTString& csName) {
    const CTString csService = CTString(PSZ_SERVICE_PREFIX) + csName;
    CServiceManager clManager;
    return clManager.pclGetService(csService.pszGet(), 0) != nullptr || bUnitMasked(csService);
}

CTString csServiceConfiguredIn(const CTString& csDirectory) {
    CPathBuffer szConfPath;
    std::array<wchar_t, TAILLE_MAX_PATH> szName{};
    if (bConfPath(csDirectory, szConfPath)) {
        GetPrivateProfileString(PSZ_SECTION_INIT, L"Name", L"", szName.data(),
                                static_cast<unsigned>(szName.size()), szConfPath);
    }
    const CTString csName(szName.data());
    return bServiceCanBeNamed(csName) ? PSZ_SERVICE_PREFIX + csName : CTString();
}

bool bSystemAccountExists(const CTString& csUser) {
    return stFindAccount(csToUTF8(csUser).pszGet()).has_value();
}

bool bIsManager(const CService& rclService) {
    return bEgalSansCasse(CTString(rclService.pszGetName()), PSZ_MANAGER_SERVICE);
}

std::wstring_view svInstanceName(const CService& rclService) {
    const std::wstring_view svService = rclService.pszGetName() == nullptr ? L"" : rclService.pszGetName();
    return svService.substr(std::min(svService.size(), std::wstring_view(PSZ_SERVICE_PREFIX).size()));
}

CTString csGetDisplayName(CService& rclService) {
    const wchar_t* const pszDisplayName = rclService.pszGetDisplayName();
    return pszDisplayName != nullptr ? pszDisplayName : rclService.pszGetName();
}

CTString csGetProgramWithoutArg(CService* pclService) {
    CTString csProgram(pclService->pszBinaryPathName());
    csProgram.Truncate(csProgram.svGet().find(L" --"));
    csProgram.TrimRight(L' ');
    return csProgram;
}

CTString csGetProgramDirectory(CService* pclService) {
    const CTString csProgram = csGetProgramWithoutArg(pclService);
    CFSPath clDirectory;
    if (!clDirectory.bSet(csProgram) || !clDirectory.svGet().starts_with(L'/')) {
        return {};
    }
    clDirectory.KeepDirectory();
    return clDirectory.csGet();
}

bool bConfPath(std::wstring_view svDirectory, CPathBuffer& rszOut) {
    return CDiskFile::MakePath(rszOut, svDirectory, L"ZDConf", L"ini");
}

void GetZDConfPath(CService* pclService, CPathBuffer& rszOut) {
    const CTString csDirectory = csGetProgramDirectory(pclService);
    rszOut[0] = L'\0';
    // A bare file name would be looked for in root's home directory.
    if (!csDirectory.bEmpty()) {
        bConfPath(csDirectory, rszOut);
    }
}

CTString csGetProgramVersion(std::wstring_view svProgram) {
    CFileVersion clVersion;
    CTString csVersion;
    return clVersion.bInit(svProgram) &&
                   clVersion.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &csVersion)
               ? csVersion
               : CTString(L"?");
}

CTString csGetOwnVersion() {
    CPathBuffer szProgram;
    return GetModuleFileNameW(szProgram) ? csGetProgramVersion(szProgram) : CTString(L"?");
}

}  // namespace kalmo
