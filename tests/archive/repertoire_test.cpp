#include "archive/repertoire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <unordered_map>

#include "framework/memory_stream.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

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
    constexpr int NAMES = 20000;
    std::unordered_map<std::uint32_t, int> mapLike(43);
    mapLike.reserve(NAMES);
    const auto unBuckets = static_cast<std::uint32_t>(mapLike.bucket_count());
    // Seven characters that have no case, whose hash is un.
    const auto csWithHash = [](std::uint32_t un) {
        std::uint32_t unAll = 5381;
        for (int n = 0; n < 7; ++n) {
            unAll = unAll * 33 + 0x2200;
        }
        std::wstring cs(7, L'\0');
        un -= unAll;
        for (auto it = cs.rbegin(); it != cs.rend(); ++it, un /= 33) {
            *it = static_cast<wchar_t>(0x2200 + un % 33);
        }
        return cs;
    };
    // "AZ" and "B9" have one hash, and so has every row of them.
    const auto csOfOneHash = [](std::uint32_t un) {
        std::wstring cs;
        for (int nBit = 0; nBit < 16; ++nBit) {
            cs += (un >> nBit & 1) != 0 ? L"AZ" : L"b9";
        }
        return cs;
    };
    const auto dSeconds = [](const auto& NameOf) {
        const auto clStart = std::chrono::steady_clock::now();
        CRepertoire cl;
        cl.Reserve(NAMES);
        for (int n = 0; n <= NAMES; ++n) {
            (void)cl.bAjouteEntree(clEntry(NameOf(static_cast<std::uint32_t>(n % NAMES))));
        }
        for (int n = 0; n < NAMES; ++n) {
            EXPECT_EQ(cl.lRang(NameOf(static_cast<std::uint32_t>(n))), n) << "the first of a name stays";
        }
        EXPECT_EQ(cl.lRang(L"BA" + NameOf(0)), -1);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - clStart).count();
    };
    const double dPlain = dSeconds(csWithHash);
    EXPECT_LT(dSeconds([&](std::uint32_t un) { return csWithHash(un * unBuckets); }), 10 * dPlain + 1);
    EXPECT_LT(dSeconds(csOfOneHash), 10 * dPlain + 1);
}

TEST(Repertoire, ComesBackAsItWasWritten) {
    CRepertoire clWritten;
    for (int n = 0; n < 3000; ++n) {  // more than one block of entries
        CRepEntree cl =
            clEntry(L"\u00E9\xDCFF/Name" + std::to_wstring(n), 0x100000000U + static_cast<unsigned>(n));
        cl.SetCrypte(n % 2 == 0, CTString(L"not written"));
        ASSERT_TRUE(clWritten.bAjouteEntree(std::move(cl)));
    }
    const CTempFolder clFolder;
    CDiskFile clFile;
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("directory"), CDiskFile::eMODE::Create));
    ASSERT_EQ(clWritten.eEcrit(clFile), ARCHIVE_OK);
    ASSERT_TRUE(clFile.bSeek(0));
    CRepertoire clRead;
    ASSERT_TRUE(clRead.bAjouteEntree(clEntry(L"from before")));
    ASSERT_TRUE(clRead.bLit(clFile));
    EXPECT_EQ(csNames(clRead), csNames(clWritten));
    const CRepEntree& rcl = *clRead.pclGetEntree(2222);
    EXPECT_EQ(rcl.u64GetTailleCompresse(), 0x80000000U + 1111);
    EXPECT_EQ(rcl.rstGetTimes().stCreation.nAnnee, 2001);
    EXPECT_EQ(rcl.rstGetTimes().stAcces.nMinute, 63);
    EXPECT_EQ(rcl.dwGetAttribut(), 7U);
    EXPECT_TRUE(rcl.bCrypte());
    EXPECT_TRUE(rcl.bMdpOK(L"")) << "the password is not written";

    // Cut anywhere, or claiming what is not there, it is no directory at all.
    const std::string csFile = clFolder.csRead("directory");
    const CTLBIN tabFile(csFile.begin(), csFile.end());
    const auto Refused = [&](CTLBIN tab) {
        CMemoryStream clDamaged(std::move(tab));
        EXPECT_FALSE(clRead.bLit(clDamaged));
        EXPECT_EQ(clRead.dwTaille(), 0U);
    };
    Refused({tabFile.begin(), tabFile.end() - 1});
    for (const std::size_t nChanged : {0U, 4U, 11U, 15U}) {  // signature, version, count, length of a name
        CTLBIN tab = tabFile;
        tab[nChanged] = 0x7F;
        Refused(std::move(tab));
    }
}

}  // namespace
}  // namespace kalmo
