#include "app/check/payload_check.h"

#include <cerrno>
#include <map>
#include <string>

#include "app/check/finding_text.h"
#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/trace.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"

namespace kalmo {
namespace {

enum eDONNEES : int { PROGRAM_MISSING, SAME_TARGET, OUTSIDE, PATH_TOO_LONG };

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

}  // namespace

void CheckPayload(CDataExtractor& rclExtractor, const CFSPath& rclDirectory, CFindings& rclFindings) {
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
    const auto Tell = [&](eSEVERITY eSeverity, const char* pszCode, int nText, const CTString& csName,
                          const CTString& csOther = {}) {
        rclFindings.Add(eSeverity, pszCode,
                        csFindingText(TEXTE_CHECK_DONNEES, nText, csQuoted(csName), csQuoted(csOther)));
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
            // By letter case too: an entry is found by its name without it.
            const auto [it, bNew] = tabTarget.emplace(csFolded(clTarget.svGet()), csName);
            if (!bNew) {
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
