#ifndef KALMO_APP_UNATTENDED_RUN_RESULT_H
#define KALMO_APP_UNATTENDED_RUN_RESULT_H

#include <string>
#include <vector>

#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "framework/xy_string.h"
#include "services/service.h"

namespace kalmo {

class CServiceManager;

/// What came of an unattended run, in the file that "/RESULT=" names, for scripts; docs/schema.json describes
/// it. The marker tells what the run did by its rules, which forgive much; this tells whether all is well.
///
/// Owned by the unattended run. Nothing is written, asked or waited for unless Begin was called. Listens to
/// the run's steps, and is its view: what a box would tell is the reason of a failure.
class CRunResult final : public IStepListener, public IRunView {
  public:
    /// The trace is borrowed.
    explicit CRunResult(CTrace& rclTrace) noexcept : m_rclTrace(rclTrace) {}
    CRunResult(const CRunResult&) = delete;
    CRunResult& operator=(const CRunResult&) = delete;
    ~CRunResult();

    /// Writes the file for the first time: the run works. False, and traced, when it cannot be written;
    /// whoever waits for a result would wait in vain, and the run must not begin. csOrders is the parameter
    /// file, csTrace the trace or empty: it must be neither.
    bool bBegin(const CTString& csPath, const CTString& csOrders, const CTString& csTrace);

    /// What the run is about, as far as it is known by now.
    void SetInstance(const CTString& csName, const CTString& csService);
    void SetOperation(const char* pszOperation) noexcept { m_pszOperation = pszOperation; }
    /// A program of the server did not end well, which the run itself forgives.
    void ProgramFailed(const CTString& csCommand, const CTString& csStatus);
    void SetDirectory(const CTString& csDirectory) { m_csDirectory = csDirectory; }
    /// A service that must run when all is done.
    void ExpectRunning(const CTString& csService) { m_tabExpected.push_back(csService); }
    /// The service must be gone.
    void ExpectGone(const CTString& csService) { m_csGone = csService; }

    /// Asks for the services, which are given a moment, and writes the file for the last time. bSuccess is
    /// what the run itself says.
    void End(bool bSuccess, CServiceManager& rclManager);

    void StepTold(const CTString& csWhat, const CTString& csResult, bool bFailed) override;
    void ShowError(const CTString& csText) override;
    void ShowResult(const CTString& /*csText*/) override {}
    void Repaint() override {}
    void Close() override;

  private:
    struct STAsked {
        CTString csService;
        eSERVICESTATUS eStatus;
    };

    [[nodiscard]] bool __bActive() const noexcept { return !m_csPath.bEmpty(); }
    /// Asks until all that should run does, or for SETTLE at most.
    bool __bServicesRun(CServiceManager& rclManager);
    void __Fail(std::wstring_view svStep, const CTString& csReason);
    bool __bWrite(const char* pszState);

    CTrace& m_rclTrace;
    CTString m_csPath;
    CTString m_csOrders;
    CTString m_csName;
    CTString m_csService;
    CTString m_csDirectory;
    CTString m_csStep;      ///< The first that failed; empty: none did.
    CTString m_csResult;    ///< What it told.
    CTString m_csReason;    ///< What a box would have told of it.
    bool m_bOther = false;  ///< Another step has failed since.
    CTString m_csGone;
    const char* m_pszOperation = nullptr;
    std::string m_csStarted;
    std::vector<CTString> m_tabExpected;
    std::vector<STAsked> m_tabAsked;
};

}  // namespace kalmo

#endif
