#include "framework/resource.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "framework/language.h"

extern "C" void* DLLRES_pLoadResourceModule(const kalmo::_stMyModuleInfo* pstModule, void* hInstance,
                                            unsigned unId, const wchar_t* pszType);

// Found by the dynamic loader: the test program exports its symbols.
void* DLLRES_pLoadResourceModule(const kalmo::_stMyModuleInfo* pstModule, void* hInstance, unsigned unId,
                                 const wchar_t* pszType) {
    static std::wstring csSeen;
    csSeen = std::to_wstring(unId) + pszType + (pstModule == nullptr ? L"-" : L"m") +
             (hInstance == nullptr ? L"-" : L"h");
    return &csSeen;
}

namespace kalmo {
namespace {

constexpr int tabLANGUE[] = {LANGUE_FRANCAIS, LANGUE_ANGLAIS, LANGUE_ESPAGNOL};

/// Sets the current language for the life of the object.
class CCurrentLangue {
  public:
    explicit CCurrentLangue(int nLangue) { CInformationModule::ms_nLangueFramework = nLangue; }
    ~CCurrentLangue() { CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS; }
    CCurrentLangue(const CCurrentLangue&) = delete;
    CCurrentLangue& operator=(const CCurrentLangue&) = delete;
};

/// Removes the override at the end of a test.
struct STOverride {
    explicit STOverride(PFNLoadStringTVM pfn) { DLLRES_SetLoadStringTVM(pfn); }
    ~STOverride() { DLLRES_SetLoadStringTVM(nullptr); }
    STOverride(const STOverride&) = delete;
    STOverride& operator=(const STOverride&) = delete;
};

std::wstring csLoad(unsigned unId, int nLangue) {
    CTString cs(L"untouched");
    return DLLRES_bLoadString(&gstMyModuleInfo604, unId, &cs, nLangue)
               ? std::wstring(cs.svGet())
               : L"missing, " + std::wstring(cs.svGet());
}

TEST(ResourceBlock, LaidOutAsEntriesByNumber) {
    std::vector<std::vector<unsigned>> tabNumber;
    for (const auto* ptab : {&g_tabBlock_FR, &g_tabBlock_US, &g_tabBlock_ES}) {
        const std::span<const unsigned char> tab = *ptab;
        const auto unU16 = [&](std::size_t n) { return static_cast<unsigned>(tab[n] + 256 * tab[n + 1]); };
        EXPECT_EQ(unU16(0), 36U);
        EXPECT_EQ(unU16(2), 257U);
        EXPECT_EQ(tab[4], 0);
        EXPECT_EQ(unU16(5), 29U);
        EXPECT_STREQ(reinterpret_cast<const char*>(&tab[7]), "TALVOR RES BLOC UTF16 START ");
        std::vector<unsigned>& rtab = tabNumber.emplace_back();
        std::size_t n = 36;
        for (; unU16(n) != 0; n += unU16(n)) {
            EXPECT_EQ(unU16(n), 7 + unU16(n + 5));
            EXPECT_TRUE(rtab.empty() || rtab.back() < unU16(n + 2));
            rtab.push_back(unU16(n + 2));
            const bool bTwoByte = tab[n + 4] == 0x40;
            EXPECT_TRUE(bTwoByte || tab[n + 4] == 0);
            bool bAscii = true;
            for (std::size_t nUnit = n + 7; nUnit < n + unU16(n); nUnit += bTwoByte ? 2 : 1) {
                bAscii = bAscii && tab[nUnit] < 0x80 && (!bTwoByte || tab[nUnit + 1] == 0);
            }
            EXPECT_EQ(bAscii, !bTwoByte) << rtab.back();
        }
        EXPECT_EQ(n + 2, tab.size());
    }
    EXPECT_EQ(tabNumber[0], tabNumber[1]);
    EXPECT_EQ(tabNumber[1], tabNumber[2]);
    EXPECT_LE(tabNumber[0].size(), 121U);
    EXPECT_EQ(tabNumber[0].front(), 798U);
    EXPECT_EQ(tabNumber[0].back(), 28865U);
}

// Every text that the installer shows, with the arguments it is shown with.
TEST(Resource, EveryTextIsThereAndFormats) {
    for (const int nLangue : tabLANGUE) {
        const CCurrentLangue clLangue(nLangue);
        std::set<std::wstring> tabSeen;
        for (const unsigned un : {798U,  809U,  810U,  818U,  4145U, 4146U, 4147U, 4148U, 4151U, 4152U, 4153U,
                                  4154U, 4155U, 4156U, 4157U, 4158U, 4159U, 4160U, 4171U, 4285U, 4286U, 4287U,
                                  4290U, 4293U, 4294U, 4296U, 4297U, 4298U, 4322U, 4323U, 4324U, 4325U, 4330U,
                                  4334U, 4548U, 4659U, 9218U, 9219U, 9766U, 9767U, 9768U, 28865U}) {
            CTString cs;
            EXPECT_TRUE(DLLRES_bFormatMessage(&gstMyModuleInfo604, un, &cs)) << un;
            EXPECT_FALSE(cs.bEmpty()) << un;
            EXPECT_TRUE(tabSeen.insert(std::wstring(cs.svGet())).second) << un << " repeats another text";
        }
        for (const unsigned un :
             {4291U, 4295U, 4299U, 4327U, 4328U, 4329U, 4661U, 4662U, 4664U, 4665U, 4666U, 4667U, 4668U}) {
            CTString cs;
            EXPECT_TRUE(DLLRES_bFormatMessage(&gstMyModuleInfo604, un, &cs, L"ARGUMENT")) << un;
            EXPECT_NE(cs.svGet().find(L"ARGUMENT"), CTString::npos) << un;
        }
        for (const unsigned un : {4323U, 4324U, 4325U}) {
            EXPECT_TRUE(csLoad(un, 0).starts_with(L"[ ] ")) << un;
        }
        CTString cs;
        EXPECT_TRUE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 0x262B, &cs, L"account", L"password"));
        EXPECT_TRUE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 4300, &cs, 4900, L"name"));
        EXPECT_TRUE(
            DLLRES_bFormatMessage(&gstMyModuleInfo604, 4292, &cs, L"name", 4900, L"/dir", L"1.0", L"2.0"));
    }
}

