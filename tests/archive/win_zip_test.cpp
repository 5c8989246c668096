#include "archive/win_zip.h"

#include "tests/archive/made_zips.h"

namespace kalmo {
namespace {

// A record reader over bytes in memory.
class CReader : public CWinZip {
  public:
    explicit CReader(CTLBIN tab, std::int64_t i64Base = 0) : m_clStream(std::move(tab)) {
        SetStream(&m_clStream, i64Base);
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

using WinZip = CMadeZips;

TEST_F(WinZip, LocatesAndReadsInPieces) {
    CReader cl(tabBytes("walked"));
    ASSERT_EQ(cl.m_eOpened, ARCHIVE_OK);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_NO_CURRENT);

    std::string csSquares;
    for (int n = 0; n < 20000; ++n) {
        csSquares += std::to_string(n * n);
    }
    ASSERT_EQ(cl.LocateFile(L"dir\\ONE.txt", true), ARCHIVE_OK);
    EXPECT_EQ(cl.LocateFile(L"DIR/one.txt", true), ARCHIVE_NOT_LOCATED);
    EXPECT_EQ(cl.LocateFile(L"one.txt", false), ARCHIVE_NOT_LOCATED);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"dir/ONE.txt") << "the one before stays";
    for (const std::size_t nPiece : {7U, 32768U, 1000000U}) {
        ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
        EXPECT_TRUE(cl.csReadAll(nPiece) == csSquares) << nPiece;
        EXPECT_EQ(cl.CloseCurrentFileInZip(1, 0), ARCHIVE_OK);
    }
    // A reading that is broken off has no CRC to compare; opening another entry closes it.
    ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    std::size_t nRead = 0;
    ASSERT_TRUE(cl.bReadCurrentFileInZip(&nRead, 1, &nRead));
    ASSERT_EQ(cl.LocateFile(L"MIXED\\a/b", false), ARCHIVE_OK);
    // What was read whole is compared, whatever the arguments.
    for (const auto& [nFirst, nSecond] : {std::pair(1, 0), {0, 0}, {0, 1}}) {
        ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
        EXPECT_EQ(cl.csReadAll(nFirst + 14), "hello, archive");
        EXPECT_EQ(cl.CloseCurrentFileInZip(nFirst, nSecond), ARCHIVE_CRC);
    }
    EXPECT_EQ(cl.NextFile(0), ARCHIVE_NO_CURRENT);
    EXPECT_STREQ(cl.CurrentFile_szName(), L"");
}

TEST_F(WinZip, CodesOfItsOwn) {
    EXPECT_EQ(CReader(tabBytes("short end")).m_eOpened, ARCHIVE_READ);
    CReader cl(tabBytes("listed"));
    ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_CIPHER);
    EXPECT_TRUE(CWinZip::bFichierZip(m_clFolder.csWide("sound")));
    EXPECT_FALSE(CWinZip::bFichierZip(m_clFolder.csWide("no end")));
}

TEST_F(WinZip, WhatIsOddButSound) {
    // So many entries alone are no Zip64; a directory of no bytes has none, whatever is counted.
    for (const auto& [pszName, nEntries] :
         {std::pair("65535 entries", 65535U), {"no directory", 0U}, {"last end record", 0U}}) {
        const CReader cl(tabBytes(pszName));
        EXPECT_EQ(cl.m_eOpened, ARCHIVE_OK) << pszName;
        EXPECT_EQ(cl.nGetCount(), nEntries) << pszName;
    }
    // Its offset alone finds a Zip64 end record: with bytes in front the caller has to tell how many.
    EXPECT_EQ(CReader(tabBytes("in front")).m_eOpened, ARCHIVE_BAD);
    EXPECT_EQ(CReader(tabBytes("in front"), 8).nGetCount(), 1U);
}

TEST_F(WinZip, KeepsWhatTheRecordsSay) {
    CReader cl(tabBytes("long names"));
    EXPECT_EQ(cl.csGetCommentaire().svGet(), L"caf\u00E9 \u20AC");
    EXPECT_EQ(cl.u64GetPrefixe(), 5U);
    ASSERT_EQ(cl.FirstFile(), ARCHIVE_OK);
    EXPECT_EQ(cl.pstGetCurrent()->csNom.svGet(), L"l" + std::wstring(259, L'o'));
    EXPECT_EQ(cl.pstGetCurrent()->tabExtra, (CTLBIN{'e', 'x', 't', 'r', 'a'}));
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
