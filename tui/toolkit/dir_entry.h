#ifndef KALMO_TUI_TOOLKIT_DIR_ENTRY_H
#define KALMO_TUI_TOOLKIT_DIR_ENTRY_H

#include "tui/toolkit/entry.h"

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

}  // namespace kalmo

#endif
