#include "tui/dialogs/install_progress_win.h"

#include "framework/text.h"
#include "tui/toolkit/attribute.h"

namespace kalmo {

CInstallProgressWin::CInstallProgressWin(int nX, int nY, int nWidth, int nHeight)
    : CWindow(nX, nY, nWidth, nHeight),
      m_clText(this, csLoadText(TEXTE_INSTALLATION).pszGet(), 1, 1, nWidth - 2, 2, 0, ATTR_BORDER),
      m_clJauge(this, 1, 4, nWidth - 3, 4, 0, 1, L"") {
    AddChild(&m_clText);
    AddChild(&m_clJauge);
}

void CInstallProgressWin::IncJauge() {
    m_clJauge.SetValue(m_clJauge.dGetValue() + 1);
    m_clJauge.Draw();
}

}  // namespace kalmo
