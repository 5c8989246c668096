#include "framework/format_message.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "framework/conversion.h"

namespace kalmo {
namespace {

TEST(FormatMessage, BuildsTheMessage) {
    const void* const pAddress = reinterpret_cast<const void*>(std::uintptr_t{0xBEEF});
    const struct {
        std::wstring csTemplate;
        std::vector<CFormatArg> tabArg;
        std::wstring csExpected;
    } tabCase[] = {
        {L"%2 before %1, %1 again", {L"one", L"two"}, L"two before one, one again"},
        {L"%%1 %. %! % |%n%r%t|", {}, L"%1 . !  |\r\n\r\t|"},
        {L"kept%0lost %1", {}, L"kept"},
        {L"%1!s!%1!S!%1!hs!%1!ls!%1!ws!", {"\u20AC"}, L"\u20AC\u20AC\u20AC\u20AC\u20AC"},
        // Two digits at most belong to the number of an insert.
        {L"%99 %100", std::vector<CFormatArg>(99, L"x"), L"x x0"},
        {L"%1", {static_cast<const wchar_t*>(nullptr)}, L"(null)"},
        // Padding and precision count characters.
        {L"[%1!5s!] [%1!-5s!] [%1!.2s!] [%1!5.1s!] [%1!.s!]",
         {L"\U0001F600bc"},
         L"[  \U0001F600bc] [\U0001F600bc  ] [\U0001F600b] [    \U0001F600] []"},
        {L"[%1!+06d!] [%1! d!] [%1!-6d!] [%1!.4d!]", {42}, L"[+00042] [ 42] [42    ] [0042]"},
        {L"[%1!6.3d!] [%1!u!] [%1!x!]", {-42}, L"[  -042] [4294967254] [ffffffd6]"},
        {L"%1!d! %2!lld! %3!I64u! %4!hu! %5!hhd!",
         {INT_MIN, INT64_MIN, UINT64_MAX, 65537, 255},
         L"-2147483648 -9223372036854775808 18446744073709551615 1 -1"},
        {L"%1!#X! %1!#o! %1!#010x! %2!#x! [%2!.0d!]", {0xabc, 0}, L"0XABC 05274 0x00000abc 0 []"},
        {L"%1!c!%2!C! [%1!3c!]", {0x20AC, 'A'}, L"\u20ACA [  \u20AC]"},
        {L"[%1!8p!]", {pAddress}, L"[  0xbeef]"},
        // A star takes its number from the list, and the inserts go on behind it.
        {L"[%1!*d!] [%1!-*.*d!] [%3!*s!]", {5, 3, -4, L"ab"}, L"[    3] [-004 ] [ab  ]"},
    };
    for (const auto& rst : tabCase) {
        CTString cs(L"before");
        EXPECT_TRUE(bFormatMessage(rst.csTemplate, rst.tabArg, &cs)) << csToUTF8(rst.csTemplate).svGet();
        EXPECT_EQ(cs.svGet(), rst.csExpected);
    }
}

TEST(FormatMessage, FailsRatherThanGuess) {
    const struct {
        std::vector<CFormatArg> tabArg;
        std::vector<const wchar_t*> tabTemplate;
    } tabCase[] = {
        // Behind the end of the list.
        {{L"a", L"b"}, {L"%1 %3"}},
        {{1, 2}, {L"%2!*d!", L"%1!*.*d!"}},
        // Malformed, or a flag without a meaning.
        {{L"a"}, {L"%", L"%s", L"%1!s", L"%1!!", L"%1!ss!", L"%1!n!", L"%1!05s!"}},
        {{65}, {L"%1!f!", L"%1!1.2.3d!", L"%1!.-1d!", L"%1!#d!"}},
        // Another kind of argument, or a character that is none or would end the text.
        {{1, 0, 0xD800}, {L"%1", L"%1!p!", L"%2!c!", L"%3!c!"}},
        {{L"5", 1}, {L"%1!d!", L"%1!*d!"}},
        // More than anybody needs.
        {{1}, {L"%1!1025d!", L"%1!99999999999999999999d!"}},
        {{INT64_MIN, 1}, {L"%1!*d!"}},
    };
    for (const auto& rst : tabCase) {
        for (const wchar_t* const psz : rst.tabTemplate) {
            CTString cs(L"before");
            EXPECT_FALSE(bFormatMessage(psz, rst.tabArg, &cs)) << csToUTF8(psz).svGet();
            EXPECT_EQ(cs.svGet(), L"before");
        }
    }
}

}  // namespace
}  // namespace kalmo
