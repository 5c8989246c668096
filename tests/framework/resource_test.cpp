#include "framework/resource.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "framework/language.h"

using namespace std::string_literals;

extern "C" void* DLLRES_pLoadResourceModule(const kalmo::_stMyModuleInfo* pstModule, void* hInstance,
                                            unsigned unId, const wchar_t* pszType);

// Found by the dynamic loader: the test program exports its symbols.
void* DLLRES_pLoadResourceModule(const kalmo::_stMyModuleInfo* pstModule, void* hInstance, unsigned unId,
                                 const wchar_t* pszType) {
    static int nFound = 0;
    const bool bAsked = pstModule != nullptr && hInstance == nullptr && unId == 12 && pszType == L"ICON"s;
    return bAsked ? &nFound : nullptr;
}

namespace kalmo {
namespace {

constexpr int tabLANGUE[] = {LANGUE_FRANCAIS, LANGUE_ANGLAIS, LANGUE_ESPAGNOL};

class Resource : public testing::Test {
  protected:
    void TearDown() override {
        CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
        DLLRES_SetLoadStringTVM(nullptr);
    }
};

std::wstring csLoad(unsigned unId, int nLangue) {
    CTString cs(L"untouched");
    return DLLRES_bLoadString(&gstMyModuleInfo604, unId, &cs, nLangue)
               ? std::wstring(cs.svGet())
               : L"missing, " + std::wstring(cs.svGet());
}

TEST(ResourceBlock, LaidOutAsEntriesByNumber) {
    std::set<std::vector<unsigned>> setNumbers;
    for (const auto* ptab : {&g_tabBlock_FR, &g_tabBlock_US, &g_tabBlock_ES}) {
        const std::span<const unsigned char> tab = *ptab;
        const auto unU16 = [&](std::size_t n) { return static_cast<unsigned>(tab[n] + 256 * tab[n + 1]); };
        EXPECT_EQ(std::string(tab.begin(), tab.begin() + 36),
                  "\x24\0\x01\x01\0\x1D\0TALVOR RES BLOC UTF16 START \0"s);
        std::vector<unsigned> tabNumber;
        std::size_t n = 36;
        for (; unU16(n) != 0; n += unU16(n)) {
            EXPECT_EQ(unU16(n), 7 + unU16(n + 5));
            tabNumber.push_back(unU16(n + 2));
        }
        EXPECT_EQ(n + 2, tab.size());
        const auto itEnd = tabNumber.end();
        EXPECT_TRUE(std::adjacent_find(tabNumber.begin(), itEnd, std::greater_equal<>()) == itEnd);
        EXPECT_EQ(tabNumber.front(), 798U);
        EXPECT_EQ(tabNumber.back(), 28865U);
        setNumbers.insert(tabNumber);
    }
    EXPECT_EQ(setNumbers.size(), 1U);
    EXPECT_LE(setNumbers.begin()->size(), 121U);
}

// Every text that the installer shows, with the arguments it is shown with.
TEST_F(Resource, EveryTextIsThereAndFormats) {
    for (const int nLangue : tabLANGUE) {
        CInformationModule::ms_nLangueFramework = nLangue;
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

TEST_F(Resource, LanguageChoosesTheBlock) {
    EXPECT_EQ(csLoad(4151, LANGUE_FRANCAIS), L"Annuler");
    EXPECT_EQ(csLoad(4151, LANGUE_ESPAGNOL), L"Anular");
    for (const int nEnglish : {LANGUE_ANGLAIS, 11, 0x40C, -1}) {
        EXPECT_EQ(csLoad(4151, nEnglish), L"Cancel") << nEnglish;
    }
    CInformationModule::ms_nLangueFramework = LANGUE_ESPAGNOL;
    EXPECT_EQ(csLoad(4151, 0), L"Anular");
    int nElsewhere = LANGUE_FRANCAIS;
    CInformationModule::ms_pnLangueFramework = &nElsewhere;
    EXPECT_EQ(csLoad(4151, 0), L"Annuler");
    CInformationModule::ms_pnLangueFramework = &CInformationModule::ms_nLangueFramework;
}

TEST_F(Resource, LanguageOfTheEnvironment) {
    const struct {
        const char *pszLcAll, *pszLcMessages, *pszLang;
        int nExpected;
    } tabCase[] = {{nullptr, nullptr, nullptr, 9}, {nullptr, nullptr, "fr_FR.UTF-8", 12},
                   {nullptr, "es", "fr", 10},      {"C", "fr", "fr", 9},
                   {"", "", "es_MX", 10},          {"f", nullptr, nullptr, 9}};
    for (const auto& rst : tabCase) {
        EXPECT_EQ(nChoisitLangue(rst.pszLcAll, rst.pszLcMessages, rst.pszLang), rst.nExpected);
    }
}

TEST_F(Resource, UnknownNumbersLeaveTheOutputAlone) {
    for (const int nLangue : tabLANGUE) {
        for (const unsigned un : {257U, 797U, 799U, 28866U, 65536U + 4146U, ~0U}) {
            EXPECT_EQ(csLoad(un, nLangue), L"missing, untouched") << un;
            wchar_t szBuffer[4] = L"abc";
            EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, un, szBuffer, 4, nLangue), 0);
            EXPECT_STREQ(szBuffer, L"abc");
        }
    }
    CTString cs(L"untouched");
    wchar_t* psz = nullptr;
    EXPECT_FALSE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 257, &cs));
    EXPECT_FALSE(DLLRES_bFormatMessage(&gstMyModuleInfo604, 4666, &cs));
    EXPECT_EQ(DLLRES_nFormatMessage(&gstMyModuleInfo604, 4666, &psz), 0);
    EXPECT_EQ(psz, nullptr);
    EXPECT_EQ(cs.svGet(), L"untouched");
    EXPECT_EQ(DLLRES_nFormatMessage(&gstMyModuleInfo604, 0x10C7, &psz, L"name"), 6);
    EXPECT_STREQ(psz, L"- name");
    LocalFree(psz);
}

