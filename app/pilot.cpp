#include "app/pilot.h"

#include <strings.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "app/config/server_config.h"
#include "app/data_extractor.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/profile.h"
#include "framework/x_error.h"
#include "services/service.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_SECTION_SERVER = L"SERVEUR";
constexpr const wchar_t* PSZ_KEY_SERVER = L"Serveur";
constexpr std::size_t nMaxServerName = 100;
constexpr const wchar_t* PSZ_MANAGER_SERVICE = L"KalmoManager";
constexpr const wchar_t* PSZ_MANAGER_PROGRAM = L"kalmomanager";

enum eOPERATION { OP_UPGRADE = 1, OP_INSTALL = 2, OP_UNINSTALL = 3, OP_NONE = 4 };

// The path behind an option's prefix, or nothing. A bare name lies in the current directory.
bool bTakeOption(std::string_view svArgument, std::string_view svPrefix, CTString* pcsPath) {
    if (svArgument.size() < svPrefix.size() ||
        ::strncasecmp(svArgument.data(), svPrefix.data(), svPrefix.size()) != 0) {
        return false;
    }
    const std::string_view svPath = svArgument.substr(svPrefix.size());
    const bool bAsItIs = svPath.starts_with('.') || svPath.starts_with('/');
    *pcsPath = CTString(bAsItIs ? L"" : L"./") + csFromUTF8(svPath);
    return true;
}

// A directory as the first word of a shell command. An ordinary one stays as it is.
std::string csShellWord(std::string_view sv) {
    static constexpr std::string_view svPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=.,:@%/";
    if (sv.find_first_not_of(svPlain) == std::string_view::npos) {
        return std::string(sv);
    }
    std::string cs = "'";
    for (const char c : sv) {
        cs += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return cs + "'";
}

bool bRunning(CService& rclService) {
    return rclService.eGetStatus() == eServiceRunning;
}

}  // namespace

bool CPilot::bCheckPilot(int nArgc, char** ppszArgv) {
    bool bPilot = false;
    for (int n = 1; n < nArgc; ++n) {
        bPilot |= bTakeOption(ppszArgv[n], "/PILOT=", &m_csPilotPath);
        bTakeOption(ppszArgv[n], "/DEBUG=", &m_csDebugPath);
    }
    if (!m_csDebugPath.bEmpty()) {
        m_clTrace.bOpen(m_csDebugPath);
    }
    return bPilot;
}

int CPilot::Pilot() {
    if (!CDiskFile::bFileExists(m_csPilotPath)) {
        return __bFail(L"parameter file " + m_csPilotPath, L"not found");
    }
    if (!m_clServiceManager.bInit(nullptr, 0)) {
        return __bFail(L"detect the init system", L"failed");
    }
    const int nOperation = GetPrivateProfileInt(L"PILOTAGE", L"MAJ", OP_NONE, m_csPilotPath.pszGet());
    bool bSuccess = false;
    switch (nOperation) {
        case OP_UPGRADE: bSuccess = __bUpgrade(); break;
        case OP_INSTALL: bSuccess = __bInstall(); break;
        case OP_UNINSTALL: bSuccess = __bUnInstall(); break;
        default: m_clTrace.Step(L"MAJ", L"no operation of that number, nothing done"); return nOperation;
    }
    m_clTrace.Step(L"unattended run", bSuccess ? L"ok" : L"failed");
    return bSuccess ? 1 : 0;
}

bool CPilot::__bFail(std::wstring_view svWhat, std::wstring_view svWhy) {
    m_clTrace.Step(svWhat, L"failed: " + CTString(svWhy));
    return false;
}

