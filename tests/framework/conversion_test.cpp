#include "framework/conversion.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace kalmo {
namespace {

TEST(Conversion, Utf8IsReadStrictlyAndNothingIsLost) {
    const std::pair<std::string, std::wstring> tabCase[] = {
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", L"\u00E9\u20AC\U0001F600"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        {"a\xFFz", L"a\xDCFFz"},                            // no lead byte
        {"\xE0\x80\xAF", L"\xDCE0\xDC80\xDCAF"},            // overlong "/"
        {"\xF4\x90\x80\x80", L"\xDCF4\xDC90\xDC80\xDC80"},  // above U+10FFFF
    };
    for (const auto& [csBytes, csWide] : tabCase) {
        EXPECT_EQ(csFromUTF8(csBytes).svGet(), csWide);
        EXPECT_EQ(csToUTF8(csWide).svGet(), csBytes);
    }
    EXPECT_EQ(csToUTF8(L"\xD800x\x7FFFFFFF").svGet(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

TEST(Conversion, Utf16JoinsAndSplitsSurrogates) {
    EXPECT_EQ(csFromUTF16(u"a\u20AC\U0001F600").svGet(), L"a\u20AC\U0001F600");
    EXPECT_EQ(csToUTF16(L"a\u20AC\U0001F600"), u"a\u20AC\U0001F600");
    const char16_t tabBroken[] = {0xDC00, 0xD800, u'x', 0xD800};
    EXPECT_EQ(csFromUTF16({tabBroken, 4}).svGet(), L"\uFFFD\uFFFDx\uFFFD");
}

TEST(Conversion, CodePages) {
    EXPECT_EQ(csFromCodePage(eCODEPAGE::OEM, "A\x82\xE1\xFF").svGet(), L"A\u00E9\u00DF\u00A0");
    EXPECT_EQ(csFromCodePage(eCODEPAGE::Ansi1252, "A\x80\x81\xE9").svGet(), L"A\u20AC\x81\u00E9");
}

TEST(XYString, CopiesShareUntilOneChanges) {
    CTString csFirst(L"abc");
    CTString csSecond = csFirst;
    EXPECT_EQ(csFirst.pszGet(), csSecond.pszGet());
    csSecond += L'd';
    csSecond.Replace(L'b', L"bb");
    EXPECT_EQ(csFirst.svGet(), L"abc");
    EXPECT_EQ(csSecond.svGet(), L"abbcd");
}

}  // namespace
}  // namespace kalmo
