#include "app/interactive/interactive_run.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include "app/engine/data_extractor.h"
#include "app/engine/trace.h"
#include "app/interactive/message.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/signal_block.h"
#include "framework/text.h"
#include "tui/dialogs/license_win.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr std::size_t MAX_LICENCE = 4U << 20U;  // nobody reads more

// A private file in the system's temporary folder, deleted with this object.
class CTemporaryFile {
  public:
    CTemporaryFile() {
        const char* const pszFolder = ::secure_getenv("TMPDIR");
        m_csFolder = pszFolder != nullptr && *pszFolder == '/' ? pszFolder : "/tmp";
        m_csPath = m_csFolder + "/kalmoinstall.XXXXXX";
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
    [[nodiscard]] CTString csGetFolder() const { return csFromUTF8(m_csFolder); }

  private:
    std::string m_csFolder;
    std::string m_csPath;
};

// The folder for temporary files has no room for one: the text that tells it.
CTString csNoFolder(const CTemporaryFile& rclFile, CTrace& rclTrace) {
    const int nError = errno;
    rclTrace.Outcome(L"write a file in the temporary folder " + rclFile.csGetFolder(), nFailure(nError));
    return csFormatText(TEXTE_DOSSIER_TEMPORAIRE, rclFile.csGetFolder(), csReason(nError));
}

// The payload has no licence text that can be read: the text that tells it.
CTString csNoLicense(CTrace& rclTrace, std::wstring_view svWhy) {
    rclTrace.Failed(L"read the licence", svWhy);
    return csLoadText(TEXTE_DONNEES);
}

// Gives the licence text, without a byte-order mark, or tells why it cannot be had: empty on success.
CTString csLoadLicense(CDataExtractor* pclExtractor, CTString* pcsText) {
    CTrace& rclTrace = pclExtractor->rclGetTrace();
    const CRepertoire& rclRepertoire = pclExtractor->rclGetRepertoire();
    const CRepEntree* const pclEntree = rclRepertoire.pclGetEntree(rclRepertoire.lRang(PSZ_LICENCE));
    if (pclEntree == nullptr || pclEntree->u64GetTailleOriginale() > MAX_LICENCE) {
        return csNoLicense(rclTrace, L"there is none, or it is too long");
    }
    // Until the file is gone: any of these would end the process before.
    const CSignalBlock clHeld{SIGHUP, SIGINT, SIGQUIT, SIGTERM};
    const CTemporaryFile clFile;
    if (!clFile.bCreated()) {
        return csNoFolder(clFile, rclTrace);
    }
    const CTString csPath = clFile.csGetPath();
    const eARCHIVE eCode =
        pclExtractor->eExtraitFichier(pclEntree->csGetNom(), csPath, 0, nullptr, 0, 0, nullptr);
    if (eCode == ARCHIVE_CREATE || eCode == ARCHIVE_DISK_FULL || eCode == ARCHIVE_WRITE) {
        return csNoFolder(clFile, rclTrace);
    }
    if (eCode != ARCHIVE_OK) {
        return csNoLicense(rclTrace, L"result " + std::to_wstring(eCode));
    }
    std::string csBytes;
    if (!CDiskFile::bLoad(csPath, MAX_LICENCE, &csBytes)) {
        return csNoFolder(clFile, rclTrace);
    }
    *pcsText = csFromUTF8(csBytes.starts_with("\xEF\xBB\xBF") ? csBytes.substr(3) : csBytes);
    return {};
}

}  // namespace

bool bLicense(CDataExtractor* pclExtractor) {
    CTString csText;
    if (const CTString csError = csLoadLicense(pclExtractor, &csText); !csError.bEmpty()) {
        ShowErrorBox(csError);
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
