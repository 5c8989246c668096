#include "app/unattended/run_result.h"

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

constexpr std::wstring_view SV_FAILED = L"failed: ";

// Now, as RFC 3339 has it, in UTC.
std::string csTime() {
    const std::time_t nNow = std::time(nullptr);
    std::tm st{};
    ::gmtime_r(&nNow, &st);
    std::array<char, 32> szTime{};
    return {szTime.data(), std::strftime(szTime.data(), szTime.size(), "%Y-%m-%dT%H:%M:%SZ", &st)};
}

// A text of a box as one line.
CTString csOneLineOf(std::wstring_view sv) {
    std::wstring cs;
    for (const wchar_t c : sv) {
        const bool bBlank = c == L' ' || c == L'\n' || c == L'\r' || c == L'\t';
        if (!bBlank) {
            cs += c;
        } else if (!cs.empty() && cs.back() != L' ') {
            cs += L' ';
        }
    }
    CTString csLine(cs);
    csLine.TrimRight(L' ');
    return csLine;
}

}  // namespace

CRunResult::~CRunResult() {
    if (__bActive()) {
        m_rclTrace.SetListener(nullptr);
        m_rclTrace.SetView(nullptr);
    }
}

bool CRunResult::bBegin(const CTString& csPath, const CTString& csOrders) {
    m_csPath = csPath;
    m_csOrders = csOrders;
    m_csStarted = csTime();
    errno = EEXIST;  // the orders are not to be replaced before they are read
    if (csPath == csOrders || !__bWrite("running")) {
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
    if (bFailed && m_csStep.bEmpty()) {
        m_csStep = csWhat;
        m_csResult = csResult;
    }
}

void CRunResult::ShowError(const CTString& csText) {
    if (m_csReason.bEmpty()) {
        m_csReason = csOneLineOf(csText);
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
        const std::wstring_view svTold = m_csResult;
        m_csReason = csOneLineOf(svTold.starts_with(SV_FAILED) ? svTold.substr(SV_FAILED.size()) : svTold);
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
