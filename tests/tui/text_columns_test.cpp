#include "tui/text_columns.h"

#include <gtest/gtest.h>

#include <clocale>

namespace kalmo {
namespace {

class TextColumns : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(TextColumns, CountsAndCuts) {
    const struct {
        const wchar_t* psz;
        int nColumns;  // of the whole text
        int nSkip, nWidth;
        const wchar_t* pszVisible;
    } TAB[] = {
        {L"plain", 5, 0, 9, L"plain"},
        {L"plain", 5, 1, 3, L"lai"},
        {L"plain", 5, 7, 3, L""},
        {L"plain", 5, 0, 0, L""},
        {L"plain", 5, 0, -3, L""},
        {L"日本語", 6, 0, 6, L"日本語"},
        {L"日本語", 6, 0, 5, L"日本 "},
        {L"日本語", 6, 1, 4, L" 本 "},
        {L"日本語", 6, 1, 1, L" "},
        {L"e\x0301t", 2, 0, 1, L"e\x0301"},
        {L"e\x0301t", 2, 1, 1, L"t"},
        {L"\x0301t", 1, 0, 5, L"t"},
        {L"日\x0301t", 3, 1, 5, L" t"},
        {L"a\tb\x1B[2J\x7F\x9B", 9, 0, 20, L"a?b?[2J??"},
        {L"\xDC80\xDFFF", 2, 0, 20, L"??"},
        {L"\x202E"
         L"abc\x2066",
         5, 0, 20, L"?abc?"},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(nColumns(std::wstring_view(rst.psz)), rst.nColumns) << testing::PrintToString(rst.psz);
        EXPECT_EQ(csVisible(rst.psz, rst.nSkip, rst.nWidth), rst.pszVisible)
            << testing::PrintToString(rst.psz);
    }
    EXPECT_EQ(nFitting(L"日本語", 5), 2U);
    EXPECT_EQ(nFitting(L"te\x0301t", 2), 3U);
    EXPECT_EQ(nFitting(L"日", 1), 0U);
}

TEST_F(TextColumns, ShowsOnlyWhatTheLocaleHas) {
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(csVisible(L"é日", 0, 9), L"??");
    EXPECT_EQ(nColumns(std::wstring_view(L"é日")), 2);
}

}  // namespace
}  // namespace kalmo