TEST(Resource, LanguageChoosesTheBlock) {
    EXPECT_EQ(csLoad(4151, LANGUE_FRANCAIS), L"Annuler");
    EXPECT_EQ(csLoad(4151, LANGUE_ESPAGNOL), L"Anular");
    EXPECT_EQ(csLoad(4152, LANGUE_ESPAGNOL), L"S\u00ED");
    for (const int nEnglish : {LANGUE_ANGLAIS, 1, 11, 13, 0x40C, -1}) {
        EXPECT_EQ(csLoad(4151, nEnglish), L"Cancel") << nEnglish;
    }
    const CCurrentLangue clLangue(LANGUE_ESPAGNOL);
    EXPECT_EQ(csLoad(4153, 0), L"No");
    EXPECT_EQ(csLoad(4151, 0), L"Anular");
    int nElsewhere = LANGUE_FRANCAIS;
    CInformationModule::ms_pnLangueFramework = &nElsewhere;
    EXPECT_EQ(csLoad(4151, 0), L"Annuler");
    CInformationModule::ms_pnLangueFramework = &CInformationModule::ms_nLangueFramework;
}

TEST(Resource, LanguageOfTheEnvironment) {
    struct STCase {
        const char* pszLcAll;
        const char* pszLcMessages;
        const char* pszLang;
        int nExpected;
    };
    const STCase tabCase[] = {
        {nullptr, nullptr, nullptr, 9},
        {"", "", "", 9},
        {nullptr, nullptr, "fr_FR.UTF-8", 12},
        {nullptr, "es", "fr", 10},
        {"C", "fr", "fr", 9},
        {"", "", "es_MX", 10},
        {nullptr, "", "fr@euro", 12},
        {"de_DE", nullptr, "fr", 9},
        {"Fr", nullptr, nullptr, 9},
        {"f", nullptr, nullptr, 9},
    };
    for (const STCase& rst : tabCase) {
        EXPECT_EQ(nChoisitLangue(rst.pszLcAll, rst.pszLcMessages, rst.pszLang), rst.nExpected);
    }
}

