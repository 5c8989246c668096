#include "app/config/server_config.h"

#include <pwd.h>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/profile.h"
#include "services/service.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_SECTION_TELEMETRY = L"TELEMETRY";
constexpr const wchar_t* PSZ_KEY_ACTIVE = L"ACTIVE";

}  // namespace

void WriteDBRootPath(const wchar_t* pszConfPath, const wchar_t* pszValue) {
    WritePrivateProfileString(PSZ_SECTION_INIT, L"DBRootPath", pszValue, pszConfPath);
}

void WriteServerPort(const wchar_t* pszConfPath, const wchar_t* pszValue) {
    WritePrivateProfileString(PSZ_SECTION_INIT, PSZ_KEY_PORT, pszValue, pszConfPath);
}

void WriteServerName(const wchar_t* pszConfPath, const wchar_t* pszValue) {
    WritePrivateProfileString(PSZ_SECTION_INIT, L"Name", pszValue, pszConfPath);
}

void WriteTelemetryOn(const wchar_t* pszConfPath, int nOn) {
    WritePrivateProfileString(PSZ_SECTION_TELEMETRY, PSZ_KEY_ACTIVE, nOn != 0 ? L"1" : L"0", pszConfPath);
}

ETelemetryState eReadTelemetry(const wchar_t* pszConfPath) {
    switch (GetPrivateProfileInt(PSZ_SECTION_TELEMETRY, PSZ_KEY_ACTIVE, -1, pszConfPath)) {
        case 0: return ETelemetryState::Off;
        case 1: return ETelemetryState::On;
        default: return ETelemetryState::Unknown;
    }
}

int nReadServerPort(const wchar_t* pszConfPath) {
    return GetPrivateProfileInt(PSZ_SECTION_INIT, PSZ_KEY_PORT, nPortDefaut, pszConfPath);
}

bool bSystemAccountExists(const CTString& csUser) {
    return ::getpwnam(csToUTF8(csUser).pszGet()) != nullptr;
}

bool bIsManager(const CService& rclService) {
    return bEgalSansCasse(CTString(rclService.pszGetName()), PSZ_MANAGER_SERVICE);
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

void GetZDConfPath(CService* pclService, CPathBuffer& rszOut) {
    const CTString csDirectory = csGetProgramDirectory(pclService);
    rszOut[0] = L'\0';
    // A bare file name would be looked for in root's home directory.
    if (!csDirectory.bEmpty()) {
        CDiskFile::MakePath(rszOut, csDirectory, PSZ_CONF_BASE, PSZ_CONF_EXTENSION);
    }
}

}  // namespace kalmo
