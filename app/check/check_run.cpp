#include "app/check/check_run.h"

#include <cerrno>
#include <string>
#include <string_view>

#include "app/check/finding_text.h"
#include "app/check/instance_check.h"
#include "app/check/machine_check.h"
#include "app/check/orders_check.h"
#include "app/check/payload_check.h"
#include "app/check/place_check.h"
#include "app/check/room_check.h"
#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "app/unattended/pilot.h"
#include "framework/disk_file.h"
#include "framework/text.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

// Keeps the steps of a rehearsal, and the first that failed.
class CPlanKeeper final : public IStepListener, public IRunView {
  public:
    explicit CPlanKeeper(std::vector<STPlanStep>* ptab) noexcept : m_ptab(ptab) {}

    void StepTold(const CTString& csWhat, const CTString& csResult, bool bFailed) override {
        m_ptab->push_back({csWhat, csResult});
        if (bFailed && m_csFailed.bEmpty()) {
            m_csFailed = csWhat + L": " + csResult;
        }
    }
    void ShowError(const CTString& csText) override {
        if (m_csReason.bEmpty()) {
            m_csReason = csInOneLine(csText);
        }
    }
    void ShowResult(const CTString& /*csText*/) override {}
    void Repaint() override {}
    void Close() override {}

    [[nodiscard]] CTString csWhy() const { return m_csReason.bEmpty() ? m_csFailed : m_csReason; }

  private:
    std::vector<STPlanStep>* m_ptab;
    CTString m_csFailed;
    CTString m_csReason;
};

// What becomes of the orders on this machine; looks at everything that it depends on.
void LookAtMachine(const STOrders& rstOrders, STCheckReport* pst) {
    CTrace clTrace;
    CServiceManager clManager;
    CServiceList tabServer;
    InitServices(clManager, clTrace);
    ListServer(clManager, tabServer);
    pst->csService = CPilot::csServiceName(rstOrders.csServer);
    // What is no unit's name is not looked up, as in the run.
    const CXPtr_deleteRCV<CService> pclService =
        CServiceManager::ms_eDistri != eSystemd || bServiceCanBeNamed(pst->csService)
            ? clManager.pclGetService(pst->csService.pszGet(), 0)
            : nullptr;
    const bool bNew = rstOrders.nOperation == OP_INSTALL && pclService == nullptr;
    const int nOperation =
        rstOrders.nOperation == OP_INSTALL && !bNew ? static_cast<int>(OP_UPGRADE) : rstOrders.nOperation;
    pst->pszOperation = CPilot::pszOperationWord(nOperation);
    if (pclService != nullptr) {
        pst->csDirectory = csGetProgramDirectory(pclService.get());
        const CTString csVersion = csGetProgramVersion(csGetProgramWithoutArg(pclService.get()));
        pst->csInstalled = csVersion == L"?" ? CTString() : csVersion;
    } else if (bNew) {
        pst->csDirectory = rstOrders.clInstallDir.csGet();
        pst->nPort = rstOrders.nPort;
    }

    CFindings& rclFindings = pst->clFindings;
    CheckMachine(nOperation, rclFindings);
    CDataExtractor clExtractor(clTrace);
    const bool bPayload = nOperation != OP_UNINSTALL;
    const bool bOpened = bPayload && clExtractor.bInit();
    if (!bNew) {
        CheckInstance(rstOrders, {pst->csService, pclService.get(), tabServer},
                      bOpened ? &clExtractor : nullptr, clTrace, rclFindings);
    } else {
        CheckPlace(rstOrders, pst->csService, tabServer, rclFindings);
    }
    CFSPath clDirectory;
    if (!bPayload || pst->csDirectory.bEmpty() || !clDirectory.bSet(pst->csDirectory)) {
        return;
    }
    if (bOpened) {
        CheckRoom(clExtractor, clDirectory, bNew, rclFindings);
        if (bNew) {
            CService* const pclManager = pclGetKalmoManagerInPath(tabServer, clDirectory.pszGet());
            CheckBusy(clExtractor, clDirectory,
                      pclManager == nullptr ? std::span<CService* const>() : std::span(&pclManager, 1),
                      rclFindings);
        }
    }
    CheckPayload(clExtractor, clDirectory, bNew, rclFindings);
}

void Rehearse(STCheckReport* pst) {
    CPlanKeeper clKeeper(&pst->tabPlan);
    CPilot clPilot;
    clPilot.rclGetTrace().SetListener(&clKeeper);
    clPilot.rclGetTrace().SetView(&clKeeper);
    if (!clPilot.bRehearse(pst->csOrders)) {
        pst->clFindings.Add(eSEVERITY::Error, "step-fails", clKeeper.csWhy());
    }
    pst->bChanges = clPilot.rclGetTrace().bChanges();
}

}  // namespace

STCheckReport stCheckRun(const CTString& csOrders) {
    STCheckReport st;
    st.csOrders = csOrders;
    std::vector<STPlanStep> tabIgnored;
    CPlanKeeper clKeeper(&tabIgnored);
    CTrace clTrace;
    clTrace.SetListener(&clKeeper);
    clTrace.SetView(&clKeeper);
    std::string csBytes;
    st.bReadable = STOrders::bLoad(csOrders, clTrace, &csBytes);
    if (!st.bReadable) {
        st.clFindings.Add(eSEVERITY::Error, "orders-unreadable", clKeeper.csWhy());
        return st;
    }
    CServiceManager().bInit(nullptr, 0);
    CheckOrders(csBytes, st.clFindings);
    STOrders stOrders;
    const bool bWhole = stOrders.tabTake(csBytes, clTrace).empty() && stOrders.bOperation();
    st.csInstance = stOrders.csServer;
    if (bWhole) {
        LookAtMachine(stOrders, &st);
    } else {
        CheckMachine(stOrders.nOperation, st.clFindings);
    }
    if (st.clFindings.bWorks()) {
        Rehearse(&st);
    }
    if (!st.clFindings.bWorks()) {
        st.tabPlan.clear();
        st.bChanges = false;
    }
    return st;
}

}  // namespace kalmo
