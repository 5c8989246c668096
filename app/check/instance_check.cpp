#include "app/check/instance_check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cwchar>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/check/finding_text.h"
#include "app/check/removal_check.h"
#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/process_list.h"
#include "app/engine/refusal.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "app/engine/uninstall_record.h"
#include "app/removal/removal.h"
#include "app/unattended/orders.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"
#include "services/init_script.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

enum eINSTANCE : int {
    NO_INSTANCE,
    NO_INSTANCE_NEAR,
    INSTANCE_MASKED,
    IS_UPGRADE,
    OTHER_DIRECTORY,
    OTHER_PORT,
    VERSIONS,
    SAME_VERSION,
    DOWNGRADE,
    VERSION_UNKNOWN,
    STOPS,
    NOT_STOPPED,
    NO_PROGRAM,
    FILE_MISSING,
    UNFINISHED,
    SCRIPT_NOT_RUN,
    BUSY,
    REFUSES
};

// The numbers of a version; nothing when it has something else in it.
std::optional<std::vector<long>> tabVersion(const CTString& csVersion) {
    std::vector<long> tab;
    const wchar_t* psz = csVersion.pszGet();
    for (;; ++psz) {
        wchar_t* pszEnd = nullptr;
        tab.push_back(std::wcstol(psz, &pszEnd, 10));
        if (pszEnd == psz || (*pszEnd != L'.' && *pszEnd != L'\0')) {
            return std::nullopt;
        }
        psz = pszEnd;
        if (*psz == L'\0') {
            return tab;
        }
    }
}

class CInstanceCheck {
  public:
    CInstanceCheck(const STOrders& rstOrders, const STInstance& rstInstance, CTrace& rclTrace,
                   CFindings& rclFindings)
        : m_rstOrders(rstOrders), m_rst(rstInstance), m_rclTrace(rclTrace), m_rclFindings(rclFindings) {}

    void NoInstance();
    void Installation();
    void Upgrade(const CDataExtractor* pclExtractor);
    void Uninstallation();
    // What an earlier uninstallation of an instance noted that the machine knows no longer.
    bool bFinishEarlier();

  private:
    template <class... TArg>
    void __Tell(eSEVERITY eSeverity, const char* pszCode, int nText, const wchar_t* pszKey,
                const TArg&... arg) {
        m_rclFindings.Add(eSeverity, pszCode, csFormatLine(TEXTE_CHECK_INSTANCE, nText, arg...), pszKey);
    }
    bool __bTellRefusal(const CRefusal& rclRefusal) {
        if (rclRefusal) {
            m_rclFindings.Add(eSEVERITY::Error, rclRefusal->pszCode, csInOneLine(rclRefusal->csShown),
                              KEY_SERVER.pszKey);
        }
        return rclRefusal.has_value();
    }
    void __Versions();
    void __Script(const CService& rclService, eSEVERITY eSeverity);
    void __Refuses(const CService& rclService, const char* pszProperty);
    void __Files(const CTString& csProgram, const CTString& csDirectory);

    const STOrders& m_rstOrders;
    const STInstance& m_rst;
    CTrace& m_rclTrace;
    CFindings& m_rclFindings;
};

void CInstanceCheck::NoInstance() {
    if (bUnitMasked(m_rst.csService)) {
        __Tell(eSEVERITY::Error, "name-masked", INSTANCE_MASKED, KEY_SERVER.pszKey,
               csQuoted(m_rst.csService));
        return;
    }
    std::vector<CTString> tabName;
    for (const CXPtr_deleteRCV<CService>& rpclService : m_rst.rtabServer) {
        tabName.emplace_back(bIsManager(*rpclService) ? PSZ_MANAGER_PROGRAM : svInstanceName(*rpclService));
    }
    const CTString* const pcsNear = pcsNearest(m_rstOrders.csServer, tabName);
    __Tell(eSEVERITY::Error, "no-instance", pcsNear == nullptr ? NO_INSTANCE : NO_INSTANCE_NEAR,
           KEY_SERVER.pszKey, csQuoted(m_rstOrders.csServer), pcsNear == nullptr ? CTString() : *pcsNear);
}

