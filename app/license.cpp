#include "app/license.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "app/message.h"
#include "app/trace.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "tui/license_win.h"
#include "tui/placement.h"

namespace kalmo {
namespace {

constexpr std::size_t nMaxLicence = 4U << 20U;  // nobody reads more

/// Holds the usual signals back, which would end the process before a temporary file is deleted.
class CSignalsHeld {
  public:
    CSignalsHeld() noexcept {
        sigset_t stHeld;
        ::sigemptyset(&stHeld);
        for (const int nSignal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
            ::sigaddset(&stHeld, nSignal);
        }
        ::pthread_sigmask(SIG_BLOCK, &stHeld, &m_stFormer);
    }
    CSignalsHeld(const CSignalsHeld&) = delete;
    CSignalsHeld& operator=(const CSignalsHeld&) = delete;
    ~CSignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &m_stFormer, nullptr); }

  private:
    sigset_t m_stFormer;
};

/// A private file in the system's temporary folder, deleted with this object.
class CTemporaryFile {
  public:
    CTemporaryFile() {
        const char* const pszFolder = ::secure_getenv("TMPDIR");
        m_csPath = std::string(pszFolder != nullptr && *pszFolder == '/' ? pszFolder : "/tmp") +
                   "/kalmoinstall.XXXXXX";
        CUniqueFd clFd(::mkstemp(m_csPath.data()));  // created exclusively, mode 0600
        if (!clFd.bValid()) {
            m_csPath.clear();
        }
    }
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile() {
        if (bCreated()) {
            ::unlink(m_csPath.c_str());
        }
    }

    [[nodiscard]] bool bCreated() const noexcept { return !m_csPath.empty(); }
    [[nodiscard]] CTString csGetPath() const { return csFromUTF8(m_csPath); }

  private:
    std::string m_csPath;
};

// The licence text, without a byte-order mark.
bool bLoadLicense(CDataExtractor* pclExtractor, CTString* pcsText) {
    CTrace& rclTrace = pclExtractor->rclGetTrace();
    const CRepertoire& rclRepertoire = pclExtractor->rclGetRepertoire();
    const CRepEntree* const pclEntree = rclRepertoire.pclGetEntree(rclRepertoire.lRang(PSZ_LICENCE));
    if (pclEntree == nullptr || pclEntree->u64GetTailleOriginale() > nMaxLicence) {
        rclTrace.Step(L"read the licence", L"failed: there is none, or it is too long");
        return false;
    }
    const CSignalsHeld clHeld;  // until the file is gone
    const CTemporaryFile clFile;
    const CTString csPath = clFile.csGetPath();
    std::string csBytes;
    if (!clFile.bCreated()) {
        rclTrace.Outcome(L"create a file in the temporary folder", false);
        return false;
    }
    const eARCHIVE eCode =
        pclExtractor->eExtraitFichier(pclEntree->csGetNom(), csPath, 0, nullptr, 0, 0, nullptr);
    if (eCode != ARCHIVE_OK) {
        rclTrace.Step(L"read the licence", L"failed, result " + std::to_wstring(eCode));
        return false;
    }
    if (!CDiskFile::bLoad(csPath, nMaxLicence, &csBytes)) {
        rclTrace.Outcome(L"read the licence", false);
        return false;
    }
    *pcsText = csFromUTF8(csBytes.starts_with("\xEF\xBB\xBF") ? csBytes.substr(3) : csBytes);
    return true;
}

}  // namespace

bool bLicense(CDataExtractor* pclExtractor) {
    CTString csText;
    if (!bLoadLicense(pclExtractor, &csText)) {
        ShowDataError();
        return false;
    }
    auto clWindow = clMakeCentred<CLicenseWin>(CLicenseWin::PREFERRED_WIDTH, CLicenseWin::PREFERRED_HEIGHT,
                                               csText.pszGet());
    clWindow.Draw();
    clWindow.MainLoop();
    pclExtractor->rclGetTrace().Step(L"licence", clWindow.bAccepted() ? L"accepted" : L"refused");
    return clWindow.bAccepted();
}

}  // namespace kalmo
