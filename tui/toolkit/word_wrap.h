#ifndef KALMO_TUI_TOOLKIT_WORD_WRAP_H
#define KALMO_TUI_TOOLKIT_WORD_WRAP_H

#include <string_view>
#include <vector>

namespace kalmo {

/// Breaks a text into lines of at most nMaxWidth columns, at blanks where that can be. The views point into
/// the text. A word longer than a line is cut hard; a line feed or carriage return ends a line; the white
/// space at the start of every line but the first is dropped, so several line ends in a row count as one. No
/// lines for an empty text or a width below 1.
std::vector<std::wstring_view> tabWrapWords(std::wstring_view svText, int nMaxWidth);

/// Cuts a text into lines at each line feed and after every nMaxWidth columns, words or not. A line feed
/// behind a full line or at the end of the text makes no line of its own; a carriage return before a line
/// feed belongs to it. No lines for an empty text or a width below 1.
std::vector<std::wstring_view> tabCutLines(std::wstring_view svText, int nMaxWidth);

}  // namespace kalmo

#endif
