#ifndef KALMO_TUI_TEXT_COLUMNS_H
#define KALMO_TUI_TEXT_COLUMNS_H

#include <string>
#include <string_view>

/// Text as columns of the screen.
///
/// A character takes one column, two (East Asian wide ones) or none (combining ones). What cannot be shown
/// takes one: control characters, bytes of a broken name (lone surrogates), directional overrides and
/// characters that the locale does not have are drawn as "?".
namespace kalmo {

/// The character as it is drawn: itself or "?".
wchar_t cDrawable(wchar_t c);

/// Columns of one character: 0, 1 or 2.
int nColumns(wchar_t c);

/// Columns of a text.
int nColumns(std::wstring_view sv);

/// The part of a text that a view of nWidth columns shows when nSkip columns are scrolled out to the left,
/// ready to be drawn. It never takes more than nWidth columns; a wide character cut by an edge of the view
/// becomes a blank, and a combining one whose base is not in view is dropped.
std::wstring csVisible(std::wstring_view sv, int nSkip, int nWidth);

/// How many characters from the start of a text fit into nWidth columns.
std::size_t nFitting(std::wstring_view sv, int nWidth);

}  // namespace kalmo

#endif
