#ifndef KALMO_TUI_TOOLKIT_LIBEL_H
#define KALMO_TUI_TOOLKIT_LIBEL_H

#include "framework/xy_string.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A text broken at its words, with or without a frame. Never takes the focus.
class CLibel : public CWidget {
  public:
    /// attr: what text and frame are drawn with (attribute.h).
    CLibel(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight, int bBorder,
           chtype attr);

    bool bSetFocus(int bNewFocus) override;
    void Draw() override;
    /// Replaces the text; the next Draw shows it. What it covered of a longer one before stays on the screen
    /// until the window is drawn.
    void SetText(const wchar_t* pszText) { m_csText = CTString(pszText); }

  private:
    CTString m_csText;
    int m_bBorder;
    chtype m_attr;
};

}  // namespace kalmo

#endif