bool CPilot::__bTell(std::wstring_view svWhat, bool bSuccess, const CXError& rclError) {
    if (bSuccess) {
        m_clTrace.Step(svWhat, L"ok");
    } else {
        m_clTrace.Error(svWhat, rclError);
    }
    return bSuccess;
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

CXPtr_deleteRCV<CService> CPilot::__pclGetServer(const CTString& csName) {
    const CTString csService =
        bEgalSansCasse(csName, PSZ_MANAGER_PROGRAM) ? CTString(PSZ_MANAGER_SERVICE) : L"ZDCS-" + csName;
    return m_clServiceManager.pclGetService(csService.pszGet(), 0);
}

bool CPilot::__bRunInstallerMode(const CFSPath& clInstallDir, std::string_view svProgram) {
    const std::string csCommand =
        csShellWord(clInstallDir.csGetUTF8()) + std::string(svProgram) + " --INSTALLER 2>/dev/null";
    const int nStatus = std::system(csCommand.c_str());
    if (nStatus == -1) {
        m_clTrace.Outcome(csFromUTF8(csCommand), false);
        return false;
    }
    m_clTrace.Step(csFromUTF8(csCommand), L"status " + CTString(std::to_wstring(nStatus)));
    return true;
}

bool CPilot::__bInstall() {
    CTString csName;
    CTString csDirectory;
    if (!__bReadText(PSZ_KEY_SERVER, nMaxServerName, &csName) ||
        !__bReadText(L"Repertoire", nTailleMaxPath, &csDirectory)) {
        return false;
    }
    CFSPath clInstallDir;
    if (!clInstallDir.bSet(csDirectory) || !clInstallDir.bAddTrailingSlash()) {
        return __bFail(L"Repertoire", L"too long");
    }
    if (!clInstallDir.svGet().starts_with(L'/')) {
        return __bFail(L"Repertoire", L"not an absolute path");
    }
    const int nPort = GetPrivateProfileInt(PSZ_SECTION_SERVER, L"Port", nPortDefaut, m_csPilotPath.pszGet());

    CDataExtractor clExtractor(m_clTrace);
    if (!clExtractor.bInit()) {
        return false;
    }
    if (__pclGetServer(csName) != nullptr) {
        m_clTrace.Step(L"install " + csName, L"the instance exists: upgrade");
        return __bUpgrade(clExtractor, csName);
    }

    CFSPath clDatabaseDir = clInstallDir;
    CPathBuffer szConfPath;
    if (!clDatabaseDir.bAppend(L"BDD/") ||
        !CDiskFile::MakePath(szConfPath, clInstallDir.svGet(), PSZ_CONF_BASE, PSZ_CONF_EXTENSION)) {
        return __bFail(L"Repertoire", L"too long");
    }
    for (const CFSPath& rclDir : {clInstallDir, clDatabaseDir}) {
        CXError clError;
        if (!__bTell(L"create directory " + rclDir.csGet(),
                     CDiskFile::bCreateDirectory(rclDir.svGet(), &clError), clError)) {
            return false;
        }
    }
    __ForgetSuccess(clInstallDir.csGet());
    // The result does not decide: the server's programs may be whole although a later entry failed.
    m_clTrace.Step(L"extract", clExtractor.bUpgrade(clInstallDir.pszGet(), nullptr) ? L"ok" : L"failed");

    WriteDBRootPath(szConfPath, clDatabaseDir.pszGet());
    WriteServerPort(szConfPath, std::to_wstring(nPort).c_str());
    WriteServerName(szConfPath, csName.pszGet());
    m_clTrace.Step(L"configuration " + CTString(szConfPath), L"written");

    if (!__bRunInstallerMode(clInstallDir, "kalmomanager") || !__bRunInstallerMode(clInstallDir, "kalmo")) {
        return false;
    }
    __LogSuccess(clInstallDir.csGet());
    return true;
}

bool CPilot::__bUpgrade() {
    CTString csName;
    if (!__bReadText(PSZ_KEY_SERVER, nMaxServerName, &csName)) {
        return false;
    }
    CDataExtractor clExtractor(m_clTrace);
    return clExtractor.bInit() && __bUpgrade(clExtractor, csName);
}

bool CPilot::__bUpgrade(CDataExtractor& rclExtractor, const CTString& csName) {
    const CXPtr_deleteRCV<CService> pclService = __pclGetServer(csName);
    if (pclService == nullptr) {
        return __bFail(L"upgrade " + csName, L"no such instance");
    }
    const CTString csDirectory = csGetProgramDirectory(pclService.get());
    if (csDirectory.bEmpty()) {
        return __bFail(L"upgrade " + csName, L"the service tells no program");
    }
    __ForgetSuccess(csDirectory);

    const CXPtr_deleteRCV<CService> pclManager = __pclGetServer(PSZ_MANAGER_PROGRAM);
    if (pclManager != nullptr && bRunning(*pclManager) &&
        CDiskFile::bSameDirectoryName(csGetProgramDirectory(pclManager.get()), csDirectory)) {
        m_clTrace.Step(L"stop KalmoManager", pclManager->bStop() ? L"ok" : L"failed");
    }
    if (bRunning(*pclService)) {
        m_clTrace.Step(L"stop " + csName, pclService->bStop() ? L"ok" : L"failed");
    }
    // A half-replaced instance is not started again.
    if (!rclExtractor.bUpgrade(csDirectory.pszGet(), nullptr)) {
        return __bFail(L"extract", L"the stopped services stay stopped");
    }
    if (pclManager != nullptr && !bRunning(*pclManager)) {
        m_clTrace.Step(L"start KalmoManager", pclManager->bStart(nullptr) ? L"ok" : L"failed");
    }
    m_clTrace.Step(L"start " + csName, pclService->bStart(nullptr) ? L"ok" : L"failed");
    __LogSuccess(csDirectory);
    return true;
}

bool CPilot::__bUnInstall() {
    CTString csName;
    if (!__bReadText(PSZ_KEY_SERVER, nMaxServerName, &csName)) {
        return false;
    }
    const CXPtr_deleteRCV<CService> pclService = __pclGetServer(csName);
    if (pclService == nullptr) {
        return __bFail(L"uninstall " + csName, L"no such instance");
    }
    const CTString csProgram = csGetProgramWithoutArg(pclService.get());
    const CTString csDirectory = csGetProgramDirectory(pclService.get());
    __ForgetSuccess(csDirectory);
    if (!pclService->bRemove()) {
        return __bFail(L"unregister " + csName, L"the service stays");
    }
    m_clTrace.Step(L"unregister " + csName, L"ok");
    if (!__bRemoveFiles(csProgram)) {
        return false;
    }
    __LogSuccess(csDirectory);
    return true;
}

bool CPilot::__bDelete(const CTString& csPath) {
    CXError clError;
    return __bTell(L"delete " + csPath, CDiskFile::bDelete(csPath, &clError), clError);
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

void CPilot::__ForgetSuccess(const CTString& csDir) {
    CDiskFile::bDelete(csDir + L"Install.log");
}

void CPilot::__LogSuccess(const CTString& csDir) {
    static constexpr std::string_view svMark = "OK";
    CDiskFile clFile;
    const bool bWritten = clFile.bOpen(csDir + L"Install.log", CDiskFile::eMODE::Create) &&
                          clFile.bWrite(svMark.data(), svMark.size()) && clFile.bClose();
    m_clTrace.Outcome(L"marker " + csDir + L"Install.log", bWritten);
}

}  // namespace kalmo
