#ifndef KALMO_SAMPLES_GALLERY_GALLERY_WIN_H
#define KALMO_SAMPLES_GALLERY_GALLERY_WIN_H

#include "framework/xy_string.h"
#include "tui/button.h"
#include "tui/window.h"

namespace kalmo {

/// A dialog of the gallery: 64 by 20 cells, smaller on a small screen, with a title and a button "Next" that
/// ends it.
///
/// A screen derives this class, has its controls as members, adds them in Tab order in its constructor and
/// calls _AddNext last.
class CGalleryWin : public CWindow {
  public:
    explicit CGalleryWin(const wchar_t* pszTitle);

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

}  // namespace kalmo

#endif
