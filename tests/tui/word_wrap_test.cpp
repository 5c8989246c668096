#include "tui/word_wrap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

namespace kalmo {
namespace {

using CLines = std::vector<std::wstring_view>;

struct STCase {
    const wchar_t* pszText;
    int nWidth;
    CLines tabExpected;
};

TEST(WordWrap, BreaksAtWords) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    const STCase TAB[] = {
        {L"", 10, {}},
        {L"word", 0, {}},
        {L"word", -2, {}},
        {L"two words", 9, {L"two words"}},
        {L"two words", 8, {L"two ", L"words"}},
        {L"two words", 4, {L"two ", L"word", L"s"}},
        {L"two words", 3, {L"two", L"wor", L"ds"}},
        {L"two   words", 5, {L"two", L"words"}},
        {L"exact fit next", 9, {L"exact fit", L"next"}},
        {L"  leading", 12, {L"  leading"}},
        {L"  leading", 8, {L"  ", L"leading"}},
        {L"trailing  ", 12, {L"trailing  "}},
        {L"trailing  ", 8, {L"trailing"}},
        {L"one\ntwo\r\nthree", 20, {L"one", L"two", L"three"}},
        {L"one\n\n\n  two", 20, {L"one", L"two"}},
        {L"\nafter", 20, {L"", L"after"}},
        {L"end\n", 20, {L"end"}},
        {L"a\tb c", 3, {L"a\tb", L"c"}},
        {L"日本語 x", 4, {L"日本", L"語 x"}},
        {L"日本", 1, {L"日", L"本"}},
    };
    for (const STCase& rst : TAB) {
        EXPECT_EQ(tabWrapWords(rst.pszText, rst.nWidth), rst.tabExpected)
            << testing::PrintToString(rst.pszText);
    }
}

TEST(WordWrap, CutsLinesHard) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    const STCase TAB[] = {
        {L"", 5, {}},
        {L"text", 0, {}},
        {L"some words", 5, {L"some ", L"words"}},
        {L"abcdefghijk", 5, {L"abcde", L"fghij", L"k"}},
        {L"abcde\nfghij", 5, {L"abcde", L"fghij"}},
        {L"abcde\r\nf", 5, {L"abcde", L"f"}},
        {L"a\n\nb\n", 5, {L"a", L"", L"b"}},
        {L"\n", 5, {L""}},
        {L"日本語", 5, {L"日本", L"語"}},
    };
    for (const STCase& rst : TAB) {
        EXPECT_EQ(tabCutLines(rst.pszText, rst.nWidth), rst.tabExpected)
            << testing::PrintToString(rst.pszText);
    }
}

}  // namespace
}  // namespace kalmo
