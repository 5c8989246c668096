#include <string>

#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/radio_list.h"

namespace kalmo {
namespace {

// Enter on an option moves on to "Next", space only chooses.
class CRadioScreen : public CGalleryWin {
  public:
    CRadioScreen()
        : CGalleryWin(L"Radio list"),
          m_clList(this, 3, 2, 40, 11, L"What happens to the data of the old version?", 1, 1) {
        m_clList.AddOption(L"It is deleted");
        m_clList.AddOption(L"It is kept");
        m_clList.AddOption(L"It is packed into an archive");
        AddChild(&m_clList);
        _AddNext();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clList && eEvent == eEVENT_VALIDATED) {
            bSetFocus(&m_clNext);
            Draw();
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] int nGetOption() const { return m_clList.nGetSelectedItem(); }

  private:
    CRadioList m_clList;
};

}  // namespace

CTString csShowRadioList(const CTString& /*rcsArgument*/) {
    CRadioScreen clScreen;
    clScreen.Show();
    return L"option " + std::to_wstring(clScreen.nGetOption());
}

}  // namespace kalmo
