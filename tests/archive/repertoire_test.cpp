#include "archive/repertoire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "archive/entry_cipher.h"
#include "framework/memory_stream.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

// The answers come from an implementation of the published description in another language.
TEST(EntryCipher, KnownAnswersAndTheCheckOfTheHeader) {
    CEntryCipher cl;
    // Of each character only the low 8 bits count.
    for (const wchar_t* const psz : {L"secret", L"\x1F373\x100065\U00000163ret"}) {
        cl.CryptInitKeys(psz);
        EXPECT_EQ(cl.rstGetKeys(), (CEntryCipher::STKeys{0xDDA9E469, 0x96212999, 0xF9FC9651}));
    }
    CTLBIN tab(16, 0);
    tab[0] = cl.CryptEncode(tab[0]);
    cl.CryptEncodeBuffer(std::span(tab).subspan(1));
    EXPECT_EQ(std::string(tab.begin(), tab.end()),
              "\xC8\x89\xC9\x5B\xB4\xDE\xAC\x0E\x5A\x9D\x7E\x61\x0B\xBA\x69\xE7");
    cl.CryptInitKeys(L"secret");
    tab[0] = cl.CryptDecode(tab[0]);
    cl.CryptDecodeBuffer(std::span(tab).subspan(1));
    EXPECT_EQ(tab, CTLBIN(16, 0));
    CCryptHeader tabHeader;
    cl.CryptCryptHeader(L"right", 0xA1B2C3D4, &tabHeader);
    cl.CryptInitKeys(L"right");
    EXPECT_TRUE(cl.bCryptCheck(tabHeader, 0xA1));
    EXPECT_EQ(tabHeader[10], 0xB2);
}

CRepEntree clEntry(const std::wstring& csName, std::uint64_t u64Size = 1) {
    return {CTString(csName), u64Size, u64Size / 2, {{2001, 2, 3, 4, 5, 6}, {1980, 0, 0, 31, 63, 62}, {}}, 7};
}

std::wstring csNames(const CRepertoire& rcl) {
    std::wstring cs;
    for (int n = 0; n < static_cast<int>(rcl.dwTaille()); ++n) {
        cs += rcl.pclGetEntree(n)->csGetNom().svGet();
        cs += L' ';
    }
    return cs;
}

TEST(Repertoire, ChangesKeepRanksCountsAndIndexTogether) {
    CRepertoire cl;
    for (const wchar_t* const psz : {L"bin/kalmo", L"BIN/KALMO", L"empty/", L"readme"}) {
        ASSERT_TRUE(cl.bAjouteEntree(clEntry(psz, std::wstring_view(psz) == L"empty/" ? 0 : 9)));
    }
    EXPECT_EQ(cl.lRang(L"bin\\Kalmo"), 0);
    EXPECT_EQ(cl.lRang(L"bin"), -1);
    EXPECT_EQ(cl.lRangCasse(L"BIN\\KALMO"), 1);
    EXPECT_EQ(cl.lRangCasse(L"Bin/Kalmo"), -1);
    EXPECT_EQ(cl.dwNombreFichier(), 3U);
    cl.ForceRepVideAlaFin();
    EXPECT_EQ(csNames(cl), L"bin/kalmo BIN/KALMO readme empty/ ");
    EXPECT_EQ(cl.lRang(L"empty/"), 3);
    EXPECT_EQ(cl.dwNombreFichier(), 3U);
    EXPECT_TRUE(cl.bChangeChemin(0, L"lib\\old"));
    EXPECT_TRUE(cl.bChangeChemin(2, L"doc/"));
    cl.SupprimeElement(1);
    EXPECT_EQ(csNames(cl), L"lib/old/kalmo doc/readme empty/ ");
    EXPECT_EQ(cl.lRang(L"bin/kalmo"), -1);
    EXPECT_EQ(cl.lRang(L"doc/readme"), 1);
    EXPECT_EQ(cl.dwNombreFichier(), 2U);
}