TEST_F(Resource, TextsAreCutToTheBuffer) {
    const std::wstring csWhole = csLoad(4156, LANGUE_FRANCAIS);
    const int nWhole = static_cast<int>(csWhole.size());
    for (const int nSize : {1, 10, nWhole, nWhole + 1, 300}) {
        std::vector<wchar_t> tab(static_cast<std::size_t>(nSize), L'#');
        const int nCut = std::min(nSize - 1, nWhole);
        EXPECT_EQ(DLLRES_nLoadString(&gstMyModuleInfo604, 4156, tab.data(), nSize, LANGUE_FRANCAIS), nCut);
        EXPECT_EQ(std::wstring(tab.data()), csWhole.substr(0, static_cast<std::size_t>(nCut)));
    }
}

// A module of its own: 1 a text beyond the 16-bit characters, 2 one in an encoded mode, 3 one
// without its zero.
bool bGetTestTexts(STRessourceModule* pstRequest) {
    static constexpr unsigned char tabBeyond[] = {'a', 0, 0x3D, 0xD8, 0x00, 0xDE, 'b', 0, 0, 0};
    const bool bBeyond = pstRequest->unNumber == 1;
    pstRequest->pbyText = tabBeyond;
    pstRequest->unLength = bBeyond ? sizeof tabBeyond : 1;
    pstRequest->nUnit = bBeyond ? 2 : 1;
    pstRequest->nMode = pstRequest->unNumber == 2 ? 3 : 0;
    return pstRequest->unNumber <= 3 && pstRequest->nReserved == -1;
}

TEST_F(Resource, StoredFormsAreDecoded) {
    const _stMyModuleInfo stModule{&bGetTestTexts};
    CTString cs;
    EXPECT_TRUE(DLLRES_bLoadString(&stModule, 1, &cs));
    EXPECT_EQ(cs.svGet(), L"a\U0001F600b");
    EXPECT_FALSE(DLLRES_bLoadString(&stModule, 2, &cs));
    EXPECT_EQ(DLLRES_nGetUtilisation(&stModule, 2), 1 + 16 * 3);
    EXPECT_TRUE(DLLRES_bLoadString(&stModule, 3, &cs));
    EXPECT_EQ(cs.svGet(), L"a");
}

// 1 two forms; 2 a text of 1000 characters; 3 a language; of others nothing, with an odd length.
int nOverride(unsigned unId, wchar_t* pszBuffer, int nSize, int nLangue) {
    const std::wstring tabText[] = {L"", L"%1!d! file%n\n%1!d! files", std::wstring(1000, L'x'),
                                    std::to_wstring(nLangue)};
    const auto nLength = tabText[unId < 4 ? unId : 0].copy(pszBuffer, static_cast<std::size_t>(nSize) - 1);
    pszBuffer[nLength] = L'\0';
    return unId < 4 ? static_cast<int>(nLength) : -1;
}

TEST_F(Resource, OverrideIsAskedFirst) {
    DLLRES_SetLoadStringTVM(&nOverride);
    EXPECT_EQ(csLoad(2, 0), std::wstring(1000, L'x'));
    CInformationModule::ms_nLangueFramework = LANGUE_FRANCAIS;
    EXPECT_EQ(csLoad(3, 0), L"12");
    EXPECT_EQ(csLoad(4151, 0), L"Annuler");
    EXPECT_TRUE(DLLRES_bInit(nullptr, 0));
    DLLRES_Term();
    EXPECT_EQ(csLoad(3, 0), L"missing, untouched");
}

TEST_F(Resource, SingularAndPluralAreLines) {
    DLLRES_SetLoadStringTVM(&nOverride);
    CTString cs;
    EXPECT_TRUE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 0, 1, &cs, 1));
    EXPECT_EQ(cs.svGet(), L"1 file\r\n");
    EXPECT_TRUE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 1, 1, &cs, 7));
    EXPECT_EQ(cs.svGet(), L"7 files");
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 2, 1, &cs, 7));
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 1, 1, &cs));
    EXPECT_EQ(cs.svGet(), L"7 files");
}

int nSeenCommand = 0;

TEST_F(Resource, OtherModulesDriveIt) {
    wchar_t szBuffer[4] = L"";
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
    EXPECT_EQ(CommandeComposante(1, &stRequest), 0);
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

TEST_F(Resource, LoadableModulesHaveAHook) {
    EXPECT_NE(DLLRES_pLoadResource(&gstMyModuleInfo604, nullptr, 12, L"ICON"), nullptr);
    void* hWithout = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(hWithout, nullptr);
    EXPECT_EQ(DLLRES_pLoadResource(&gstMyModuleInfo604, hWithout, 12, L"ICON"), nullptr);
    dlclose(hWithout);
}

}  // namespace
}  // namespace kalmo
