#include "app/unattended/run_result.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <exception>
#include <thread>

#include "app/config/server_config.h"
#include "app/engine/service_state.h"
#include "framework/conversion.h"
#include "framework/json.h"
#include "framework/text.h"
#include "framework/whole_file.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

// A service needs a moment to come up, and one that fails a moment to be seen as failed.
constexpr std::chrono::seconds SETTLE{20};
constexpr std::chrono::milliseconds LOOK_AGAIN{300};
constexpr std::chrono::milliseconds STAYS_UP{500};

// Now, as RFC 3339 has it, in UTC.
std::string csTime() {
    const std::time_t nNow = std::time(nullptr);
    std::tm st{};
    ::gmtime_r(&nNow, &st);
    std::array<char, 32> szTime{};
    return {szTime.data(), std::strftime(szTime.data(), szTime.size(), "%Y-%m-%dT%H:%M:%SZ", &st)};
}

// Whether two paths lead to one file that is there.
bool bSameFile(const CTString& csPath, const CTString& csOther) {
    struct stat st {};
    struct stat stOther {};
    return !csOther.bEmpty() && ::stat(csToUTF8(csPath).pszGet(), &st) == 0 &&
           ::stat(csToUTF8(csOther).pszGet(), &stOther) == 0 && st.st_dev == stOther.st_dev &&
           st.st_ino == stOther.st_ino;
}

// The reason in what the trace tells of a failure: "failed: reason" or "failed (reason)".
std::wstring_view svReason(std::wstring_view svResult) {
    if (svResult.starts_with(L"failed: ")) {
        return svResult.substr(8);
    }
    return svResult.starts_with(L"failed (") && svResult.ends_with(L')')
               ? svResult.substr(8, svResult.size() - 9)
               : svResult;
}

}  // namespace

CRunResult::~CRunResult() {
    if (__bActive()) {
        m_rclTrace.SetListener(nullptr);
        m_rclTrace.SetView(nullptr);
    }
}

bool CRunResult::bBegin(const CTString& csPath, const CTString& csOrders, const CTString& csTrace) {
    m_csPath = csPath;
    m_csOrders = csOrders;
    m_csStarted = csTime();
    errno = EEXIST;  // what another option names is not to be replaced
    if (bSameFile(csPath, csOrders) || bSameFile(csPath, csTrace) || !__bWrite("running")) {
        m_rclTrace.Outcome(L"write the result " + csPath, nFailure(errno));
        m_csPath.Empty();
        return false;
    }
    m_rclTrace.SetListener(this);
    m_rclTrace.SetView(this);
    return true;
}

void CRunResult::SetInstance(const CTString& csName, const CTString& csService) {
    m_csName = csName;
    m_csService = csService;
}

void CRunResult::StepTold(const CTString& csWhat, const CTString& csResult, bool bFailed) {
    if (!bFailed) {
        return;
    }
    if (m_csStep.bEmpty()) {
        m_csStep = csWhat;
        m_csResult = csResult;
    } else if (csWhat != L"failure") {  // that tells more of the same
        m_bOther = true;
    }
}

void CRunResult::ShowError(const CTString& csText) {
    if (m_csReason.bEmpty() && !m_bOther) {
        m_csReason = csInOneLine(csText);
    }
}

void CRunResult::ProgramFailed(const CTString& csCommand, const CTString& csStatus) {
    if (m_csStep.bEmpty()) {
        __Fail(csCommand, csFormatText(TEXTE_PROGRAMME_ECHOUE, csCommand, csStatus));
    }
}

// The keyboard has ended a command of the run, and with it the run.
void CRunResult::Close() {
    if (__bActive()) {
        __Fail(L"run", csLoadText(TEXTE_INTERROMPU));
        __bWrite("failed");
    }
}

void CRunResult::__Fail(std::wstring_view svStep, const CTString& csReason) {
    m_csStep = svStep;
    m_csReason = csReason;
}

bool CRunResult::__bServicesRun(CServiceManager& rclManager) {
    const auto Ask = [&] {
        m_tabAsked.clear();
        for (const CTString& rcs : m_tabExpected) {
            const CXPtr_deleteRCV<CService> pclService = rclManager.pclGetService(rcs.pszGet(), 0);
            m_tabAsked.push_back({rcs, pclService != nullptr ? pclService->eGetStatus() : eServiceUnknown});
        }
        return std::ranges::all_of(m_tabAsked,
                                   [](const STAsked& rst) { return rst.eStatus == eServiceRunning; });
    };
    const auto clEnd = std::chrono::steady_clock::now() + SETTLE;
    while (std::chrono::steady_clock::now() < clEnd) {
        if (Ask()) {
            // One that cannot do its work, as another has its port, may still be on its way down.
            std::this_thread::sleep_for(STAYS_UP);
            if (Ask()) {
                return true;
            }
        }
        std::this_thread::sleep_for(LOOK_AGAIN);
    }
    return false;
}

void CRunResult::End(bool bSuccess, CServiceManager& rclManager) {
    if (!__bActive()) {
        return;
    }
    if (m_csStep.bEmpty() && bSuccess && !__bServicesRun(rclManager)) {
        const auto it = std::ranges::find_if(
            m_tabAsked, [](const STAsked& rst) { return rst.eStatus != eServiceRunning; });
        m_rclTrace.Failed(L"ask whether " + it->csService + L" runs", csFromUTF8(pszStateWord(it->eStatus)));
        m_csReason = csFormatText(TEXTE_SERVICE_EN_PANNE, it->csService, csStateText(it->eStatus));
    }
    if (m_csStep.bEmpty() && bSuccess && !m_csGone.bEmpty() &&
        rclManager.pclGetService(m_csGone.pszGet(), 0) != nullptr) {
        m_rclTrace.Failed(L"ask whether " + m_csGone + L" is gone", L"it is still there");
        m_csReason = csFormatText(TEXTE_SERVICE_RESTE, m_csGone);
    }
    const bool bOk = bSuccess && m_csStep.bEmpty();
    if (!bOk && m_csReason.bEmpty()) {
        m_csReason = csInOneLine(svReason(m_csResult));
    }
    __bWrite(bOk ? "ok" : "failed");
}

bool CRunResult::__bWrite(const char* pszState) try {
    const bool bRunning = std::string_view(pszState) == "running";
    const bool bFailed = std::string_view(pszState) == "failed";
    CJson clResult{{"schema", 1},
                   {"version", clJsonText(csGetOwnVersion())},
                   {"state", pszState},
                   {"orders", clJsonText(m_csOrders)},
                   {"operation", m_pszOperation == nullptr ? CJson() : CJson(m_pszOperation)},
                   {"instance", clJsonText(m_csName)},
                   {"service", clJsonText(m_csService)},
                   {"directory", clJsonText(m_csDirectory)},
                   {"pid", ::getpid()},
                   {"started", m_csStarted},
                   {"ended", bRunning ? CJson() : CJson(csTime())},
                   {"changed", bRunning ? CJson() : CJson(m_rclTrace.bChanges())},
                   {"step", bFailed ? clJsonText(m_csStep) : CJson()},
                   {"reason", bFailed ? clJsonText(m_csReason) : CJson()},
                   {"services", CJson::array()}};
    for (const STAsked& rst : m_tabAsked) {
        clResult["services"].push_back(
            {{"service", clJsonText(rst.csService)}, {"state", pszStateWord(rst.eStatus)}});
    }
    return bReplaceFile(m_csPath.svGet(), csJsonDump(clResult));
} catch (const std::exception&) {
    errno = ENOMEM;
    return false;
}

}  // namespace kalmo
