#include <algorithm>
#include <string>

#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/jauge.h"
#include "tui/toolkit/libel.h"

namespace kalmo {
namespace {

constexpr int STEPS = 8;

// A gauge that a button moves, and labels with and without a frame.
class CGaugeScreen : public CGalleryWin {
  public:
    CGaugeScreen(int nX, int nY, int nWidth, int nHeight)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"Gauge and labels"),
          m_clFramed(this, L"A label breaks its text at the words and may have a frame of its own.", 3, 3, 30,
                     5, 1, ATTR_BORDER),
          m_clPlain(this, L"Without one it is just text.", 38, 4, 20, 2, 0, ATTR_BORDER),
          m_clGauge(this, 3, 9, width - 8, 4, 0, STEPS, L"Progress"),
          m_clStep(this, L"Step", 3, height - 6, 12, 4) {
        AddChild(&m_clStep);
        AddChild(&m_clFramed);
        AddChild(&m_clPlain);
        AddChild(&m_clGauge);
        _AddNext();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clStep && eEvent == eEVENT_PRESSED) {
            m_clGauge.SetValue(std::min<double>(m_clGauge.dGetValue() + 1, STEPS));
            Draw();
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] int nGetSteps() const noexcept { return static_cast<int>(m_clGauge.dGetValue()); }

  private:
    CLibel m_clFramed;
    CLibel m_clPlain;
    CJauge m_clGauge;
    CButton m_clStep;
};

}  // namespace

CTString csShowGauge(const CTString& /*rcsArgument*/) {
    auto clScreen = clMakeScreen<CGaugeScreen>();
    clScreen.Show();
    return std::to_wstring(clScreen.nGetSteps()) + L" steps";
}

}  // namespace kalmo
