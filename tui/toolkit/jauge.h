#ifndef KALMO_TUI_TOOLKIT_JAUGE_H
#define KALMO_TUI_TOOLKIT_JAUGE_H

#include "framework/xy_string.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A gauge: a framed bar whose length shows a value. Never takes the focus.
///
/// The bar is value / (maximum - minimum) of the width, so a gauge is meant to run from 0.
class CJauge : public CWidget {
  public:
    CJauge(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight, double dMinimum, double dMaximum,
           const wchar_t* pszCaption);

    bool bOnKeyEvent(int nKey) override;
    bool bSetFocus(int bNewFocus) override;
    void Draw() override;

    /// The setters change nothing on the screen until the next Draw.
    void SetValue(double dValue) noexcept { m_dValue = dValue; }
    void SetMaximum(double dMaximum) noexcept { m_dMaximum = dMaximum; }
    /// An invisible gauge draws nothing.
    void SetVisible(int bVisible) noexcept { m_bVisible = bVisible; }
    [[nodiscard]] double dGetValue() const noexcept { return m_dValue; }
    [[nodiscard]] double dGetMaximum() const noexcept { return m_dMaximum; }
    /// True when the bar that was drawn last is not as long as the value says now.
    [[nodiscard]] bool bStale() const noexcept { return __nBar() != m_nDrawnBar; }

  private:
    [[nodiscard]] int __nBar() const noexcept;

    int m_nDrawnBar = -1;
    int m_bVisible = 1;
    double m_dValue = 0;
    double m_dMinimum;
    double m_dMaximum;
    CTString m_csCaption;
};

}  // namespace kalmo

#endif
