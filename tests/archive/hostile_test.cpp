#include "framework/conversion.h"
#include "tests/archive/made_zips.h"

// Archives that are damaged or made to deceive.

namespace kalmo {
namespace {

class HostileArchive : public CMadeZips {
  protected:
    eARCHIVE eOpen(const std::string& csName, std::int64_t i64Base = 0) {
        m_clStream.emplace(tabBytes(csName));
        return m_cl.eOuvreArchiveStream(&*m_clStream, 0, i64Base);
    }
    // What becomes of a.txt; where the archive is not opened the reason, up to the place.
    std::string csOutcome(const std::string& csName) {
        if (eOpen(csName) == ARCHIVE_OK) {
            return csExtract(m_cl);
        }
        EXPECT_EQ(m_cl.eGetDerniereErreur(), ARCHIVE_BAD);
        EXPECT_EQ(m_cl.dwNombreFichier(), 0U);
        EXPECT_EQ(csExtract(m_cl), "!1000");
        const std::string csFault = csToUTF8(m_cl.csGetDefaut()).pszGet();
        return csFault.substr(0, csFault.find(", at byte"));
    }
    std::optional<CMemoryStream> m_clStream;
    CTVWinZip m_cl;
};

TEST_F(HostileArchive, EachBreaksOneRule) {
    int n = 0;
    for (std::string cs = "case.0"; m_clFolder.csRead(cs) != "(none)"; cs = "case." + std::to_string(++n)) {
        EXPECT_EQ(csOutcome(cs), m_clFolder.csRead(cs + ".outcome")) << cs;
    }
    EXPECT_EQ(n, 47);
}

TEST_F(HostileArchive, OneBadEntryLeavesTheOthersReadable) {
    ASSERT_EQ(eOpen("one bad"), ARCHIVE_OK);
    EXPECT_EQ(csExtract(m_cl, L"b.txt"), "!3");
    EXPECT_EQ(m_cl.csGetDefaut().svGet(), L"local header: unsupported method, at byte 0");
    EXPECT_EQ(csExtract(m_cl), "hello, archive");
}

TEST_F(HostileArchive, WhatIsOddButSound) {
    // So many entries alone are no Zip64; a directory of no bytes has none, whatever is counted.
    for (const auto& [pszName, dwEntries] :
         {std::pair("65535 entries", 65535U), {"no directory", 0U}, {"last end record", 0U}}) {
        EXPECT_EQ(eOpen(pszName), ARCHIVE_OK) << pszName;
        EXPECT_EQ(m_cl.dwNombreFichier(), dwEntries) << pszName;
    }
    // Its offset alone finds a Zip64 end record: with bytes in front the caller has to tell how many.
    EXPECT_EQ(eOpen("in front"), ARCHIVE_BAD);
    EXPECT_EQ(eOpen("in front", 8), ARCHIVE_OK);
    EXPECT_EQ(m_cl.dwNombreFichier(), 1U);
}

}  // namespace
}  // namespace kalmo
