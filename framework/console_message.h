#ifndef KALMO_FRAMEWORK_CONSOLE_MESSAGE_H
#define KALMO_FRAMEWORK_CONSOLE_MESSAGE_H

#include <cstdio>
#include <string_view>

namespace kalmo {

/// Writes a text and a line feed to standard output or standard error. What a terminal would obey or cannot
/// read shows as "?", as on a screen: control characters other than line feed and tab, and bytes of a broken
/// name; on a terminal whose locale is not a UTF-8 one, accented letters as their base letters. Carriage
/// returns are left out.
void ConsoleLine(std::wstring_view svText, FILE* pFile);

/// A message box where there is no screen: the title and, below it, the text as lines on standard error.
void ConsoleMessage(std::wstring_view svTitle, std::wstring_view svText);

}  // namespace kalmo

#endif
