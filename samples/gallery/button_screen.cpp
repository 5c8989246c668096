#include <string>

#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"

namespace kalmo {
namespace {

// Two buttons; the first one switches the second one on and off.
class CButtonScreen : public CGalleryWin {
  public:
    CButtonScreen(int nX, int nY, int nWidth, int nHeight)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"Buttons"),
          m_clSwitch(this, L"Switch the other", width / 2, 3, 4),
          m_clOther(this, L"Other", 6, 8, 16, 4) {
        m_clOther.SetEnable(0);
        AddChild(&m_clSwitch);
        AddChild(&m_clOther);
        _AddNext();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clSwitch && eEvent == eEVENT_PRESSED) {
            m_clOther.SetEnable(m_clOther.bEnable() ? 0 : 1);
            Draw();
            return true;
        }
        if (pclSender == &m_clOther && eEvent == eEVENT_PRESSED) {
            m_clOther.SetCaption((L"Pressed: " + std::to_wstring(++m_nPressed)).c_str());
            Draw();
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] int nGetPressed() const noexcept { return m_nPressed; }

  private:
    CButton m_clSwitch;
    CButton m_clOther;
    int m_nPressed = 0;
};

}  // namespace

CTString csShowButtons(const CTString& /*rcsArgument*/) {
    auto clScreen = clMakeScreen<CButtonScreen>();
    clScreen.Show();
    return L"the other button was pressed " + std::to_wstring(clScreen.nGetPressed()) + L" times";
}

}  // namespace kalmo
