#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <tuple>
#include <vector>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/resource.h"

using namespace std::string_literals;

extern "C" void* DLLRES_pLoadResourceModule(const kalmo::_stMyModuleInfo*, void*, unsigned, const wchar_t*);

// Found by the dynamic loader: the test program exports its symbols.
void* DLLRES_pLoadResourceModule(const kalmo::_stMyModuleInfo* pstModule, void* /*hInstance*/, unsigned unId,
                                 const wchar_t* pszType) {
    static int nFound = 0;
    return pstModule != nullptr && unId == 12 && pszType == L"ICON"s ? &nFound : nullptr;
}

namespace kalmo {
namespace {

TEST(Conversion, NothingIsLost) {
    const std::pair<std::string, std::wstring> tabCase[] = {
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", L"\u00E9\u20AC\U0001F600"},
        {"a\0b"s, L"a\0b"s},
        {"a\xFFz", L"a\xDCFFz"},                            // no lead byte
        {"\xE0\x80\xAF", L"\xDCE0\xDC80\xDCAF"},            // overlong "/"
        {"\xF4\x90\x80\x80", L"\xDCF4\xDC90\xDC80\xDC80"},  // above U+10FFFF
    };
    for (const auto& [csBytes, csWide] : tabCase) {
        EXPECT_EQ(csFromUTF8(csBytes).svGet(), csWide);
        EXPECT_EQ(csToUTF8(csWide).svGet(), csBytes);
    }
    EXPECT_EQ(csToUTF8(L"\xD800x\x7FFFFFFF").svGet(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
    EXPECT_EQ(csFromUTF16(u"a\u20AC\U0001F600").svGet(), L"a\u20AC\U0001F600");
    EXPECT_EQ(csToUTF16(L"a\u20AC\U0001F600"), u"a\u20AC\U0001F600");
    const char16_t tabBroken[] = {0xDC00, 0xD800, u'x', 0xD800};
    EXPECT_EQ(csFromUTF16({tabBroken, 4}).svGet(), L"\uFFFD\uFFFDx\uFFFD");
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

TEST(FormatMessage, BuildsTheMessage) {
    const void* const pAddress = reinterpret_cast<const void*>(std::uintptr_t{0xBEEF});
    const std::tuple<std::wstring, std::vector<CFormatArg>, std::wstring> tabCase[] = {
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
    for (const auto& [csTemplate, tabArg, csExpected] : tabCase) {
        CTString cs(L"before");
        EXPECT_TRUE(bFormatMessage(csTemplate, tabArg, &cs)) << csToUTF8(csTemplate).svGet();
        EXPECT_EQ(cs.svGet(), csExpected);
    }
}

TEST(FormatMessage, FailsRatherThanGuess) {
    const std::pair<std::vector<CFormatArg>, std::vector<const wchar_t*>> tabCase[] = {
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
    for (const auto& [tabArg, tabTemplate] : tabCase) {
        for (const wchar_t* const psz : tabTemplate) {
            CTString cs(L"before");
            EXPECT_FALSE(bFormatMessage(psz, tabArg, &cs)) << csToUTF8(psz).svGet();
            EXPECT_EQ(cs.svGet(), L"before");
        }
    }
}

/// A text, or "untouched" where there is none.
std::wstring csLoad(unsigned unId, int nLangue = 0) {
    CTString cs(L"untouched");
    const bool bLoaded = DLLRES_bLoadString(&gstMyModuleInfo604, unId, &cs, nLangue);
    EXPECT_EQ(bLoaded, cs != L"untouched") << unId;
    return std::wstring(cs.svGet());
}

TEST(Resource, LanguageChoosesTheBlock) {
    EXPECT_EQ(std::string(g_tabBlock_US.begin(), g_tabBlock_US.begin() + 36),
              "\x24\0\x01\x01\0\x1D\0TALVOR RES BLOC UTF16 START \0"s);
    for (const unsigned un : {0U, 257U, 797U, 28866U, 65536U + 4146U, ~0U}) {
        EXPECT_EQ(csLoad(un), L"untouched") << un;
    }
    EXPECT_EQ(csLoad(4151, LANGUE_FRANCAIS), L"Annuler");
    EXPECT_EQ(csLoad(4164, LANGUE_FRANCAIS), L"Erreur syst\u00E8me %1!u! : %2");  // in 2-byte units
    EXPECT_EQ(csLoad(4151, 0x40C), L"Cancel");
    CInformationModule::ms_nLangueFramework = LANGUE_ESPAGNOL;
    EXPECT_EQ(csLoad(4151), L"Anular");
    int nOther = LANGUE_FRANCAIS;
    CInformationModule::ms_pnLangueFramework = &nOther;
    EXPECT_EQ(csLoad(4151), L"Annuler");
    CInformationModule::ms_pnLangueFramework = &CInformationModule::ms_nLangueFramework;
    CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
    EXPECT_EQ(nChoisitLangue(nullptr, "es", "fr"), 10);
    EXPECT_EQ(nChoisitLangue("en", "fr", "fr"), 9);
    EXPECT_EQ(nChoisitLangue("", "", "fr_FR.UTF-8"), 12);
}

TEST(Resource, FormatsOrLeavesTheOutputAlone) {
    static constexpr unsigned char byStored = 'a';
    const _stMyModuleInfo stEncoded{[](STRessourceModule* pst) {
        pst->pbyText = &byStored;
        pst->unLength = pst->nUnit = pst->nMode = 1;
        return true;
    }};
    CTString cs(L"untouched");
    EXPECT_FALSE(DLLRES_bLoadString(&stEncoded, 5, &cs)) << "encoded";
    EXPECT_FALSE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 257, &cs));
    EXPECT_FALSE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 0x10C7, &cs)) << "without its argument";
    EXPECT_EQ(cs.svGet(), L"untouched");
    EXPECT_TRUE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 0x10C7, &cs, L"name"));
    EXPECT_EQ(cs.svGet(), L"- name");
    wchar_t* psz = nullptr;
    EXPECT_EQ(DLLRES_nFormatMessage(&gstMyModuleInfo604, 0x10C7, &psz, L"name"), 6);
    EXPECT_STREQ(psz, L"- name");
    LocalFree(psz);
}

// 1 two forms; 2 a long text; 3 and 4146 a language; of others nothing.
int nOverride(unsigned unId, wchar_t* pszBuffer, int nSize, int nLangue) {
    const std::wstring csText = unId == 1   ? L"%1!d! file%n\n%1!d! files"
                                : unId == 2 ? std::wstring(70000, L'x')
                                            : std::to_wstring(nLangue);
    const auto nLength = csText.copy(pszBuffer, static_cast<std::size_t>(nSize) - 1);
    pszBuffer[nLength] = L'\0';
    return unId < 4 || unId == 4146 ? static_cast<int>(nLength) : -1;
}

TEST(Resource, OverrideIsAskedFirst) {
    DLLRES_SetLoadStringTVM(&nOverride);
    CInformationModule::ms_nLangueFramework = LANGUE_FRANCAIS;
    EXPECT_EQ(csLoad(3), L"12");
    EXPECT_EQ(csLoad(4146), L"12");
    EXPECT_EQ(csLoad(2).size(), 65535U);
    EXPECT_EQ(csLoad(4151), L"Annuler");
    CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
    // Singular and plural are lines of one text.
    for (const auto& [nForm, nCount, pszText] :
         {std::tuple{0, 1, L"1 file\r\n"}, {1, 7, L"7 files"}, {2, 7, L"untouched"}}) {
        CTString cs(L"untouched");
        EXPECT_EQ(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, nForm, 1, &cs, nCount),
                  nForm < 2);
        EXPECT_EQ(cs.svGet(), pszText);
    }
    DLLRES_Term();
    EXPECT_EQ(csLoad(3), L"untouched");
}

