#include "framework/plain_letter.h"

#include <string_view>

namespace kalmo {
namespace {

// U+00A0 to U+00FF, U+0100 to U+017F and U+2010 to U+2026.
constexpr std::wstring_view SV_LATIN_1 =
    L" !cL?Y|S\"ca\"--r-o+23'uP.,1o\"\?\?\?\?"
    L"AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTs"
    L"aaaaaaaceeeeiiiidnooooo/ouuuuyty";
constexpr std::wstring_view SV_LATIN_A =
    L"AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIiIiJjKkqLlLlLlL"
    L"lLlNnNnNnnNnOoOoOoOoRrRrRrSsSsSsSsTtTtTtUuUuUuUuUuUuWwYyYZzZzZzs";
constexpr std::wstring_view SV_PUNCTUATION = L"------|_'',`\"\"\"\"++*>...";
static_assert(SV_LATIN_1.size() == 0x60 && SV_LATIN_A.size() == 0x80 && SV_PUNCTUATION.size() == 0x17);

}  // namespace

wchar_t cPlainLetter(wchar_t c) noexcept {
    struct STRange {
        wchar_t cFirst;
        std::wstring_view svPlain;
    };
    static constexpr STRange TAB_RANGE[] = {
        {0xA0, SV_LATIN_1}, {0x100, SV_LATIN_A}, {0x2010, SV_PUNCTUATION}};
    if (c < 0x80) {
        return c;
    }
    for (const STRange& rst : TAB_RANGE) {
        if (c >= rst.cFirst && c < rst.cFirst + static_cast<wchar_t>(rst.svPlain.size())) {
            return rst.svPlain[static_cast<std::size_t>(c - rst.cFirst)];
        }
    }
    return c == 0x20AC ? L'E' : L'?';  // The euro's sign.
}

}  // namespace kalmo
