// The part of the engine that makes a new instance.
#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/install_steps.h"
#include "app/engine/passwords.h"
#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"
#include "app/engine/uninstall_record.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/profile.h"
#include "framework/text.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

constexpr std::wstring_view SV_PROGRAM_ROOT = L"%%EXE%%";
constexpr const wchar_t* PSZ_LOG = L"INSTALL.LOG";
constexpr std::size_t MAX_LOG = 16U << 20U;
constexpr int EXIT_CODE_FAILURE = 255;

// Where the database lies whose root is given as the configuration tells it. False when that is too long.
bool bDatabaseDirectory(const CFSPath& rclInstallDir, std::wstring_view svRoot, CFSPath* pclDir) {
    if (!svRoot.starts_with(SV_PROGRAM_ROOT)) {
        return pclDir->bSet(svRoot);
    }
    svRoot.remove_prefix(SV_PROGRAM_ROOT.size());
    svRoot.remove_prefix(std::min(svRoot.find_first_not_of(L'/'), svRoot.size()));
    *pclDir = rclInstallDir;
    return svRoot.empty() || pclDir->bAppend(svRoot);
}

// What the operator needs to log in for the first time.
CTString csInstalled(const CDataExtractor::STInstallParam& rstParam) {
    const CTString csAccount =
        rstParam.csAdminPassword.bEmpty()
            ? csFormatText(TEXTE_ADMIN_SANS_MDP, rstParam.csAdminAccount)
            : csFormatText(TEXTE_ADMIN, rstParam.csAdminAccount, rstParam.csAdminPassword);
    return csLoadText(TEXTE_INSTALLE) + L"\r\n" + csAccount;
}

}  // namespace

bool CDataExtractor::bInstall(const wchar_t* pszDir, const wchar_t* pszDbRoot, const STInstallParam& rstParam,
                              IInstallProgress* pclProgress) {
    CFSPath clDir;
    CFSPath clDatabaseDir;
    CPathBuffer szConfPath;
    if (!clDir.bSet(pszDir) || !clDir.bAddTrailingSlash() ||
        !bDatabaseDirectory(clDir, pszDbRoot, &clDatabaseDir) || !clDatabaseDir.bAppend(L"__system/") ||
        !bConfPath(clDir.svGet(), szConfPath)) {
        errno = ENAMETOOLONG;
        _ShowError(nullptr);
        return false;
    }
    if (!__bCreateDirectory(clDir.svGet())) {
        return false;
    }
    CDiskFile::bDelete(clDir.csGet() + PSZ_LOG);
    CUninstallRecord::bForgetDirectory(clDir.svGet());
    if (!__bCreateDirectory(clDatabaseDir.svGet())) {
        return false;
    }
    if (pclProgress != nullptr) {
        pclProgress->Begin(static_cast<int>(dwGetNbFile()) + 2);
    }
    if (!_bExtractFile(clDir.pszGet(), pclProgress)) {
        return false;
    }
    // The server itself puts its directory in the place of "%%EXE%%".
    if (!bWriteNewConfiguration(szConfPath, pszDbRoot, rstParam.csPort, rstParam.csServerName, m_rclTrace)) {
        _ShowError(nullptr);
        return false;
    }
    WriteTelemetryOn(szConfPath, rstParam.nTelemetry);
    _SetDaemonUser(rstParam.csDaemonUser, szConfPath, pclProgress);
    if (!bSync(clDir.pszGet())) {
        return false;
    }

    const auto StepDone = [pclProgress] {
        if (pclProgress != nullptr) {
            pclProgress->StepDone();
        }
    };
    StepDone();
    if (!__bRunServerProgram(clDir, "kalmomanager --INSTALLER", "")) {
        return false;
    }
    std::string csServer;
    std::string csHidden;
    __AddInstallerMode(rstParam, &csServer, &csHidden);
    if (!__bRunServerProgram(clDir, csServer, csHidden)) {
        return false;
    }
    StepDone();
    m_rclTrace.rclGetView().ShowResult(csInstalled(rstParam));
    return true;
}

