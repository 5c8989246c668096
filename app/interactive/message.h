#ifndef KALMO_APP_INTERACTIVE_MESSAGE_H
#define KALMO_APP_INTERACTIVE_MESSAGE_H

#include "app/engine/run_view.h"
#include "app/engine/trace.h"

/// The boxes in which the interactive run tells what happened. Keys that were pressed before a box appears do
/// not close it. Where no screen is open they do nothing.
namespace kalmo {

/// A failure.
void ShowErrorBox(const CTString& csText);
/// The payload is missing or cannot be read.
void ShowDataError();
/// A success. The box has no title.
void ShowResultBox(const CTString& csText);

/// The screen of the interactive run, lent to its trace for as long as this object lives: a local variable of
/// the run, made once the screen is open.
class CScreenView final : public IRunView {
  public:
    explicit CScreenView(CTrace& rclTrace) : m_rclTrace(rclTrace) { rclTrace.SetView(this); }
    CScreenView(const CScreenView&) = delete;
    CScreenView& operator=(const CScreenView&) = delete;
    ~CScreenView() { m_rclTrace.SetView(nullptr); }

    void ShowError(const CTString& csText) override { ShowErrorBox(csText); }
    void ShowResult(const CTString& csText) override { ShowResultBox(csText); }
    void Repaint() override;
    /// Closes the screen and clears the terminal.
    void Close() override;

  private:
    CTrace& m_rclTrace;
};

}  // namespace kalmo

#endif
