#include "archive/repertoire.h"

#include <gtest/gtest.h>

#include <string>

#include "framework/memory_stream.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

CRepEntree clEntry(const wchar_t* pszName, std::uint64_t u64Size = 1) {
    return {
        CTString(pszName), u64Size, u64Size / 2, {{2001, 2, 3, 4, 5, 6}, {1980, 0, 0, 31, 63, 62}, {}}, 7};
}

std::wstring csNames(const CRepertoire& rcl) {
    std::wstring cs;
    for (int n = 0; n < static_cast<int>(rcl.dwTaille()); ++n) {
        cs += rcl.pclGetEntree(n)->csGetNom().svGet();
        cs += L' ';
    }
    return cs;
}

class Repertoire : public testing::Test {
  protected:
    void SetUp() override {
        for (const wchar_t* const psz : {L"bin/kalmo", L"BIN/KALMO", L"empty/", L"readme"}) {
            ASSERT_TRUE(m_cl.bAjouteEntree(clEntry(psz, std::wstring_view(psz) == L"empty/" ? 0 : 9)));
        }
    }
    CRepertoire m_cl;
};

TEST_F(Repertoire, FindsNamesWithoutRegardToCaseAndSeparator) {
    EXPECT_EQ(m_cl.lRang(L"bin\\Kalmo"), 0);
    EXPECT_EQ(m_cl.lRang(L"README"), 3);
    EXPECT_EQ(m_cl.lRang(L"bin"), -1);
    EXPECT_TRUE(m_cl.bTrouve(L"EMPTY/"));
    EXPECT_EQ(m_cl.lRangCasse(L"BIN\\KALMO"), 1);
    EXPECT_EQ(m_cl.lRangCasse(L"Bin/Kalmo"), -1);
    EXPECT_EQ(m_cl.dwTaille(), 4U);
    EXPECT_EQ(m_cl.dwNombreFichier(), 3U);
    EXPECT_EQ(m_cl.pclGetEntree(-1), nullptr);
    EXPECT_EQ(m_cl.pclGetEntree(4), nullptr);
}

TEST_F(Repertoire, ChangesKeepRanksCountsAndIndexTogether) {
    m_cl.ForceRepVideAlaFin();
    EXPECT_EQ(csNames(m_cl), L"bin/kalmo BIN/KALMO readme empty/ ");
    EXPECT_EQ(m_cl.lRang(L"empty/"), 3);
    EXPECT_EQ(m_cl.dwNombreFichier(), 3U);
    EXPECT_TRUE(m_cl.bChangeChemin(0, L"lib\\old"));
    EXPECT_TRUE(m_cl.bChangeChemin(2, L"doc/"));
    EXPECT_FALSE(m_cl.bChangeChemin(4, L"doc/"));
    EXPECT_EQ(csNames(m_cl), L"lib/old/kalmo BIN/KALMO doc/readme empty/ ");
    EXPECT_EQ(m_cl.lRang(L"bin/kalmo"), 1);
    m_cl.SupprimeElement(1);
    m_cl.SupprimeElement(7);
    EXPECT_EQ(csNames(m_cl), L"lib/old/kalmo doc/readme empty/ ");
    EXPECT_EQ(m_cl.lRang(L"bin/kalmo"), -1);
    EXPECT_EQ(m_cl.lRang(L"doc/readme"), 1);
    m_cl.SupprimeElement(2);
    EXPECT_EQ(m_cl.dwNombreFichier(), 2U);
    m_cl.Vide();
    EXPECT_EQ(m_cl.dwTaille() + m_cl.dwNombreFichier(), 0U);
    EXPECT_EQ(m_cl.lRang(L"doc/readme"), -1);
}