void CDataExtractor::__AddInstallerMode(const STInstallParam& rstParam, std::string* pcsShown,
                                        std::string* pcsHidden) {
    *pcsShown += "kalmo --INSTALLER";
    if (rstParam.csAdminAccount != L"Admin" || !rstParam.csAdminPassword.bEmpty()) {
        *pcsShown += " --CREATEUSER " + csShellQuoted(csToUTF8(rstParam.csAdminAccount)) + " --PWDC ";
        __AddCryptPassword(rstParam, pcsHidden);
    }
}

std::size_t CDataExtractor::nCommandExcess(const wchar_t* pszDir, const STInstallParam& rstParam) {
    CFSPath clDir;
    std::string csServer;
    std::string csHidden;
    if (!clDir.bSet(pszDir) || !clDir.bAddTrailingSlash()) {
        return MAX_SERVER_COMMAND;
    }
    __AddInstallerMode(rstParam, &csServer, &csHidden);
    const std::size_t nLength = csServerCommand(clDir, csServer, csHidden).size();
    return nLength - std::min(nLength, MAX_SERVER_COMMAND);
}

bool CDataExtractor::__bCreateDirectory(std::wstring_view svDir) {
    CXError clError;
    const bool bCreated = bCreateDirectory(svDir, m_rclTrace, &clError);
    if (!bCreated) {
        clError.SetUserErrorMessage(csLoadText(TEXTE_REPERTOIRE_NON_CREE).pszGet());
        _ShowError(&clError);
    }
    return bCreated;
}

void CDataExtractor::__AddCryptPassword(const STInstallParam& rstParam, std::string* pcsCommand) {
    *pcsCommand += csCryptPassword(rstParam.csAdminAccount, rstParam.csAdminPassword);
}

bool CDataExtractor::__bRunServerProgram(const CFSPath& rclDir, std::string_view svShown,
                                         std::string_view svHidden) {
    const int nStatus = nRunServerProgram(rclDir, svShown, svHidden, MAX_SERVER_COMMAND, m_rclTrace);
    // The exit code alone decides; of a program that a signal ended there is none, which counts as 0.
    if (nStatus != -1 && nExitCode(nStatus) != EXIT_CODE_FAILURE) {
        return true;
    }
    _ShowErrorLog(rclDir.pszGet());
    return false;
}

void CDataExtractor::_SetDaemonUser(const CTString& csUser, const wchar_t* pszConfPath,
                                    IInstallProgress* pclProgress) {
    if (csUser.bEmpty() || csUser == PSZ_ROOT) {
        WritePrivateProfileString(PSZ_SECTION_INIT, PSZ_KEY_DAEMON_USER, nullptr, pszConfPath);
        return;
    }
    if (!bSystemAccountExists(csUser) && !bCreateSystemAccount(csUser, m_rclTrace)) {
        m_rclTrace.rclGetView().ShowError(csFormatText(TEXTE_COMPTE_NON_CREE, csUser));
        if (pclProgress != nullptr) {
            pclProgress->Redraw();
        }
    }
    // The operator may create the account afterwards; the server then finds it named.
    WritePrivateProfileString(PSZ_SECTION_INIT, PSZ_KEY_DAEMON_USER, csUser.pszGet(), pszConfPath);
}

void CDataExtractor::_ShowErrorLog(const wchar_t* pszDir) {
    const CTString csPath = CTString(pszDir) + PSZ_LOG;
    std::string csLog;
    const int nError = nOutcome(CDiskFile::bLoad(csPath, MAX_LOG, &csLog));
    if (nError != 0) {
        m_rclTrace.Outcome(L"read " + csPath, nError);
        csLog.clear();
    }
    m_rclTrace.rclGetView().ShowError(nError == 0 ? csFromUTF8(csLog)
                                                  : csFormatText(TEXTE_SANS_JOURNAL, csPath));
}

}  // namespace kalmo
