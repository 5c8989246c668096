#ifndef KALMO_APP_INTERACTIVE_UNINSTALL_WIN_H
#define KALMO_APP_INTERACTIVE_UNINSTALL_WIN_H

#include <optional>
#include <utility>
#include <vector>

#include "app/engine/hang_up_shield.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/jauge.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/window.h"

namespace kalmo {

class CRecorder;
class CService;
class CTrace;

/// Removes an instance, or the shared manager, and shows how far it has come.
///
/// Made, drawn, run and destroyed by UninstallServer. There is nothing to confirm: MainLoop works at once and
/// then waits for the close button, which is there only when all went well. Configuration, databases, the
/// install directory and the system account stay.
class CUnInstallWin : public CWindow {
  public:
    static constexpr int PREFERRED_WIDTH = 60;
    static constexpr int PREFERRED_HEIGHT = 23;

    /// The service, the trace and the recorder are borrowed.
    CUnInstallWin(int nX, int nY, int nWidth, int nHeight, CService* pclService, CTrace& rclTrace,
                  const CRecorder& rclRecorder);

    void MainLoop() override;
    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    /// Finds the files to delete: the program; for an instance also the logger and the libraries beside it.
    /// None for a service that tells no program.
    void _ListFile();
    /// A service that cannot be stopped is no obstacle: always true.
    bool _bStopService();
    /// This and the next show what failed before they return false.
    bool _bRemoveService();
    bool _bRemoveFiles();

  private:
    /// One step's line, whose box gets its X when the step is done.
    struct STStep {
        STStep(CWindow* pclParent, const CTString& csLabel, int nRow, int nWidth, int nHeight);
        void MarkDone();

        CTString csText;
        CLibel clLabel;
    };
    void __ShowProgress(STStep* pstDone);

    /// From before the window is seen, which tells that work has begun, to the end of that work.
    std::optional<CHangUpShield> m_clShield{std::in_place};
    CService* m_pclService;
    CTrace& m_rclTrace;
    const CRecorder& m_rclRecorder;
    bool m_bManager;
    std::vector<CTString> m_tabFile;
    CLibel m_clTitle;
    STStep m_stStop;
    STStep m_stRemove;
    STStep m_stDelete;
    CJauge m_clJauge;
    CButton m_clClose;
};

/// Uninstalls an instance or the shared manager, unless its command is not that of a program of ours: that is
/// told, and nothing done. Returns when the operator has seen the result.
void UninstallServer(CService* pclService, CTrace& rclTrace, const CRecorder& rclRecorder);

}  // namespace kalmo

#endif
