#ifndef KALMO_TUI_TOOLKIT_BUTTON_H
#define KALMO_TUI_TOOLKIT_BUTTON_H

#include "framework/xy_string.h"
#include "tui/toolkit/geometry.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A push button. Enter, keypad Enter and space send eEVENT_PRESSED. The cursor stands at its caption.
class CButton : public CWidget {
  public:
    /// The caption is centred, and cut where it is longer than nWidth - 3 columns. A button of one row has
    /// brackets instead of its frame and shadow.
    CButton(CWindow* pclParent, const wchar_t* pszCaption, int nX, int nY, int nWidth, int nHeight);
    /// The button nRank of a row.
    CButton(CWindow* pclParent, const wchar_t* pszCaption, const STButtonRow& rstRow, int nRank)
        : CButton(pclParent, pszCaption, rstRow.nColumn(nRank), rstRow.nRow(), rstRow.nButtonWidth,
                  STButtonRow::HEIGHT) {}
    /// A button as wide as its caption needs (its columns + 5), centred on the column nXCentre.
    CButton(CWindow* pclParent, const wchar_t* pszCaption, int nXCentre, int nY, int nHeight);

    bool bOnKeyEvent(int nKey) override;
    void Draw() override;
    /// Replaces the caption, centred anew; the next Draw shows it.
    virtual void SetCaption(const wchar_t* pszCaption);

  private:
    bool __bPress();

    CTString m_csCaption;  ///< Centred and padded.
    int m_nCaptionRow;     ///< The row above the one the caption is drawn on.
};

}  // namespace kalmo

#endif
