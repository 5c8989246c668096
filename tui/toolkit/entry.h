#ifndef KALMO_TUI_TOOLKIT_ENTRY_H
#define KALMO_TUI_TOOLKIT_ENTRY_H

#include "framework/xy_string.h"
#include "tui/toolkit/widget.h"

namespace kalmo {

/// A field for one line of text. Enter and keypad Enter send eEVENT_ENTER.
///
/// Left, Right, Backspace and Delete edit; blank, "." and "/" and whatever iswgraph accepts are inserted, so
/// also a curses key code that no other rule handles and that is the number of such a character. A text that
/// does not fit, with the focus cursor included, is scrolled so that the cursor stays inside the field.
class CEntry : public CWidget {
  public:
    /// The cursor starts at the end of the text. The label stands on the top border.
    CEntry(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight,
           const wchar_t* pszLabel, eBORDER_STYLE eStyle);

    bool bOnKeyEvent(int nKey) override;
    /// Also redraws and refreshes.
    void SetEnable(int bEnable) override;
    void Draw() override;
    [[nodiscard]] bool bWithCursor() const override { return true; }

    /// The text; valid until it changes.
    [[nodiscard]] const wchar_t* pszGetText() const noexcept { return m_csText.pszGet(); }
    /// Replaces the text, the cursor at its end; no event, and the next Draw shows it. The maximum length
    /// does not cut it.
    void SetText(const wchar_t* pszText);
    /// How many characters may be typed; -1, as at first, for any number.
    void SetMaxLength(int nMaxLength) noexcept { m_nMaxLength = nMaxLength; }
    /// Index in the text of the character that the cursor is on, or the text's length.
    [[nodiscard]] int nGetCursor() const noexcept { return m_nCursor; }

  protected:
    /// Removes the character before the cursor. False when there is none.
    virtual bool _bBackSpace();
    /// Removes the character under the cursor, if there is one.
    virtual void _DelChar();
    /// Inserts a character before the cursor, or, when the cursor is on the last one, behind that; the cursor
    /// moves on by one. Ignored when the maximum length is reached.
    virtual void _AddChar(wchar_t c);
    /// Moves the cursor to the left. False at the start.
    virtual bool _bGoLeft();

    CTString m_csText;
    int m_nCursor;

  private:
    bool __bGoRight();
    bool __bDelete();
    bool __bIgnore() { return false; }
    bool __bInsert(int nKey);
    [[nodiscard]] bool __bFramed() const noexcept { return m_eStyle != eBORDER_NONE; }
    /// Screen column of the first cell that the text may use, and how many there are.
    [[nodiscard]] int __nTextColumn() const noexcept;
    [[nodiscard]] int __nTextWidth() const noexcept;

    CTString m_csLabel;
    eBORDER_STYLE m_eStyle;
    int m_nTextRow;
    int m_nMaxLength = -1;
    int m_nOffset = 0;  ///< Columns of the text that are scrolled out to the left.
    int m_nDrawn = 0;   ///< Columns that the last Draw filled with text.
};

/// A field that makes what is typed lower case.
class CEntryLower : public CEntry {
  public:
    using CEntry::CEntry;

  protected:
    void _AddChar(wchar_t c) override;
};

/// A field that takes only the digits 0 to 9.
class CNumEntry : public CEntry {
  public:
    using CEntry::CEntry;

  protected:
    void _AddChar(wchar_t c) override;
};

}  // namespace kalmo

#endif
