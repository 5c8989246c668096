#include "framework/console_message.h"

#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "framework/conversion.h"
#include "framework/plain_letter.h"

namespace kalmo {
namespace {

bool bHarmful(wchar_t c) {
    const bool bControl = (c < L' ' && c != L'\n' && c != L'\t') || (c >= 0x7F && c < 0xA0);
    const bool bBrokenByte = c >= 0xD800 && c <= 0xDFFF;
    return bControl || bBrokenByte;
}

// A file gets UTF-8 in any case, a terminal what it can show.
CXYString<char> csHarmless(std::wstring_view sv, FILE* pFile) {
    std::wstring cs(sv);
    std::erase(cs, L'\r');
    std::replace_if(cs.begin(), cs.end(), bHarmful, L'?');
    if (::isatty(::fileno(pFile)) != 0 && std::string_view(::nl_langinfo(CODESET)) != "UTF-8") {
        std::transform(cs.begin(), cs.end(), cs.begin(), cPlainLetter);
    }
    return csToUTF8(cs);
}

}  // namespace

void ConsoleLine(std::wstring_view svText, FILE* pFile) {
    std::fprintf(pFile, "%s\n", csHarmless(svText, pFile).pszGet());
}

void ConsoleMessage(std::wstring_view svTitle, std::wstring_view svText) {
    ConsoleLine(svTitle, stderr);
    ConsoleLine(svText, stderr);
}

}  // namespace kalmo