void CInstanceCheck::Installation() {
    __Tell(eSEVERITY::Note, "is-upgrade", IS_UPGRADE, KEY_SERVER.pszKey, csQuoted(m_rstOrders.csServer));
    const CTString csDirectory = csGetProgramDirectory(m_rst.pclService);
    if (!CDiskFile::bSameDirectoryName(csDirectory, m_rstOrders.clInstallDir.svGet())) {
        __Tell(eSEVERITY::Warning, "other-directory", OTHER_DIRECTORY, KEY_DIRECTORY.pszKey,
               csQuoted(csDirectory), csQuoted(m_rstOrders.clInstallDir.csGet()));
    }
    if (const int nPort = nServerPort(*m_rst.pclService);
        !bIsManager(*m_rst.pclService) && nPort != m_rstOrders.nPort) {
        __Tell(eSEVERITY::Warning, "other-port", OTHER_PORT, KEY_PORT.pszKey, std::to_wstring(nPort),
               std::to_wstring(m_rstOrders.nPort));
    }
}

void CInstanceCheck::__Versions() {
    const CTString csFound = csGetProgramVersion(csGetProgramWithoutArg(m_rst.pclService));
    const CTString csOffered = csGetOwnVersion();
    const auto tabFound = tabVersion(csFound);
    const auto tabOffered = tabVersion(csOffered);
    if (!tabFound) {
        __Tell(eSEVERITY::Note, "version-unknown", VERSION_UNKNOWN, nullptr, csQuoted(csFound), csOffered);
    } else if (csFound == csOffered) {
        __Tell(eSEVERITY::Note, "same-version", SAME_VERSION, nullptr, csFound);
    } else {
        const bool bDown = tabOffered && *tabOffered < *tabFound;
        __Tell(bDown ? eSEVERITY::Warning : eSEVERITY::Note, bDown ? "downgrade" : "version",
               bDown ? DOWNGRADE : VERSIONS, nullptr, csFound, csOffered);
    }
}

// A script that cannot be run neither stops the server nor tells whether it runs, and starts none: an upgrade
// starts what it upgraded, and the manager where that is found not to run.
void CInstanceCheck::__Script(const CService& rclService, eSEVERITY eSeverity) {
    const CTString csScript = csScriptPath(rclService.pszGetName());
    if (CServiceManager::ms_eDistri != eSystemd && ::access(csToUTF8(csScript).pszGet(), X_OK) != 0) {
        __Tell(eSeverity, "missing-command", SCRIPT_NOT_RUN, nullptr, csQuoted(csScript));
    }
}

// A unit may be one that only others start or stop, see RefuseManualStart in systemd.unit(5).
void CInstanceCheck::__Refuses(const CService& rclService, const char* pszProperty) {
    const wchar_t* const pszName = rclService.pszGetName();
    if (CServiceManager::ms_eDistri == eSystemd &&
        CServiceManager::csGetSystemdProp(pszProperty, pszName) == L"no") {
        __Tell(eSEVERITY::Error, "not-by-hand", REFUSES, nullptr, csQuoted(pszName), csFromUTF8(pszProperty));
    }
}

