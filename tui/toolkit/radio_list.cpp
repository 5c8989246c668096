#include "tui/toolkit/radio_list.h"

#include <algorithm>

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/key.h"

namespace kalmo {

CRadioList::CRadioList(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle,
                       int bShadow, int nSelected)
    : CWidget(pclParent, nX, nY, nWidth, nHeight),
      m_nChosen(nSelected),
      m_nCursor(std::max(0, nSelected)),
      m_bShadow(bShadow != 0 ? 1 : 0),
      m_csTitle(pszTitle) {}

void CRadioList::AddOption(const wchar_t* pszOption) {
    m_tabOption.emplace_back(pszOption);
}

int CRadioList::nGetSelectedItem() const {
    return m_nChosen >= 0 && m_nChosen < __nCount() ? m_nChosen : -1;
}

void CRadioList::Select(int nOption) {
    if (nOption >= 0 && nOption < __nCount()) {
        m_nChosen = nOption;
        m_nCursor = nOption;
    }
}

bool CRadioList::bOnKeyEvent(int nKey) {
    static constexpr STKeyAction<CRadioList> TAB_KEY[] = {
        {KEY_UP, &CRadioList::__bUp},
        {KEY_DOWN, &CRadioList::__bDown},
        {TOUCHE_ESPACE, &CRadioList::__bChoose},
        {TOUCHE_ENTREE, &CRadioList::__bValidate},
        {KEY_ENTER, &CRadioList::__bValidate},
    };
    return RunKey(this, TAB_KEY, nKey).value_or(false);
}

bool CRadioList::__bUp() {
    return __bMoveTo(__nCursor() > 0 ? __nCursor() - 1 : __nCount() - 1);
}

bool CRadioList::__bDown() {
    return __bMoveTo(__nCursor() + 1 < __nCount() ? __nCursor() + 1 : 0);
}

bool CRadioList::__bMoveTo(int nOption) {
    if (!m_tabOption.empty()) {
        m_nCursor = nOption;
        _Redraw();
    }
    return true;
}

bool CRadioList::__bChoose() {
    if (!m_tabOption.empty()) {
        m_nCursor = __nCursor();
        m_nChosen = m_nCursor;
        _Redraw();
        _bSendEvent(eEVENT_SELECTED);
    }
    return true;
}

bool CRadioList::__bValidate() {
    __bChoose();
    if (!m_tabOption.empty()) {
        _bSendEvent(eEVENT_VALIDATED);
    }
    return true;
}

void CRadioList::Draw() {
    WINDOW* const pWindow = pGetWindow();
    if (m_bShadow != 0) {
        DrawRectWithBorderAndShadow(pWindow, x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL, ATTR_NORMAL,
                                    ATTR_BORDER);
    } else {
        DrawRectWithBorder(pWindow, x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL);
    }
    const int nEndRow = height - 1 - m_bShadow;
    int nRow = 2 + _nSmartPrint(2, 2, m_csTitle.pszGet(), ATTR_NORMAL, width - 4 - m_bShadow, nEndRow);
    if (nRow < nEndRow) {
        DrawRect(pWindow, x + 1, y + nRow, width - 2 - m_bShadow, 1, ATTR_SEPARATOR);
    }
    int nCursorRow = y + 2;  // the title's, while no option can be seen
    for (int nOption = 0; nOption < __nCount() && ++nRow < nEndRow; ++nOption) {
        __DrawOption(nOption, y + nRow);
        if (nOption == __nCursor()) {
            nCursorRow = y + nRow;
        }
    }
    PlaceCursor(pWindow, nCursorRow, x + 3);
}

void CRadioList::__DrawOption(int nOption, int nRow) {
    const bool bCursor = bFocus != 0 && nOption == __nCursor();
    const chtype attrText = bCursor ? ATTR_SELECTED : ATTR_NORMAL;
    const chtype attrMark = bCursor ? ATTR_MARK_FOCUS : ATTR_MARK;
    const int nRoom = width - 3 - m_bShadow;  // From the bracket to the frame.
    DrawTextLine(pGetWindow(), nRow, x + 2, attrText, L"(", nRoom);
    DrawTextLine(pGetWindow(), nRow, x + 3, attrMark, nOption == m_nChosen ? L"X" : L" ", nRoom - 1);
    DrawTextLine(pGetWindow(), nRow, x + 4, attrText, L") ", nRoom - 2);
    DrawTextLine(pGetWindow(), nRow, x + 6, attrText, m_tabOption[static_cast<std::size_t>(nOption)],
                 nRoom - 4);
}

}  // namespace kalmo
