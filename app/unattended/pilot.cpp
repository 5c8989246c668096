#include "app/unattended/pilot.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/hang_up_shield.h"
#include "app/engine/install_steps.h"
#include "app/engine/refusal.h"
#include "app/engine/run_lock.h"
#include "app/engine/server_services.h"
#include "app/engine/traced_command.h"
#include "app/engine/uninstall_record.h"
#include "app/removal/removal.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"
#include "framework/unique_fd.h"
#include "framework/x_error.h"
#include "services/service.h"

namespace kalmo {
namespace {

// The path behind an option's prefix, or nothing.
bool bTakeOption(std::string_view svArgument, std::string_view svPrefix, CTString* pcsPath) {
    const CTString csArgument = csFromUTF8(svArgument);
    const CTString csPrefix = csFromUTF8(svPrefix);
    if (!bEgalSansCasse(csArgument.svGet().substr(0, csPrefix.nGetLength()), csPrefix)) {
        return false;
    }
    *pcsPath = CPilot::csFileOfOption(csArgument.svGet().substr(csPrefix.nGetLength()));
    return true;
}

// Nobody sits there: a program that asks all the same is told that there is nothing more, and does not take
// what a caller's script was to read.
void CloseStandardInput() {
    const CUniqueFd clNull(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (clNull.bValid()) {
        ::dup2(clNull.nGet(), STDIN_FILENO);
    }
}

}  // namespace

// A name that only begins with a dot lies in the current directory too: without a slash the profile calls
// would look for it in the home directory.
CTString CPilot::csFileOfOption(std::wstring_view svValue) {
    const bool bAsItIs = svValue.starts_with(L'/') ||
                         (svValue.starts_with(L'.') && svValue.find(L'/') != std::wstring_view::npos);
    return CTString(bAsItIs ? L"" : L"./") + svValue;
}

const char* CPilot::pszOperationWord(int nOperation) {
    switch (nOperation) {
        case OP_UPGRADE: return "upgrade";
        case OP_INSTALL: return "install";
        case OP_UNINSTALL: return "uninstall";
        default: return nullptr;
    }
}

bool CPilot::bCheckPilot(int nArgc, char** ppszArgv) {
    bool bPilot = false;
    for (int n = 1; n < nArgc; ++n) {
        bPilot |= bTakeOption(ppszArgv[n], "/PILOT=", &m_csPilotPath);
        bTakeOption(ppszArgv[n], "/DEBUG=", &m_csDebugPath);
        bTakeOption(ppszArgv[n], "/RESULT=", &m_csResultPath);
        bTakeOption(ppszArgv[n], "/RECORD=", &m_csRecordPath);
    }
    if (!m_csDebugPath.bEmpty() && !m_clTrace.bOpen(m_csDebugPath)) {
        m_csDebugPath.Empty();
    }
    return bPilot;
}

int CPilot::Pilot() {
    CloseStandardInput();
    if (!m_csResultPath.bEmpty() && !m_clResult.bBegin(m_csResultPath, m_csPilotPath, m_csDebugPath)) {
        return 0;
    }
    // Both until the result is told: whoever hangs up does not end it, nor is what another run does its
    // result.
    const CHangUpShield clShield;
    CRunLock clLock;
    const int nDone = __nRun(clLock);
    m_clResult.End(nDone != 0 && m_stOrders.bOperation(), m_clServiceManager);
    return nDone;
}

void CPilot::TellKind(bool bUnattended) {
    // Runs that append to one trace are told apart by their first line.
    m_clTrace.Step(L"kalmoinstall " + csGetOwnVersion(),
                   bUnattended ? L"unattended run, parameter file " + csQuoted(m_csPilotPath)
                               : CTString(L"interactive run"));
}

bool CPilot::bRehearse(const CTString& csPilotPath) {
    m_csPilotPath = csPilotPath;
    m_clTrace.Rehearse();
    TellKind(true);
    CRunLock clLock;
    return __nRun(clLock) != 0 && m_stOrders.bOperation();
}

int CPilot::__nRun(CRunLock& rclLock) {
    if (!m_stOrders.bRead(m_csPilotPath, m_clTrace)) {
        return 0;
    }
    if (!m_stOrders.bOperation()) {
        m_clTrace.rclGetView().ShowError(csLoadText(TEXTE_RIEN_ORDONNE));
        return m_stOrders.nOperation;
    }
    m_clResult.SetInstance(m_stOrders.csServer, csServiceName(m_stOrders.csServer));
    m_clResult.SetOperation(pszOperationWord(m_stOrders.nOperation));
    if (!m_clTrace.bRehearsal() && !rclLock.bWait(m_clTrace)) {
        m_clTrace.rclGetView().ShowError(csLoadText(TEXTE_AUTRE_INSTALLATEUR));
        return 0;
    }
    InitServices(m_clServiceManager, m_clTrace);
    // To systemctl some names are several; what is no unit's name is not even looked up.
    const bool bNameSafe = CServiceManager::ms_eDistri != eSystemd || __bNamePossible();
    const bool bSuccess = bNameSafe && __bCarryOut();
    m_clTrace.Outcome(L"unattended run", bSuccess ? 0 : NO_REASON);
    return bSuccess ? 1 : 0;
}

bool CPilot::__bCarryOut() {
    switch (m_stOrders.nOperation) {
        case OP_UPGRADE: return __bUpgrade();
        case OP_INSTALL: return __bInstall();
        default: return __bUnInstall();
    }
}

bool CPilot::__bFail(std::wstring_view svWhat, std::wstring_view svWhy, const CTString& csShown) {
    m_clTrace.Failed(svWhat, svWhy);
    m_clTrace.rclGetView().ShowError(csShown);
    return false;
}

CTString CPilot::csServiceName(const CTString& csName) {
    return bEgalSansCasse(csName, PSZ_MANAGER_PROGRAM) ? CTString(PSZ_MANAGER_SERVICE)
                                                       : CTString(PSZ_SERVICE_PREFIX) + csName;
}

CXPtr_deleteRCV<CService> CPilot::__pclGetServer(const CTString& csName) {
    return m_clServiceManager.pclGetService(csServiceName(csName).pszGet(), 0);
}

bool CPilot::__bRunInstallerMode(std::string_view svCommand) {
    const int nStatus =
        nRunServerProgram(m_stOrders.clInstallDir, svCommand, "", std::string::npos, m_clTrace);
    // Only a command that no shell could run ends an installation; one that failed is told all the same.
    if (nStatus != 0) {
        m_clResult.ProgramFailed(csFromUTF8(csServerCommand(m_stOrders.clInstallDir, svCommand, "")),
                                 csStatus(nStatus));
    }
    return nStatus != -1;
}

bool CPilot::__bNamePossible() {
    const CRefusal clRefusal = clRefuseName(m_stOrders.csServer);
    return !clRefusal || bTellRefusal(L"Serveur", *clRefusal, m_clTrace);
}

bool CPilot::__bPlaceFree(CServiceList& rtabServer) {
    ListServer(m_clServiceManager, rtabServer);
    const CFSPath& rclDir = m_stOrders.clInstallDir;
    if (const CService* const pclOther = pclCheckPathConflict(rtabServer, rclDir.pszGet());
        pclOther != nullptr) {
        return __bFail(L"Repertoire",
                       csQuoted(rclDir.csGet()) + L" is the directory of the instance " +
                           CTString(pclOther->pszGetName()),
                       csFormatText(TEXTE_REPERTOIRE_PRIS, rclDir.csGet(), CTString(pclOther->pszGetName())));
    }
    if (const CTString csService = csServiceName(m_stOrders.csServer); bUnitMasked(csService)) {
        return __bFail(L"Serveur", L"the unit of " + csService + L" is masked",
                       csFormatText(TEXTE_NOM_MASQUE, csService));
    }
    const CRefusal clRefusal = clRefuseDirectory(rclDir, rtabServer);
    return !clRefusal || bTellRefusal(L"Repertoire", *clRefusal, m_clTrace);
}

bool CPilot::__bInstall() {
    if (const CXPtr_deleteRCV<CService> pclService = __pclGetServer(m_stOrders.csServer)) {
        m_clTrace.Step(L"install " + m_stOrders.csServer, L"the instance exists: upgrade");
        return __bUpgrade(*pclService);
    }
    const CFSPath& rclInstallDir = m_stOrders.clInstallDir;
    CFSPath clDatabaseDir = rclInstallDir;
    m_clResult.SetDirectory(rclInstallDir.csGet());
    m_clResult.ExpectRunning(PSZ_SERVICE_PREFIX + m_stOrders.csServer);
    m_clResult.ExpectRunning(PSZ_MANAGER_SERVICE);
    if (!clDatabaseDir.bAppend(PSZ_DATABASE_FOLDER)) {
        return __bFail(L"Repertoire", L"too long", csReason(ENAMETOOLONG));
    }
    CDataExtractor clExtractor(m_clTrace);
    CServiceList tabServer;
    if (!__bNamePossible() || !__bPlaceFree(tabServer) || !__bForgetSuccess(rclInstallDir.csGet()) ||
        !clExtractor.bInit()) {
        return false;
    }
    __ForgetUninstall(rclInstallDir.csGet());
    for (const CFSPath& rclDir : {rclInstallDir, clDatabaseDir}) {
        CXError clError;
        if (!bCreateDirectory(rclDir.svGet(), m_clTrace, &clError)) {
            return false;
        }
    }
    // Here already when the instance shares its directory, or when an earlier run did not end.
    CService* const pclManagerHere = pclGetKalmoManagerInPath(tabServer, rclInstallDir.pszGet());
    if (pclManagerHere != nullptr) {
        bStopService(*pclManagerHere, m_clTrace);
    }
    const bool bInstalled = __bInstallInto(clExtractor, clDatabaseDir);
    // Its own program starts it when it is installed.
    if (pclManagerHere != nullptr && !m_clTrace.bRehearsal() && !bRunning(*pclManagerHere, m_clTrace)) {
        StartService(*pclManagerHere, m_clTrace);
    }
    if (bInstalled) {
        __LogSuccess(rclInstallDir.csGet());
    }
    return bInstalled;
}

bool CPilot::__bInstallInto(CDataExtractor& rclExtractor, const CFSPath& rclDatabaseDir) {
    const CFSPath& rclInstallDir = m_stOrders.clInstallDir;
    // The result does not decide: the server's programs may be whole although a later entry failed.
    m_clTrace.Outcome(L"extract", rclExtractor.bUpgrade(rclInstallDir.pszGet(), nullptr) ? 0 : NO_REASON);
    CPathBuffer szConfPath;
    if (!bConfPath(rclInstallDir.svGet(), szConfPath)) {
        return __bFail(L"Repertoire", L"too long", csReason(ENAMETOOLONG));
    }
    return bWriteNewConfiguration(szConfPath, rclDatabaseDir.pszGet(), std::to_wstring(m_stOrders.nPort),
                                  m_stOrders.csServer, m_clTrace) &&
           rclExtractor.bSync(rclInstallDir.pszGet()) && __bRunInstallerMode("kalmomanager --INSTALLER") &&
           __bRunInstallerMode("kalmo --INSTALLER");
}

bool CPilot::__bUpgrade() {
    const CXPtr_deleteRCV<CService> pclService = __pclGetServer(m_stOrders.csServer);
    return pclService != nullptr ? __bUpgrade(*pclService)
                                 : __bFail(L"upgrade " + m_stOrders.csServer, L"no such instance",
                                           csFormatText(TEXTE_INSTANCE_INCONNUE, m_stOrders.csServer));
}

bool CPilot::__bUpgrade(CService& rclService) {
    CXPtr_deleteRCV<CService> pclKalmoManager = pclGetKalmoManager(m_clServiceManager);
    m_clResult.SetOperation("upgrade");
    m_clResult.SetDirectory(csGetProgramDirectory(&rclService));
    m_clResult.ExpectRunning(rclService.pszGetName());
    if (pclKalmoManager != nullptr && !bIsManager(rclService)) {
        m_clResult.ExpectRunning(pclKalmoManager->pszGetName());
    }
    if (const CRefusal clRefusal = clRefuseUpgrade(rclService, pclKalmoManager.get())) {
        return bTellRefusal(L"upgrade " + m_stOrders.csServer, *clRefusal, m_clTrace);
    }
    CUpgradeServices clServices(rclService, std::move(pclKalmoManager), m_clTrace);
    const CTString& csDirectory = clServices.csGetDirectory();
    CDataExtractor clExtractor(m_clTrace);
    if (!__bForgetSuccess(csDirectory) || !clExtractor.bInit()) {
        return false;
    }
    __ForgetUninstall(csDirectory);
    clServices.StopAll();
    if (!clExtractor.bUpgrade(csDirectory.pszGet(), nullptr) || !clExtractor.bSync(csDirectory.pszGet())) {
        m_clTrace.Failed(L"extract", L"what was stopped stays stopped");
        return false;
    }
    clServices.StartAll();
    __LogSuccess(csDirectory);
    return true;
}

bool CPilot::__bUnInstall() {
    CRemoval clRemoval(m_clServiceManager, m_stOrders.csServer, csServiceName(m_stOrders.csServer),
                       m_clTrace);
    if (!clRemoval.bFind()) {
        return false;
    }
    const CTString& csDirectory = clRemoval.csGetDirectory();
    m_clResult.SetDirectory(csDirectory);
    m_clResult.ExpectGone(csServiceName(m_stOrders.csServer));
    if ((!csDirectory.bEmpty() && !__bForgetSuccess(csDirectory)) || !clRemoval.bUnregister()) {
        return false;
    }
    if (csDirectory.bEmpty()) {
        return __bFail(L"delete files", L"the service tells no program",
                       csFormatText(TEXTE_SANS_PROGRAMME, m_stOrders.csServer));
    }
    if (!__bRemoveFiles(clRemoval.csGetProgram(), clRemoval)) {
        return false;
    }
    if (clRemoval.bDirectoryLost()) {
        m_clTrace.Step(L"marker " + csDirectory + PSZ_MARKER, L"left out, the directory is gone");
        clRemoval.Finish();
    } else if (__LogSuccess(csDirectory)) {
        clRemoval.Finish();
    }
    return true;
}

bool CPilot::__bRemoveFiles(const CTString& csProgram, CRemoval& rclRemoval) {
    const STPathParts stParts = CFSPath::stSplit(csProgram);
    if (bEgalSansCasse(stParts.svFileName, PSZ_MANAGER_PROGRAM)) {
        return rclRemoval.bDelete(csProgram);
    }
    const CTString csDirectory(stParts.svDirectory);
    const CTString csLogger = csDirectory + L"zdlogger";
    std::vector<CTString> tabFixed{csProgram};
    for (const wchar_t* const pszLibrary : TAB_NEEDED_LIBRARY) {
        tabFixed.push_back(csDirectory + pszLibrary);
    }
    const std::vector<CTString> tabLibrary = tabServerLibraries(csDirectory);
    if (!std::ranges::all_of(tabFixed, [&](const CTString& rcs) { return rclRemoval.bDelete(rcs); })) {
        return false;
    }
    // What is not there need not be deleted; what else fails here decides nothing.
    if (bThere(csLogger)) {
        rclRemoval.bDelete(csLogger);
    }
    for (const CTString& rcsLibrary : tabLibrary) {
        if (std::ranges::find(tabFixed, rcsLibrary) == tabFixed.end()) {
            rclRemoval.bDelete(rcsLibrary);
        }
    }
    return true;
}

bool CPilot::__bForgetSuccess(const CTString& csDir) {
    const CTString csMarker = csDir + PSZ_MARKER;
    if (m_clTrace.bRehearsal()) {
        return true;
    }
    const int nError = nOutcome(CDiskFile::bDelete(csMarker));
    if (nError == 0) {
        m_clTrace.Changed();
    }
    if (nError == 0 || nError == ENOENT) {
        return true;
    }
    m_clTrace.Outcome(L"remove the marker of an earlier run, " + csMarker, nError);
    return false;
}

void CPilot::__ForgetUninstall(const CTString& csDir) {
    if (!m_clTrace.bRehearsal() && CUninstallRecord::bForgetDirectory(csDir)) {
        m_clTrace.Changed();
    }
}

bool CPilot::__LogSuccess(const CTString& csDir) {
    static constexpr std::string_view SV_MARK = "OK";
    CDiskFile clFile;
    const int nError = m_clTrace.bMayChange()
                           ? nOutcome(clFile.bOpen(csDir + PSZ_MARKER, CDiskFile::eMODE::Create) &&
                                      clFile.bWrite(SV_MARK.data(), SV_MARK.size()) && clFile.bClose())
                           : 0;
    m_clTrace.Outcome(L"marker " + csDir + PSZ_MARKER, nError);
    return nError == 0;
}

}  // namespace kalmo
