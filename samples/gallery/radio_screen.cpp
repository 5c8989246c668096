#include <string>

#include "samples/gallery/screens.h"
#include "tui/toolkit/ok_cancel_win.h"
#include "tui/toolkit/radio_list.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

// Asks for one of three answers. Space chooses one, Enter also moves on to OK.
class CRadioScreen : public COkCancelWin {
  public:
    CRadioScreen(int nX, int nY, int nWidth, int nHeight)
        : COkCancelWin(nX, nY, nWidth, nHeight),
          m_clList(this, 3, 2, 40, 11, L"What happens to the data of the old version?", 1, 1) {
        m_clList.AddOption(L"It is deleted");
        m_clList.AddOption(L"It is kept");
        m_clList.AddOption(L"It is packed into an archive");
        AddChild(&m_clList);
        _AddButtons();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clList && eEvent == eEVENT_VALIDATED) {
            return _bGoTo(&m_clOk);
        }
        return COkCancelWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] int nGetOption() const { return m_clList.nGetSelectedItem(); }

  protected:
    void _DrawWindow() override {
        COkCancelWin::_DrawWindow();
        _DrawTitle(1, 2, L"Radio list");
    }

  private:
    CRadioList m_clList;
};

}  // namespace

CTString csShowRadioList(const CTString& /*rcsArgument*/) {
    auto clScreen = clMakeCentred<CRadioScreen>(64, 20);
    clScreen.Draw();
    clScreen.MainLoop();
    return clScreen.nGetResult() == 1 ? L"option " + std::to_wstring(clScreen.nGetOption()) : L"cancelled";
}

}  // namespace kalmo