TEST(Resource, UnknownNumbersLeaveTheOutputAlone) {
    for (const int nLangue : tabLANGUE) {
        for (const unsigned un : {257U, 0U, 797U, 799U, 4149U, 28866U, 65535U, 65536U + 4146U, ~0U}) {
            EXPECT_EQ(csLoad(un, nLangue), L"missing, untouched") << un;
            wchar_t szBuffer[4] = L"abc";
            EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, un, szBuffer, 4, nLangue), 0);
            EXPECT_STREQ(szBuffer, L"abc");
            EXPECT_EQ(DLLRES_nGetUtilisation(&gstMyModuleInfo604, un, nLangue), 0);
        }
    }
    CTString cs(L"untouched");
    wchar_t* psz = nullptr;
    EXPECT_FALSE(DLLRES_bLoadString(nullptr, 4146, &cs));
    EXPECT_FALSE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 257, &cs));
    EXPECT_FALSE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 4666, &cs));
    EXPECT_EQ(DLLRES_nFormatMessage(&gstMyModuleInfo604, 4666, &psz), 0);
    EXPECT_EQ(psz, nullptr);
    EXPECT_EQ(cs.svGet(), L"untouched");
    EXPECT_EQ(DLLRES_nFormatMessage(&gstMyModuleInfo604, 0x10C7, &psz, L"name"), 6);
    EXPECT_STREQ(psz, L"- name");
    LocalFree(psz);
}

TEST(Resource, TextsAreCutToTheBuffer) {
    const std::wstring csWhole = csLoad(4156, LANGUE_FRANCAIS);
    struct STCase {
        int nSize;
        int nExpected;
    };
    const int nWhole = static_cast<int>(csWhole.size());
    for (const STCase st :
         {STCase{10, 9}, {nWhole, nWhole - 1}, {nWhole + 1, nWhole}, {300, nWhole}, {1, 0}}) {
        std::vector<wchar_t> tab(static_cast<std::size_t>(st.nSize), L'#');
        EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, 4156, tab.data(), st.nSize, LANGUE_FRANCAIS),
                  st.nExpected);
        EXPECT_EQ(std::wstring(tab.data()), csWhole.substr(0, static_cast<std::size_t>(st.nExpected)));
    }
    wchar_t c = L'#';
    EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, 4156, &c, 0, 0), 0);
    EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, 4156, nullptr, 10, 0), 0);
    EXPECT_EQ(c, L'#');
}

// A module of its own: 1 a text beyond the 16-bit characters, 2 one in an encoded mode, 3 one without its
// zero.
bool bGetTestTexts(STRessourceModule* pstRequest) {
    static constexpr unsigned char tabBeyond[] = {'a', 0, 0x3D, 0xD8, 0x00, 0xDE, 'b', 0, 0, 0};
    static constexpr unsigned char tabPlain[] = {'a', 'b'};
    pstRequest->pbyText = pstRequest->unNumber == 1 ? tabBeyond : tabPlain;
    pstRequest->unLength = pstRequest->unNumber == 1 ? sizeof tabBeyond : sizeof tabPlain;
    pstRequest->nUnit = pstRequest->unNumber == 1 ? 2 : 1;
    pstRequest->nMode = pstRequest->unNumber == 2 ? 3 : 0;
    return pstRequest->unNumber <= 3 && pstRequest->nReserved == -1;
}

TEST(Resource, StoredFormsAreDecoded) {
    const _stMyModuleInfo stModule{&bGetTestTexts};
    CTString cs;
    EXPECT_TRUE(DLLRES_bLoadString(&stModule, 1, &cs));
    EXPECT_EQ(cs.svGet(), L"a\U0001F600b");
    wchar_t szCut[3];
    EXPECT_EQ(DLLRES_nLoadString(&stModule, 1, szCut, 3, 0), 2);
    EXPECT_STREQ(szCut, L"a\U0001F600");
    EXPECT_FALSE(DLLRES_bLoadString(&stModule, 2, &cs));
    EXPECT_EQ(DLLRES_nGetUtilisation(&stModule, 2), 1 + 16 * 3);
    EXPECT_TRUE(DLLRES_bLoadString(&stModule, 3, &cs));
    EXPECT_EQ(cs.svGet(), L"ab");
}

