#include "app/removal/removal.h"

#include <sys/stat.h>

#include <cerrno>

#include "app/config/server_config.h"
#include "app/engine/refusal.h"
#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/errno_kept.h"
#include "framework/file_search.h"
#include "framework/fs_path.h"
#include "framework/text.h"
#include "framework/x_error.h"
#include "services/init_script.h"
#include "services/service_command.h"
#include "services/service_manager.h"
#include "services/systemctl.h"

namespace kalmo {

bool bThere(const CTString& csPath) {
    struct stat st {};
    return ::lstat(csToUTF8(csPath).pszGet(), &st) == 0 || errno != ENOENT;
}

bool bDeleteFile(const CTString& csPath, CTrace& rclTrace, CXError* pclError) {
    const bool bDeleted = !rclTrace.bMayChange() || CDiskFile::bDelete(csPath, pclError);
    const CErrnoKept clKept;
    if (bDeleted) {
        rclTrace.Step(L"delete " + csPath, L"ok");
    } else {
        rclTrace.Error(L"delete " + csPath, *pclError);
    }
    return bDeleted;
}

std::vector<CTString> tabServerLibraries(const CTString& csDirectory) {
    std::vector<CTString> tab;
    CFileSearch clSearch;
    for (bool bFound = CDiskFile::bFindFirst(csDirectory + L"tv*.so", 0, &clSearch); bFound;
         bFound = CDiskFile::bFindNext(&clSearch)) {
        if (clSearch.dwGetAttributes() != ATTRIBUT_REPERTOIRE) {
            tab.push_back(csDirectory + clSearch.csGetName());
        }
    }
    return tab;
}

namespace {

// What a removal changes; in a rehearsal, what it would tell of that.
bool bRemoveOrRehearse(CService& rclService, CTrace& rclTrace, int* pnStays) {
    if (!rclTrace.bRehearsal()) {
        if (CServiceManager::ms_eDistri != eSystemd) {
            rclTrace.Changed();  // systemd refuses as a whole, scripts and links go one by one
        }
        rclTrace.bMayChange();
        return rclService.bRemove(pnStays);
    }
    if (const CTString csTool = csBootCommand(CTString(rclService.pszGetName())); !csTool.bEmpty()) {
        rclTrace.Step(csTool, csStatus(0));
    }
    rclTrace.bMayChange();
    return true;
}

}  // namespace

bool bRemoveService(CService& rclService, CTrace& rclTrace, int* pnStays) {
    const CTString csName(rclService.pszGetName());
    int nStays = 0;
    errno = 0;
    const bool bRemoved = bRemoveOrRehearse(rclService, rclTrace, &nStays);
    const CErrnoKept clKept;
    rclTrace.Outcome(L"unregister " + csName, bRemoved ? 0 : nFailure(clKept.nGet()));
    if (bRemoved && nStays != 0) {
        rclTrace.Outcome(L"delete the unit or script of " + csName, nStays);
    }
    if (pnStays != nullptr) {
        *pnStays = nStays;
    }
    return bRemoved;
}

CRemoval::CRemoval(CServiceManager& rclManager, const CTString& csName, const CTString& csService,
                   CTrace& rclTrace)
    : m_rclManager(rclManager),
      m_rclTrace(rclTrace),
      m_csName(csName),
      m_csService(csService),
      m_clRecord(csService) {}

bool CRemoval::bFind() {
    const CTString csWhat = L"uninstall " + m_csName;
    CUninstallRecord::STNote stNote;
    const bool bNoted = m_clRecord.bRead(&stNote);
    if (bNoted) {
        __FinishEarlier(stNote.csService);
    }
    // What systemd remembers of a unit without a file is forgotten by now, or would be.
    const bool bForgotten = m_rclTrace.bRehearsal() && bNoted && !stNote.bDefined();
    m_pclService = bForgotten ? nullptr : m_rclManager.pclGetService(m_csService.pszGet(), 0);
    if (m_pclService != nullptr) {
        if (const CRefusal clRefusal = clRefuseRemoval(*m_pclService)) {
            return bTellRefusal(csWhat, *clRefusal, m_rclTrace);
        }
        m_csProgram = csGetProgramWithoutArg(m_pclService.get());
        m_csDirectory = csGetProgramDirectory(m_pclService.get());
        m_bGoingOn = bNoted && stNote.csProgram == m_csProgram;
        return true;
    }
    m_bGoingOn = bNoted && !stNote.bDefined();
    if (!m_bGoingOn) {
        m_rclTrace.Failed(csWhat, L"no such instance");
        m_rclTrace.rclGetView().ShowError(csFormatText(TEXTE_INSTANCE_INCONNUE, m_csName));
        return false;
    }
    m_rclTrace.Step(L"unregister " + m_csName, L"done by an earlier run, which did not end; going on");
    m_csProgram = stNote.csProgram;
    m_csDirectory = CTString(CFSPath::stSplit(m_csProgram).svDirectory);
    return true;
}

// Ends the removal of a service that was killed half-way, before the service is looked up: one whose file is
// gone is then found no longer.
void CRemoval::__FinishEarlier(const CTString& csService) {
    if (CServiceManager::ms_eDistri == eSystemd) {
        if (!m_rclTrace.bRehearsal()) {
            bCommandSystemctl(L"daemon-reload");  // it remembers a failed unit whose file is gone
        }
    } else if (m_rclManager.pclGetService(csService.pszGet(), 0) == nullptr) {
        CService clGone(&m_rclManager, csService.pszGet());
        bRemoveOrRehearse(clGone, m_rclTrace, nullptr);  // the boot links
    }
}

bool CRemoval::bUnregister() {
    if (m_pclService == nullptr) {
        return true;
    }
    if (!m_csDirectory.bEmpty()) {
        const int nError =
            m_rclTrace.bMayChange()
                ? nOutcome(m_clRecord.bWrite({m_pclService->pszGetName(), m_csProgram, __tabDefinition()}))
                : 0;
        m_rclTrace.Note(L"note the uninstall of " + m_csProgram, nError);
    }
    return bRemoveService(*m_pclService, m_rclTrace, &m_nStays);
}

// The files that make the service known to the machine: its unit file and what that was made from, or its
// script. Empty when systemd does not tell.
std::vector<CTString> CRemoval::__tabDefinition() const {
    const wchar_t* const pszName = m_pclService->pszGetName();
    if (CServiceManager::ms_eDistri != eSystemd) {
        return {csScriptPath(pszName)};
    }
    std::vector<CTString> tab;
    for (const char* const pszProperty : {"FragmentPath", "SourcePath"}) {
        if (const CTString csPath = CServiceManager::csGetSystemdProp(pszProperty, pszName);
            !csPath.bEmpty()) {
            tab.push_back(csPath);
        }
    }
    return tab;
}

bool CRemoval::bDelete(const CTString& csPath) {
    if (m_bGoingOn && !bThere(csPath)) {
        m_rclTrace.Step(L"delete " + csPath, L"done by an earlier run");
        return true;
    }
    CXError clError;
    return bDeleteFile(csPath, m_rclTrace, &clError);
}

bool CRemoval::bDirectoryLost() const {
    return m_bGoingOn && !CDiskFile::bDirectoryExists(m_csDirectory);
}

void CRemoval::Finish() {
    if (m_nStays == 0) {
        const int nError = m_rclTrace.bMayChange() ? nOutcome(m_clRecord.bDiscard()) : 0;
        m_rclTrace.Outcome(L"forget the note of the uninstall", nError);
    }
}

}  // namespace kalmo
