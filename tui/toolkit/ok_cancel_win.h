#ifndef KALMO_TUI_TOOLKIT_OK_CANCEL_WIN_H
#define KALMO_TUI_TOOLKIT_OK_CANCEL_WIN_H

#include "tui/toolkit/button.h"
#include "tui/toolkit/window.h"

namespace kalmo {

/// Base of a dialog that ends with an OK or a Cancel button, which stand side by side above its lower edge.
///
/// The dialog has its other controls as members, adds them in Tab order in its constructor and calls
/// _AddButtons behind them. Whoever shows the dialog calls Draw and MainLoop and then asks for the result.
class COkCancelWin : public CWindow {
  public:
    COkCancelWin(int nX, int nY, int nWidth, int nHeight);

    /// 1 once OK has ended the loop, else 0: also when the terminal has gone away.
    [[nodiscard]] int nGetResult() const noexcept { return m_nResult; }

    /// Ends the loop when one of the two buttons was pressed.
    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _AddButtons();
    /// OK was pressed. A dialog that keeps answers or refuses some overrides it; the base ends the loop with
    /// result 1.
    virtual void _Confirm();
    /// Moves the focus to a child and draws everything anew. Always true: the event is handled.
    bool _bGoTo(CWidget* pclChild);

    CButton m_clOk;
    CButton m_clCancel;

  private:
    int m_nResult = 0;
};

}  // namespace kalmo

#endif
