#include "archive/win_zip.h"

#include <gtest/gtest.h>

#include "tests/archive/crafted_zip.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

// A record reader over bytes in memory.
class CReader : public CWinZip {
  public:
    explicit CReader(std::string_view svBytes) : m_clStream(tabBytes(svBytes)) {
        SetStream(&m_clStream, 0);
        m_eOpened = OuvreZip(L"", 0);
    }
    /// Reads the current entry in pieces of the given size.
    std::string csReadAll(std::size_t nPiece) {
        std::string csAll;
        std::string csPiece(nPiece, '\0');
        std::size_t nRead = 0;
        while (bReadCurrentFileInZip(csPiece.data(), nPiece, &nRead) && nRead > 0) {
            csAll.append(csPiece, 0, nRead);
        }
        return csAll;
    }
    eARCHIVE m_eOpened = ARCHIVE_OK;

  private:
    CMemoryStream m_clStream;
};

std::string csThreeEntries() {
    STCraftedZip st;
    st.tabEntry.resize(3);
    st.tabEntry[0].csName = "Dir\\one.txt";
    st.tabEntry[1].csName = "dir/ONE.txt";
    st.tabEntry[1].bDeflate = true;
    for (int n = 0; n < 20000; ++n) {
        st.tabEntry[1].csData += std::to_string(n * n);
    }
    st.tabEntry[2].csName = "mixed/a\\b";
    st.tabEntry[2].dwCrc = st.tabEntry[2].dwLocalCrc = 1;
    return st.csBytes();
}

TEST(WinZip, WalksAndLocatesEntries) {
    CReader cl(csThreeEntries());
    ASSERT_EQ(cl.m_eOpened, ARCHIVE_OK);
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_NO_CURRENT);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_NO_CURRENT);
    EXPECT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"Dir\\one.txt");
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_OK);
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_OK);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"mixed/a\\b");
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_NO_CURRENT);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"");

    const struct {
        const wchar_t* pszName;
        bool bCasse;
        const wchar_t* pszFound;  // none: not found
    } tabCase[] = {
        {L"dir/one.TXT", false, L"Dir\\one.txt"}, {L"DIR\\ONE.TXT", false, L"Dir\\one.txt"},
        {L"dir\\ONE.txt", true, L"dir/ONE.txt"},  {L"Dir/one.txt", true, L"Dir\\one.txt"},
        {L"DIR/one.txt", true, nullptr},          {L"mixed\\a\\b", false, L"mixed/a\\b"},
        {L"mixed/a/b", true, L"mixed/a\\b"},      {L"one.txt", false, nullptr},
    };
    for (const auto& rst : tabCase) {
        ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
        EXPECT_EQ(cl.LocateFile(rst.pszName, rst.bCasse),
                  rst.pszFound != nullptr ? ARCHIVE_OK : ARCHIVE_NOT_LOCATED);
        EXPECT_STREQ(cl.CurrentFile_szName(), rst.pszFound != nullptr ? rst.pszFound : L"Dir\\one.txt");
    }
}

TEST(WinZip, ReadsInPiecesOfAnySize) {
    CReader cl(csThreeEntries());
    std::size_t nRead = 1;
    EXPECT_FALSE(cl.bReadCurrentFileInZip(nullptr, 0, &nRead)) << "nothing is open";
    EXPECT_EQ(nRead, 0U);
    ASSERT_EQ(cl.LocateFile(L"dir/ONE.txt", true), ARCHIVE_OK);
    std::string csFirst;
    for (const std::size_t nPiece : {1U, 7U, 4096U, 32768U, 1000000U}) {
        ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
        const std::string cs = cl.csReadAll(nPiece);
        EXPECT_EQ(cs.size(), cl.pstGetCurrent()->u64TailleOriginale);
        EXPECT_TRUE(csFirst.empty() || cs == csFirst);
        csFirst = cs;
        EXPECT_EQ(cl.CloseCurrentFileInZip(1, 0), ARCHIVE_OK);
    }
    // A reading that is broken off has no CRC to compare; opening another entry closes it.
    ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    ASSERT_TRUE(cl.bReadCurrentFileInZip(csFirst.data(), 10, &nRead));
    ASSERT_EQ(cl.LocateFile(L"mixed/a/b", false), ARCHIVE_OK);
    ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    EXPECT_EQ(cl.csReadAll(100), "hello, archive");
    EXPECT_EQ(cl.CloseCurrentFileInZip(1, 0), ARCHIVE_CRC);
    ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    EXPECT_EQ(cl.csReadAll(100), "hello, archive");
    EXPECT_EQ(cl.CloseCurrentFileInZip(0, 0), ARCHIVE_OK) << "not asked to compare";
}

