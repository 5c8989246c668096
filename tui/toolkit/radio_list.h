#ifndef KALMO_TUI_TOOLKIT_RADIO_LIST_H
#define KALMO_TUI_TOOLKIT_RADIO_LIST_H

#include <vector>

#include "framework/xy_string.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A titled list of options of which one is chosen.
///
/// Up and Down move the cursor, from one end to the other too. Space, Enter and keypad Enter choose the
/// option under the cursor and send eEVENT_SELECTED, the Enter keys eEVENT_VALIDATED after it. The terminal's
/// cursor stands between the option's brackets.
class CRadioList : public CWidget {
  public:
    /// nSelected: the option chosen at first, by the number it will have; with a number that no option gets,
    /// none is chosen until the operator does.
    CRadioList(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle,
               int bShadow, int nSelected);

    bool bOnKeyEvent(int nKey) override;
    void Draw() override;

    /// Appends an option; they are numbered from 0.
    virtual void AddOption(const wchar_t* pszOption);
    /// The number of the chosen option, -1 while there is none.
    [[nodiscard]] virtual int nGetSelectedItem() const;
    /// Chooses an option and puts the cursor on it; a number that has none is ignored.
    virtual void Select(int nOption);

  private:
    bool __bUp();
    bool __bDown();
    bool __bChoose();
    bool __bValidate();
    bool __bMoveTo(int nOption);
    [[nodiscard]] int __nCount() const noexcept { return static_cast<int>(m_tabOption.size()); }
    /// The option under the cursor: the first one where the constructor was given none that exists.
    [[nodiscard]] int __nCursor() const noexcept { return m_nCursor < __nCount() ? m_nCursor : 0; }
    /// Draws an option on a row of the window.
    void __DrawOption(int nOption, int nRow);

    std::vector<CTString> m_tabOption;
    int m_nChosen;
    int m_nCursor;
    int m_bShadow;
    CTString m_csTitle;
};

}  // namespace kalmo

#endif