// "AZ" and "B9" have one hash, and so has every row of them. Such names once made opening take minutes.
TEST(RepertoireNames, AllWithOneHashAreNoSlower) {
    CRepertoire cl;
    const auto Name = [](int n) {
        std::wstring cs;
        for (int nBit = 0; nBit < 16; ++nBit) {
            cs += (n >> nBit & 1) != 0 ? L"AZ" : L"b9";
        }
        return cs;
    };
    for (int n = 0; n < 0x10000; ++n) {
        ASSERT_TRUE(cl.bAjouteEntree(clEntry(Name(n).c_str())));
    }
    for (int n = 0; n < 0x10000; ++n) {
        ASSERT_EQ(cl.lRang(Name(n)), n);
    }
    EXPECT_EQ(cl.lRang(L"BA" + Name(0)), -1);
    ASSERT_TRUE(cl.bAjouteEntree(clEntry(Name(77).c_str())));
    EXPECT_EQ(cl.lRang(Name(77)), 77) << "the first of a name stays";
}

TEST(RepertoireFile, ComesBackAsItWasWritten) {
    const CTempFolder clFolder;
    CRepertoire clWritten;
    for (int n = 0; n < 3000; ++n) {  // more than one block of entries
        CRepEntree cl = clEntry((L"\u00E9\xDCFF/Name" + std::to_wstring(n)).c_str(),
                                0x100000000U + static_cast<unsigned>(n));
        cl.SetCrypte(n % 2 == 0, CTString(L"not written"));
        ASSERT_TRUE(clWritten.bAjouteEntree(std::move(cl)));
    }
    CDiskFile clFile;
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("directory"), CDiskFile::eMODE::Create));
    ASSERT_EQ(clWritten.eEcrit(clFile), ARCHIVE_OK);
    ASSERT_TRUE(clFile.bSeek(0));
    CRepertoire clRead;
    ASSERT_TRUE(clRead.bAjouteEntree(clEntry(L"from before")));
    ASSERT_TRUE(clRead.bLit(clFile));
    EXPECT_EQ(csNames(clRead), csNames(clWritten));
    const CRepEntree& rcl = *clRead.pclGetEntree(2222);
    EXPECT_EQ(clRead.lRang(L"\u00E9\xDCFF\\NAME2222"), 2222);
    EXPECT_EQ(rcl.u64GetTailleOriginale(), 0x100000000U + 2222);
    EXPECT_EQ(rcl.u64GetTailleCompresse(), 0x80000000U + 1111);
    EXPECT_EQ(rcl.rstGetTimes().stCreation.nAnnee, 2001);
    EXPECT_EQ(rcl.rstGetTimes().stAcces.nMinute, 63);
    EXPECT_EQ(rcl.dwGetAttribut(), 7U);
    EXPECT_TRUE(rcl.bCrypte());
    EXPECT_TRUE(rcl.bMdpOK(L""));
    EXPECT_FALSE(clWritten.pclGetEntree(2222)->bMdpOK(L""));
    EXPECT_TRUE(clWritten.pclGetEntree(2221)->bMdpOK(L""));
    EXPECT_EQ(clFolder.csRead("directory").find("not written"), std::string::npos);

    // Cut anywhere, or claiming what is not there, it is no directory at all.
    const std::string csBytes = clFolder.csRead("directory");
    for (const std::size_t nLength : {std::size_t{0}, std::size_t{11}, std::size_t{40}, csBytes.size() - 1}) {
        CMemoryStream clCut(CTLBIN(csBytes.begin(), csBytes.begin() + static_cast<std::ptrdiff_t>(nLength)));
        EXPECT_FALSE(clRead.bLit(clCut));
        EXPECT_EQ(clRead.dwTaille(), 0U);
    }
    for (const std::size_t nChanged : {0U, 4U, 11U, 15U}) {  // signature, version, count, length of a name
        std::string cs = csBytes;
        cs[nChanged] = '\x7F';
        CMemoryStream clChanged(CTLBIN(cs.begin(), cs.end()));
        EXPECT_FALSE(clRead.bLit(clChanged));
    }
}

}  // namespace
}  // namespace kalmo
