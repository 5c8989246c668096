#ifndef KALMO_TUI_TOOLKIT_LIBEL_H
#define KALMO_TUI_TOOLKIT_LIBEL_H

#include <string>

#include "framework/xy_string.h"
#include "tui/toolkit/list.h"
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

/// A long text to read, cut into lines and scrolled by line (Up, Down) or page (Page Up, Page Down).
///
/// Where it has to be scrolled, its lower frame tells which lines are seen, of how many, and "..." while more
/// follow, highlighted with the focus. The cursor stands on the first line that is seen.
/// It takes the focus only when the text does not fit. eEVENT_END_REACHED is sent when a key has scrolled the
/// last line into view. No line is selected, and no key selects one; Select and ClearList of the base would,
/// and are not meant for a text.
class CScrollableLibel : public CList {
  public:
    CScrollableLibel(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight);

    bool bOnKeyEvent(int nKey) override;
    bool bSetFocus(int bNewFocus) override;
    void Draw() override;
    /// Always null.
    [[nodiscard]] const wchar_t* pszGetSelectedLine() const override;
    /// True while the last line stands on the last rows, or above them.
    [[nodiscard]] bool bAtEnd() const { return m_nFirst + m_nVisible >= nGetNbItem(); }

  protected:
    int m_nSignColumns;  ///< What the lines' numbers may take of the lower frame.

    /// Adds the text as lines of at most nMaxWidth columns (tabCutLines).
    void _Fill(const wchar_t* pszText, int nMaxWidth);

  private:
    bool __bLineUp();
    bool __bLineDown();
    bool __bPageUp();
    bool __bPageDown();
    bool __bScroll(int nLines);
    [[nodiscard]] std::wstring __csSign() const;
};

}  // namespace kalmo

#endif
