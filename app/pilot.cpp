#include "app/pilot.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "app/config/server_config.h"
#include "app/data_extractor.h"
#include "app/hang_up_shield.h"
#include "app/install_steps.h"
#include "app/run_lock.h"
#include "app/server_services.h"
#include "app/uninstall_record.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/profile.h"
#include "framework/x_error.h"
#include "services/service.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_SECTION_SERVER = L"SERVEUR";
constexpr std::size_t nMaxServerName = 100;
constexpr const wchar_t* PSZ_MARKER = L"Install.log";

enum eOPERATION { OP_UPGRADE = 1, OP_INSTALL = 2, OP_UNINSTALL = 3, OP_NONE = 4 };

// The path behind an option's prefix, or nothing. A bare name lies in the current directory, and so does one
// that only begins with a dot: without a slash the profile calls would look for it in the home directory.
bool bTakeOption(std::string_view svArgument, std::string_view svPrefix, CTString* pcsPath) {
    const CTString csArgument = csFromUTF8(svArgument);
    const CTString csPrefix = csFromUTF8(svPrefix);
    if (!bEgalSansCasse(csArgument.svGet().substr(0, csPrefix.nGetLength()), csPrefix)) {
        return false;
    }
    const std::wstring_view svPath = csArgument.svGet().substr(csPrefix.nGetLength());
    const bool bAsItIs = svPath.starts_with(L'/') ||
                         (svPath.starts_with(L'.') && svPath.find(L'/') != std::wstring_view::npos);
    *pcsPath = CTString(bAsItIs ? L"" : L"./") + svPath;
    return true;
}

}  // namespace

bool CPilot::bCheckPilot(int nArgc, char** ppszArgv) {
    bool bPilot = false;
    for (int n = 1; n < nArgc; ++n) {
        bPilot |= bTakeOption(ppszArgv[n], "/PILOT=", &m_csPilotPath);
        bTakeOption(ppszArgv[n], "/DEBUG=", &m_csDebugPath);
    }
    if (!m_csDebugPath.bEmpty() && !m_clTrace.bOpen(m_csDebugPath)) {
        m_csDebugPath.Empty();
    }
    return bPilot;
}

int CPilot::Pilot() {
    if (!CDiskFile::bFileExists(m_csPilotPath)) {
        return __bFail(L"parameter file " + m_csPilotPath, L"not found");
    }
    const int nOperation = GetPrivateProfileInt(L"PILOTAGE", L"MAJ", OP_NONE, m_csPilotPath.pszGet());
    if (nOperation < OP_UPGRADE || nOperation > OP_UNINSTALL) {
        m_clTrace.Step(L"MAJ", L"no operation of that number, nothing done");
        return nOperation;
    }
    const CHangUpShield clShield;
    CRunLock clLock;
    if (!clLock.bWait(m_clTrace)) {
        return 0;
    }
    InitServices(m_clServiceManager, m_clTrace);
    bool bSuccess = false;
    switch (nOperation) {
        case OP_UPGRADE: bSuccess = __bUpgrade(); break;
        case OP_INSTALL: bSuccess = __bInstall(); break;
        default: bSuccess = __bUnInstall(); break;
    }
    m_clTrace.Step(L"unattended run", bSuccess ? L"ok" : L"failed");
    return bSuccess ? 1 : 0;
}

bool CPilot::__bFail(std::wstring_view svWhat, std::wstring_view svWhy) {
    m_clTrace.Step(svWhat, L"failed: " + CTString(svWhy));
    return false;
}

bool CPilot::__bReadText(const wchar_t* pszKey, std::size_t nMax, CTString* pcsValue) {
    // One character more than allowed tells a value that is too long from one that just fits.
    std::vector<wchar_t> tabValue(nMax + 2);
    GetPrivateProfileString(PSZ_SECTION_SERVER, pszKey, L"", tabValue.data(),
                            static_cast<int>(tabValue.size()), m_csPilotPath.pszGet());
    *pcsValue = CTString(tabValue.data());
    if (pcsValue->bEmpty()) {
        return __bFail(pszKey, L"missing in the parameter file");
    }
    return pcsValue->nGetLength() <= nMax || __bFail(pszKey, L"too long");
}

bool CPilot::__bReadServer(CTString* pcsName) {
    if (!__bReadText(L"Serveur", nMaxServerName, pcsName)) {
        return false;
    }
    // systemctl takes a blank as the border of two names and "*" as every name.
    static constexpr std::wstring_view svUnitName =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789:-_.@";
    return CServiceManager::ms_eDistri != eSystemd ||
           pcsName->svGet().find_first_not_of(svUnitName) == std::wstring_view::npos ||
           __bFail(L"Serveur", L"no name that a service can have: " + *pcsName);
}

CTString CPilot::__csServiceName(const CTString& csName) {
    return bEgalSansCasse(csName, PSZ_MANAGER_PROGRAM) ? CTString(PSZ_MANAGER_SERVICE)
                                                       : CTString(PSZ_SERVICE_PREFIX) + csName;
}

