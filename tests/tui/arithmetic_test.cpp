#include <gtest/gtest.h>

#include <clocale>
#include <limits>

#include "tui/geometry.h"
#include "tui/text_columns.h"
#include "tui/word_wrap.h"

namespace kalmo {
namespace {

class Arithmetic : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(Arithmetic, DialogsShrinkWithTheScreenAndAreCentred) {
    const struct {
        int nPreferred, nScreen, nSize, nStart;
    } TAB[] = {{60, 64, 60, 2}, {60, 63, 59, 2}, {20, 5, 1, 2}, {20, 1, 1, 0}};
    for (const auto& rst : TAB) {
        const int nSize = nDialogSize(rst.nPreferred, rst.nScreen);
        EXPECT_EQ(nSize, rst.nSize) << rst.nScreen;
        EXPECT_EQ(nCentred(nSize, rst.nScreen), rst.nStart) << rst.nScreen;
    }
    EXPECT_EQ(nCentred(30, 20), 0);
}

TEST_F(Arithmetic, AnEntryScrollsOnlyAsFarAsTheCursorNeeds) {
    const struct {
        int nOffset, nCursor, nTotal, nVisible, nWithFocus, nWithout;
    } TAB[] = {
        {0, 9, 9, 10, 0, 0},    // fits with its cursor
        {0, 10, 10, 10, 1, 0},  // fits without
        {1, 9, 10, 10, 0, 0},   // a cursor on the text needs no room behind it
        {0, 15, 15, 10, 6, 6},  // follows the cursor
        {6, 6, 15, 10, 6, 6},   // stays while the cursor is in view
        {6, 5, 15, 10, 5, 5},   // goes back with it
        {6, 11, 12, 10, 3, 3},  // no empty room behind a text that shrank
        {0, 4, 9, 1, 4, 4},     // next to no room
        {3, 2, 9, 0, 3, 3},     // none
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(nEntryOffset(rst.nOffset, rst.nCursor, rst.nTotal, rst.nVisible, true), rst.nWithFocus)
            << rst.nOffset << ' ' << rst.nCursor;
        EXPECT_EQ(nEntryOffset(rst.nOffset, rst.nCursor, rst.nTotal, rst.nVisible, false), rst.nWithout)
            << rst.nOffset << ' ' << rst.nCursor;
    }
}

TEST_F(Arithmetic, TheGaugeRunsFromZero) {
    const double dNone = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double dValue, dMinimum, dMaximum;
        int nExpected;
    } TAB[] = {{15, 0, 40, 8},  {14, 0, 40, 7}, {50, 0, 40, 20}, {-1, 0, 40, 0},
               {5, 10, 20, 10}, {1, 1, 1, 20},  {0, 0, 0, 0},    {dNone, 0, 1, 0}};
    for (const auto& rst : TAB) {
        EXPECT_EQ(nGaugeBar(rst.dValue, rst.dMinimum, rst.dMaximum, 20), rst.nExpected) << rst.dValue;
    }
    EXPECT_EQ(nGaugeBar(1, 0, 1, -2), 0);
}

TEST_F(Arithmetic, ListsBringTheSelectionIntoView) {
    const struct {
        int nFirst, nSelected, nToSelect, nToFollow;
    } TAB[] = {{0, 4, 0, 0}, {0, 5, 5, 1}, {0, 11, 7, 7}, {4, 3, 3, 3}, {4, 8, 4, 4}, {7, 0, 0, 0}};
    for (const auto& rst : TAB) {
        EXPECT_EQ(nFirstToSelect(rst.nFirst, rst.nSelected, 12, 5), rst.nToSelect) << rst.nSelected;
        EXPECT_EQ(nFirstToFollow(rst.nFirst, rst.nSelected, 5), rst.nToFollow) << rst.nSelected;
    }
    EXPECT_EQ(nThumbRow(6, 12, 5), 3);
    EXPECT_EQ(nThumbRow(7, 12, 5), 4);
    EXPECT_EQ(nThumbRow(1'999'999'990, 2'000'000'000, 10), 9);
    EXPECT_EQ(nThumbColumn(7, 17, 12), 4);
}

TEST_F(Arithmetic, TextsAreMeasuredAndCutByColumns) {
    const struct {
        const wchar_t* psz;
        int nColumns;  // of the whole text
        int nSkip, nWidth;
        const wchar_t* pszVisible;
    } TAB[] = {
        {L"plain", 5, 1, 3, L"lai"},
        {L"plain", 5, 7, 3, L""},
        {L"plain", 5, 0, -3, L""},
        {L"日本語", 6, 0, 5, L"日本 "},
        {L"日本語", 6, 1, 4, L" 本 "},
        {L"日本語", 6, 1, 1, L" "},
        {L"e\x0301t", 2, 0, 1, L"e\x0301"},
        {L"\x0301t", 1, 0, 5, L"t"},
        {L"日\x0301t", 3, 1, 5, L" t"},
        {L"\xDC80\xDFFF", 2, 0, 20, L"??"},
        {L"a\tb\x1B[2J\x7F\x9B", 9, 0, 20, L"a?b?[2J??"},
        {L"\u202Exyz\u2066\u00AD\u061C\u200B\uFEFF", 9, 0, 20, L"?xyz?????"},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(nColumns(std::wstring_view(rst.psz)), rst.nColumns) << testing::PrintToString(rst.psz);
        EXPECT_EQ(csVisible(rst.psz, rst.nSkip, rst.nWidth), rst.pszVisible)
            << testing::PrintToString(rst.psz);
    }
    EXPECT_EQ(nFitting(L"日本語", 5), 2U);
    EXPECT_EQ(nFitting(L"te\x0301t", 2), 3U);
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(csVisible(L"é日", 0, 9), L"??");  // what the locale does not have
}

TEST_F(Arithmetic, TextsAreBrokenAtWordsOrCutHard) {
    using CLines = std::vector<std::wstring_view>;
    const struct {
        decltype(&tabWrapWords) pfnBreak;
        const wchar_t* pszText;
        int nWidth;
        CLines tabExpected;
    } TAB[] = {
        {tabWrapWords, L"word", -2, {}},
        {tabWrapWords, L"two words", 9, {L"two words"}},
        {tabWrapWords, L"two words", 4, {L"two ", L"word", L"s"}},
        {tabWrapWords, L"two   words", 5, {L"two", L"words"}},
        {tabWrapWords, L"exact fit next", 9, {L"exact fit", L"next"}},
        {tabWrapWords, L"  leading", 8, {L"  ", L"leading"}},
        {tabWrapWords, L"trailing  ", 8, {L"trailing"}},
        {tabWrapWords, L"one\r\n\n\n  two\n", 20, {L"one", L"two"}},
        {tabWrapWords, L"\nafter", 20, {L"", L"after"}},
        {tabWrapWords, L"a\tb c", 3, {L"a\tb", L"c"}},
        {tabWrapWords, L"日本語 x", 4, {L"日本", L"語 x"}},
        {tabWrapWords, L"e\u0301e\u0301 x", 2, {L"e\u0301e\u0301", L"x"}},
        {tabCutLines, L"text", 0, {}},
        {tabCutLines, L"abcdefghijk", 5, {L"abcde", L"fghij", L"k"}},
        {tabCutLines, L"abcde\r\nf", 5, {L"abcde", L"f"}},
        {tabCutLines, L"a\n\nb\n", 5, {L"a", L"", L"b"}},
        {tabCutLines, L"日本語", 5, {L"日本", L"語"}},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(rst.pfnBreak(rst.pszText, rst.nWidth), rst.tabExpected)
            << testing::PrintToString(rst.pszText) << ' ' << rst.nWidth;
    }
    // A word as long as the text is not measured again for every line.
    EXPECT_EQ(tabWrapWords(std::wstring(1'000'000, L'x'), 10).size(), 100'000U);
}

}  // namespace
}  // namespace kalmo
