#ifndef KALMO_TUI_TOOLKIT_LIST_H
#define KALMO_TUI_TOOLKIT_LIST_H

#include <memory_resource>

#include "framework/array.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A list of lines with one of them selected.
///
/// Up and Down move the selection and send eEVENT_MOVED; Left and Right scroll sideways where a line is
/// longer than the list is wide; space sends eEVENT_SELECTED, Enter and keypad Enter eEVENT_SELECTED and
/// eEVENT_VALIDATED. The cursor stands on the selected line. Lines are numbered from 0. Adding a line costs
/// the same however many there are.
class CList : public CWidget {
  public:
    CList(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight, int bShadow);

    bool bOnKeyEvent(int nKey) override;
    void Draw() override;

    /// Appends a copy of a line. A null pointer adds an empty one.
    virtual void AddLine(const wchar_t* pszLine);
    /// Removes all lines; the selection and the view go back to the start.
    virtual void ClearList();
    /// The selected line, null when there is none. Valid until the list is cleared.
    [[nodiscard]] virtual const wchar_t* pszGetSelectedLine() const;
    [[nodiscard]] virtual int nGetSelectedLine() const;
    [[nodiscard]] virtual int nGetNbItem() const;
    /// A line; null for a number that has none. Valid until the list is cleared.
    virtual const wchar_t* operator[](int nLine) const;
    /// Selects a line and brings it into view; a number that has no line is ignored.
    virtual void Select(int nLine);
    /// True when there are more lines than fit.
    [[nodiscard]] virtual bool bScrollable() const;

    /// Compares two lines: negative, 0 or positive.
    using PFNCompareLine = int (*)(const wchar_t* pszLeft, const wchar_t* pszRight);
    /// Sorts the lines; equal ones keep their order. The number of the selected line stays.
    void SortLine(PFNCompareLine pfnCompare);

  protected:
    /// Redraws with nFirst as the first visible line.
    void _ScrollTo(int nFirst);

    int m_nFirst = 0;  ///< First visible line.
    int m_nVisible;    ///< How many lines fit.
    int m_nSelected = 0;

  private:
    bool __bUp();
    bool __bDown();
    bool __bLeft();
    bool __bRight();
    bool __bSelect();
    bool __bValidate();
    bool __bMove(int nLines);
    bool __bShift(int nShift);
    /// True when a drawn line is longer than there is room.
    bool __bDrawLines();
    void __DrawScrollBar();

    CTTableau<wchar_t const*> m_tabLine;  ///< The copies live in m_clText.
    std::pmr::monotonic_buffer_resource m_clText;
    int m_bShadow;
    int m_nOffset = 0;      ///< Columns scrolled out to the left.
    int m_nLongest = 0;     ///< Columns of the longest line.
    int m_bHorizontal = 0;  ///< Set when the longest line does not fit.
    int m_nTextWidth;       ///< Columns that a line may take.
};

}  // namespace kalmo

#endif