TEST(WinZip, CodesOfItsOwn) {
    STCraftedZip st;
    EXPECT_EQ(CReader(st.csBytes() + "PK\5\6 too short").m_eOpened, ARCHIVE_READ);
    EXPECT_EQ(CReader("no archive").m_eOpened, ARCHIVE_BAD);
    st.tabEntry[0].wFlags = wFLAG_CRYPTE;
    CReader cl(st.csBytes());
    ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_CIPHER);
    EXPECT_TRUE(cl.pstGetCurrent()->bCrypte());

    const CTempFolder clFolder;
    clFolder.Write("yes", st.csBytes());
    clFolder.Write("no", "PK");
    EXPECT_TRUE(CWinZip::bFichierZip(clFolder.csWide("yes")));
    EXPECT_FALSE(CWinZip::bFichierZip(clFolder.csWide("no")));
    EXPECT_FALSE(CWinZip::bFichierZip(clFolder.csWide("missing")));
}

TEST(WinZip, KeepsWhatTheRecordsSay) {
    STCraftedZip st;
    st.csPrefix = "12345";
    st.csComment = "caf\xE9 \x80";
    st.wDisk = st.wDirectoryDisk = 3;
    STCraftedEntry& rst = st.tabEntry[0];
    rst.csName = "l" + std::string(270, 'o') + "ng";
    rst.csExtra = "extra";
    rst.csComment = "entry comment";
    rst.wMadeBy = 0x0014;
    rst.dwAttribut = 0x20;
    st.tabEntry.resize(2);
    CReader cl(st.csBytes());
    ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_EQ(cl.csGetCommentaire().svGet(), L"caf\u00E9 \u20AC");
    EXPECT_EQ(cl.u64GetPrefixe(), 5U);
    EXPECT_EQ(cl.rstGetEndRecord().dwDirectoryDisk, 3U);
    const STCentralHeader& rstRead = *cl.pstGetCurrent();
    EXPECT_EQ(rstRead.csNom.svGet(), L"l" + std::wstring(259, L'o'));
    EXPECT_EQ(rstRead.tabExtra, tabBytes("extra"));
    EXPECT_EQ(rstRead.dwAttribut, 0x20U + 438U);
    const CDiskFile::STFileTime stDate = rstRead.stDate();
    EXPECT_EQ(stDate.nAnnee * 10000 + stDate.nMois * 100 + stDate.nJour, 20240101);
    EXPECT_EQ(stDate.nHeure * 10000 + stDate.nMinute * 100 + stDate.nSeconde, 132330);
    EXPECT_EQ(cl.CurrentFile_szExtZip(0).svGet(), L".z01");
    EXPECT_EQ(cl.CurrentFile_szExtZip(2).svGet(), L".z03");
    EXPECT_EQ(cl.CurrentFile_szExtZip(3).svGet(), L".zip");
    EXPECT_EQ(cl.CurrentFile_szExtZip(9).svGet(), L".zip");
    // The header behind the long name is found, and a name of 273 bytes fits its local one.
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_OK);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"a.txt");
}

}  // namespace
}  // namespace kalmo
