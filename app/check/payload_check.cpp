#include "app/check/payload_check.h"

#include <cerrno>
#include <map>
#include <string>

#include "app/check/finding_text.h"
#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/trace.h"
#include "app/unattended/pilot.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"

namespace kalmo {
namespace {

enum eDONNEES : int { PROGRAM_MISSING, SAME_TARGET, OUTSIDE, PATH_TOO_LONG, FILE_AND_DIRECTORY };

// A text that is equal for all texts which differ in letter case alone.
std::wstring csFolded(std::wstring_view sv) {
    std::wstring cs(sv);
    for (wchar_t& rc : cs) {
        rc = cMajuscule(rc);
    }
    return cs;
}

CTString csWithFault(const CTString& csText, const CTString& csFault) {
    return csInOneLine(csText) + (csFault.bEmpty() ? CTString() : L" (" + csFault + L")");
}

// What the names of a payload become on the disk: each a file or a directory, and not both.
class CKinds {
  public:
    explicit CKinds(std::wstring_view svRoot) : m_nRoot(svRoot.size()) {}

    // Notes a path and the directories that it needs. The name that wants one of them otherwise, or null.
    const CTString* pcsOther(std::wstring_view svPath, bool bDirectory, const CTString& csName) {
        for (std::size_t n = svPath.find(L'/', m_nRoot); n != svPath.npos; n = svPath.find(L'/', n + 1)) {
            if (const CTString* const pcs = __pcsOther(svPath.substr(0, n), true, csName)) {
                return pcs;
            }
        }
        return __pcsOther(svPath, bDirectory, csName);
    }

  private:
    struct STKind {
        bool bDirectory;
        CTString csName;
    };
    const CTString* __pcsOther(std::wstring_view svPath, bool bDirectory, const CTString& csName) {
        const auto [it, bNew] = m_tab.try_emplace(std::wstring(svPath), STKind{bDirectory, csName});
        return it->second.bDirectory == bDirectory ? nullptr : &it->second.csName;
    }

    std::size_t m_nRoot;
    std::map<std::wstring, STKind> m_tab;
};

}  // namespace

void CheckPayload(CDataExtractor& rclExtractor, const CFSPath& rclDirectory, bool bNew,
                  CFindings& rclFindings) {
    if (!rclExtractor.bOuvert()) {
        const bool bThere = CDiskFile::bFileExists(rclExtractor.csGetChemin());
        rclFindings.Add(eSEVERITY::Error, bThere ? "bad-payload" : "no-payload",
                        csWithFault(csLoadText(TEXTE_DONNEES), rclExtractor.csGetDefaut()));
        return;
    }
    const CRepertoire& rclRepertoire = rclExtractor.rclGetRepertoire();
    constexpr std::size_t ENOUGH = 100;  // an archive with another password has as many as entries
    const std::size_t nBefore = rclFindings.tabGet().size();
    std::map<std::wstring, CTString> tabTarget;
    CKinds clKinds(rclDirectory.svGet());
    // What the run itself adds.
    clKinds.pcsOther(rclDirectory.csGet() + PSZ_MARKER, false, PSZ_MARKER);
    CPathBuffer szConfPath;
    if (bNew && bConfPath(rclDirectory.svGet(), szConfPath)) {
        clKinds.pcsOther(szConfPath, false, CTString(CFSPath::stSplit(szConfPath).svFileName));
        const CTString csDatabase(PSZ_DATABASE_FOLDER);
        clKinds.pcsOther(rclDirectory.csGet() + csDatabase, true, csDatabase);
    }
    const auto Tell = [&](eSEVERITY eSeverity, const char* pszCode, int nText, const CTString& csName,
                          const CTString& csOther = {}) {
        rclFindings.Add(eSeverity, pszCode,
                        csFormatLine(TEXTE_CHECK_DONNEES, nText, csQuoted(csName), csQuoted(csOther)));
    };
    for (int nRang = 0;
         nRang < static_cast<int>(rclRepertoire.dwTaille()) && rclFindings.tabGet().size() - nBefore < ENOUGH;
         ++nRang) {
        const CRepEntree& rclEntree = *rclRepertoire.pclGetEntree(nRang);
        const CTString csName = rclEntree.csGetNom();
        const CTString csInstalled = CDataExtractor::csInstalledName(rclEntree);
        if (const eARCHIVE eCode = rclExtractor.eVerifieFichier(csName); eCode != ARCHIVE_OK) {
            rclFindings.Add(
                csInstalled.bEmpty() ? eSEVERITY::Warning : eSEVERITY::Error, "bad-payload",
                csWithFault(rclExtractor.csZipError(eCode, csName, csName), rclExtractor.csGetDefaut()));
        }
        if (csInstalled.bEmpty()) {
            continue;
        }
        CFSPath clTarget;
        const eARCHIVE ePath = eVerifieChemin(rclDirectory.svGet(), csInstalled, &clTarget);
        if (ePath == ARCHIVE_BAD) {
            Tell(eSEVERITY::Error, "entry-outside", OUTSIDE, csName);
        } else if (ePath != ARCHIVE_OK && errno == ENAMETOOLONG) {
            Tell(eSEVERITY::Error, "entry-too-long", PATH_TOO_LONG, csName);
        } else if (ePath == ARCHIVE_OK) {
            const bool bDirectory = rclEntree.u64GetTailleOriginale() == 0 && rclEntree.bRepertoire();
            if (const CTString* const pcs = clKinds.pcsOther(clTarget.svGet(), bDirectory, csName)) {
                Tell(eSEVERITY::Error, "same-target", FILE_AND_DIRECTORY, csName, *pcs);
                continue;
            }
            // By letter case too: an entry is found by its name without it.
            const auto [it, bFirst] = tabTarget.emplace(csFolded(clTarget.svGet()), csName);
            if (!bFirst) {
                Tell(eSEVERITY::Warning, "same-target", SAME_TARGET, csName, it->second);
            }
        }
    }
    for (const wchar_t* const pszProgram : {PSZ_SERVER_PROGRAM, PSZ_MANAGER_PROGRAM}) {
        if (!rclRepertoire.bTrouve(pszProgram)) {
            Tell(eSEVERITY::Error, "incomplete-payload", PROGRAM_MISSING, pszProgram);
        }
    }
}

}  // namespace kalmo
