#include <cwchar>
#include <string>

#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/list.h"

namespace kalmo {
namespace {

constexpr int DEFAULT_COUNT = 30;

// A long list whose chosen lines, space or Enter, are copied to a short sorted one with a shadow.
class CListScreen : public CGalleryWin {
  public:
    CListScreen(int nX, int nY, int nWidth, int nHeight, int nCount)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"Lists"),
          m_clAll(this, 3, 3, 28, 10, 0),
          m_clChosen(this, 33, 3, 24, 10, 1) {
        m_clAll.AddLine(L"A line that is longer than the list is wide");
        for (int n = 2; n <= nCount; ++n) {
            m_clAll.AddLine((L"Line " + std::to_wstring(n)).c_str());
        }
        AddChild(&m_clAll);
        AddChild(&m_clChosen);
        _AddNext();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clAll && eEvent == eEVENT_SELECTED) {
            m_clChosen.AddLine(m_clAll.pszGetSelectedLine());
            m_clChosen.SortLine(std::wcscmp);
            Draw();
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] CTString csChosen() const {
        CTString cs = std::to_wstring(m_clChosen.nGetNbItem()) + L" chosen";
        for (int n = 0; n < m_clChosen.nGetNbItem(); ++n) {
            cs += n == 0 ? L": " : L", ";
            cs += m_clChosen[n];
        }
        return cs;
    }

  private:
    CList m_clAll;
    CList m_clChosen;
};

}  // namespace

CTString csShowLists(const CTString& rcsArgument) {
    auto clScreen = clMakeScreen<CListScreen>(
        rcsArgument.bEmpty() ? DEFAULT_COUNT
                             : static_cast<int>(std::wcstol(rcsArgument.pszGet(), nullptr, 10)));
    clScreen.Show();
    return clScreen.csChosen();
}

}  // namespace kalmo
