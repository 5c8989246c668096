#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

struct MarkerTest : CStandInTest {
    /// The display name and the program in a script, "-" where it tells none.
    static std::wstring csTexts(const std::string& csScript) {
        Write("/etc/init.d/-", csScript);
        CService clService(nullptr, L"-");
        const std::wstring csName = clService.pszGetDisplayName();
        const wchar_t* const pszProgram = clService.pszBinaryPathName();
        return csName + L"|" + (pszProgram == nullptr ? L"-" : pszProgram);
    }
};

TEST_F(MarkerTest, InLinesOfAnyKind) {
    CServiceManager::ms_eDistri = eDebian;
    const struct {
        std::string csScript;
        std::wstring csTexts;
    } TAB[] = {
        {"", L"-|-"},
        {"#!/bin/sh\n  MyProgram=\"/opt/k -s\" # x\nProgram=\"other\"\n", L"-|/opt/k -s"},
        {"Name=\"\" Program=\"b\"\nName=\"c\"", L"|b"},
        {"name=\"x\"\nProgram = \"x\"\nProgram='x'\nName=x\n", L"-|-"},
        // Without a closing quote the line is the text, whatever ends it.
        {"Program=\"no end\r\nx\"\nName=\"no end\n\"\n", L"no end|no end"},
        {"Name=\"no\rend \t\nProgram=\"", L"no\rend \t|"},
        // Wide characters, and bytes that are none.
        {"Name=\"\xC3\x89t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\"\nProgram=\"/\xE2\x82\xAC/k\"",
         L"\u00C9t\u00E9 \u20AC \U0001F600|/\u20AC/k"},
        {"Program=\"\xFF\"\nName=\"\xC3\n", L"\xDCC3|\xDCFF"},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(csTexts(rst.csScript), rst.csTexts) << rst.csScript;
    }
}

// Lines of 250 bytes for the name and of 150 for the program: a longer line counts as several.
TEST_F(MarkerTest, AtAndBeyondTheLongestLine) {
    CServiceManager::ms_eDistri = eDebian;
    const std::string csEuro = "\xE2\x82\xAC";
    for (const auto& [csMarker, nMax] : {std::pair{std::string("Name=\""), 250}, {"Program=\"", 150}}) {
        const int nMarker = static_cast<int>(csMarker.size());
        const struct {
            int nValue;  ///< where the marker ends, counted from the limit
            std::string csRest;
            std::wstring csText;
        } TAB[] = {
            // The closing quote is the last byte of the line, the one behind it, or behind the line feed.
            {-4, "abc\"\n", L"abc"},
            {-3, "abc\"\n", L"abc"},
            {-3, "abc\n\"\n", L"abc"},
            {-2, "abc\n", L"ab"},
            {0, "\"\n", L""},
            // A character that the limit splits leaves its first bytes.
            {-3, csEuro + "\n", L"\u20AC"},
            {-2, csEuro + "\"\n", L"\xDCE2\xDC82"},
            {-1, csEuro + "\"\n" + csMarker + "later\"\n", L"\xDCE2"},
            // The marker split by it, then whole behind it.
            {1, "abc\"\n", L"-"},
            {nMarker - 1, "abc\"\n" + csMarker + "x\"\n", L"x"},
            {nMarker, "abc\"\n", L"abc"},
            {9 * nMax + nMarker, "abc\"", L"abc"},
        };
        for (const auto& rst : TAB) {
            const std::string csFill(static_cast<std::size_t>(nMax - nMarker + rst.nValue), '#');
            const std::wstring cs = csTexts(csFill + csMarker + rst.csRest);
            const std::size_t nBar = cs.find(L'|');
            EXPECT_EQ(nMax == 250 ? cs.substr(0, nBar) : cs.substr(nBar + 1), rst.csText)
                << rst.nValue << rst.csRest;
        }
    }
}

}  // namespace
}  // namespace kalmo
