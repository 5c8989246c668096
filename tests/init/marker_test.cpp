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

std::string csFill(std::size_t n) {
    return std::string(n, '#');
}

TEST_F(MarkerTest, InLinesOfAnyKind) {
    CServiceManager::ms_eDistri = eDebian;
    const struct {
        std::string csScript;
        std::wstring csTexts;
    } TAB[] = {
        {"", L"-|-"},
        {"#!/bin/sh\n  MyProgram=\"/opt/k -s\" # x\nProgram=\"other\"\n", L"-|/opt/k -s"},
        {"Name=\"a\" Program=\"b\"\nName=\"c\"", L"a|b"},
        {"Name=\"\"\nName=\"x\"\nProgram=\"\"\nProgram=\"x\"\n", L"|"},
        {"name=\"x\"\nProgram = \"x\"\nProgram='x'\nName=x\n", L"-|-"},
        // Without a closing quote the line is the text, whatever ends it.
        {"Program=\"no end\r\nx\"\nName=\"no end\n\"\n", L"no end|no end"},
        {"Name=\"no\rend \t\nProgram=\"", L"no\rend \t|"},
        // Wide characters, and bytes that are none.
        {"Name=\"\xC3\x89t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\"\nProgram=\"/\xE2\x82\xAC/k\"",
         L"\u00C9t\u00E9 \u20AC \U0001F600|/\u20AC/k"},
        {"Program=\"h\xC3\xA9\xE2\x82\xAC\xFF\"\nName=\"\xC3\n", L"\xDCC3|h\u00E9\u20AC\xDCFF"},
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(csTexts(rst.csScript), rst.csTexts) << rst.csScript;
    }
}

// Lines of 250 bytes for the name and of 150 for the program: what holds for the one holds for the other, and
// a longer line counts as several.
TEST_F(MarkerTest, AtAndBeyondTheLongestLine) {
    CServiceManager::ms_eDistri = eDebian;
    const std::string csEuro = "\xE2\x82\xAC";
    for (const std::string csMarker : {"Name=\"", "Program=\""}) {
        const bool bName = csMarker[0] == 'N';
        const std::size_t nMax = bName ? 250 : 150;
        const auto csText = [&](const std::string& csScript) {
            const std::wstring cs = csTexts(csScript);
            return bName ? cs.substr(0, cs.find(L'|')) : cs.substr(cs.find(L'|') + 1);
        };
        // A line that begins its value at that byte, counted from the limit.
        const auto csLine = [&](int nValue, const std::string& csRest) {
            return csFill(static_cast<std::size_t>(static_cast<int>(nMax - csMarker.size()) + nValue)) +
                   csMarker + csRest;
        };
        const struct {
            std::string csScript;
            std::wstring csText;
        } TAB[] = {
            // The closing quote is the last byte of the line, the one behind it, or behind the line feed.
            {csLine(-4, "abc\"\n"), L"abc"},
            {csLine(-4, "abc\" or more\n"), L"abc"},
            {csLine(-3, "abc\"\n"), L"-"},
            {csLine(-3, "abc\n\"\n"), L"abc"},
            {csLine(-3, "abc"), L"abc"},
            {csLine(-2, "abc\n"), L"-"},
            {csLine(-1, "\"\n"), L""},
            {csLine(0, "\"\n"), L"-"},
            {csLine(0, "\n"), L""},
            // A character that the limit splits is neither half a text nor in the way of the next line.
            {csLine(-3, csEuro + "\n"), L"\u20AC"},
            {csLine(-4, csEuro + "\"\n"), L"\u20AC"},
            {csLine(-2, csEuro + "\"\n"), L"-"},
            {csLine(-1, csEuro + "\"\n" + csMarker + "later\"\n"), L"-"},
            {csFill(nMax - 1) + csEuro + "\n" + csMarker + "next\"\n", L"next"},
            {csFill(nMax - 2) + csEuro + csMarker + "on\"\n", L"on"},
            // The marker split by it, at each of its bytes, then whole behind it.
            {csLine(1, "abc\"\n"), L"-"},
            {csLine(3, "abc\"\n"), L"-"},
            {csLine(static_cast<int>(csMarker.size()) - 1, "abc\"\n" + csMarker + "x\"\n"), L"x"},
            {csLine(static_cast<int>(csMarker.size()), "abc\"\n"), L"abc"},
            {csFill(10 * nMax) + csMarker + "abc\"", L"abc"},
            {csFill(nMax) + "\n" + csMarker + "abc\"", L"abc"},
        };
        for (const auto& rst : TAB) {
            EXPECT_EQ(csText(rst.csScript), rst.csText) << rst.csScript;
        }
    }
    // The two limits are two: one line that is whole for the name is cut for the program.
    EXPECT_EQ(csTexts(csFill(145) + "Program=\"p\" Name=\"n\"\n"), L"n|-");
    EXPECT_EQ(csTexts("Program=\"" + csFill(141) + "\" Name=\"n\"\n"), L"n|-");
}

}  // namespace
}  // namespace kalmo
