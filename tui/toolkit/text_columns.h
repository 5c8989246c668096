#ifndef KALMO_TUI_TOOLKIT_TEXT_COLUMNS_H
#define KALMO_TUI_TOOLKIT_TEXT_COLUMNS_H

#include <string>
#include <string_view>
#include <vector>

/// Text as columns of the screen.
///
/// A character takes one column, two (East Asian wide ones) or none: combining marks, and the vowels and
/// final consonants of Hangul, share the cell of the character before them. What cannot be shown takes one
/// column: control characters, bytes of a broken name (lone surrogates), directional overrides, characters
/// that the locale does not have, and marks that find no cell are drawn as "?". So nothing in a text goes
/// unseen.
namespace kalmo {

/// Characters that are not seen themselves, as marks of direction: a name could use them to show as another
/// one.
bool bInvisible(wchar_t c);

/// The character as it is drawn: itself or "?".
wchar_t cDrawable(wchar_t c);

/// How many marks the cell of a character holds.
inline constexpr int MAX_MARKS = 4;

/// Walks a text from its start and tells how each character is drawn behind those before it.
class CCellWalk {
  public:
    struct STDrawn {
        wchar_t c;     ///< What is drawn.
        int nColumns;  ///< 0 in the cell of the character before, else 1 or 2.
    };
    STDrawn stNext(wchar_t c);

  private:
    int m_nRoom = 0;  ///< Marks that the cell of the character before still holds.
};

/// Columns of a text.
int nColumns(std::wstring_view sv);

/// The part of a text that a view of nWidth columns shows when nSkip columns are scrolled out to the left,
/// ready to be drawn. It never takes more than nWidth columns; a wide character cut by an edge of the view
/// becomes a blank, and the marks of one that is not in view are dropped with it.
std::wstring csVisible(std::wstring_view sv, int nSkip, int nWidth);

/// How many characters from the start of a text fit into nWidth columns.
std::size_t nFitting(std::wstring_view sv, int nWidth);

/// Breaks a text into lines of at most nMaxWidth columns, at blanks where that can be. The views point into
/// the text. A word longer than a line is cut hard; a line feed or carriage return ends a line; the white
/// space at the start of every line but the first is dropped, so several line ends in a row count as one. No
/// lines for an empty text or a width below 1.
std::vector<std::wstring_view> tabWrapWords(std::wstring_view svText, int nMaxWidth);

/// A text with its lines broken at words (tabWrapWords) by line feeds so that none is longer than nMaxWidth
/// columns; empty lines and indents stay.
std::wstring csBrokenAtWords(std::wstring_view svText, int nMaxWidth);

/// Cuts a text into lines at each line feed and after every nMaxWidth columns, words or not. A line feed
/// behind a full line or at the end of the text makes no line of its own; a carriage return before a line
/// feed belongs to it. No lines for an empty text or a width below 1.
std::vector<std::wstring_view> tabCutLines(std::wstring_view svText, int nMaxWidth);

}  // namespace kalmo

#endif
