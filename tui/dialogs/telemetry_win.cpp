#include "tui/dialogs/telemetry_win.h"

#include <algorithm>

#include "framework/text.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/key.h"

namespace kalmo {
namespace {

constexpr int TEXT_HEIGHT = 9;
constexpr int BOX_ROW = 12;

// Whoever answers must see the box: on a small screen it stands above the buttons, and the text above it.
int nBoxRow(int nHeight) {
    return std::min(BOX_ROW, nHeight - 8);
}

int nTextHeight(int nHeight) {
    return std::min(TEXT_HEIGHT, nBoxRow(nHeight) - 1);
}

}  // namespace

CTelemetryWin::CTelemetryWin(int nX, int nY, int nWidth, int nHeight, ETelemetryState eState)
    : COkCancelWin(nX, nY, nWidth, nHeight),
      m_eState(eState),
      m_clText(this, csLoadText(TEXTE_TELEMETRIE).pszGet(), 2, 1, nWidth - 5, nTextHeight(nHeight), 1,
               ATTR_BORDER),
      m_clBox(this, csLoadText(TEXTE_TELEMETRIE_ACTIVE).pszGet(), 2, nBoxRow(nHeight), nWidth - 5, 2, 0) {
    AddChild(&m_clText);
    AddChild(&m_clBox);
    _AddButtons();
    bSetFocus(&m_clBox);
    __InfoToWidget();
}

int CTelemetryWin::OnKeyEvent(int nKey) {
    if (nKey == TOUCHE_ENTREE && m_clBox.bHasFocus()) {
        _bGoTo(&m_clOk);
        return 1;
    }
    return CWindow::OnKeyEvent(nKey);
}

void CTelemetryWin::_Confirm() {
    __WidgetToInfo();
    COkCancelWin::_Confirm();
}

void CTelemetryWin::__InfoToWidget() noexcept {
    m_clBox.SetChecked(m_eState == ETelemetryState::Off ? 0 : 1);
}

void CTelemetryWin::__WidgetToInfo() noexcept {
    m_eState = m_clBox.bIsChecked() ? ETelemetryState::On : ETelemetryState::Off;
}

}  // namespace kalmo
