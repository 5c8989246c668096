#include "tui/toolkit/list.h"

#include <algorithm>
#include <string_view>

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/geometry.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {

CList::CList(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight, int bShadow)
    : CWidget(pclParent, nX, nY, nWidth, nHeight),
      m_nVisible(std::max(0, nHeight - 2 - (bShadow != 0 ? 1 : 0))),
      m_bShadow(bShadow != 0 ? 1 : 0),
      m_nTextWidth(std::max(0, nWidth - 2 - m_bShadow)) {}

void CList::AddLine(const wchar_t* pszLine) {
    const std::wstring_view svLine = pszLine == nullptr ? L"" : pszLine;
    auto* const pszCopy =
        static_cast<wchar_t*>(m_clText.allocate((svLine.size() + 1) * sizeof(wchar_t), alignof(wchar_t)));
    *std::copy(svLine.begin(), svLine.end(), pszCopy) = L'\0';
    m_tabLine.push_back(pszCopy);
    m_nLongest = std::max(m_nLongest, nColumns(svLine));
    m_bHorizontal = m_nLongest > m_nTextWidth ? 1 : 0;
}

void CList::ClearList() {
    m_tabLine.clear();
    m_clText.release();
    m_nFirst = 0;
    m_nSelected = 0;
    m_nOffset = 0;
    m_nLongest = 0;
    m_bHorizontal = 0;
}

const wchar_t* CList::pszGetSelectedLine() const {
    return (*this)[m_nSelected];
}

int CList::nGetSelectedLine() const {
    return m_nSelected;
}

int CList::nGetNbItem() const {
    return static_cast<int>(m_tabLine.size());
}

const wchar_t* CList::operator[](int nLine) const {
    return nLine >= 0 && nLine < CList::nGetNbItem() ? m_tabLine[static_cast<std::size_t>(nLine)] : nullptr;
}

void CList::Select(int nLine) {
    if (nLine >= 0 && nLine < nGetNbItem()) {
        m_nSelected = nLine;
        m_nFirst = nFirstToSelect(m_nFirst, nLine, nGetNbItem(), m_nVisible);
    }
}

bool CList::bScrollable() const {
    return nGetNbItem() > m_nVisible;
}

void CList::SortLine(PFNCompareLine pfnCompare) {
    std::stable_sort(m_tabLine.begin(), m_tabLine.end(),
                     [pfnCompare](const wchar_t* pszLeft, const wchar_t* pszRight) {
                         return pfnCompare(pszLeft, pszRight) < 0;
                     });
}

bool CList::bOnKeyEvent(int nKey) {
    static constexpr STKeyAction<CList> TAB_KEY[] = {
        {KEY_UP, &CList::__bUp},
        {KEY_DOWN, &CList::__bDown},
        {KEY_LEFT, &CList::__bLeft},
        {KEY_RIGHT, &CList::__bRight},
        {TOUCHE_ESPACE, &CList::__bSelect},
        {TOUCHE_ENTREE, &CList::__bValidate},
        {KEY_ENTER, &CList::__bValidate},
    };
    return RunKey(this, TAB_KEY, nKey).value_or(false);
}

bool CList::__bUp() {
    return __bMove(-1);
}

bool CList::__bDown() {
    return __bMove(1);
}

bool CList::__bMove(int nLines) {
    const int nLine = m_nSelected + nLines;
    if (nLine >= 0 && nLine < nGetNbItem()) {
        m_nSelected = nLine;
        _ScrollTo(nFirstToFollow(m_nFirst, nLine, m_nVisible));
        _bSendEvent(eEVENT_MOVED);
    }
    return true;
}

// When the cursor is at the end of the rows that curses has the terminal scroll, curses saves its place there
// meanwhile. Many a terminal remembers only one, and it is that of the shell, with its colours: hence the
// cursor steps to the other end first.
void CList::_ScrollTo(int nFirst) {
    if (WINDOW* const pWindow = pGetWindow(); nFirst != m_nFirst && pWindow != nullptr) {
        PlaceCursor(pWindow, nFirst < m_nFirst ? y + 1 + m_nVisible : y, x);
        ::wrefresh(pWindow);
    }
    m_nFirst = nFirst;
    _Redraw();
}

bool CList::__bLeft() {
    return __bShift(-1);
}

bool CList::__bRight() {
    return __bShift(1);
}

bool CList::__bShift(int nShift) {
    const int nOffset = m_nOffset + nShift;
    if (m_bHorizontal != 0 && nOffset >= 0 && nOffset <= m_nLongest - m_nTextWidth) {
        m_nOffset = nOffset;
        _Redraw();
    }
    return true;
}

bool CList::__bSelect() {
    if (nGetNbItem() > 0) {
        _bSendEvent(eEVENT_SELECTED);
    }
    return true;
}

bool CList::__bValidate() {
    if (nGetNbItem() > 0) {
        _bSendEvent(eEVENT_SELECTED);
        _bSendEvent(eEVENT_VALIDATED);
    }
    return true;
}

void CList::Draw() {
    if (m_bShadow != 0) {
        DrawRectWithBorderAndShadow(pGetWindow(), x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL,
                                    ATTR_NORMAL, ATTR_BORDER);
    } else {
        DrawRectWithBorder(pGetWindow(), x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL);
    }
    if (m_nVisible == 0 || m_nTextWidth == 0) {
        return;
    }
    const bool bCut = __bDrawLines();
    if (bScrollable()) {
        __DrawScrollBar();
    }
    if (bCut) {
        DrawRect(pGetWindow(), x + 1 + nThumbColumn(m_nOffset, m_nLongest, m_nTextWidth),
                 y + height - 2 - m_bShadow, 1, 1, ATTR_WINDOW_FILL);
    }
    PlaceCursor(pGetWindow(), y + 1 + std::clamp(m_nSelected - m_nFirst, 0, m_nVisible - 1), x + 1);
}

bool CList::__bDrawLines() {
    bool bCut = false;
    const int nEnd = std::min(m_nFirst + m_nVisible, nGetNbItem());
    for (int nLine = m_nFirst; nLine < nEnd; ++nLine) {
        const std::wstring_view svLine = m_tabLine[static_cast<std::size_t>(nLine)];
        const chtype attrSelected = bFocus != 0 ? ATTR_BORDER : ATTR_SELECTED;
        DrawTextLine(pGetWindow(), y + 1 + nLine - m_nFirst, x + 1,
                     nLine == m_nSelected ? attrSelected : ATTR_NORMAL, svLine, m_nTextWidth, m_nOffset);
        bCut = bCut || nColumns(svLine) > m_nTextWidth;
    }
    return bCut;
}

void CList::__DrawScrollBar() {
    const int nColumn = x + width - 2;
    DrawRect(pGetWindow(), nColumn, y + 1, 1, m_nVisible, ATTR_TRACK);
    DrawRect(pGetWindow(), nColumn, y + 1 + nThumbRow(m_nFirst, nGetNbItem(), m_nVisible), 1, 1,
             ATTR_WINDOW_FILL);
}

}  // namespace kalmo
