#include "tui/toolkit/button.h"

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/geometry.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

int nWidthFor(const wchar_t* pszCaption) {
    return (pszCaption == nullptr ? 0 : nColumns(pszCaption)) + 5;
}

}  // namespace

CButton::CButton(CWindow* pclParent, const wchar_t* pszCaption, int nX, int nY, int nWidth, int nHeight)
    : CWidget(pclParent, nX, nY, nWidth, nHeight), m_nCaptionRow(nY + (nHeight - 3) / 2) {
    CButton::SetCaption(pszCaption);
}

CButton::CButton(CWindow* pclParent, const wchar_t* pszCaption, int nXCentre, int nY, int nHeight)
    : CButton(pclParent, pszCaption, nXCentre - nWidthFor(pszCaption) / 2, nY, nWidthFor(pszCaption),
              nHeight) {}

bool CButton::bOnKeyEvent(int nKey) {
    static constexpr STKeyAction<CButton> TAB_KEY[] = {
        {TOUCHE_ENTREE, &CButton::__bPress},
        {KEY_ENTER, &CButton::__bPress},
        {TOUCHE_ESPACE, &CButton::__bPress},
    };
    return RunKey(this, TAB_KEY, nKey).value_or(false);
}

bool CButton::__bPress() {
    _bSendEvent(eEVENT_PRESSED);
    return true;
}

void CButton::SetCaption(const wchar_t* pszCaption) {
    m_csCaption = csCentredCaption(pszCaption == nullptr ? L"" : pszCaption, width - 3);
}

void CButton::Draw() {
    const chtype attrFace = bEnabled != 0 ? ATTR_BUTTON_FILL : ATTR_FIELD_FILL;
    if (height > 1) {
        DrawRectWithBorderAndShadow(pGetWindow(), x, y, width, height, attrFace, attrFace, ATTR_NORMAL, 0);
    } else {
        const chtype attrBracket = bEnabled != 0 ? ATTR_CAPTION : ATTR_NORMAL;
        DrawTextLine(pGetWindow(), y, x, attrBracket, L"[", 1);
        DrawTextLine(pGetWindow(), y, x + width - 2, attrBracket, L"]", 1);
    }
    const chtype attrEnabled = bFocus != 0 ? ATTR_CAPTION_FOCUS : ATTR_CAPTION;
    DrawTextLine(pGetWindow(), m_nCaptionRow + 1, x + 1, bEnabled != 0 ? attrEnabled : ATTR_NORMAL,
                 m_csCaption, width - 3);
    const std::size_t nBlanks = m_csCaption.svGet().find_first_not_of(L' ');
    PlaceCursor(pGetWindow(), m_nCaptionRow + 1,
                x + 1 + (nBlanks == std::wstring_view::npos ? 0 : static_cast<int>(nBlanks)));
}

}  // namespace kalmo
