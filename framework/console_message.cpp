#include "framework/console_message.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "framework/conversion.h"

namespace kalmo {
namespace {

bool bHarmful(wchar_t c) {
    const bool bControl = (c < L' ' && c != L'\n' && c != L'\t') || (c >= 0x7F && c < 0xA0);
    const bool bBrokenByte = c >= 0xD800 && c <= 0xDFFF;
    return bControl || bBrokenByte;
}

CXYString<char> csHarmless(std::wstring_view sv) {
    std::wstring cs(sv);
    std::erase(cs, L'\r');
    std::replace_if(cs.begin(), cs.end(), bHarmful, L'?');
    return csToUTF8(cs);
}

}  // namespace

void ConsoleMessage(std::wstring_view svTitle, std::wstring_view svText) {
    std::fprintf(stderr, "%s\n%s\n", csHarmless(svTitle).pszGet(), csHarmless(svText).pszGet());
}

}  // namespace kalmo
