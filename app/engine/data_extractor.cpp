#include "app/engine/data_extractor.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "app/config/server_config.h"
#include "app/engine/passwords.h"
#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/process_info.h"
#include "framework/text.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

constexpr mode_t MANAGER_MODE = 04755;
constexpr mode_t FILE_MODE = 0755;
constexpr int ATTEMPTS = 20;
constexpr useconds_t PAUSE_MICROS = 500'000;

// Puts the parts that are not empty together, with a blank line between them.
CTString csJoin(const CTString& csFirst, const CTString& csSecond) {
    return csFirst.bEmpty() || csSecond.bEmpty() ? csFirst + csSecond : csFirst + L"\r\n\r\n" + csSecond;
}

CTString csOfError(const CXError& rclError) {
    return csJoin(rclError.pszGetSystemErrorMessage(), rclError.pszGetUserMessage());
}

// The results that the error table has no text for, as nobody but the archive raises them.
unsigned unTextOfResult(int nCode) {
    switch (nCode) {
        case ARCHIVE_NOT_LOCATED:
        case ARCHIVE_PASSWORD:
        case ARCHIVE_DATA: return TEXTE_ILLISIBLE;
        default: return TEXTE_NON_INSTALLE;
    }
}

}  // namespace

CDataExtractor::CDataExtractor(CTrace& rclTrace) : m_rclTrace(rclTrace) {
    _SetPermissionsInterdites(S_IWGRP | S_IWOTH);  // root's programs are nobody else's to write, at no moment
}

bool CDataExtractor::bInit() {
    CPathBuffer szProgram;
    CFSPath clPath;
    if (!GetModuleFileNameW(szProgram) || !clPath.bSet(szProgram)) {
        m_rclTrace.Failed(L"find the installer's own path", L"too long?");
        return false;
    }
    clPath.KeepDirectory();
    if (!clPath.bAppend(L"kalmoinstall", L"zip")) {
        m_rclTrace.Failed(L"find the payload", L"path too long");
        return false;
    }
    m_clArchivePath = clPath;
    if (eMotDePasse(csGetArchivePassword().pszGet()) != ARCHIVE_OK) {
        m_rclTrace.Outcome(L"set the archive password", NO_REASON);
        return false;
    }
    const CTString csWhat = L"open payload " + m_clArchivePath.csGet();
    const eARCHIVE eCode = eOuvreArchive(m_clArchivePath.svGet(), 0, 0);
    const int nError = nOutcome(eCode == ARCHIVE_OK);
    if (eCode == ARCHIVE_OK) {
        m_rclTrace.Step(csWhat, L"ok");
    } else if (eCode == ARCHIVE_NOT_FOUND) {
        m_rclTrace.Outcome(csWhat, nError);
    } else {
        m_rclTrace.Failed(csWhat, csGetDefaut());
    }
    return eCode == ARCHIVE_OK;
}

bool CDataExtractor::bUpgrade(const wchar_t* pszDir, IUpgradeProgress* pclProgress) {
    if (!_bExtractFile(pszDir, pclProgress)) {
        return false;
    }
    CPathBuffer szConfPath;
    if (pclProgress != nullptr && bConfPath(pszDir, szConfPath)) {
        WriteTelemetryOn(szConfPath, pclProgress->nGetTelemetryOn());
    }
    return true;
}

bool CDataExtractor::bSync(const wchar_t* pszDir) {
    const int nError = m_rclTrace.bMayChange() ? nOutcome(CDiskFile::bSyncFileSystem(pszDir)) : 0;
    m_rclTrace.Outcome(L"put on the disk what is in " + CTString(pszDir), nError);
    if (nError != 0) {
        errno = nError == NO_REASON ? 0 : nError;
        _ShowError(nullptr);
    }
    return nError == 0;
}

bool CDataExtractor::_bExtractFile(const wchar_t* pszDir, IInstallProgress* pclProgress) {
    const int nCount = static_cast<int>(dwGetNbFile());
    for (int nRang = 0; nRang < nCount; ++nRang) {
        const CTString csName = csInstalledName(*rclGetRepertoire().pclGetEntree(nRang));
        if (csName.bEmpty()) {
            continue;
        }
        const bool bManager = csName == PSZ_MANAGER_PROGRAM;
        if (!_bInstalFile(pszDir, csName, bManager ? MANAGER_MODE : FILE_MODE, bManager)) {
            return false;
        }
        if (pclProgress != nullptr) {
            pclProgress->FileDone();
        }
    }
    return true;
}

CTString CDataExtractor::csInstalledName(const CRepEntree& rclEntree) {
    const CTString& csName = rclEntree.csGetNom();
    if (bEgalSansCasse(csName, PSZ_LICENCE)) {
        return {};
    }
    return bEgalSansCasse(csName, PSZ_MANAGER_PROGRAM) ? CTString(PSZ_MANAGER_PROGRAM) : csName;
}

