#include "services/service_manager.h"

#include <cerrno>
#include <exception>
#include <optional>
#include <utility>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/memory_scope.h"
#include "services/init_script.h"
#include "services/systemctl.h"
#include "services/systemctl_output.h"
#include "services/unit_listing.h"

namespace kalmo {
namespace {

constexpr std::size_t TABLE_ROOM = 20;
constexpr std::size_t TABLE_STEP = 30;

const wchar_t* pszOrNull(const std::optional<CTString>& rcs) {
    return rcs ? rcs->pszGet() : nullptr;
}

}  // namespace

int CServiceManager::ms_eDistri = eNotDetected;
int CServiceManager::ms_nSystemctlError = 0;

CServiceManager::CServiceManager() : CTableauDeBuffer(TABLE_ROOM, TABLE_STEP) {}

CServiceManager::~CServiceManager() {
    __EndListing();
}

bool CServiceManager::bInit(const wchar_t* /*pszMachine*/, unsigned /*dwAccess*/) try {
    const CMemoryScope clScope;
    if (ms_eDistri == eNotDetected) {
        ms_eDistri = __eFindDistri();
    }
    return true;
} catch (const std::exception&) {
    return NoMemory(true);
}

// Turns a service's name into the name that its script has.
void CServiceManager::__GetScriptName(CTString* pcsName) {
    pcsName->Replace(L' ', L'_');
    pcsName->Replace(L'\t', L"__");
    pcsName->Replace(L'/', L'-');
    pcsName->Replace(L'.', L'-');
}

CXPtr_deleteRCV<CService> CServiceManager::pclGetService(const wchar_t* pszName, unsigned /*dwAccess*/) try {
    const CMemoryScope clScope;
    if (pszName == nullptr) {
        return nullptr;
    }
    return ms_eDistri == eSystemd ? __pclGetServiceSystemd(pszName) : __pclGetServiceSysV(pszName);
} catch (const std::exception&) {
    return NoMemory(CXPtr_deleteRCV<CService>());
}

CXPtr_deleteRCV<CService> CServiceManager::__pclGetServiceSysV(const wchar_t* pszName) {
    CTString csScript(pszName);
    __GetScriptName(&csScript);
    for (const wchar_t* const psz : {csScript.pszGet(), pszName}) {
        if (CDiskFile::bFileExists(csScriptPath(psz))) {
            return CXPtr_deleteRCV<CService>(new CService(this, psz));
        }
    }
    return nullptr;
}

CXPtr_deleteRCV<CService> CServiceManager::__pclGetServiceSystemd(const wchar_t* pszName) {
    CTString csArguments = CTString(L"--property=Description,ExecStart,Type show ") + pszName;
    csArguments.Replace(L';', L' ');
    csArguments.Replace(L'|', L' ');
    CXYString<char> csOutput;
    if (!bAskSystemctl(csArguments, &csOutput, nullptr)) {
        return nullptr;
    }
    const STUnitProperties st = stReadUnitProperties(csOutput);
    if (!st.bExists) {
        return nullptr;
    }
    const wchar_t* const pszProgram = st.bInitScript ? nullptr : pszOrNull(st.csProgram);
    CXPtr_deleteRCV<CService> pclService(
        new CService(this, pszName, pszOrNull(st.csDescription), pszProgram));
    if (st.bInitScript) {
        pclService->SetBinaryPathFromSysVScript();
    }
    return pclService;
}

CTString CServiceManager::csGetSystemdProp(const char* pszProperty, const wchar_t* pszName,
                                           int* pnError) try {
    const CMemoryScope clScope;
    int nIgnored = 0;
    int& rnError = pnError != nullptr ? *pnError : nIgnored;
    rnError = ENOMEM;
    CXYString<char> csOutput;
    unsigned dwExitCode = 0;
    const CTString csArguments = L"--property=" + csFromUTF8(pszProperty) + L" show " + CTString(pszName);
    errno = 0;
    if (!bAskSystemctl(csArguments, &csOutput, &dwExitCode)) {
        rnError = errno != 0 ? errno : EIO;
        return {};
    }
    CTString csValue = csReadProperty(csOutput);
    rnError = csValue.bEmpty() && dwExitCode != 0 ? EIO : 0;
    return csValue;
} catch (const std::exception&) {
    return NoMemory(CTString());
}

CXPtr_deleteRCV<CService> CServiceManager::pclEnumService(unsigned* pdwCursor, const wchar_t* pszPrefix,
                                                          unsigned /*dwAccess*/) try {
    const CMemoryScope clScope;
    CTString csPrefix(pszPrefix);
    __GetScriptName(&csPrefix);
    if (*pdwCursor == 0) {
        __EndListing();
    }
    return ms_eDistri == eSystemd ? __pclNextSystemd(pdwCursor, csPrefix)
                                  : __pclNextSysV(pdwCursor, csPrefix);
} catch (const std::exception&) {
    return NoMemory(CXPtr_deleteRCV<CService>());
}

// Fills the table with the records of all units whose name begins with the prefix.
bool CServiceManager::__bListSystemd(std::wstring_view svPrefix) {
    std::vector<CTString> tabName;
    if (!bListUnits(svPrefix, &tabName)) {
        return false;
    }
    __AddSystemd(tabName);
    __AddSystemd(tabListUnitFiles(svPrefix, tabName));
    return true;
}

void CServiceManager::__AddSystemd(const std::vector<CTString>& rtabName) {
    for (const CTString& rcsName : rtabName) {
        if (CXPtr_deleteRCV<CService> pclService = __pclGetServiceSystemd(rcsName.pszGet())) {
            _Add(pclService.get());
            static_cast<void>(pclService.release());  // belongs to the table now
        }
    }
}

CXPtr_deleteRCV<CService> CServiceManager::__pclNextSystemd(unsigned* pdwCursor, std::wstring_view svPrefix) {
    if (*pdwCursor == 0 && !__bListSystemd(svPrefix)) {
        return nullptr;
    }
    if (*pdwCursor < _nGetCount()) {
        void* const pService = std::exchange(_pElement(*pdwCursor), nullptr);
        ++*pdwCursor;
        return CXPtr_deleteRCV<CService>(static_cast<CService*>(pService));
    }
    __EndListing();
    return nullptr;
}

CXPtr_deleteRCV<CService> CServiceManager::__pclNextSysV(unsigned* pdwCursor, std::wstring_view svPrefix) {
    if (*pdwCursor == 0) {
        m_pclScripts.reset(::opendir("/etc/init.d/"));
        *pdwCursor = m_pclScripts == nullptr ? 0 : 1;
    }
    while (m_pclScripts != nullptr) {
        const dirent* const pstEntry = ::readdir(m_pclScripts.get());
        if (pstEntry == nullptr) {
            m_pclScripts.reset();
            break;
        }
        const CTString csName = csFromUTF8(pstEntry->d_name);
        if (csName != L"." && csName != L".." && csName.svGet().starts_with(svPrefix)) {
            return CXPtr_deleteRCV<CService>(new CService(this, csName.pszGet()));
        }
    }
    return nullptr;
}

void CServiceManager::AbortEnumService(unsigned* pdwCursor) {
    __EndListing();
    *pdwCursor = 0;
}

// Gives up what is left of a listing.
void CServiceManager::__EndListing() {
    for (std::size_t n = 0; n < _nGetCount(); ++n) {
        delete static_cast<CService*>(_pElement(n));
    }
    _Empty();
    m_pclScripts.reset();
}

}  // namespace kalmo
