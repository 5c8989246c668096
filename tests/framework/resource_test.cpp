#include "framework/resource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "framework/language.h"
#include "framework/text_number.h"

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

class Resource : public testing::Test {
  protected:
    void TearDown() override {
        CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
        DLLRES_SetLoadStringTVM(nullptr);
    }
};

/// A text, or "untouched" where there is none.
std::wstring csLoad(unsigned unId, int nLangue = 0) {
    CTString cs(L"untouched");
    const bool bLoaded = DLLRES_bLoadString(&gstMyModuleInfo604, unId, &cs, nLangue);
    EXPECT_EQ(bLoaded, cs != L"untouched") << unId;
    return std::wstring(cs.svGet());
}

TEST_F(Resource, ABlockBeginsWithItsHeader) {
    EXPECT_EQ(std::string(g_tabBlock_US.begin(), g_tabBlock_US.begin() + 36),
              "\x24\0\x01\x01\0\x1D\0TALVOR RES BLOC UTF16 START \0"s);
    for (const unsigned un : {0U, 257U, 797U, 28866U, 65536U + TEXTE_OK, ~0U}) {
        EXPECT_EQ(csLoad(un), L"untouched") << un;
    }
}

TEST_F(Resource, LanguageChoosesTheBlock) {
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
    EXPECT_EQ(nChoisitLangue(nullptr, "es", "fr"), 10);
    EXPECT_EQ(nChoisitLangue("en", "fr", "fr"), 9);
    EXPECT_EQ(nChoisitLangue("", "", "fr_FR.UTF-8"), 12);
}

TEST_F(Resource, FormatsOrLeavesTheOutputAlone) {
    const auto bFormat = [](unsigned unId, CTString* pcs, auto... arg) {
        return DLLRES_bFormatMessage(&gstMyModuleInfo604, unId, pcs, arg...);
    };
    CTString cs(L"untouched");
    static constexpr unsigned char byStored = 'a';
    const _stMyModuleInfo stEncoded{[](STRessourceModule* pst) {
        pst->pbyText = &byStored;
        pst->unLength = pst->nUnit = pst->nMode = 1;
        return true;
    }};
    EXPECT_FALSE(DLLRES_bLoadString(&stEncoded, 5, &cs)) << "encoded";
    EXPECT_FALSE(bFormat(257, &cs));
    EXPECT_FALSE(bFormat(TEXTE_MAJ_ARRET_SERVEUR, &cs)) << "without its argument";
    EXPECT_EQ(cs.svGet(), L"untouched");
    EXPECT_TRUE(bFormat(TEXTE_MAJ_ARRET_SERVEUR, &cs, L"name"));
    EXPECT_EQ(cs.svGet(), L"- name");
    wchar_t* psz = nullptr;
    EXPECT_EQ(DLLRES_nFormatMessage(&gstMyModuleInfo604, TEXTE_MAJ_ARRET_SERVEUR, &psz, L"name"), 6);
    EXPECT_STREQ(psz, L"- name");
    LocalFree(psz);
}

// 1 two forms; 2 a long text; 3 and the one of TEXTE_OK a language; of others nothing.
int nOverride(unsigned unId, wchar_t* pszBuffer, int nSize, int nLangue) {
    const std::wstring csText = unId == 1   ? L"%1!d! file%n\n%1!d! files"
                                : unId == 2 ? std::wstring(70000, L'x')
                                            : std::to_wstring(nLangue);
    const auto nLength = csText.copy(pszBuffer, static_cast<std::size_t>(nSize) - 1);
    pszBuffer[nLength] = L'\0';
    return unId < 4 || unId == TEXTE_OK ? static_cast<int>(nLength) : -1;
}

TEST_F(Resource, OverrideIsAskedFirst) {
    DLLRES_SetLoadStringTVM(&nOverride);
    CInformationModule::ms_nLangueFramework = LANGUE_FRANCAIS;
    EXPECT_EQ(csLoad(3), L"12");
    EXPECT_EQ(csLoad(TEXTE_OK), L"12");
    EXPECT_EQ(csLoad(2).size(), 65535U);
    EXPECT_EQ(csLoad(TEXTE_ANNULER), L"Annuler");
    // Singular and plural are lines of one text.
    CTString cs;
    EXPECT_TRUE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 0, 1, &cs, 1));
    EXPECT_EQ(cs.svGet(), L"1 file\r\n");
    EXPECT_TRUE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 1, 1, &cs, 7));
    EXPECT_FALSE(DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, 2, 1, &cs, 7));
    EXPECT_EQ(cs.svGet(), L"7 files");
    DLLRES_Term();
    EXPECT_EQ(csLoad(3), L"untouched");
}

TEST_F(Resource, OtherModulesDriveIt) {
    wchar_t szBuffer[9] = L"########";
    STRequeteComposante stRequest{.unNumber = TEXTE_ANNULER, .pszBuffer = szBuffer};
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

    static int nSeenCommand = 0;
    EXPECT_TRUE(DLLRES_bForceInitRessource([](int nCommand, STRequeteComposante*) {
        nSeenCommand = nCommand;
        return 0;
    }));
    EXPECT_EQ(nSeenCommand, 3);
    EXPECT_NE(DLLRES_pLoadResource(&gstMyModuleInfo604, nullptr, 12, L"ICON"), nullptr);
}

}  // namespace
}  // namespace kalmo
