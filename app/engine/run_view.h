#ifndef KALMO_APP_ENGINE_RUN_VIEW_H
#define KALMO_APP_ENGINE_RUN_VIEW_H

#include "framework/xy_string.h"

namespace kalmo {

/// What the engine asks of the screen of a run. The interactive run has one and lends it to the trace; an
/// unattended run has none, and nothing is shown.
class IRunView {
  public:
    /// A failure, in a box that the operator closes.
    virtual void ShowError(const CTString& csText) = 0;
    /// A success, in the same way.
    virtual void ShowResult(const CTString& csText) = 0;
    /// A command may have written on the screen, which is shown again.
    virtual void Repaint() = 0;
    /// The process is about to end in the middle of the run: the terminal is given back.
    virtual void Close() = 0;

  protected:
    ~IRunView() = default;
};

/// What the engine tells while it installs files; a window of the interactive run shows it. Every count is of
/// steps: a file is one.
class IInstallProgress {
  public:
    /// How many steps there will be.
    virtual void Begin(int nSteps) = 0;
    /// A file is installed.
    virtual void FileDone() = 0;
    /// Another step is done; it may have taken long.
    virtual void StepDone() = 0;
    /// A box stood before the window.
    virtual void Redraw() = 0;

  protected:
    ~IInstallProgress() = default;
};

/// The same for an upgrade, which also asks what the operator chose.
class IUpgradeProgress : public IInstallProgress {
  public:
    /// 1 when the server may send telemetry, else 0.
    [[nodiscard]] virtual int nGetTelemetryOn() const noexcept = 0;

  protected:
    ~IUpgradeProgress() = default;
};

}  // namespace kalmo

#endif
