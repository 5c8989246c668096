#ifndef KALMO_FRAMEWORK_CONSOLE_MESSAGE_H
#define KALMO_FRAMEWORK_CONSOLE_MESSAGE_H

#include <string_view>

namespace kalmo {

/// A message box where there is no screen: the title and, below it, the text on standard error.
void ConsoleMessage(std::wstring_view svTitle, std::wstring_view svText);

}  // namespace kalmo

#endif
