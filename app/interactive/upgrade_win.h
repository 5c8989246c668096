#ifndef KALMO_APP_INTERACTIVE_UPGRADE_WIN_H
#define KALMO_APP_INTERACTIVE_UPGRADE_WIN_H

#include <optional>

#include "app/engine/run_view.h"
#include "app/engine/server_services.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/jauge.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/window.h"

namespace kalmo {

class CDataExtractor;
class CRecorder;
class CService;

/// A file more is installed: moves the gauge of a window on, and shows it. Most files move its bar by less
/// than a column; the window is drawn for the others.
void ShowFileDone(CJauge& rclJauge, CWindow& rclWindow);

/// Tells what an upgrade will do to an instance and, when the operator agrees, does it.
///
/// Made, drawn, run and destroyed by DoUpgradeServer. The upgrade runs inside the modal loop, as the action
/// of the start button; the window closes behind it.
class CUpgradeWin : public CWindow, public IUpgradeProgress {
  public:
    static constexpr int PREFERRED_WIDTH = 70;
    static constexpr int PREFERRED_HEIGHT = 22;

    /// The service, the open payload and the recorder are borrowed. nTelemetryOn, 1 or 0, goes into the
    /// configuration.
    CUpgradeWin(int nX, int nY, int nWidth, int nHeight, CService* pclService, CDataExtractor* pclExtractor,
                int nTelemetryOn, const CRecorder& rclRecorder);

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

    /// Sets the gauge's value; the next Draw shows it.
    void SetJauge(double dValue) noexcept { m_clJauge.SetValue(dValue); }
    void Begin(int /*nSteps*/) override {}  // known from the start
    void FileDone() override { ShowFileDone(m_clJauge, *this); }
    void StepDone() override {}  // the steps around the files are this window's own
    void Redraw() override { Draw(); }
    [[nodiscard]] int nGetTelemetryOn() const noexcept override { return m_nTelemetryOn; }

  protected:
    void _DrawWindow() override;

    /// Makes the texts of the window.
    void _InitLibel();
    void _ComputeLibel(const CTString& csProgramPath);
    /// Adds a warning when the shared manager is to be stopped.
    void _GetKalmaoManager(CTString* pcsWarning);
    /// Stops the services, replaces the files and starts the services again.
    void _Upgrade();

  private:
    /// Shows a value of the gauge.
    void __ShowStep(double dValue);

    [[nodiscard]] int __nTextColumns() const noexcept { return width - 5; }
    /// Row of the prompt, above the buttons; the texts have the rows from 1 up to it.
    [[nodiscard]] int __nPromptRow() const noexcept { return height - 7; }

    CButton m_clStart;
    CButton m_clCancel;
    CJauge m_clJauge;
    CTString m_csDescription;
    CTString m_csWarning;
    CTString m_csPrompt;
    std::optional<CScrollableLibel> m_clLongText;  ///< Description and warning where they have no room.
    CDataExtractor* m_pclExtractor;
    CService* m_pclService;
    CUpgradeServices m_clServices;  ///< Knows the install directory and the shared manager too.
    int m_nTelemetryOn;
    const CRecorder& m_rclRecorder;
};

/// Asks for the telemetry choice where the instance's configuration has none, then upgrades. The payload is
/// open. An operator who cancels leaves everything as it is, and so does an instance that must not be
/// upgraded: what speaks against it is shown.
void UpgradeServer(CDataExtractor* pclExtractor, CService* pclService, const CRecorder& rclRecorder);

/// Shows the upgrade's window until it is done or given up. nTelemetryOn: 1 or 0.
void DoUpgradeServer(CDataExtractor* pclExtractor, CService* pclService, int nTelemetryOn,
                     const CRecorder& rclRecorder);

}  // namespace kalmo

#endif
