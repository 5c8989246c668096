#include "samples/gallery/gallery_win.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/check_box.h"

namespace kalmo {
namespace {

// The second box can be reached only while the first one is checked.
class CCheckBoxScreen : public CGalleryWin {
  public:
    CCheckBoxScreen(int nX, int nY, int nWidth, int nHeight)
        : CGalleryWin(nX, nY, nWidth, nHeight, L"Check boxes"),
          m_clBackup(this, L"Make a backup before the upgrade", 4, 4, width - 8, 1, 1),
          m_clVerify(
              this,
              L"Read the backup again and compare it with the database, which takes as long as making it", 8,
              6, 40, 3, 0) {
        AddChild(&m_clBackup);
        AddChild(&m_clVerify);
        _AddNext();
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        if (pclSender == &m_clBackup && eEvent == eEVENT_TOGGLED) {
            m_clVerify.SetEnable(m_clBackup.bIsChecked() ? 1 : 0);
            return true;
        }
        return CGalleryWin::bOnEvent(pclSender, eEvent);
    }

    [[nodiscard]] bool bBackup() const noexcept { return m_clBackup.bIsChecked(); }
    [[nodiscard]] bool bVerify() const noexcept { return bBackup() && m_clVerify.bIsChecked(); }

  private:
    CCheckBox m_clBackup;
    CCheckBox m_clVerify;
};

}  // namespace

CTString csShowCheckBoxes(const CTString& /*rcsArgument*/) {
    auto clScreen = clMakeScreen<CCheckBoxScreen>();
    clScreen.Show();
    return clScreen.bVerify() ? L"a verified backup" : clScreen.bBackup() ? L"a backup" : L"no backup";
}

}  // namespace kalmo