TEST(Resource, OtherModulesDriveIt) {
    wchar_t szBuffer[9] = L"########";
    STRequeteComposante stRequest{.unNumber = 4151, .pszBuffer = szBuffer};
    for (const auto& [nSize, pszCut] : {std::pair{6, L"Cance"}, {7, L"Cancel"}, {9, L"Cancel"}}) {
        stRequest.nSize = nSize;
        EXPECT_EQ(CommandeComposante(3, &stRequest), 1);
        EXPECT_STREQ(szBuffer, pszCut);
        EXPECT_EQ(stRequest.nLength, std::min(nSize - 1, 6));
    }
    EXPECT_EQ(CommandeComposante(4, &stRequest), 1);
    stRequest.unNumber = 257;
    for (const int nCommand : {1, 3, 4}) {
        EXPECT_EQ(CommandeComposante(nCommand, &stRequest), 0);
    }
    stRequest.pfnLoadString = &nOverride;
    EXPECT_EQ(CommandeComposante(2, &stRequest), 1);
    EXPECT_EQ(csLoad(3, 77), L"77");
    DLLRES_Term();

    static int nSeenCommand = 0;
    EXPECT_TRUE(DLLRES_bForceInitRessource([](int nCommand, auto*) { return (nSeenCommand = nCommand), 0; }));
    EXPECT_EQ(nSeenCommand, 3);
    EXPECT_NE(DLLRES_pLoadResource(&gstMyModuleInfo604, nullptr, 12, L"ICON"), nullptr);
}

}  // namespace
}  // namespace kalmo
