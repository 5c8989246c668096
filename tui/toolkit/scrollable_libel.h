#ifndef KALMO_TUI_TOOLKIT_SCROLLABLE_LIBEL_H
#define KALMO_TUI_TOOLKIT_SCROLLABLE_LIBEL_H

#include "tui/toolkit/list.h"

namespace kalmo {

/// A long text to read, cut into lines and scrolled by line (Up, Down) or page (Page Up, Page Down).
///
/// It takes the focus only when the text does not fit. eEVENT_END_REACHED is sent when a key has scrolled the
/// last line into view. No line is selected, and no key selects one; Select and ClearList of the base would,
/// and are not meant for a text.
class CScrollableLibel : public CList {
  public:
    CScrollableLibel(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight);

    bool bOnKeyEvent(int nKey) override;
    bool bSetFocus(int bNewFocus) override;
    /// Always null.
    [[nodiscard]] const wchar_t* pszGetSelectedLine() const override;
    /// True while the last line stands on the last rows, or above them.
    [[nodiscard]] bool bAtEnd() const { return m_nFirst + m_nVisible >= nGetNbItem(); }

  protected:
    /// Adds the text as lines of at most nMaxWidth columns (tabCutLines).
    void _Fill(const wchar_t* pszText, int nMaxWidth);

  private:
    bool __bLineUp();
    bool __bLineDown();
    bool __bPageUp();
    bool __bPageDown();
    bool __bScroll(int nLines);
};

}  // namespace kalmo

#endif
