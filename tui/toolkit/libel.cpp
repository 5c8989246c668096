#include "tui/toolkit/libel.h"

#include <algorithm>
#include <string>

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {

CLibel::CLibel(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight,
               int bBorder, chtype attr)
    : CWidget(pclParent, nX, nY, nWidth, nHeight), m_csText(pszText), m_bBorder(bBorder), m_attr(attr) {}

bool CLibel::bSetFocus(int /*bNewFocus*/) {
    return false;
}

void CLibel::Draw() {
    const CCursorKept clKept(pGetWindow());
    if (m_bBorder == 0) {
        _nSmartPrint(0, 0, m_csText.pszGet(), m_attr, width, height);
        return;
    }
    DrawBorder(pGetWindow(), x, y, width - 1, height - 1, m_attr);
    _nSmartPrint(1, 1, m_csText.pszGet(), m_attr, width - 2, height - 1);
}

CScrollableLibel::CScrollableLibel(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth,
                                   int nHeight)
    : CList(pclParent, nX, nY, nWidth, nHeight, 0), m_nSignColumns(nWidth - 4) {
    m_nSelected = -1;
    _Fill(pszText, nWidth - 3);
}

void CScrollableLibel::_Fill(const wchar_t* pszText, int nMaxWidth) {
    if (pszText == nullptr) {
        return;
    }
    for (const std::wstring_view svLine : tabCutLines(pszText, nMaxWidth)) {
        std::wstring csLine(svLine);
        std::replace(csLine.begin(), csLine.end(), L'\t', L' ');
        CList::AddLine(csLine.c_str());
    }
}

const wchar_t* CScrollableLibel::pszGetSelectedLine() const {
    return nullptr;
}

bool CScrollableLibel::bSetFocus(int bNewFocus) {
    return bScrollable() && CList::bSetFocus(bNewFocus);
}

void CScrollableLibel::Draw() {
    CList::Draw();
    if (bScrollable() && m_nVisible > 0) {
        const CCursorKept clKept(pGetWindow());
        DrawTextLine(pGetWindow(), y + height - 1, x + 2, bFocus != 0 ? ATTR_SELECTED : ATTR_BORDER,
                     __csSign(), m_nSignColumns);
    }
}

std::wstring CScrollableLibel::__csSign() const {
    const int nLast = std::min(m_nFirst + m_nVisible, nGetNbItem());
    const std::wstring csMore = bAtEnd() ? L"" : L"...";
    std::wstring csSign = std::to_wstring(m_nFirst + 1);
    if (m_nVisible > 1) {
        csSign += L"-" + std::to_wstring(nLast);
    }
    csSign += L"/" + std::to_wstring(nGetNbItem()) + csMore;
    return nColumns(csSign) <= m_nSignColumns ? csSign : csMore;
}

bool CScrollableLibel::bOnKeyEvent(int nKey) {
    static constexpr STKeyAction<CScrollableLibel> TAB_KEY[] = {
        {KEY_UP, &CScrollableLibel::__bLineUp},
        {KEY_DOWN, &CScrollableLibel::__bLineDown},
        {KEY_PPAGE, &CScrollableLibel::__bPageUp},
        {KEY_NPAGE, &CScrollableLibel::__bPageDown},
    };
    return RunKey(this, TAB_KEY, nKey).value_or(false);
}

bool CScrollableLibel::__bLineUp() {
    return __bScroll(-1);
}

bool CScrollableLibel::__bLineDown() {
    return __bScroll(1);
}

bool CScrollableLibel::__bPageUp() {
    return __bScroll(-m_nVisible);
}

bool CScrollableLibel::__bPageDown() {
    return __bScroll(m_nVisible);
}

bool CScrollableLibel::__bScroll(int nLines) {
    const int nLast = std::max(0, nGetNbItem() - m_nVisible);
    const int nFirst = std::clamp(m_nFirst + nLines, 0, nLast);
    if (nFirst != m_nFirst) {
        _ScrollTo(nFirst);
        if (nFirst == nLast) {
            _bSendEvent(eEVENT_END_REACHED);
        }
    }
    return true;
}

}  // namespace kalmo
