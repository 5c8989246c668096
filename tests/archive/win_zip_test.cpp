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

TEST(WinZip, LocatesAndReadsInPieces) {
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
    CReader cl(st.csBytes());
    ASSERT_EQ(cl.m_eOpened, ARCHIVE_OK);
    std::size_t nRead = 1;
    EXPECT_FALSE(cl.bReadCurrentFileInZip(nullptr, 0, &nRead)) << "nothing is open";
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_NO_CURRENT);

    ASSERT_EQ(cl.LocateFile(L"dir\\ONE.txt", true), ARCHIVE_OK);
    EXPECT_EQ(cl.LocateFile(L"DIR/one.txt", true), ARCHIVE_NOT_LOCATED);
    EXPECT_EQ(cl.LocateFile(L"one.txt", false), ARCHIVE_NOT_LOCATED);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"dir/ONE.txt") << "the one before stays";
    for (const std::size_t nPiece : {1U, 7U, 4096U, 32768U, 1000000U}) {
        ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
        EXPECT_TRUE(cl.csReadAll(nPiece) == st.tabEntry[1].csData) << nPiece;
        EXPECT_EQ(cl.CloseCurrentFileInZip(1, 0), ARCHIVE_OK);
    }
    // A reading that is broken off has no CRC to compare; opening another entry closes it.
    ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    ASSERT_TRUE(cl.bReadCurrentFileInZip(&nRead, 1, &nRead));
    ASSERT_EQ(cl.LocateFile(L"MIXED\\a/b", false), ARCHIVE_OK);
    for (const int nCompare : {1, 0}) {
        ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
        EXPECT_EQ(cl.csReadAll(100), "hello, archive");
        EXPECT_EQ(cl.CloseCurrentFileInZip(nCompare, 0), nCompare != 0 ? ARCHIVE_CRC : ARCHIVE_OK);
    }
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_NO_CURRENT);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"");
}

TEST(WinZip, CodesOfItsOwn) {
    STCraftedZip st;
    EXPECT_EQ(CReader(st.csBytes() + "PK\5\6 too short").m_eOpened, ARCHIVE_READ);
    EXPECT_EQ(CReader("no archive").m_eOpened, ARCHIVE_BAD);
    st.tabEntry[0].wFlags = wFLAG_CRYPTE;
    CReader cl(st.csBytes());
    ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_CIPHER);

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
    rst.wDisk = 3;
    st.tabEntry.resize(2);
    st.tabEntry.push_back(st.tabEntry[0]);
    st.tabEntry[2].csLocalName = st.tabEntry[2].csName + "er";  // differs behind the part that is used
    CReader cl(st.csBytes());
    EXPECT_EQ(cl.csGetCommentaire().svGet(), L"caf\u00E9 \u20AC");
    EXPECT_EQ(cl.u64GetPrefixe(), 5U);
    ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_EQ(cl.pstGetCurrent()->csNom.svGet(), L"l" + std::wstring(259, L'o'));
    EXPECT_EQ(cl.pstGetCurrent()->tabExtra, tabBytes("extra"));
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    EXPECT_EQ(cl.csReadAll(100), "hello, archive");
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_OK);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"a.txt") << "found behind all that";
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_OK);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_BAD);
    const wchar_t* const tabExtension[] = {L".z01", L".z02", L".z03", L".zip", L".zip"};
    for (unsigned n = 0; n < 5; ++n) {
        EXPECT_EQ(cl.CurrentFile_szExtZip(n).svGet(), tabExtension[n]);
    }
}

}  // namespace
}  // namespace kalmo
