#include <gtest/gtest.h>

#include <clocale>
#include <limits>

#include "tui/toolkit/geometry.h"
#include "tui/toolkit/list.h"
#include "tui/toolkit/msg_box.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

class Toolkit : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(Toolkit, TheGaugeRunsFromZeroAndNeverLeavesItsFrame) {
    EXPECT_EQ(nGaugeBar(5, 10, 20, 20), 10);
    EXPECT_EQ(nGaugeBar(3, 0, 8, 20), 8);  // 7.5 cells
    EXPECT_EQ(nGaugeBar(-1, 0, 40, 20), 0);
    EXPECT_EQ(nGaugeBar(0, 0, 0, 20), 0);
    EXPECT_EQ(nGaugeBar(std::numeric_limits<double>::quiet_NaN(), 0, 1, 20), 0);
    EXPECT_EQ(nGaugeBar(1, 0, 1, -2), 0);
}

TEST_F(Toolkit, TextsAreMeasuredAndCutByColumns) {
    const struct {
        const wchar_t* psz;
        int nColumns;  // of the whole text
        int nSkip, nWidth;
        const wchar_t* pszVisible;
    } TAB[] = {
        {L"plain", 5, 1, 3, L"lai"},
        {L"plain", 5, 0, -3, L""},
        {L"日本語", 6, 0, 5, L"日本 "},
        {L"日本語", 6, 1, 4, L" 本 "},
        {L"e\x0301t", 2, 0, 1, L"e\x0301"},
        {L"か\x3099ᄒ\x1161\x11AB.", 5, 0, 4, L"か\x3099ᄒ\x1161\x11AB"},
        {L"か\x3099.", 3, 1, 2, L" ."},
        {L"\x0301t", 2, 0, 5, L"?t"},  // what finds no cell has one of its own
        {L"a\x301\x301\x301\x301\x301z", 3, 0, 2, L"a\x301\x301\x301\x301?"},
        {L"\xDC80\xDFFF", 2, 0, 20, L"??"},
        {L"a\tb\x1B[2J\x7F\x9B", 9, 0, 20, L"a?b?[2J??"},
        {L"\u202Exyz\u2066\u00AD\u061C\u200B\uFEFF\u2060\U000E0041", 11, 0, 20, L"?xyz???????"},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(nColumns(std::wstring_view(rst.psz)), rst.nColumns) << testing::PrintToString(rst.psz);
        EXPECT_EQ(csVisible(rst.psz, rst.nSkip, rst.nWidth), rst.pszVisible)
            << testing::PrintToString(rst.psz);
    }
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(csVisible(L"éÀñ «Łœ» – l’€…日", 0, 20),
              L"eAn \"Lo\" - l'E.?");  // what the locale does not have
}

TEST_F(Toolkit, TextsAreBrokenAtWordsOrCutHard) {
    using CLines = std::vector<std::wstring_view>;
    const struct {
        decltype(&tabWrapWords) pfnBreak;
        const wchar_t* pszText;
        int nWidth;
        CLines tabExpected;
    } TAB[] = {
        {tabWrapWords, L"word", -2, {}},
        {tabWrapWords, L"two words", 4, {L"two ", L"word", L"s"}},
        {tabWrapWords, L"two   words", 5, {L"two", L"words"}},
        {tabWrapWords, L"two\twords", 5, {L"two\t", L"words"}},
        {tabWrapWords, L"exact fit next", 9, {L"exact fit", L"next"}},
        {tabWrapWords, L"  leading", 8, {L"  ", L"leading"}},
        {tabWrapWords, L"one\r\n\n\n  two\n", 20, {L"one", L"two"}},
        {tabWrapWords, L"日本語 x", 4, {L"日本", L"語 x"}},
        {tabWrapWords, L"e\u0301e\u0301 x", 2, {L"e\u0301e\u0301", L"x"}},
        {tabCutLines, L"text", 0, {}},
        {tabCutLines, L"abcdefghijk", 5, {L"abcde", L"fghij", L"k"}},
        {tabCutLines, L"abcde\r\nf", 5, {L"abcde", L"f"}},
        {tabCutLines, L"日本語", 5, {L"日本", L"語"}},
        {tabCutLines, L"か\x3099か", 1, {L"か\x3099", L"か"}},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(rst.pfnBreak(rst.pszText, rst.nWidth), rst.tabExpected)
            << testing::PrintToString(rst.pszText) << ' ' << rst.nWidth;
    }
    // A word as long as the text is not measured again for every line.
    EXPECT_EQ(tabWrapWords(std::wstring(1'000'000, L'x'), 10).size(), 100'000U);
}

TEST_F(Toolkit, AListHoldsCopiesOfItsLines) {
    CWindow clWindow(0, 0, 40, 20);
    CList clList(&clWindow, 1, 1, 20, 7, 0);
    for (wchar_t szLine[] = L"line 0"; szLine[5] < L'5'; ++szLine[5]) {
        clList.AddLine(szLine);
    }
    EXPECT_FALSE(clList.bScrollable());
    clList.AddLine(nullptr);
    EXPECT_TRUE(clList.bScrollable() && clList[6] == nullptr && clList[-1] == nullptr);
    EXPECT_STREQ(clList[5], L"");
    for (const int nLine : {4, 6, -1}) {
        clList.Select(nLine);
        EXPECT_EQ(clList.nGetSelectedLine(), 4);
    }
}

TEST_F(Toolkit, WithoutAScreenTheLoopEndsAndABoxIsPrinted) {
    CWindow(0, 0, 40, 20).MainLoop();
    testing::internal::CaptureStderr();
    CMsgBox(0, 0, 60, 13, L"Ti\x1B[2Jtle", L"one\r\n\ttwo\x07\u009B\xDC9B", CMsgBox::eTYPE::OneButton).Show();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Ti?[2Jtle\none\n\ttwo???\n");
}

}  // namespace
}  // namespace kalmo
