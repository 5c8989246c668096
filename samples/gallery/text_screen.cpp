#include <string>

#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/libel.h"

namespace kalmo {
namespace {

CTString csExample() {
    std::wstring cs = L"Up, Down, Page Up and Page Down scroll this text while\nit has the focus.\n";
    for (int n = 3; n <= 25; ++n) {
        cs += L"\nThis is line " + std::to_wstring(n) + L".";
    }
    return cs;
}

// A text to read; the window notices when its end was seen.
class CTextScreen : public CGalleryWin {
  public:
    CTextScreen(int nX, int nY, int nWidth, int nHeight, const CTString& rcsText)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"Scrollable text"),
          m_clText(this, rcsText.pszGet(), 2, 2, width - 5, height - 9) {
        AddChild(&m_clText);
        _AddNext();
        if (!m_clText.bScrollable()) {
            bSetFocus(&m_clNext);
        }
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clText && eEvent == eEVENT_END_REACHED) {
            m_bEndSeen = true;
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] bool bEndSeen() const noexcept { return m_bEndSeen || !m_clText.bScrollable(); }

  private:
    CScrollableLibel m_clText;
    bool m_bEndSeen = false;
};

}  // namespace

CTString csShowText(const CTString& rcsArgument) {
    auto clScreen = clMakeScreen<CTextScreen>(rcsArgument.bEmpty() ? csExample() : rcsArgument);
    clScreen.Show();
    return clScreen.bEndSeen() ? L"read to the end" : L"not read to the end";
}

}  // namespace kalmo