void CInstanceCheck::Upgrade(const CDataExtractor* pclExtractor) {
    CService* pclManager = nullptr;
    for (const CXPtr_deleteRCV<CService>& rpclService : m_rst.rtabServer) {
        pclManager = bIsManager(*rpclService) ? rpclService.get() : pclManager;
    }
    if (__bTellRefusal(clRefuseUpgrade(*m_rst.pclService, pclManager))) {
        return;
    }
    __Versions();
    __Script(*m_rst.pclService, eSEVERITY::Error);
    __Refuses(*m_rst.pclService, "CanStart");
    if (pclManager != nullptr && !bIsManager(*m_rst.pclService)) {
        __Script(*pclManager, eSEVERITY::Error);
    }
    const CTString csDirectory = csGetProgramDirectory(m_rst.pclService);
    std::vector<CService*> tabStopped;
    if (CService* const pcl = pclGetKalmoManagerInPath(m_rst.rtabServer, csDirectory.pszGet());
        pcl != nullptr && bRunning(*pcl, m_rclTrace)) {
        tabStopped.push_back(pcl);
    }
    // The manager may be the instance.
    if (!bIsManager(*m_rst.pclService) && bRunning(*m_rst.pclService, m_rclTrace)) {
        tabStopped.push_back(m_rst.pclService);
    }
    for (CService* const pcl : tabStopped) {
        __Tell(eSEVERITY::Note, "stops", STOPS, nullptr, csQuoted(csGetDisplayName(*pcl)));
        __Refuses(*pcl, "CanStop");
    }
    CFSPath clDirectory;
    if (pclExtractor != nullptr && clDirectory.bSet(csDirectory)) {
        CheckBusy(*pclExtractor, clDirectory, tabStopped, m_rclFindings);
    }
}

bool CInstanceCheck::bFinishEarlier() {
    CUninstallRecord::STNote stNote;
    if (!CUninstallRecord(m_rst.csService).bRead(&stNote) || stNote.bDefined()) {
        return false;
    }
    __Tell(eSEVERITY::Note, "unfinished", UNFINISHED, nullptr, csQuoted(stNote.csProgram));
    CheckRemoval(m_rst.csService, nullptr, m_rclFindings);
    return true;
}

void CInstanceCheck::Uninstallation() {
    if (__bTellRefusal(clRefuseRemoval(*m_rst.pclService))) {
        return;
    }
    const CTString csProgram = csGetProgramWithoutArg(m_rst.pclService);
    const CTString csDirectory = csGetProgramDirectory(m_rst.pclService);
    if (csDirectory.bEmpty()) {
        __Tell(eSEVERITY::Error, "no-program", NO_PROGRAM, KEY_SERVER.pszKey,
               csQuoted(csGetDisplayName(*m_rst.pclService)));
        return;
    }
    __Script(*m_rst.pclService, eSEVERITY::Warning);
    if (bRunning(*m_rst.pclService, m_rclTrace)) {
        const bool bStops = CServiceManager::ms_eDistri == eSystemd;
        __Tell(eSEVERITY::Note, bStops ? "stops" : "not-stopped", bStops ? STOPS : NOT_STOPPED, nullptr,
               csQuoted(csGetDisplayName(*m_rst.pclService)));
    }
    __Refuses(*m_rst.pclService, "CanStop");
    CheckRemoval(m_rst.csService, m_rst.pclService, m_rclFindings);
    CUninstallRecord::STNote stNote;
    if (CUninstallRecord(m_rst.csService).bRead(&stNote) && stNote.csProgram == csProgram) {
        __Tell(eSEVERITY::Note, "unfinished", UNFINISHED, nullptr, csQuoted(csProgram));
        return;
    }
    __Files(csProgram, csDirectory);
}

void CInstanceCheck::__Files(const CTString& csProgram, const CTString& csDirectory) {
    std::vector<CTString> tabFile{csProgram};
    if (!bEgalSansCasse(CFSPath::stSplit(csProgram).svFileName, PSZ_MANAGER_PROGRAM)) {
        for (const wchar_t* const pszLibrary : TAB_NEEDED_LIBRARY) {
            tabFile.push_back(csDirectory + pszLibrary);
        }
    }
    for (const CTString& rcsFile : tabFile) {
        struct stat st {};
        if (::lstat(csToUTF8(rcsFile).pszGet(), &st) != 0) {
            __Tell(eSEVERITY::Error, "missing-file", FILE_MISSING, nullptr, csQuoted(rcsFile));
        }
    }
}

