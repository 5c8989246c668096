#ifndef KALMO_TUI_TOOLKIT_DIRECTORY_H
#define KALMO_TUI_TOOLKIT_DIRECTORY_H

#include "framework/xy_string.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/dir_entry.h"
#include "tui/toolkit/list.h"
#include "tui/toolkit/window.h"

namespace kalmo {

/// The directory chooser: a path to type, the list of the sub-directories, OK and Cancel.
///
/// The caller makes it, calls Draw and MainLoop and, when nGetResult is 1, reads pszGetDir. The list shows
/// the directory that the path's part up to its last "/" names ("/" without one), symbolic links to
/// directories and hidden ones included; a directory that cannot be read has an empty list. Typing behind the
/// last "/" selects the first line that begins so; space or Enter on a line moves into that directory.
class CDirectory : public CWindow {
  public:
    /// Position and size in cells of the screen.
    CDirectory(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle, const wchar_t* pszPath);

    /// 1 when the choice was confirmed (OK, or Enter in the path), else 0.
    [[nodiscard]] int nGetResult() const noexcept { return m_nResult; }
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
    void __Confirm();

    CDirEntry m_clPath;
    CList m_clList;
    CTString m_csCurrent;  ///< The directory that is listed, with its last "/".
    CButton m_clOk;
    CButton m_clCancel;
    CTString m_csTitle;
    int m_nResult = 0;
};

}  // namespace kalmo

#endif
