#include <algorithm>
#include <string>

#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/key.h"

namespace kalmo {
namespace {

// A control of one's own: a number between two limits that Left and Right change. Each change sends
// eEVENT_MOVED.
class CStepper : public CWidget {
  public:
    CStepper(CWindow* pclParent, int nX, int nY, int nWidth, int nMinimum, int nMaximum)
        : CWidget(pclParent, nX, nY, nWidth, 1),
          m_nMinimum(nMinimum),
          m_nMaximum(nMaximum),
          m_nValue(nMinimum) {}

    bool bOnKeyEvent(int nKey) override {
        static constexpr STKeyAction<CStepper> TAB_KEY[] = {
            {KEY_LEFT, &CStepper::__bDown},
            {KEY_RIGHT, &CStepper::__bUp},
        };
        return RunKey(this, TAB_KEY, nKey).value_or(false);
    }

    void Draw() override {
        DrawRect(pGetWindow(), x, y, width, 1, ATTR_FIELD_FILL);
        DrawTextLine(pGetWindow(), y, x, bHasFocus() ? ATTR_SELECTED : ATTR_NORMAL,
                     L"< " + std::to_wstring(m_nValue) + L" >", width);
        PlaceCursor(pGetWindow(), y, x + 2);
    }

    [[nodiscard]] int nGetValue() const noexcept { return m_nValue; }

  private:
    bool __bDown() { return __bStep(-1); }
    bool __bUp() { return __bStep(1); }
    bool __bStep(int nStep) {
        const int nValue = std::clamp(m_nValue + nStep, m_nMinimum, m_nMaximum);
        if (nValue != m_nValue) {
            m_nValue = nValue;
            _Redraw();
            _bSendEvent(eEVENT_MOVED);
        }
        return true;
    }

    int m_nMinimum;
    int m_nMaximum;
    int m_nValue;
};

class COwnControlScreen : public CGalleryWin {
  public:
    COwnControlScreen(int nX, int nY, int nWidth, int nHeight)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"A control of one's own"),
          m_clStepper(this, 4, 4, 12, 1, 12) {
        AddChild(&m_clStepper);
        _AddNext();
    }

    [[nodiscard]] int nGetValue() const noexcept { return m_clStepper.nGetValue(); }

  private:
    CStepper m_clStepper;
};

}  // namespace

CTString csShowOwnControl(const CTString& /*rcsArgument*/) {
    auto clScreen = clMakeScreen<COwnControlScreen>();
    clScreen.Show();
    return std::to_wstring(clScreen.nGetValue());
}

}  // namespace kalmo
