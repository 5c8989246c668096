#include "tui/toolkit/check_box.h"

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/key.h"

namespace kalmo {

CCheckBox::CCheckBox(CWindow* pclParent, const wchar_t* pszLabel, int nX, int nY, int nWidth, int nHeight,
                     int bChecked)
    : CWidget(pclParent, nX, nY, nWidth, nHeight), m_csLabel(pszLabel), m_bChecked(bChecked != 0 ? 1 : 0) {}

bool CCheckBox::bOnKeyEvent(int nKey) {
    static constexpr STKeyAction<CCheckBox> TAB_KEY[] = {
        {TOUCHE_ENTREE, &CCheckBox::__bToggle},
        {TOUCHE_ESPACE, &CCheckBox::__bToggle},
    };
    return RunKey(this, TAB_KEY, nKey).value_or(false);
}

bool CCheckBox::__bToggle() {
    m_bChecked = m_bChecked != 0 ? 0 : 1;
    _bSendEvent(eEVENT_TOGGLED);
    _Redraw();
    return true;
}

void CCheckBox::Draw() {
    const bool bFocused = bFocus != 0;
    DrawTextLine(pGetWindow(), y, x, bFocused ? ATTR_SELECTED : ATTR_NORMAL, L"[ ]", width);
    if (m_bChecked != 0) {
        DrawTextLine(pGetWindow(), y, x + 1, bFocused ? ATTR_MARK_FOCUS : ATTR_MARK, L"X", width - 1);
    }
    _nSmartPrint(0, 3, m_csLabel.pszGet(), bFocused ? ATTR_SELECTED : ATTR_BORDER, width - 4, height);
    PlaceCursor(pGetWindow(), y, x + 1);
}

}  // namespace kalmo