// 1 two forms; 2 a text of 1000 characters; 3 a language; 4 nothing, with an odd length.
int nOverride(unsigned unId, wchar_t* pszBuffer, int nSize, int nLangue) {
    const std::wstring csText = unId == 1   ? L"%1!d! file%n\n%1!d! files"
                                : unId == 2 ? std::wstring(1000, L'x')
                                : unId == 3 ? std::to_wstring(nLangue)
                                            : L"";
    const int nLength = static_cast<int>(csText.copy(pszBuffer, static_cast<std::size_t>(nSize) - 1));
    pszBuffer[nLength] = L'\0';
    return unId == 4 ? -1 : nLength;
}

TEST(Resource, OverrideIsAskedFirst) {
    const STOverride clOverride(&nOverride);
    EXPECT_EQ(csLoad(2, 0), std::wstring(1000, L'x'));
    wchar_t szBuffer[10];
    EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, 2, szBuffer, 10, 0), 9);
    const CCurrentLangue clLangue(LANGUE_FRANCAIS);
    EXPECT_EQ(csLoad(3, 0), L"12");
    EXPECT_EQ(csLoad(4, 0), L"missing, untouched");
    EXPECT_EQ(csLoad(4151, 0), L"Annuler");
    EXPECT_TRUE(DLLRES_bInit(nullptr, 0));
    DLLRES_Term();
    EXPECT_EQ(csLoad(3, 0), L"missing, untouched");
}

TEST(Resource, SingularAndPluralAreLines) {
    const STOverride clOverride(&nOverride);
    CTString cs;
    EXPECT_TRUE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 0, 1, &cs, 1));
    EXPECT_EQ(cs.svGet(), L"1 file\r\n");
    EXPECT_TRUE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 1, 1, &cs, 7));
    EXPECT_EQ(cs.svGet(), L"7 files");
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 2, 1, &cs, 7));
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, -1, 1, &cs, 7));
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 1, 1, &cs));
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 0, 257, &cs, 7));
    EXPECT_EQ(cs.svGet(), L"7 files");
}

int nSeenCommand = 0;

TEST(Resource, OtherModulesDriveIt) {
    const STOverride clNone(nullptr);
    wchar_t szBuffer[10] = L"";
    STRequeteComposante stRequest;
    stRequest.unNumber = 4151;
    stRequest.pszBuffer = szBuffer;
    stRequest.nSize = 4;
    EXPECT_EQ(CommandeComposante(3, &stRequest), 1);
    EXPECT_EQ(stRequest.nLength, 3);
    EXPECT_STREQ(szBuffer, L"Can");
    EXPECT_EQ(CommandeComposante(4, &stRequest), 1);
    stRequest.unNumber = 257;
    EXPECT_EQ(CommandeComposante(3, &stRequest), 0);
    EXPECT_EQ(stRequest.nLength, 0);
    EXPECT_EQ(CommandeComposante(4, &stRequest), 0);
    for (const int nUnknown : {0, 1, 5, -1}) {
        EXPECT_EQ(CommandeComposante(nUnknown, &stRequest), 0);
    }
    EXPECT_EQ(CommandeComposante(3, nullptr), 0);
    stRequest.pfnLoadString = &nOverride;
    EXPECT_EQ(CommandeComposante(2, &stRequest), 1);
    EXPECT_EQ(csLoad(3, 77), L"77");

    EXPECT_FALSE(DLLRES_bForceInitRessource(nullptr));
    EXPECT_TRUE(DLLRES_bForceInitRessource([](int nCommand, STRequeteComposante* pst) {
        nSeenCommand = pst->unNumber == 0 && pst->pszBuffer == nullptr && pst->nSize == 0 ? nCommand : -1;
        return 0;
    }));
    EXPECT_EQ(nSeenCommand, 3);
}

TEST(Resource, LoadableModulesHaveAHook) {
    const void* pSeen = DLLRES_pLoadResource(&gstMyModuleInfo604, nullptr, 12, L"ICON");
    ASSERT_NE(pSeen, nullptr);
    EXPECT_EQ(*static_cast<const std::wstring*>(pSeen), L"12ICONm-");
    void* hWithout = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(hWithout, nullptr);
    EXPECT_EQ(DLLRES_pLoadResource(&gstMyModuleInfo604, hWithout, 12, L"ICON"), nullptr);
    dlclose(hWithout);
}

}  // namespace
}  // namespace kalmo