// Names that are made to meet in the index once made opening an archive take minutes.
TEST(Repertoire, NamesThatMeetInTheIndexAreNoSlower) {
    // "AZ" and "B9" have one hash where each character counts 33 times the next one; so has every row of
    // them.
    const auto dSeconds = [](const wchar_t* pszOne, const wchar_t* pszOther) {
        constexpr int NAMES = 20000;
        const auto csName = [&](int nName) {
            std::wstring cs;
            for (int nBit = 0; nBit < 16; ++nBit) {
                cs += (nName >> nBit & 1) != 0 ? pszOne : pszOther;
            }
            return cs;
        };
        const auto clStart = std::chrono::steady_clock::now();
        CRepertoire cl;
        cl.Reserve(NAMES);
        for (int n = 0; n <= NAMES; ++n) {
            (void)cl.bAjouteEntree(clEntry(csName(n % NAMES)));
        }
        for (int n = 0; n < NAMES; ++n) {
            EXPECT_EQ(cl.lRang(csName(n)), n) << "the first of a name stays";
        }
        EXPECT_EQ(cl.lRang(L"BA" + csName(0)), -1);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - clStart).count();
    };
    EXPECT_LT(dSeconds(L"AZ", L"b9"), 10 * dSeconds(L"AZ", L"77") + 1);
}

TEST(Repertoire, ComesBackAsItWasWritten) {
    const CTempFolder clFolder;
    CRepertoire clRead, clWritten;
    // The names that come back, "-" where it is refused: of what is written, or of the bytes given.
    const auto csBack = [&](std::string cs = "") -> std::wstring {
        CDiskFile clFile;
        EXPECT_TRUE(clFile.bOpen(clFolder.csWide("directory"), CDiskFile::eMODE::Create));
        EXPECT_EQ(clWritten.eEcrit(clFile), ARCHIVE_OK);
        EXPECT_TRUE(clFile.bClose());
        cs = cs.empty() ? clFolder.csRead("directory") : cs;
        CMemoryStream clStream(CTLBIN(cs.begin(), cs.end()));
        return clRead.bLit(clStream) ? csNames(clRead) : L"-" + csNames(clRead);
    };
    for (unsigned un = 0; un < 3000; ++un) {  // more than one block of entries
        CRepEntree cl = clEntry(L"\u00E9\xDCFF/Name" + std::to_wstring(un), 0x100000000U + un);
        cl.SetCrypte(un % 2 == 0, CTString(L"not written"));
        ASSERT_TRUE(clWritten.bAjouteEntree(std::move(cl)));
    }
    EXPECT_EQ(csBack(), csNames(clWritten));
    const CRepEntree& rcl = *clRead.pclGetEntree(2222);
    EXPECT_EQ(rcl.u64GetTailleCompresse(), 0x80000000U + 1111);
    EXPECT_EQ(rcl.stGetTimes().stCreation.nAnnee * 100 + rcl.stGetTimes().stAcces.nMinute, 200163);
    EXPECT_EQ(rcl.dwGetAttribut(), 7U);
    EXPECT_TRUE(rcl.bCrypte() && rcl.bMdpOK(L"")) << "the password is not written";
    // Cut anywhere, or claiming what is not there, it is no directory at all; nor with a name beyond 65536
    // bytes.
    const std::string csFile = clFolder.csRead("directory");
    EXPECT_EQ(csBack(csFile.substr(0, csFile.size() - 1)), L"-");
    for (const std::size_t nChanged : {0U, 4U, 11U, 15U}) {  // signature, version, count, length of a name
        EXPECT_EQ(csBack(std::string(csFile).replace(nChanged, 1, "\x7F")), L"-");
    }
    ASSERT_TRUE(clWritten.bAjouteEntree(clEntry(std::wstring(65537, L'n'))));
    EXPECT_EQ(csBack(), L"-");
}

}  // namespace
}  // namespace kalmo