// Whether a process ends when a service is stopped; the list is that of all processes.
bool bEndsWith(const STProcess& rst, CService& rclService, const std::vector<STProcess>& rtabAll) {
    if (CServiceManager::ms_eDistri == eSystemd) {
        return bProcessOfService(rst.nProcess, rclService.pszGetName());
    }
    struct stat st {};
    const CXYString<char> csProgram = csToUTF8(csGetProgramWithoutArg(&rclService));
    if (::stat(csProgram.pszGet(), &st) != 0) {
        return false;
    }
    const auto bServer = [&st, &rtabAll](int nProcess) {
        return std::ranges::any_of(rtabAll, [&](const STProcess& rstOther) {
            return rstOther.nProcess == nProcess && rstOther.unDevice == st.st_dev &&
                   rstOther.unInode == st.st_ino;
        });
    };
    constexpr int MAX_ANCESTORS = 100;  // parents may change while they are walked
    int nProcess = rst.nProcess;
    for (int n = 0; n < MAX_ANCESTORS && nProcess > 0 && !bServer(nProcess); ++n) {
        nProcess = nParentProcess(nProcess);
    }
    return nProcess > 0 && bServer(nProcess);
}

}  // namespace

void CheckInstance(const STOrders& rstOrders, const STInstance& rstInstance,
                   const CDataExtractor* pclExtractor, CTrace& rclTrace, CFindings& rclFindings) {
    CInstanceCheck clCheck(rstOrders, rstInstance, rclTrace, rclFindings);
    const bool bUninstall = rstOrders.nOperation == OP_UNINSTALL;
    if (rstInstance.pclService == nullptr) {
        const bool bNew = rstOrders.nOperation == OP_INSTALL;
        if (!bNew && !(bUninstall && clCheck.bFinishEarlier())) {
            clCheck.NoInstance();
        }
    } else if (bUninstall) {
        clCheck.Uninstallation();
    } else {
        if (rstOrders.nOperation == OP_INSTALL) {
            clCheck.Installation();
        }
        clCheck.Upgrade(pclExtractor);
    }
}

void CheckBusy(const CDataExtractor& rclExtractor, const CFSPath& rclDirectory,
               std::span<CService* const> tabStopped, CFindings& rclFindings) {
    // A file that is replaced rather than emptied may be run by anybody.
    std::map<std::pair<dev_t, ino_t>, CTString> tabTarget;
    const CRepertoire& rclRepertoire = rclExtractor.rclGetRepertoire();
    for (int nRang = 0; nRang < static_cast<int>(rclRepertoire.dwTaille()); ++nRang) {
        const CTString csName = CDataExtractor::csInstalledName(*rclRepertoire.pclGetEntree(nRang));
        CFSPath clTarget;
        struct stat st {};
        if (!csName.bEmpty() && eVerifieChemin(rclDirectory.svGet(), csName, &clTarget) == ARCHIVE_OK &&
            ::lstat(clTarget.csGetUTF8().pszGet(), &st) == 0 &&
            CDiskFile::bEmptiedByCreate(st, CTVWinZip::PERMISSION_PENDANT)) {
            tabTarget.emplace(std::pair(st.st_dev, st.st_ino), clTarget.csGet());
        }
    }
    if (tabTarget.empty()) {
        return;
    }
    const std::vector<STProcess> tabAll = tabProcesses();
    for (const STProcess& rst : tabAll) {
        const auto it = tabTarget.find({rst.unDevice, rst.unInode});
        const auto bEnds = [&](CService* pcl) { return bEndsWith(rst, *pcl, tabAll); };
        if (it != tabTarget.end() && std::ranges::none_of(tabStopped, bEnds)) {
            rclFindings.Add(
                eSEVERITY::Error, "busy",
                csFormatLine(TEXTE_CHECK_INSTANCE, BUSY, csQuoted(it->second), std::to_wstring(rst.nProcess),
                             csQuoted(csProcessName(rst.nProcess))));
        }
    }
}

}  // namespace kalmo
