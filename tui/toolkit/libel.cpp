#include "tui/toolkit/libel.h"

#include "tui/toolkit/drawing.h"

namespace kalmo {

CLibel::CLibel(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight,
               int bBorder, chtype attr)
    : CWidget(pclParent, nX, nY, nWidth, nHeight), m_csText(pszText), m_bBorder(bBorder), m_attr(attr) {}

bool CLibel::bSetFocus(int /*bNewFocus*/) {
    return false;
}

void CLibel::Draw() {
    if (m_bBorder == 0) {
        _nSmartPrint(0, 0, m_csText.pszGet(), m_attr, width, height);
        return;
    }
    DrawBorder(pGetWindow(), x, y, width - 1, height - 1, m_attr);
    _nSmartPrint(1, 1, m_csText.pszGet(), m_attr, width - 2, height - 1);
}

}  // namespace kalmo
