#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/entry.h"

namespace kalmo {
namespace {

// Every kind of field but the path field, which the directory chooser shows. Enter moves to the next one.
class CEntryScreen : public CGalleryWin {
  public:
    CEntryScreen(int nX, int nY, int nWidth, int nHeight)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"Entry fields"),
          m_clName(this, L"Server", 3, 2, 34, 3, L"Name", eBORDER_FRAME),
          m_clPort(this, L"4900", 40, 2, 14, 3, L"Port", eBORDER_FRAME),
          m_clAccount(this, L"root", 3, 5, 34, 4, L"Account (lower case)", eBORDER_SHADOW),
          m_clFixed(this, L"disabled", 40, 5, 14, 3, L"Fixed", eBORDER_FRAME),
          m_clBare(this, L"without a frame", 4, 10, 20, 1, L"", eBORDER_NONE) {
        m_clPort.SetMaxLength(5);
        m_clFixed.SetEnable(0);
        for (CWidget* pcl : {static_cast<CWidget*>(&m_clName), static_cast<CWidget*>(&m_clPort),
                             static_cast<CWidget*>(&m_clAccount), static_cast<CWidget*>(&m_clFixed),
                             static_cast<CWidget*>(&m_clBare)}) {
            AddChild(pcl);
        }
        _AddNext();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (eEvent == eEVENT_ENTER) {
            bSetFocus(pclSender == &m_clName      ? &m_clPort
                      : pclSender == &m_clPort    ? static_cast<CWidget*>(&m_clAccount)
                      : pclSender == &m_clAccount ? static_cast<CWidget*>(&m_clBare)
                                                  : &m_clNext);
            Draw();
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] CTString csValues() const {
        CTString cs = m_clName.pszGetText();
        for (const CEntry* pcl :
             {static_cast<const CEntry*>(&m_clPort), static_cast<const CEntry*>(&m_clAccount), &m_clBare}) {
            cs += L", ";
            cs += pcl->pszGetText();
        }
        return cs;
    }

  private:
    CEntry m_clName;
    CNumEntry m_clPort;
    CEntryLower m_clAccount;
    CEntry m_clFixed;
    CEntry m_clBare;
};

}  // namespace

CTString csShowEntries(const CTString& /*rcsArgument*/) {
    auto clScreen = clMakeScreen<CEntryScreen>();
    clScreen.Show();
    return clScreen.csValues();
}

}  // namespace kalmo
