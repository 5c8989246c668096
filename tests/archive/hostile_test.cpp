#include <gmock/gmock.h>

#include "framework/conversion.h"
#include "tests/archive/made_zips.h"

// Archives that are damaged or made to deceive: each breaks one rule, and is refused for that very reason.

namespace kalmo {
namespace {

class HostileArchive : public CMadeZips {
  protected:
    eARCHIVE eOpen(const std::string& csName, std::int64_t i64Base = 0) {
        m_clStream.emplace(tabBytes(csName));
        return m_cl.eOuvreArchiveStream(&*m_clStream, 0, i64Base);
    }
    std::optional<CMemoryStream> m_clStream;
    CTVWinZip m_cl;
};

TEST_F(HostileArchive, IsNotOpened) {
    int n = 0;
    for (std::string cs = "refused.0"; m_clFolder.csRead(cs) != "(none)";
         cs = "refused." + std::to_string(++n)) {
        EXPECT_EQ(eOpen(cs), ARCHIVE_BAD) << cs;
        EXPECT_EQ(m_cl.eGetDerniereErreur(), ARCHIVE_BAD);
        EXPECT_THAT(csToUTF8(m_cl.csGetDefaut()).pszGet(),
                    testing::StartsWith(m_clFolder.csRead(cs + ".outcome")));
        EXPECT_EQ(m_cl.dwNombreFichier(), 0U);
        EXPECT_EQ(csExtract(m_cl), "!1000");
    }
    EXPECT_EQ(n, 22);
}

// What becomes of an entry whose headers lie, or whose data is not what they say.
TEST_F(HostileArchive, EntryIsDeliveredOnlyAsStated) {
    int n = 0;
    for (std::string cs = "opened.0"; m_clFolder.csRead(cs) != "(none)";
         cs = "opened." + std::to_string(++n)) {
        EXPECT_EQ(eOpen(cs), ARCHIVE_OK) << cs;
        EXPECT_EQ(csExtract(m_cl), m_clFolder.csRead(cs + ".outcome")) << cs;
        EXPECT_EQ(csExtract(m_cl), m_clFolder.csRead(cs + ".outcome")) << cs << ", the second time";
    }
    EXPECT_EQ(n, 39);
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
