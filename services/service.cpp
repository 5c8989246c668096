#include "services/service.h"

#include <algorithm>
#include <cerrno>
#include <exception>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/memory_scope.h"
#include "services/init_script.h"
#include "services/lance_processus.h"
#include "services/service_command.h"
#include "services/service_manager.h"
#include "services/systemctl.h"
#include "services/systemctl_output.h"

namespace kalmo {
namespace {

std::unique_ptr<wchar_t[]> pszCopy(const wchar_t* psz) {
    if (psz == nullptr) {
        return nullptr;
    }
    const std::wstring_view sv(psz);
    auto pszText = std::make_unique<wchar_t[]>(sv.size() + 1);
    std::copy(sv.begin(), sv.end(), pszText.get());
    return pszText;
}

bool bSystemd() {
    return CServiceManager::ms_eDistri == eSystemd;
}

}  // namespace

CService::CService(CServiceManager* pclManager, const wchar_t* pszName)
    : CService(pclManager, pszName, nullptr, nullptr) {}

CService::CService(CServiceManager* pclManager, const wchar_t* pszName, const wchar_t* pszDisplayName,
                   const wchar_t* pszBinaryPath)
    : m_pclManager(pclManager),
      m_pszName(pszCopy(pszName)),
      m_pszBinaryPath(pszCopy(pszBinaryPath)),
      m_pszDisplayName(pszCopy(pszDisplayName)) {}

std::wstring_view CService::__svName() const noexcept {
    return m_pszName == nullptr ? std::wstring_view() : m_pszName.get();
}

bool CService::__bReadScript(std::string_view svMarker, std::size_t nMaxLine, CText* pText) const try {
    const CMemoryScope clScope;
    CDiskFile clScript;
    CTString csText;
    if (!clScript.bOpen(csScriptPath(__svName()), CDiskFile::eMODE::Read) ||
        !bReadMarkedText(clScript, svMarker, nMaxLine, &csText)) {
        return false;
    }
    *pText = pszCopy(csText.pszGet());
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

const wchar_t* CService::pszGetDisplayName() {
    const bool bFromScript = m_pszDisplayName == nullptr && !bSystemd();
    if (bFromScript && !__bReadScript(SV_DISPLAY_NAME_MARKER, MAX_DISPLAY_NAME_LINE, &m_pszDisplayName)) {
        return pszGetName();
    }
    return m_pszDisplayName.get();
}

const wchar_t* CService::pszBinaryPathName() {
    if (m_pszBinaryPath == nullptr && !bSystemd()) {
        SetBinaryPathFromSysVScript();
    }
    return m_pszBinaryPath.get();
}

void CService::SetBinaryPathFromSysVScript() {
    static_cast<void>(__bReadScript(SV_PROGRAM_MARKER, MAX_PROGRAM_LINE, &m_pszBinaryPath));
}

bool CService::__bSysVCommand(std::wstring_view svAction) const {
    return bRunScript(csScriptPath(__svName()) + L" " + svAction);
}

bool CService::bStart(const wchar_t* pszArgs) try {
    const CMemoryScope clScope;
    if (bSystemd()) {
        return bCommandSystemctl(CTString(L"start ") + __svName());
    }
    const CTString csArgs(pszArgs);
    // The one command whose error messages are shown.
    return __bSysVCommand(L"start " + (csArgs.bEmpty() ? CTString() : csArgs + L" ") + L">/dev/null");
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CService::bStop() try {
    const CMemoryScope clScope;
    return bSystemd() ? bCommandSystemctl(CTString(L"stop ") + __svName())
                      : __bSysVCommand(L"stop >/dev/null 2>/dev/null");
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CService::bRestart() try {
    const CMemoryScope clScope;
    return bSystemd() ? bCommandSystemctl(CTString(L"restart ") + __svName())
                      : __bSysVCommand(L"restart >/dev/null 2>/dev/null");
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CService::bSendControlCommand(unsigned dwCode) try {
    const CMemoryScope clScope;
    switch (dwCode) {
        case CONTROL_STOP: return bStop();
        case CONTROL_RELOAD:
            return bSystemd() ? bCommandSystemctl(CTString(L"reload ") + __svName())
                              : __bSysVCommand(L"reload >/dev/null 2>/dev/null");
        default: return false;
    }
} catch (const std::exception&) {
    return NoMemory(false);
}

eSERVICESTATUS CService::eGetStatus(int* pnError) try {
    const CMemoryScope clScope;
    int nIgnored = 0;
    int& rnError = pnError != nullptr ? *pnError : nIgnored;
    rnError = ENOMEM;
    if (bSystemd()) {
        return eReadActiveState(CServiceManager::csGetSystemdProp("ActiveState", pszGetName(), &rnError));
    }
    CLanceProcessus clScript;
    clScript.ExpectAnswer();
    unsigned dwExitCode = 0;
    errno = 0;
    if (!clScript.bLanceProcessus(csScriptPath(__svName()).pszGet(), L"status", nullptr) ||
        !clScript.bAttendFinExecution(&dwExitCode)) {
        rnError = errno != 0 ? errno : EIO;
        return eServiceUnknown;
    }
    rnError = 0;
    switch (dwExitCode) {
        case 0: return eServiceRunning;
        case 1: return eServiceFailed;
        default: return eServiceStopped;
    }
} catch (const std::exception&) {
    return NoMemory(bSystemd() ? eServiceStopped : eServiceUnknown);
}

}  // namespace kalmo
