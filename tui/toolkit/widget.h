#ifndef KALMO_TUI_TOOLKIT_WIDGET_H
#define KALMO_TUI_TOOLKIT_WIDGET_H

#include <climits>
#include <string_view>

#include "tui/toolkit/ncurses.h"

namespace kalmo {

/// What a control tells its window (CWidget::bOnEvent).
enum eEVENT {
    eEVENT_PRESSED = 0,       ///< Button: Enter, keypad Enter or space.
    eEVENT_MOVED = 1,         ///< List: Up or Down moved the highlighted line.
    eEVENT_SELECTED = 2,      ///< List, radio list: space, Enter or keypad Enter on an item.
    eEVENT_VALIDATED = 3,     ///< List, radio list: follows SELECTED when the key was no space.
    eEVENT_END_REACHED = 4,   ///< Scrollable label: scrolled so that the last line is visible.
    eEVENT_DIR_CHANGED = 5,   ///< Path field: the directory part of the path changed.
    eEVENT_TEXT_CHANGED = 6,  ///< Path field: the path changed; after DIR_CHANGED where both are sent.
    eEVENT_ENTER = 7,         ///< Entry field: Enter or keypad Enter.
    eEVENT_TOGGLED = 8,       ///< Check box: changed state.
};

class CWindow;

/// Base of everything on the screen: the controls and the windows.
///
/// A control is owned by its dialog, which makes it with itself as the parent and links it with
/// CWindow::AddChild; parent and control must live while the dialog is shown. The window calls the virtual
/// operations: bOnKeyEvent with every key while the control has the focus, bSetFocus when the focus comes and
/// goes, Draw when all is drawn. The control in turn tells its window what happened through bOnEvent.
class CWidget {
  public:
    /// How a framed control is drawn.
    enum eBORDER_STYLE {
        eBORDER_FRAME = 0,
        eBORDER_SHADOW = 1,  ///< A frame with a shadow.
        eBORDER_NONE = 2,
    };

    CWidget(const CWidget&) = delete;
    CWidget& operator=(const CWidget&) = delete;
    virtual ~CWidget() = default;

    /// Handles a key (key.h). True when it was consumed.
    virtual bool bOnKeyEvent(int nKey);
    /// Gives (1) or takes (0) the focus and shows or hides the cursor accordingly. False, and nothing
    /// changes, when the control cannot have the focus: it is disabled, or of a kind that never has it.
    virtual bool bSetFocus(int bNewFocus);
    /// Enables or disables. A disabled control does not take the focus.
    virtual void SetEnable(int bEnable);
    [[nodiscard]] virtual bool bEnable() const;
    /// Draws into pGetWindow(), without refreshing the screen. A control that takes the focus ends with the
    /// cursor where the operator's attention belongs (PlaceCursor), also when it is hidden; one that never
    /// takes it leaves the cursor where it was (CCursorKept).
    virtual void Draw() = 0;
    /// Is told what a child of this window did. True when it was handled.
    virtual bool bOnEvent(CWidget* pclSender, eEVENT eEvent);
    /// True when the terminal's cursor is shown while the control has the focus.
    [[nodiscard]] virtual bool bWithCursor() const;
    /// The curses window to draw into: that of the parent. Null when there is none.
    [[nodiscard]] virtual WINDOW* pGetWindow() const;

    [[nodiscard]] bool bHasFocus() const noexcept { return bFocus != 0; }

    /// Prints a text broken at its words (tabWrapWords) and returns the number of lines; 0 for a null or
    /// empty one. The position is relative to the widget. nMaxWidth of -1 stands for width - nColumn - 2.
    /// The text is printed whole, also below the widget's last row: a control that must stay inside it uses
    /// _nSmartPrint.
    int SmartPrint(int nRow, int nColumn, const wchar_t* pszText, chtype attr, int nMaxWidth) {
        return _nSmartPrint(nRow, nColumn, pszText, attr, nMaxWidth, INT_MAX);
    }

  protected:
    friend class CWindow;

    /// Position in columns and rows of the parent's window (of the screen for a window), size in the same.
    CWidget(CWindow* pclParent, int nX, int nY, int nWidth, int nHeight) noexcept
        : x(nX), y(nY), height(nHeight), width(nWidth), pParent(pclParent) {}

    /// Prints a text as it is at a position of the window, cut at the window's right edge.
    static void _PrintAttributSansFormatW(WINDOW* pWindow, int nRow, int nColumn, chtype attr,
                                          const wchar_t* pszText);
    /// The same for UTF-8 text.
    static void _PrintAttributSansFormatA(WINDOW* pWindow, int nRow, int nColumn, chtype attr,
                                          const char* pszText);
    /// Formats as wprintf does and prints with the attributes that the window has now.
    static void _PrintW(WINDOW* pWindow, int nRow, int nColumn, const wchar_t* pszFormat, ...);
    /// Formats as printf does and prints the result, UTF-8, with the attributes that the window has now.
    static void _PrintA(WINDOW* pWindow, int nRow, int nColumn, const char* pszFormat, ...)
        __attribute__((format(printf, 4, 5)));

    /// SmartPrint down to the row before nEndRow; further lines are neither printed nor counted.
    int _nSmartPrint(int nRow, int nColumn, const wchar_t* pszText, chtype attr, int nMaxWidth, int nEndRow);

    /// Shows or hides the terminal's cursor as the widget wants it while it has the focus.
    void _ShowCursor() const;
    /// Draws the widget and brings its window to the screen. After a key has changed it. The cursor stays
    /// with the control that has the focus.
    void _Redraw();
    /// Tells the parent; true when it handled the event.
    bool _bSendEvent(eEVENT eEvent);

    CWidget* next = nullptr;  ///< The ring of the parent's children, in Tab order.
    CWidget* prev = nullptr;
    int bFocus = 0;
    int x;  ///< Column of the left edge.
    int y;  ///< Row of the top edge.
    int height;
    int width;
    CWindow* pParent;  ///< Not owned; null for a window.
    int bEnabled = 1;
};

}  // namespace kalmo

#endif
