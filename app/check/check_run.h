#ifndef KALMO_APP_CHECK_CHECK_RUN_H
#define KALMO_APP_CHECK_CHECK_RUN_H

#include <optional>
#include <string>
#include <vector>

#include "app/check/finding.h"
#include "framework/xy_string.h"

/// "--check": what an unattended run with a parameter file would do, and everything that stands in its way.
/// Called by app/answer.cpp. Nothing on the machine is changed.
namespace kalmo {

/// A line of a run's trace, without its time.
struct STPlanStep {
    CTString csStep;
    CTString csResult;
};

/// What a check found out.
struct STCheckReport {
    CTString csOrders;       ///< The parameter file.
    bool bReadable = false;  ///< It could be read; otherwise there is one finding and nothing else.
    const char* pszOperation = nullptr;  ///< As docs/schema.json has it; null: none.
    CTString csInstance;
    CTString csService;
    CTString csDirectory;  ///< With a "/" at its end.
    std::optional<int> nPort;
    CTString csInstalled;  ///< The version that is there.
    bool bChanges = false;
    CFindings clFindings;
    std::vector<STPlanStep> tabPlan;  ///< Empty when the run would not work.

    /// 0 it would work, 1 it would not, 2 the parameter file cannot be used.
    [[nodiscard]] int nExitStatus() const noexcept { return !bReadable ? 2 : clFindings.bWorks() ? 0 : 1; }
};

/// Looks at orders, machine and payload, and, when nothing stands in the way, rehearses the run. A path as
/// "/PILOT=" would have it.
STCheckReport stCheckRun(const CTString& csOrders);

/// The report for people, in their language, its last line without a line feed. Nothing that a terminal obeys
/// is in it.
CTString csCheckAsText(const STCheckReport& rst);

/// The report for programs, as docs/schema.json describes it, in UTF-8.
std::string csCheckAsJson(const STCheckReport& rst);

}  // namespace kalmo

#endif
