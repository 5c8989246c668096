#ifndef KALMO_TUI_TOOLKIT_DIRECTORY_H
#define KALMO_TUI_TOOLKIT_DIRECTORY_H

#include "framework/xy_string.h"
#include "tui/toolkit/entry.h"
#include "tui/toolkit/list.h"
#include "tui/toolkit/ok_cancel_win.h"

namespace kalmo {

/// The path field of the directory chooser. White space becomes "_".
///
/// An edit sends eEVENT_DIR_CHANGED when it lies in the directory part (at or before the last "/") or typed a
/// "/", else eEVENT_TEXT_CHANGED. Backspace sends eEVENT_TEXT_CHANGED once more after either.
class CDirEntry : public CEntry {
  public:
    /// bAbsolute: the leading "/" of the path can neither be deleted nor passed to the left.
    CDirEntry(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight,
              const wchar_t* pszLabel, eBORDER_STYLE eStyle, int bAbsolute);

  protected:
    bool _bBackSpace() override;
    void _DelChar() override;
    void _AddChar(wchar_t c) override;
    bool _bGoLeft() override;

  private:
    /// True when the character at an index is the "/" that must stay.
    [[nodiscard]] bool __bGuarded(int nIndex) const noexcept;
    void __SendChange(bool bDirectory);

    int m_bAbsolute;
};

/// The directory chooser: a path to type, the list of the sub-directories, OK and Cancel.
///
/// The caller makes it, calls Draw and MainLoop and, when nGetResult is 1, reads pszGetDir. The list shows
/// the directory that the path's part up to its last "/" names ("/" without one), symbolic links to
/// directories and hidden ones included; a directory that cannot be read has an empty list. Typing behind the
/// last "/" selects the first line that begins so; space or Enter on a line moves into that directory.
/// Enter in the path confirms as OK does.
class CDirectory : public COkCancelWin {
  public:
    /// Position and size in cells of the screen.
    CDirectory(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle, const wchar_t* pszPath);

    /// The path as it stands in its field. Valid until the dialog is used again.
    [[nodiscard]] const wchar_t* pszGetDir() const noexcept { return m_clPath.pszGetText(); }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _DrawWindow() override;
    /// Lists the directory that the path lies in.
    void _ListDirectory();

  private:
    static int __sortdirectory(const wchar_t* pszLeft, const wchar_t* pszRight);
    void __SelectTyped();
    bool __bEnterSelected();

    CDirEntry m_clPath;
    CList m_clList;
    CTString m_csCurrent;  ///< The directory that is listed, with its last "/".
    CTString m_csTitle;
};

}  // namespace kalmo

#endif