bool CDataExtractor::_bInstalFile(const wchar_t* pszDir, std::wstring_view svName, mode_t unMode,
                                  bool bRootOwner) {
    CFSPath clTarget;
    eARCHIVE eCode = ARCHIVE_OK;
    if (!m_rclTrace.bMayChange()) {
        return __bRehearseFile(pszDir, svName);
    }
    m_rclTrace.Changed();
    for (int nAttempt = 1;; ++nAttempt) {
        eCode = eCheminEntree(pszDir, svName, &clTarget);
        const bool bNameRefused = eCode == ARCHIVE_BAD || (eCode == ARCHIVE_CREATE && errno == ENAMETOOLONG);
        if (eCode == ARCHIVE_OK) {
            m_stTermine = {unMode, bRootOwner};
            eCode = eExtraitFichier(svName, clTarget.svGet(), 0, nullptr, 0, 0, nullptr);
        }
        // A name that leads out of the directory, or is too long, does not get better by waiting.
        if (eCode == ARCHIVE_OK || nAttempt == ATTEMPTS || bNameRefused) {
            break;
        }
        ::usleep(PAUSE_MICROS);
    }
    const STTermine stTermine = std::exchange(m_stTermine, {});
    if (eCode != ARCHIVE_OK) {
        _ProcessZipError(eCode, svName, clTarget.bEmpty() ? svName : clTarget.svGet());
        return false;
    }
    if (stTermine.pszFailed != nullptr) {
        m_rclTrace.Outcome(stTermine.pszFailed + clTarget.csGet(), nFailure(stTermine.nError));
        errno = stTermine.nError;
        _ShowError(nullptr);
        return false;
    }
    m_rclTrace.Step(L"install " + clTarget.csGet(), L"ok");
    return true;
}

bool CDataExtractor::__bRehearseFile(const wchar_t* pszDir, std::wstring_view svName) {
    CFSPath clTarget;
    const eARCHIVE eCode = eVerifieChemin(pszDir, svName, &clTarget);
    if (eCode != ARCHIVE_OK) {
        _ProcessZipError(eCode, svName, svName);
        return false;
    }
    m_rclTrace.Step(L"install " + clTarget.csGet(), L"ok");
    return true;
}

bool CDataExtractor::_bTermine(CDiskFile& rclFile, mode_t unPermission) {
    if (m_stTermine.unMode == 0) {
        return CTVWinZip::_bTermine(rclFile, unPermission);
    }
    // The owner first: a new owner takes the set-user-id bit away.
    if (m_stTermine.bRootOwner && !rclFile.bSetOwner(0, 0)) {
        m_stTermine.pszFailed = L"set the owner of ";
    } else if (!rclFile.bSetPermission(m_stTermine.unMode)) {
        m_stTermine.pszFailed = L"set the mode of ";
    }
    m_stTermine.nError = errno;
    return true;
}

void CDataExtractor::_ShowError(const CXError* pclError) {
    const int nSystemError = errno;
    if (pclError != nullptr) {
        m_rclTrace.Error(L"failure", *pclError);
        m_rclTrace.rclGetView().ShowError(csOfError(*pclError));
    } else {
        m_rclTrace.Outcome(L"failure", nFailure(nSystemError));
        m_rclTrace.rclGetView().ShowError(csReason(nSystemError));
    }
}

void CDataExtractor::_ProcessZipError(int nCode, std::wstring_view svName, std::wstring_view svPath) {
    const int nSystemError = errno;
    m_rclTrace.Told(L"install " + CTString(svName), L"failed, result " + std::to_wstring(nCode), true);
    const bool bPayload = nCode == ARCHIVE_BAD || nCode == ARCHIVE_PASSWORD || nCode == ARCHIVE_DATA;
    if (const CTString csFault = csGetDefaut(); bPayload && !csFault.bEmpty()) {
        m_rclTrace.Step(L"payload", csFault);
    }
    _CXErrorModule604 clError;
    errno = nSystemError;
    __MakeZipError(nCode, svName, svPath, &clError);
    _ShowError(&clError);
}

CTString CDataExtractor::csZipError(int nCode, std::wstring_view svName, std::wstring_view svPath) const {
    _CXErrorModule604 clError;
    __MakeZipError(nCode, svName, svPath, &clError);
    return csOfError(clError);
}

void CDataExtractor::__MakeZipError(int nCode, std::wstring_view svName, std::wstring_view svPath,
                                    _CXErrorModule604* pclError) const {
    const int nSystemError = errno;
    const auto unCode = static_cast<unsigned>(nCode);
    switch (nCode) {
        case 1:
        case 2:
        case 4:
        case 1001: pclError->SetUserError(unCode, svName); break;
        case 3: pclError->SetUserError(unCode, m_clArchivePath.svGet()); break;
        default: pclError->SetUserError(unCode); break;
    }
    if (nCode == ARCHIVE_CREATE || nCode == ARCHIVE_DISK_FULL || nCode == ARCHIVE_WRITE) {
        pclError->SetSystemErrorParam(static_cast<unsigned>(nSystemError), CTString(svPath).pszGet());
    }
    if (pclError->unGetUserResource() == 0) {
        pclError->SetUserErrorMessage(csFormatText(unTextOfResult(nCode), svName).pszGet());
    }
}

}  // namespace kalmo
