#include "tui/toolkit/jauge.h"

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/geometry.h"

namespace kalmo {

CJauge::CJauge(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight, double dMinimum, double dMaximum,
               const wchar_t* pszCaption)
    : CWidget(pclParent, nX, nY, nWidth, nHeight),
      m_dMinimum(dMinimum),
      m_dMaximum(dMaximum),
      m_csCaption(pszCaption) {}

bool CJauge::bOnKeyEvent(int /*nKey*/) {
    return false;
}

bool CJauge::bSetFocus(int /*bNewFocus*/) {
    return false;
}

int CJauge::__nBar() const noexcept {
    return nGaugeBar(m_dValue, m_dMinimum, m_dMaximum, width - 2);
}

void CJauge::Draw() {
    if (m_bVisible == 0) {
        return;
    }
    const CCursorKept clKept(pGetWindow());
    DrawRectWithBorder(pGetWindow(), x, y, width, height, ATTR_BORDER, ATTR_FIELD_FILL);
    DrawTextLine(pGetWindow(), y, x + 2, ATTR_BORDER, m_csCaption, width - 3);
    m_nDrawnBar = __nBar();
    DrawRect(pGetWindow(), x + 1, y + 1, m_nDrawnBar, height - 2, ATTR_GAUGE_BAR);
}

}  // namespace kalmo
