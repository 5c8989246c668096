#include "app/engine/server_services.h"

#include <cerrno>
#include <utility>

#include "app/config/server_config.h"
#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "framework/disk_file.h"
#include "services/systemctl.h"

namespace kalmo {
namespace {

bool bProgramIn(CService& rclService, std::wstring_view svDir) {
    return CDiskFile::bSameDirectoryName(csGetProgramDirectory(&rclService), svDir);
}

const wchar_t* pszInitSystem() {
    switch (CServiceManager::ms_eDistri) {
        case eSystemd: return L"systemd";
        case eDebian: return L"init scripts, as Debian has them";
        case eRedHat: return L"init scripts, as Red Hat has them";
        case eMandriva: return L"init scripts, as Mandriva has them";
        case eFedora: return L"init scripts, as Fedora has them";
        case eSuSE: return L"init scripts, as SuSE has them";
        case eGentoo: return L"init scripts, as Gentoo has them";
        case eSlackware: return L"init scripts, as Slackware has them";
        default: return L"unknown";
    }
}

}  // namespace

CXPtr_deleteRCV<CService> pclGetKalmoManager(CServiceManager& rclManager) {
    return rclManager.pclGetService(PSZ_MANAGER_SERVICE, 0);
}

void InitServices(CServiceManager& rclManager, CTrace& rclTrace) {
    rclManager.bInit(nullptr, 0);
    rclTrace.Step(L"init system", pszInitSystem());
    if (CServiceManager::ms_eDistri != eSystemd && CDiskFile::bFileExists(PSZ_SYSTEMCTL)) {
        rclTrace.Note(L"ask systemctl", nFailure(CServiceManager::nGetSystemctlError()));
    }
}

void ListServer(CServiceManager& rclManager, CServiceList& rtabServer) {
    unsigned dwCursor = 0;
    while (CXPtr_deleteRCV<CService> pclService =
               rclManager.pclEnumService(&dwCursor, PSZ_SERVICE_PREFIX, 0)) {
        rtabServer.Add(std::move(pclService));
    }
    if (CXPtr_deleteRCV<CService> pclManager = pclGetKalmoManager(rclManager)) {
        rtabServer.Add(std::move(pclManager));
    }
}

CService* pclCheckPathConflict(CServiceList& rtabServer, const wchar_t* pszDir) {
    for (const CXPtr_deleteRCV<CService>& pclService : rtabServer) {
        if (!bIsManager(*pclService) && bProgramIn(*pclService, pszDir)) {
            return pclService.get();
        }
    }
    return nullptr;
}

CXPtr_deleteRCV<CService> pclGetKalmoManagerInPath(CServiceManager* pclManager, const wchar_t* pszDir) {
    CXPtr_deleteRCV<CService> pclService = pclGetKalmoManager(*pclManager);
    if (pclService != nullptr && !bProgramIn(*pclService, pszDir)) {
        pclService.reset();
    }
    return pclService;
}

CService* pclGetKalmoManagerInPath(CServiceList& rtabServer, const wchar_t* pszDir) {
    for (const CXPtr_deleteRCV<CService>& pclService : rtabServer) {
        if (bIsManager(*pclService) && bProgramIn(*pclService, pszDir)) {
            return pclService.get();
        }
    }
    return nullptr;
}

bool bRunning(CService& rclService, CTrace& rclTrace) {
    int nError = 0;
    const eSERVICESTATUS eStatus = rclService.eGetStatus(&nError);
    if (nError != 0) {
        rclTrace.Outcome(L"ask whether " + CTString(rclService.pszGetName()) + L" runs", nError);
    }
    return eStatus == eServiceRunning;
}

bool bStopService(CService& rclService, CTrace& rclTrace) {
    errno = 0;
    const int nError = rclTrace.bMayChange() ? nOutcome(rclService.bStop()) : 0;
    rclTrace.Outcome(L"stop " + CTString(rclService.pszGetName()), nError);
    rclTrace.rclGetView().Repaint();
    return nError == 0;
}

void StartService(CService& rclService, CTrace& rclTrace) {
    errno = 0;
    const int nError = rclTrace.bMayChange() ? nOutcome(rclService.bStart(nullptr)) : 0;
    rclTrace.Outcome(L"start " + CTString(rclService.pszGetName()), nError);
    rclTrace.rclGetView().Repaint();
}

CUpgradeServices::CUpgradeServices(CService& rclInstance, CTrace& rclTrace)
    : CUpgradeServices(rclInstance, pclGetKalmoManager(*rclInstance.pclGetManager()), rclTrace) {}

CUpgradeServices::CUpgradeServices(CService& rclInstance, CXPtr_deleteRCV<CService> pclKalmoManager,
                                   CTrace& rclTrace)
    : m_rclInstance(rclInstance),
      m_rclTrace(rclTrace),
      m_csDirectory(csGetProgramDirectory(&rclInstance)),
      m_pclKalmoManager(std::move(pclKalmoManager)) {
    m_bManagerHere = m_pclKalmoManager != nullptr && bRunning(*m_pclKalmoManager, m_rclTrace) &&
                     bProgramIn(*m_pclKalmoManager, m_csDirectory);
}

void CUpgradeServices::StopAll() {
    if (m_bManagerHere) {
        m_tabStopped.push_back(m_pclKalmoManager.get());
        m_bManagerStopped = bStopService(*m_pclKalmoManager, m_rclTrace);
    }
    if (bInstanceRunning()) {
        m_tabStopped.push_back(&m_rclInstance);
        bStopService(m_rclInstance, m_rclTrace);
    }
}

CTString CUpgradeServices::csStoppedNow() {
    CTString cs;
    for (CService* const pclService : m_tabStopped) {
        if (!bRunning(*pclService, m_rclTrace)) {
            cs += L"\n- " + csGetDisplayName(*pclService);
        }
    }
    return cs;
}

void CUpgradeServices::StartAll() {
    if (m_pclKalmoManager != nullptr && (m_bManagerStopped || !bRunning(*m_pclKalmoManager, m_rclTrace))) {
        StartService(*m_pclKalmoManager, m_rclTrace);
    }
    StartService(m_rclInstance, m_rclTrace);
}

}  // namespace kalmo
