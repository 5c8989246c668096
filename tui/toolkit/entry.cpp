#include "tui/toolkit/entry.h"

#include <algorithm>
#include <cwctype>

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/geometry.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

int nLength(const CTString& rcs) {
    return static_cast<int>(rcs.nGetLength());
}

std::size_t nAt(int nIndex) {
    return static_cast<std::size_t>(nIndex);
}

int nTextRowOf(CWidget::eBORDER_STYLE eStyle, int nY, int nHeight) {
    switch (eStyle) {
        case CWidget::eBORDER_FRAME: return nY + 1 + (nHeight - 2) / 2;
        case CWidget::eBORDER_SHADOW: return nY + 1 + (nHeight - 3) / 2;
        case CWidget::eBORDER_NONE: break;
    }
    return nY + (nHeight - 1) / 2;
}

}  // namespace

CEntry::CEntry(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight,
               const wchar_t* pszLabel, eBORDER_STYLE eStyle)
    : CWidget(pclParent, nX, nY, nWidth, nHeight),
      m_csText(pszText),
      m_nCursor(nLength(m_csText)),
      m_csLabel(pszLabel),
      m_eStyle(eStyle),
      m_nTextRow(nTextRowOf(eStyle, nY, nHeight)) {}

bool CEntry::bOnKeyEvent(int nKey) {
    static constexpr STKeyAction<CEntry> TAB_KEY[] = {
        {TOUCHE_EFFACE, &CEntry::_bBackSpace},
        {KEY_BACKSPACE, &CEntry::_bBackSpace},
        {KEY_LEFT, &CEntry::_bGoLeft},
        {KEY_RIGHT, &CEntry::__bGoRight},
        {KEY_DC, &CEntry::__bDelete},
        // Its code is the number of a letter, and nobody typed it.
        {KEY_RESIZE, &CEntry::__bIgnore},
    };
    if (nKey == TOUCHE_ENTREE || nKey == KEY_ENTER) {
        _bSendEvent(eEVENT_ENTER);
        return true;
    }
    const std::optional<bool> bEdited = RunKey(this, TAB_KEY, nKey);
    const bool bConsumed = bEdited.has_value() ? *bEdited : __bInsert(nKey);
    if (bConsumed) {
        _Redraw();
    }
    return bConsumed;
}

bool CEntry::__bInsert(int nKey) {
    const bool bAlways = nKey == L' ' || nKey == L'.' || nKey == L'/';
    if (!bAlways && std::iswgraph(static_cast<wint_t>(nKey)) == 0) {
        return false;
    }
    _AddChar(static_cast<wchar_t>(nKey));
    return true;
}

bool CEntry::_bBackSpace() {
    if (m_nCursor == 0) {
        return false;
    }
    --m_nCursor;
    m_csText.Remove(nAt(m_nCursor), 1);
    return true;
}

void CEntry::_DelChar() {
    if (m_nCursor < nLength(m_csText)) {
        m_csText.Remove(nAt(m_nCursor), 1);
    }
}

void CEntry::_AddChar(wchar_t c) {
    if (m_nMaxLength != -1 && nLength(m_csText) >= m_nMaxLength) {
        return;
    }
    // On the last character, typing goes on behind it.
    const int nWhere = m_nCursor == nLength(m_csText) - 1 ? m_nCursor + 1 : m_nCursor;
    m_csText.Insert(nAt(nWhere), std::wstring_view(&c, 1));
    ++m_nCursor;
}

bool CEntry::_bGoLeft() {
    if (m_nCursor == 0) {
        return false;
    }
    --m_nCursor;
    return true;
}

bool CEntry::__bGoRight() {
    if (m_nCursor == nLength(m_csText)) {
        return false;
    }
    ++m_nCursor;
    return true;
}

bool CEntry::__bDelete() {
    _DelChar();
    return true;
}

void CEntry::SetText(const wchar_t* pszText) {
    m_csText = pszText;
    m_nCursor = nLength(m_csText);
}

void CEntry::SetEnable(int bEnable) {
    CWidget::SetEnable(bEnable);
    _Redraw();
}

int CEntry::__nTextColumn() const noexcept {
    return __bFramed() ? x + 1 : x;
}

int CEntry::__nTextWidth() const noexcept {
    const int nAround = __bFramed() ? 2 : 0;
    return std::max(0, width - nAround - (m_eStyle == eBORDER_SHADOW ? 1 : 0));
}

void CEntry::Draw() {
    WINDOW* const pWindow = pGetWindow();
    const int nVisible = __nTextWidth();
    const int nColumn = __nTextColumn();
    const int nCursorColumn = nColumns(m_csText.svGet().substr(0, nAt(m_nCursor)));
    const int nTotal = nColumns(m_csText.svGet());
    m_nOffset = nEntryOffset(m_nOffset, nCursorColumn, nTotal, nVisible, bFocus != 0);
    const int nDrawn = std::clamp(nTotal - m_nOffset, 0, nVisible);

    switch (m_eStyle) {
        case eBORDER_FRAME:
            DrawRectWithBorder(pWindow, x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL);
            break;
        case eBORDER_SHADOW:
            DrawRectWithBorderAndShadow(pWindow, x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL,
                                        ATTR_NORMAL, 0);
            break;
        case eBORDER_NONE:
            // Without a fill of its own, what the text no longer covers is the window's again.
            DrawRect(pWindow, nColumn + nDrawn, m_nTextRow, m_nDrawn - nDrawn, 1, ATTR_WINDOW_FILL);
            break;
    }
    m_nDrawn = nDrawn;
    if (__bFramed()) {
        DrawTextLine(pWindow, y, x + 2, ATTR_BORDER, m_csLabel, nVisible - 1);
    }
    DrawTextLine(pWindow, m_nTextRow, nColumn, bEnabled != 0 ? ATTR_NORMAL : ATTR_DISABLED, m_csText,
                 nVisible, m_nOffset);
    PlaceCursor(pWindow, m_nTextRow, nColumn + nCursorColumn - m_nOffset);
}

void CEntryLower::_AddChar(wchar_t c) {
    CEntry::_AddChar(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))));
}

void CNumEntry::_AddChar(wchar_t c) {
    if (c >= L'0' && c <= L'9') {
        CEntry::_AddChar(c);
    }
}

}  // namespace kalmo
