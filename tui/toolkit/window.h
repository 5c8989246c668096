#ifndef KALMO_TUI_TOOLKIT_WINDOW_H
#define KALMO_TUI_TOOLKIT_WINDOW_H

#include <utility>

#include "tui/toolkit/geometry.h"
#include "tui/toolkit/ncurses.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// Base of every dialog: a framed window with a shadow, its children and the modal loop.
///
/// The caller makes a dialog on its stack, calls Draw and MainLoop, reads the results from the dialog and
/// destroys it, which paints the background again. The dialog owns its controls and adds them with AddChild
/// in Tab order. While a dialog is shown another one may be run on top of it; the caller redraws the lower
/// one.
///
/// A dialog derives this class and overrides _DrawWindow (title, texts; base first) and bOnEvent, which
/// clears bRunning to end the loop and stores the result in the dialog's own fields. It starts with the
/// result of a cancel, which stands when the input ends before the operator chose.
class CWindow : public CWidget {
  public:
    /// Makes the curses window at a screen position. Where the screen is smaller it is clipped; where nothing
    /// of it fits, or no screen is open, there is none and nothing is drawn.
    CWindow(int nX, int nY, int nWidth, int nHeight);
    CWindow(const CWindow&) = delete;
    CWindow& operator=(const CWindow&) = delete;
    ~CWindow() override;

    /// Draws the window and all children, the focused one last so that the cursor ends where that one wants
    /// it, and brings all to the screen.
    void Draw() override;
    [[nodiscard]] WINDOW* pGetWindow() const override { return pWin; }

    /// Handles a key: Tab moves the focus to the next child that takes it, any other key goes to the focused
    /// child. Always 1. A dialog with keys of its own overrides it and calls the base for the rest.
    /// Precondition of Tab: at least one child takes the focus.
    virtual int OnKeyEvent(int nKey);
    /// Reads keys and hands them to OnKeyEvent until bRunning is cleared, or no key can come any more.
    virtual void MainLoop();

    /// Appends a child, which must outlive the window's use. The first one gets the focus at once.
    void AddChild(CWidget* pclChild);

    using CWidget::bSetFocus;
    /// Moves the focus to a child of this window; the result is that of the child's bSetFocus(1).
    bool bSetFocus(CWidget* pclChild);

  protected:
    /// Draws the frame, the fill and the shadow.
    virtual void _DrawWindow();
    /// Prints a title in the attributes of the border, cut inside the frame.
    void _DrawTitle(int nRow, int nColumn, const wchar_t* pszTitle);

    CWidget* pFocus = nullptr;  ///< The focused child, where the ring is entered; null without children.
    int bRunning = 0;           ///< The loop goes on while this is set.
    WINDOW* pWin = nullptr;

  private:
    void __OpenCursesWindow();
    void __CloseCursesWindow();
    /// Brings every window back after the terminal changed its size.
    static void __RebuildScreen();

    bool m_bShown = false;  ///< Draw has been called.
};

/// Makes a dialog in the middle of the screen, of the preferred size in cells or, along an axis where the
/// screen has not four cells more than that, of four cells less than the screen. The rest of the arguments
/// go to the dialog's constructor behind position and size.
template <class TDialog, class... TArg>
[[nodiscard]] TDialog clMakeCentred(int nPreferredWidth, int nPreferredHeight, TArg&&... arg) {
    const int nWidth = nDialogSize(nPreferredWidth, COLS);
    const int nHeight = nDialogSize(nPreferredHeight, LINES);
    return TDialog(nCentred(nWidth, COLS), nCentred(nHeight, LINES), nWidth, nHeight,
                   std::forward<TArg>(arg)...);
}

}  // namespace kalmo

#endif
