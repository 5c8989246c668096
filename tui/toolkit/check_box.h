#ifndef KALMO_TUI_TOOLKIT_CHECK_BOX_H
#define KALMO_TUI_TOOLKIT_CHECK_BOX_H

#include "framework/xy_string.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A box to check, with its label on the right. Enter and space toggle it and send eEVENT_TOGGLED. The
/// cursor stands in the box.
class CCheckBox : public CWidget {
  public:
    CCheckBox(CWindow* pclParent, const wchar_t* pszLabel, int nX, int nY, int nWidth, int nHeight,
              int bChecked);

    bool bOnKeyEvent(int nKey) override;
    void Draw() override;

    [[nodiscard]] bool bIsChecked() const noexcept { return m_bChecked != 0; }
    /// Sets the state without an event; the next Draw shows it.
    void SetChecked(int bChecked) noexcept { m_bChecked = bChecked != 0 ? 1 : 0; }

  private:
    bool __bToggle();

    CTString m_csLabel;
    int m_bChecked;
};

}  // namespace kalmo

#endif
