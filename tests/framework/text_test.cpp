#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <map>
#include <sstream>
#include <tuple>
#include <vector>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/memory_stream.h"
#include "framework/text_number.h"
#include "framework/x_error.h"

using namespace std::string_literals;

// Found by the dynamic loader: the test program exports its symbols.
extern "C" const wchar_t* DLLRES_pLoadResourceModule(const void*, void*, unsigned unId,
                                                     const wchar_t* pszType) {
    return unId == 12 ? pszType : nullptr;
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
    // And a string may be put into itself.
    CTString csOwn(L"a.b.c");
    csOwn += csOwn.svGet().substr(1);
    csOwn += csOwn;
    csOwn.Insert(1, csOwn.svGet().substr(0, 2));
    csOwn.Replace(L'.', L"::");
    csOwn.Remove(2, 3);
    EXPECT_EQ(csOwn, L"aa:b::c::b::ca::b::c::b::c");
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

// A text, or "untouched" where there is none.
std::wstring csLoad(unsigned unId, int nLangue = 0) {
    CTString cs(L"untouched");
    const bool bLoaded = DLLRES_bLoadString(&gstMyModuleInfo604, unId, &cs, nLangue);
    EXPECT_EQ(bLoaded, cs != L"untouched") << unId;
    return std::wstring(cs.svGet());
}

TEST(Resource, LanguageChoosesTheBlock) {
    EXPECT_EQ(std::string(g_tabBlock_US.begin(), g_tabBlock_US.begin() + 36),
              "\x24\0\x01\x01\0\x1D\0TALVOR RES BLOC UTF16 START \0"s);
    for (const unsigned un : {0U, 257U, 797U, 28866U, 65536U + TEXTE_OK, ~0U}) {
        EXPECT_EQ(csLoad(un), L"untouched") << un;
    }
    EXPECT_EQ(csLoad(TEXTE_ANNULER, LANGUE_FRANCAIS), L"Annuler");
    EXPECT_EQ(csLoad(TEXTE_ERREUR_SYSTEME, LANGUE_FRANCAIS),
              L"Erreur syst\u00E8me %1!u! : %2");  // in 2-byte units
    EXPECT_EQ(csLoad(TEXTE_ANNULER, 0x40C), L"Cancel");
    CInformationModule::ms_nLangueFramework = LANGUE_ESPAGNOL;
    EXPECT_EQ(csLoad(TEXTE_ANNULER), L"Anular");
    int nOther = LANGUE_FRANCAIS;
    CInformationModule::ms_pnLangueFramework = &nOther;
    EXPECT_EQ(csLoad(TEXTE_ANNULER), L"Annuler");
    CInformationModule::ms_pnLangueFramework = &CInformationModule::ms_nLangueFramework;
    CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
    EXPECT_EQ(nChoisitLangue(nullptr, "es", "fr"), 10);
    EXPECT_EQ(nChoisitLangue("en", "fr", "fr"), 9);
    EXPECT_EQ(nChoisitLangue("", "", "fr_FR.UTF-8"), 12);
}

// 1 two forms; 2 a long text; 3 and TEXTE_OK a language; of others nothing.
int nOverride(unsigned unId, wchar_t* pszBuffer, int nSize, int nLangue) {
    const std::wstring csText = unId == 1   ? L"%1!d! file%n\n%1!d! files"
                                : unId == 2 ? std::wstring(70000, L'x')
                                            : std::to_wstring(nLangue);
    const auto nLength = csText.copy(pszBuffer, static_cast<std::size_t>(nSize) - 1);
    pszBuffer[nLength] = L'\0';
    return unId < 4 || unId == TEXTE_OK ? static_cast<int>(nLength) : -1;
}

TEST(Resource, FormatsOrLeavesTheOutputAlone) {
    static constexpr unsigned char STORED = 'a';
    const _stMyModuleInfo stEncoded{[](STRessourceModule* pst) {
        pst->pbyText = &STORED;
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
    // An override is asked first; other modules drive the texts by numbers.
    wchar_t szBuffer[7] = L"######";
    STRequeteComposante stRequest{.unNumber = TEXTE_ANNULER, .pszBuffer = szBuffer, .nSize = 6};
    EXPECT_EQ(CommandeComposante(3, &stRequest), 1);
    EXPECT_STREQ(szBuffer, L"Cance");
    EXPECT_EQ(stRequest.nLength, 5);
    EXPECT_EQ(CommandeComposante(4, &stRequest), 1);
    EXPECT_EQ(CommandeComposante(1, &stRequest), 0);
    stRequest.pfnLoadString = &nOverride;
    EXPECT_EQ(CommandeComposante(2, &stRequest), 1);
    for (const auto& [unId, nLangue, csText] : {std::tuple(3U, LANGUE_FRANCAIS, L"12"s),
                                                {4146U, LANGUE_FRANCAIS, L"12"},
                                                {2U, LANGUE_FRANCAIS, std::wstring(65535, L'x')},
                                                {4151U, LANGUE_FRANCAIS, L"Annuler"}}) {
        EXPECT_EQ(csLoad(unId, nLangue), csText);
    }
    // Singular and plural are lines of one text.
    for (const auto& [nForm, pszText] : {std::pair{0, L"7 file\r\n"}, {1, L"7 files"}, {2, L"untouched"}}) {
        cs = CTString(L"untouched");
        EXPECT_EQ(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, nForm, 1, &cs, 7), nForm < 2);
        EXPECT_EQ(cs.svGet(), pszText);
    }
    DLLRES_Term();
    EXPECT_EQ(csLoad(3), L"untouched");
    static int nSeenCommand = 0;
    EXPECT_TRUE(DLLRES_bForceInitRessource([](int nCommand, auto*) { return (nSeenCommand = nCommand), 0; }));
    EXPECT_EQ(nSeenCommand, 3);
    EXPECT_NE(DLLRES_pLoadResource(&gstMyModuleInfo604, nullptr, 12, L"ICON"), nullptr);
}

// Texts of a module in a bad way: 1 is empty, 2 costs too much memory, 3 names two arguments.
const _stMyModuleInfo BAD_TEXTS{[](STRessourceModule* pstRequest) {
    static constexpr unsigned char TAB_TEXT[] = "%1 and %2";
    if (pstRequest->unNumber == 2) {
        throw std::bad_alloc();
    }
    pstRequest->pbyText = TAB_TEXT;
    pstRequest->unLength = pstRequest->unNumber == 3 ? sizeof TAB_TEXT : 0;
    pstRequest->nUnit = 1;
    return pstRequest->unNumber <= 3;
}};
constexpr STErrorDef TAB_BAD_DEF[] = {{10, 1, 0, eERRORLEVEL::Warning},
                                      {20, 2, 0, eERRORLEVEL::Error},
                                      {30, 3, 0, eERRORLEVEL::Error},
                                      {99, 777, 0, eERRORLEVEL::Severe}};
const STErrorModule BAD_MODULE{7, L"bad", L"1.0", TAB_BAD_DEF, &BAD_TEXTS};

std::wstring csUser(const CXError& rcl) {
    return rcl.pszGetUserMessage();
}

std::wstring csDump(const CXError& rcl, CXError::eXERROR_INFO eParts = CXError::eXERROR_INFO::All) {
    return std::wstring(rcl.StringDump(eParts).svGet());
}

TEST(XError, MessagesAddUpAndWhatIsMissingDegrades) {
    for (const auto& [unCode, unResource, pszMessage, pszDebug] :
         {std::tuple(5U, 0U, L"",
                     L"##(CXError)-Pas de definition d'erreur dans gstErrorDef pour l'identifiant <5>##\r\n"),
          {99U, 777U, L"##(CXError)-Ressource <777> non charg\u00E9e##", L""},
          {10U, 1U, L"##(CXError)-Ressource <1> vide. LastError = <28>##", L""},
          {20U, 2U, L"<No Memory>", L""},
          {30U, 3U, L"%1 and %2", L""}}) {
        CXError clError;
        errno = ENOSPC;
        clError.SetUserError(&BAD_MODULE, unCode, L"one");
        EXPECT_EQ(clError.unGetUserResource(), unResource);
        EXPECT_EQ(csUser(clError), pszMessage);
        EXPECT_EQ(csDump(clError, CXError::eXERROR_INFO::DebugMessages), pszDebug);
    }
    CXError clError;
    clError.AddUserMessageFirst(L"first");
    clError.AddUserMessage(L"last");
    clError.SetUserErrorMessage(L"middle");
    clError.AddUserMessageFirst(L"very first");
    EXPECT_EQ(csUser(clError), L"very first\r\nfirst\r\nmiddle\r\nlast");
    // The arguments are kept: what the caller passed is gone when the error is shown.
    const std::wstring csLong(300, L'a');
    clError.SetUserError(&BAD_MODULE, 30, std::wstring(csLong), std::string("b"));
    EXPECT_EQ(csUser(clError), csLong + L" and b");
    clError.AddUserMessage(L"c");
    clError.ChangeUserError(&BAD_MODULE, 99);
    EXPECT_EQ(csUser(clError), L"##(CXError)-Ressource <777> non charg\u00E9e##\r\nc");
}

TEST(XError, ItemsPrintInTheirFormats) {
    // Every kind in its order, and behind its name the mark of a format that is another than most have.
    std::wistringstream clKinds(
        L"HELPFILE USERNAME DSTFILE SRCFILE PATHTVD LOGICALTABLENAME ITEMNAME PATHFIC PATHNDX PATHMMO "
        L"LINKNAME "
        L"RECNUM& HLOCKTIME& BASEMESSAGE NATIVEMESSAGE ADOMESSAGE BASECODE# NATIVECODE# ADOCODE# ODBCCODE "
        L"ODBCDESCRIPTION DATAACCESS* INFOCLIENT INFOSERVEUR PILETL| PILEC| COMPOSANT| DATEHEURE= LOCKINFO= "
        L"CORRIGE_ETAT= INFOCS SERVEURCS XINFO# TYPE_TVFILE# IDCODE# HCNXID# POSITION_ERREUR "
        L"EXCEPTION_CLASS_NAME EXCEPTIONDOTNET! EXCEPTIONJAVA! CODEHTTP# THREAD");
    const std::map<wchar_t, const wchar_t*> mapOther = {
        {L'#', L" : <-2147483647>"}, {L'&', L" : <6442450945>"}, {L'*', L" : <(nil)>"},
        {L'|', L" :\r\n/%s\r\nx"},   {L'=', L" : /%s\r\nx"},     {L'!', L""}};
    int nKind = 0;
    for (std::wstring cs; clKinds >> cs; ++nKind) {
        const auto eKind = static_cast<eERRORINFOTYPE>(nKind);
        CXError clError;
        // The one of them that is of the kind's type stays.
        clError.AddInfo(eKind, L"/%s\r\nx");
        clError.AddInfo(eKind, 0x180000001);
        clError.AddInfo(eKind, static_cast<const void*>(nullptr));
        clError.AddInfo(eKind);
        const auto it = mapOther.find(cs.back());
        cs = it == mapOther.end() ? cs + L" : </%s\r\nx>" : cs.substr(0, cs.size() - 1) + it->second;
        CTString csItems(L"before\r\n");
        clError.DumpInfo(&csItems);
        EXPECT_EQ(csItems.svGet(), L"before\r\nEIT_" + cs + L"\r\n");
    }
    EXPECT_EQ(nKind, EIT_THREAD + 1);
    // Those of one kind are a list.
    CXError clError;
    clError.AddInfo(EIT_RECNUM, INT64_MIN);
    clError.AddInfo(EIT_DATAACCESS, reinterpret_cast<const void*>(std::uintptr_t{0xAB}));
    clError.AddInfo(EIT_RECNUM, 5);
    clError.AddInfo(static_cast<eERRORINFOTYPE>(EIT_THREAD + 1), L"x");
    EXPECT_EQ(csDump(clError),
              L"EIT_RECNUM : <-9223372036854775808>\r\nEIT_DATAACCESS : <0xab>\r\nEIT_RECNUM : <5>\r\n");
    std::int64_t i64 = 7;
    EXPECT_FALSE(clError.bGetInfo(EIT_DATAACCESS, &i64));
    EXPECT_TRUE(clError.bGetInfo(EIT_RECNUM, &i64) && i64 == INT64_MIN);
    clError.DeleteInfo(EIT_RECNUM);
    EXPECT_EQ(clError.nNumInfo(), 1);
}

TEST(XError, TheWholeDump) {
    _CXErrorModule604 clError;
    clError.SetUserError(3, L"one");
    EXPECT_NE(csUser(clError).find(L"one"), std::wstring::npos);
    clError.SetSystemErrorParam(ENOENT, L"/dir/\u00E9");
    clError.SetFunctionName(L"bDo");
    clError.SetDetailId(12);
    clError.AddInfo(EIT_DSTFILE, L"/\u00E9");
    clError.AddDebugMessage(L"two");
    clError.AddDebugMessageFirst(L"one");
    clError.SetUserErrorMessage(L"%1 full");
    clError.SetUserErrorCode(31);
    CMemoryStream clTrace;
    EXPECT_TRUE(clError.TraceDump(&clTrace));
    const CTLBIN& rtab = clTrace.rtabGetBytes();
    EXPECT_EQ(std::string(rtab.begin(), rtab.end()),
              "%1 full\r\nSystem error 2: /dir/\xC3\xA9: No such file or directory\r\nIE=604.31\r\n"
              "Module=<kalmoinstall>\r\nVersion=<25.0.98.0>\r\nLevel=2\r\nFunction=<bDo>\r\nDetail=12\r\n"
              "EIT_DSTFILE : </\xC3\xA9>\r\none\r\ntwo\r\n");
    CXError clSystem;
    clSystem.SetSystemError(ENOSPC);
    EXPECT_EQ(csDump(clSystem), L"System error 28: No space left on device\r\n");
    clSystem.SetSystemErrorMessage(L"full");
    CInformationModule::ms_nLangueFramework = LANGUE_FRANCAIS;
    EXPECT_EQ(csDump(clSystem), L"Erreur syst\u00E8me 28 : full\r\n");
    // English where the text is of no use.
    DLLRES_SetLoadStringTVM([](unsigned, wchar_t* psz, int, int) { return (*psz = L'%'), 1; });
    EXPECT_EQ(csDump(clSystem), L"System error 28: full\r\n");
    DLLRES_SetLoadStringTVM(nullptr);
    CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
}

TEST(XError, SubErrorsAreOwnedCopies) {
    CXError clTop;
    clTop.SetUserErrorMessage(L"top");
    {
        CXError clMiddle, clLeaf;
        clMiddle.SetUserErrorMessage(L"middle");
        clLeaf.SetUserError(&BAD_MODULE, 30, L"leaf", L"x");
        clMiddle.AddSubError(clLeaf);
        clTop.AddSubError(clMiddle);
        clTop.AddSubErrorLight(clMiddle);
        clTop.AddSubErrorNoUserMessage(clLeaf);
        clTop.AddSubErrorLightNoUserMessage(clMiddle);
    }
    const std::wstring csModule = L"=7.30\r\nModule=<bad>\r\nVersion=<1.0>\r\nLevel=2\r\n";
    CXError clCopy;
    clCopy.Copy(clTop);
    clTop.DeleteAllSubError();
    EXPECT_EQ(csDump(clCopy),
              L"top\r\nmiddle\r\nleaf and x\r\nIE1.1" + csModule + L"middle\r\nIE3" + csModule);
    clTop.AddSubError(clCopy);
    EXPECT_EQ(clTop.pclGetSubError(-1), nullptr);
    // The source may be one of its own.
    clTop.LightCopy(*clTop.pclGetSubError(0)->pclGetSubError(0));
    EXPECT_EQ(csDump(clTop), L"middle\r\n");
}

}  // namespace
}  // namespace kalmo