CXPtr_deleteRCV<CService> CPilot::__pclGetServer(const CTString& csName) {
    return m_clServiceManager.pclGetService(__csServiceName(csName).pszGet(), 0);
}

bool CPilot::__bRunInstallerMode(const CFSPath& clInstallDir, std::string_view svCommand) {
    return nRunServerProgram(clInstallDir, svCommand, "", std::string::npos, m_clTrace) != -1;
}

bool CPilot::__bInstall() {
    CTString csName;
    CTString csDirectory;
    if (!__bReadServer(&csName) || !__bReadText(L"Repertoire", nTailleMaxPath, &csDirectory)) {
        return false;
    }
    if (const CXPtr_deleteRCV<CService> pclService = __pclGetServer(csName)) {
        m_clTrace.Step(L"install " + csName, L"the instance exists: upgrade");
        return __bUpgrade(*pclService, csName);
    }
    CFSPath clInstallDir;
    CFSPath clDatabaseDir;
    if (!csDirectory.svGet().starts_with(L'/')) {
        return __bFail(L"Repertoire", L"no absolute path");
    }
    if (!clInstallDir.bSet(csDirectory) || !clInstallDir.bAddTrailingSlash() ||
        !clDatabaseDir.bSet(clInstallDir.svGet()) || !clDatabaseDir.bAppend(L"BDD/")) {
        return __bFail(L"Repertoire", L"too long");
    }
    CDataExtractor clExtractor(m_clTrace);
    if (!__bForgetSuccess(clInstallDir.csGet()) || !clExtractor.bInit()) {
        return false;
    }
    CUninstallRecord::ForgetDirectory(clInstallDir.svGet());
    for (const CFSPath& rclDir : {clInstallDir, clDatabaseDir}) {
        CXError clError;
        if (!bCreateDirectory(rclDir.svGet(), m_clTrace, &clError)) {
            return false;
        }
    }
    // Here already when the instance shares its directory, or when an earlier run did not end.
    const CXPtr_deleteRCV<CService> pclManagerHere =
        pclGetKalmoManagerInPath(&m_clServiceManager, clInstallDir.pszGet());
    if (pclManagerHere != nullptr) {
        StopService(*pclManagerHere, m_clTrace);
    }
    const bool bInstalled = __bInstallInto(clExtractor, clInstallDir, clDatabaseDir, csName);
    if (pclManagerHere != nullptr && !bRunning(*pclManagerHere, m_clTrace)) {
        StartService(*pclManagerHere, m_clTrace);
    }
    if (bInstalled) {
        __LogSuccess(clInstallDir.csGet());
    }
    return bInstalled;
}

bool CPilot::__bInstallInto(CDataExtractor& rclExtractor, const CFSPath& rclInstallDir,
                            const CFSPath& rclDatabaseDir, const CTString& csName) {
    // The result does not decide: the server's programs may be whole although a later entry failed.
    m_clTrace.Step(L"extract", rclExtractor.bUpgrade(rclInstallDir.pszGet(), nullptr) ? L"ok" : L"failed");
    CPathBuffer szConfPath;
    if (!CDiskFile::MakePath(szConfPath, rclInstallDir.svGet(), PSZ_CONF_BASE, PSZ_CONF_EXTENSION)) {
        return __bFail(L"Repertoire", L"too long");
    }
    const int nPort = GetPrivateProfileInt(PSZ_SECTION_SERVER, L"Port", nPortDefaut, m_csPilotPath.pszGet());
    return bWriteNewConfiguration(szConfPath, rclDatabaseDir.pszGet(), std::to_wstring(nPort), csName,
                                  m_clTrace) &&
           rclExtractor.bSync(rclInstallDir.pszGet()) &&
           __bRunInstallerMode(rclInstallDir, "kalmomanager --INSTALLER") &&
           __bRunInstallerMode(rclInstallDir, "kalmo --INSTALLER");
}

bool CPilot::__bUpgrade() {
    CTString csName;
    if (!__bReadServer(&csName)) {
        return false;
    }
    const CXPtr_deleteRCV<CService> pclService = __pclGetServer(csName);
    return pclService != nullptr ? __bUpgrade(*pclService, csName)
                                 : __bFail(L"upgrade " + csName, L"no such instance");
}

bool CPilot::__bUpgrade(CService& rclService, const CTString& csName) {
    CUpgradeServices clServices(rclService, m_clTrace);
    const CTString& csDirectory = clServices.csGetDirectory();
    if (csDirectory.bEmpty()) {
        return __bFail(L"upgrade " + csName, L"the service tells no program");
    }
    CDataExtractor clExtractor(m_clTrace);
    if (!__bForgetSuccess(csDirectory) || !clExtractor.bInit()) {
        return false;
    }
    CUninstallRecord::ForgetDirectory(csDirectory);
    clServices.StopAll();
    if (!clExtractor.bUpgrade(csDirectory.pszGet(), nullptr) || !clExtractor.bSync(csDirectory.pszGet())) {
        return __bFail(L"extract", L"what was stopped stays stopped");
    }
    clServices.StartAll();
    __LogSuccess(csDirectory);
    return true;
}

