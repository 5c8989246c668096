#include "framework/console_message.h"

#include <cstdio>

#include "framework/conversion.h"

namespace kalmo {

void ConsoleMessage(std::wstring_view svTitle, std::wstring_view svText) {
    std::fprintf(stderr, "%s\n%s\n", csToUTF8(svTitle).pszGet(), csToUTF8(svText).pszGet());
}

}  // namespace kalmo
