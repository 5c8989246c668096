#ifndef KALMO_SAMPLES_GALLERY_GALLERY_WIN_H
#define KALMO_SAMPLES_GALLERY_GALLERY_WIN_H

#include <utility>

#include "framework/xy_string.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/window.h"

namespace kalmo {

/// A dialog of the gallery with a title and a button "Next" that ends it.
///
/// A screen derives this class, has its controls as members, adds them in Tab order in its constructor and
/// calls _AddNext last. Its constructor begins with position and size, as that of every dialog does.
class CGalleryWin : public CWindow {
  public:
    CGalleryWin(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle);

    /// Shows the dialog until it is left.
    void Show();

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _AddNext() { AddChild(&m_clNext); }
    void _DrawWindow() override;

    CButton m_clNext;

  private:
    CTString m_csTitle;
};

/// Makes a screen in the middle, 64 by 20 cells, smaller where the terminal is.
template <class TScreen, class... TArg>
[[nodiscard]] TScreen clMakeScreen(TArg&&... arg) {
    return clMakeCentred<TScreen>(64, 20, std::forward<TArg>(arg)...);
}

}  // namespace kalmo

#endif
