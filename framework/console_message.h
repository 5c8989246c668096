#ifndef KALMO_FRAMEWORK_CONSOLE_MESSAGE_H
#define KALMO_FRAMEWORK_CONSOLE_MESSAGE_H

#include <string_view>

namespace kalmo {

/// A message box where there is no screen: the title and, below it, the text on standard error. What a
/// terminal would obey or cannot read shows as "?", as on a screen: control characters other than line feed
/// and tab, and bytes of a broken name. Carriage returns are left out.
void ConsoleMessage(std::wstring_view svTitle, std::wstring_view svText);

}  // namespace kalmo

#endif
