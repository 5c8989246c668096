#ifndef KALMO_TESTKIT_EMULATOR_H
#define KALMO_TESTKIT_EMULATOR_H

#include <vterm.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kalmo {

/// How a cell looks: its colours as palette numbers, -1 for the terminal's own, and its attributes.
struct STLook {
    int nForeground = -1;
    int nBackground = -1;
    bool bReverse = false;
    bool bBold = false;
    bool bUnderline = false;

    friend bool operator==(const STLook&, const STLook&) = default;
};

/// One cell of the screen.
struct STCell {
    std::string csText;  ///< UTF-8, " " for a blank, empty for the right half of a wide character
    STLook stLook;
};

struct STCursor {
    int nRow = 0;
    int nColumn = 0;
    bool bVisible = true;
    bool bVeryVisible = false;  ///< the stronger of the two visible kinds (cvvis), which blinks

    friend bool operator==(const STCursor&, const STCursor&) = default;
};

/// A letter for a look, to draw a screen's looks as text.
struct STLegend {
    char cLetter;
    STLook stLook;
};

/// A terminal without its wire: takes the bytes that a program sends and holds the screen that they make.
///
/// Beyond libvterm it knows the sequences that change a colour of the palette (OSC 4) and restore it (OSC
/// 104).
class CEmulator {
  public:
    /// Send takes what the terminal itself sends: keys, answers to questions.
    CEmulator(int nRows, int nColumns, std::function<void(std::string_view)> Send);

    void Feed(std::string_view svBytes);
    void Resize(int nRows, int nColumns);
    /// Presses a key: "Enter", "Tab", "Backspace", "Escape", "Up", "Down", "Left", "Right", "Delete",
    /// "PageUp", "PageDown", "KeypadEnter", "F1" and so on. False for another name.
    bool bPressKey(std::string_view svName);

    [[nodiscard]] int nRows() const noexcept { return m_nRows; }
    [[nodiscard]] int nColumns() const noexcept { return m_nColumns; }
    [[nodiscard]] STCell stCell(int nRow, int nColumn) const;
    [[nodiscard]] const STCursor& stCursor() const noexcept { return m_stCursor; }
    /// Whether the second screen shows, the one that full-screen programs use.
    [[nodiscard]] bool bAlternateScreen() const noexcept { return m_bAlternate; }
    /// A colour of the palette as 0xRRGGBB.
    [[nodiscard]] unsigned unPaletteColour(int nIndex) const;
    /// Whether further text would come out plain and the arrow keys send what they send at power-on.
    [[nodiscard]] bool bAtRest() const;
    /// The lines of the screen without their trailing blanks, no-break spaces as blanks, up to the last line
    /// that is not empty. A line feed comes first, so that the text compares with a raw string whose picture
    /// starts on a line of its own.
    [[nodiscard]] std::string csText() const;
    /// Cells of a row as text, as far as the screen goes.
    [[nodiscard]] std::string csText(int nRow, int nColumn, int nWidth) const;
    /// The same with each cell's look as its letter in the legend, " " for the plain look and "?" for one
    /// that the legend does not have.
    [[nodiscard]] std::string csLooks(std::span<const STLegend> tabLegend, int nRow, int nColumn,
                                      int nWidth) const;
    /// The whole screen: a line feed, then each row as its text, a blank, its looks and a line feed.
    [[nodiscard]] std::string csShow(std::span<const STLegend> tabLegend) const;
    /// The screen as an SVG picture: the same screen gives the same bytes. A visible cursor is a frame around
    /// its cell.
    [[nodiscard]] std::string csSvg() const;

  private:
    struct STFree {
        void operator()(VTerm* pclTerm) const noexcept { vterm_free(pclTerm); }
    };

    [[nodiscard]] std::string __csSvgOfRun(STLook st, int nRow, int nColumn, int nWidth) const;
    static int __nOnProperty(VTermProp eProperty, VTermValue* punValue, void* pclSelf);
    static int __nOnMoveCursor(VTermPos stNew, VTermPos stOld, int nVisible, void* pclSelf);
    static int __nOnCommand(const char* pcCommand, std::size_t nLength, void* pclSelf);

    std::unique_ptr<VTerm, STFree> m_pclTerm;
    VTermScreen* m_pclScreen;
    mutable std::function<void(std::string_view)> m_Send;  ///< bAtRest listens in.
    int m_nRows;
    int m_nColumns;
    STCursor m_stCursor;
    bool m_bAlternate = false;
    std::string m_csHeld;  ///< The start of a sequence whose end has not come yet.
};

}  // namespace kalmo

#endif