bool CPilot::__bUnInstall() {
    CTString csName;
    if (!__bReadServer(&csName)) {
        return false;
    }
    CUninstallRecord clRecord(__csServiceName(csName));
    CTString csProgram;
    if (!__bUnregister(csName, clRecord, &csProgram)) {
        return false;
    }
    const CTString csDirectory(CFSPath::stSplit(csProgram).svDirectory);
    if (!csProgram.svGet().starts_with(L'/')) {
        return __bFail(L"delete files", L"the service tells no program");
    }
    if (!__bRemoveFiles(csProgram)) {
        return false;
    }
    // With a unit or script that stays there is still something to do.
    if (__LogSuccess(csDirectory) && !m_bStays) {
        m_clTrace.Outcome(L"forget the note of the uninstall", clRecord.bDiscard());
    }
    return true;
}

bool CPilot::__bUnregister(const CTString& csName, CUninstallRecord& rclRecord, CTString* pcsProgram) {
    CUninstallRecord::STNote stNote;
    const bool bNoted = rclRecord.bRead(&stNote);
    if (bNoted) {
        FinishRemoval(m_clServiceManager, stNote.csService);
    }
    const CXPtr_deleteRCV<CService> pclService = __pclGetServer(csName);
    if (pclService == nullptr) {
        // One that cannot be asked about, for whatever reason, is still there while its files are.
        m_bGoingOn = bNoted && std::ranges::none_of(stNote.tabDefinition, [](const CTString& rcsPath) {
                         return CDiskFile::bFileExists(rcsPath);
                     });
        if (!m_bGoingOn) {
            return __bFail(L"uninstall " + csName, L"no such instance");
        }
        m_clTrace.Step(L"unregister " + csName, L"done by an earlier run, which did not end; going on");
        *pcsProgram = stNote.csProgram;
        return __bForgetSuccess(CTString(CFSPath::stSplit(*pcsProgram).svDirectory));
    }
    *pcsProgram = csGetProgramWithoutArg(pclService.get());
    if (const CTString csDirectory = csGetProgramDirectory(pclService.get()); !csDirectory.bEmpty()) {
        if (!__bForgetSuccess(csDirectory)) {
            return false;
        }
        const bool bWritten =
            rclRecord.bWrite({pclService->pszGetName(), *pcsProgram, tabDefinition(*pclService)});
        m_clTrace.Outcome(L"note the uninstall of " + *pcsProgram, bWritten);
    }
    m_bGoingOn = bNoted && stNote.csProgram == *pcsProgram;
    const bool bRemoved = bRemoveService(*pclService, m_clTrace);
    m_bStays = errno != 0;
    return bRemoved;
}

bool CPilot::__bDelete(const CTString& csPath) {
    CXError clError;
    return bDeleteFile(csPath, m_clTrace, &clError) || (m_bGoingOn && errno == ENOENT);
}

bool CPilot::__bRemoveFiles(const CTString& csProgram) {
    const STPathParts stParts = CFSPath::stSplit(csProgram);
    if (bEgalSansCasse(stParts.svFileName, PSZ_MANAGER_PROGRAM)) {
        return __bDelete(csProgram);
    }
    const CTString csDirectory(stParts.svDirectory);
    if (!__bDelete(csProgram) || !__bDelete(csDirectory + L"tvzdsrv.so") ||
        !__bDelete(csDirectory + L"tvsqlsrv.so")) {
        return false;
    }
    __bDelete(csDirectory + L"zdlogger");
    CFileSearch clSearch;
    for (bool bFound = CDiskFile::bFindFirst(csDirectory + L"tv*.so", 0, &clSearch); bFound;
         bFound = CDiskFile::bFindNext(&clSearch)) {
        __bDelete(csDirectory + clSearch.csGetName());
    }
    return true;
}

bool CPilot::__bForgetSuccess(const CTString& csDir) {
    const CTString csMarker = csDir + PSZ_MARKER;
    if (CDiskFile::bDelete(csMarker) || errno == ENOENT) {
        return true;
    }
    m_clTrace.Outcome(L"remove the marker of an earlier run, " + csMarker, false);
    return false;
}

bool CPilot::__LogSuccess(const CTString& csDir) {
    static constexpr std::string_view svMark = "OK";
    CDiskFile clFile;
    const bool bWritten = clFile.bOpen(csDir + PSZ_MARKER, CDiskFile::eMODE::Create) &&
                          clFile.bWrite(svMark.data(), svMark.size()) && clFile.bClose();
    m_clTrace.Outcome(L"marker " + csDir + PSZ_MARKER, bWritten);
    return bWritten;
}

}  // namespace kalmo
