#include "app/data_extractor.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "app/archive_password.h"
#include "app/trace.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/process_info.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_LICENCE = L"license.txt";
constexpr const wchar_t* PSZ_MANAGER = L"kalmomanager";
constexpr mode_t unManagerMode = 04755;
constexpr mode_t unFileMode = 0755;
constexpr int nAttempts = 20;
constexpr useconds_t unPauseMicros = 500'000;

/// Archive result: the archive is damaged, or an entry's name leads out of the directory.
constexpr int nBadArchive = 3;

}  // namespace

CDataExtractor::CDataExtractor(CTrace& rclTrace) : m_rclTrace(rclTrace) {}

bool CDataExtractor::bInit() {
    CPathBuffer szProgram;
    CFSPath clPath;
    if (!GetModuleFileNameW(szProgram) || !clPath.bSet(szProgram)) {
        m_rclTrace.Outcome(L"find the installer's own path", false);
        return false;
    }
    clPath.KeepDirectory();
    if (!clPath.bAppend(L"kalmoinstall", L"zip")) {
        m_rclTrace.Step(L"find the payload", L"failed (path too long)");
        return false;
    }
    m_clArchivePath = clPath;
    const int nCode = eOuvreArchive(m_clArchivePath.pszGet(), 0, 0);
    m_rclTrace.Step(L"open payload " + m_clArchivePath.csGet(), nCode == 0 ? L"ok" : L"failed");
    if (nCode != 0) {
        _ProcessZipError(nCode, L"", m_clArchivePath.pszGet());
        return false;
    }
    eMotDePasse(csGetArchivePassword().pszGet());
    return true;
}

bool CDataExtractor::bUpgrade(const wchar_t* pszDir, IInstallProgress* piProgress) {
    return _bExtractFile(pszDir, piProgress);
}

bool CDataExtractor::_bExtractFile(const wchar_t* pszDir, IInstallProgress* piProgress) {
    const unsigned dwCount = m_clRepertoire.dwTaille();
    for (unsigned dwRank = 0; dwRank < dwCount; ++dwRank) {
        const CTString csName(pszNomFichier(dwRank));
        if (bEgalSansCasse(csName, PSZ_LICENCE)) {
            continue;
        }
        const bool bManager = bEgalSansCasse(csName, PSZ_MANAGER);
        const bool bInstalled = bManager ? _bInstalFile(pszDir, PSZ_MANAGER, unManagerMode, true)
                                         : _bInstalFile(pszDir, csName.pszGet(), unFileMode, false);
        if (!bInstalled) {
            return false;
        }
        if (piProgress != nullptr) {
            piProgress->FileInstalled();
        }
    }
    return true;
}

bool CDataExtractor::_bInstalFile(const wchar_t* pszDir, const wchar_t* pszName, mode_t unMode,
                                  bool bRootOwner) {
    CFSPath clTarget;
    int nCode = 0;
    for (int nAttempt = 1;; ++nAttempt) {
        nCode = ePrepareChemin(pszDir, pszName, &clTarget);
        if (nCode == 0) {
            nCode = eExtraitFichier(pszName, clTarget.pszGet(), 0, nullptr, 0, 0, nullptr);
        }
        // A name that leads out of the directory does not get better by waiting.
        if (nCode == 0 || nAttempt == nAttempts || (nCode == nBadArchive && clTarget.bEmpty())) {
            break;
        }
        ::usleep(unPauseMicros);
    }
    if (nCode != 0) {
        _ProcessZipError(nCode, pszName, clTarget.pszGet());
        return false;
    }
    if (bRootOwner && !CDiskFile::bSetFileOwnerUnix(clTarget.svGet(), 0, 0)) {
        _ShowError(nullptr);
        return false;
    }
    if (CDiskFile::Unix_chmod(clTarget.svGet(), unMode) == -1) {
        _ShowError(nullptr);
        return false;
    }
    m_rclTrace.Step(L"install " + clTarget.csGet(), L"ok");
    return true;
}

void CDataExtractor::_ShowError(const CXError* pclError) {
    if (pclError != nullptr) {
        m_rclTrace.Error(L"error", *pclError);
    } else {
        m_rclTrace.Step(L"error", csFromUTF8(std::strerror(errno)));
    }
}

void CDataExtractor::_ProcessZipError(int nCode, const wchar_t* pszName, const wchar_t* pszPath) {
    _CXErrorModule604 clError;
    switch (nCode) {
        case 1:
        case 2:
        case 4:
        case 1001: clError.SetUserError(static_cast<unsigned>(nCode), pszName); break;
        case 3: clError.SetUserError(3, m_clArchivePath.pszGet()); break;
        default: clError.SetUserError(static_cast<unsigned>(nCode)); break;
    }
    m_rclTrace.Step(L"install " + CTString(pszPath), L"failed");
    _ShowError(&clError);
}

}  // namespace kalmo
