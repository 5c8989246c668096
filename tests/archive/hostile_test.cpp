#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "framework/conversion.h"
#include "tests/archive/crafted_zip.h"

// Archives that are damaged or made to deceive: each breaks one rule, and is refused for that very reason.

namespace kalmo {
namespace {

const std::string csZip64Locator = csLe(0x07064B50, 4) + csLe(0, 4);

/// A Zip64 end record and its locator for a directory right in front of them.
std::string csZip64End(const STCraftedZip& rst, std::uint64_t u64Entries, std::uint64_t u64Size,
                       std::uint64_t u64RecordSize = 44) {
    const std::uint64_t u64Position = rst.dwDirectoryStart() + u64Size;
    return csLe(0x06064B50, 4) + csLe(u64RecordSize, 8) + csLe(0, 4) + csLe(0, 8) + csLe(u64Entries, 8) +
           csLe(u64Entries, 8) + csLe(u64Size, 8) + csLe(rst.dwDirectoryStart(), 8) + csZip64Locator +
           csLe(u64Position, 8) + csLe(1, 4);
}

constexpr std::uint64_t u64HeaderSize = 46 + 5;  // of the one entry, "a.txt"

TEST(HostileArchive, IsNotOpened) {
    struct STCase {
        const char* pszFault;
        std::function<std::string(STCraftedZip)> bytes;
    };
    const STCase tabCase[] = {
        {"end record: not found", [](STCraftedZip) { return std::string(); }},
        {"end record: not found", [](STCraftedZip) { return csLe(0x06054B50, 4); }},
        {"end record: not found", [](STCraftedZip) { return std::string(100000, 'P'); }},
        {"end record: not found", [](STCraftedZip st) { return st.csBytes() + std::string(65536, 'x'); }},
        {"end record: cut short",
         [](STCraftedZip st) { return st.csBytes() + "PK\5\6" + std::string(17, 0); }},
        {"end record: the directory does not fit",
         [](STCraftedZip st) { return st.dwDirectorySize = 0xFFFFFFFF, st.csBytes(); }},
        {"end record: the directory does not fit",
         [](STCraftedZip st) { return st.dwDirectoryOffset = 0xFFFFFFFE, st.csBytes(); }},
        {"central header: wrong signature",
         [](STCraftedZip st) { return st.tabEntry[0].dwSignature = 0x02014B51, st.csBytes(); }},
        {"central header: cut short", [](STCraftedZip st) { return st.wEntries = 0xFFFF, st.csBytes(); }},
        {"central header: wrong signature",
         [](STCraftedZip st) { return st.csBeforeEnd = "gap", st.csBytes(); }},
        {"central header: name cut short",
         [](STCraftedZip st) { return st.tabEntry[0].wNameLength = 250, st.csBytes(); }},
        {"central header: extra field cut short",
         [](STCraftedZip st) { return st.tabEntry[0].wExtraLength = 0xFFFF, st.csBytes(); }},
        // A set of volumes whose directory begins in the first one, which is missing.
        {"central header: cannot be read", [](STCraftedZip st) { return st.wDisk = 2, st.csBytes(); }},
        {"Zip64 locator: no room",
         [](STCraftedZip st) {
             st.tabEntry.clear();
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"Zip64 locator: wrong signature",
         [](STCraftedZip st) { return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes(); }},
        {"Zip64 end record: wrong signature",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64Locator + csLe(0, 8) + csLe(1, 4);
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"Zip64 end record: cannot be read",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64Locator + csLe(UINT64_MAX, 8) + csLe(1, 4);
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"Zip64 end record: cut short",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64Locator + csLe(st.csBytes().size(), 8) + csLe(1, 4);
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"Zip64 end record: longer than the room",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64End(st, 1, u64HeaderSize, UINT64_MAX - 3);
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"Zip64 end record: cannot be read",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64Locator + csLe(0, 8) + csLe(0xFFFFFFFF, 4);  // volumes without end
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"central header: wrong signature",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64End(st, UINT64_MAX, u64HeaderSize);
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
        {"end record: the directory does not fit",
         [](STCraftedZip st) {
             st.csBeforeEnd = csZip64End(st, 1, u64HeaderSize);
             st.csBeforeEnd.replace(40, 8, csLe(UINT64_MAX, 8));
             return st.dwDirectoryOffset = 0xFFFFFFFF, st.csBytes();
         }},
    };
    for (const STCase& rst : tabCase) {
        SCOPED_TRACE(rst.pszFault);
        CCraftedArchive cl(rst.bytes({}));
        EXPECT_EQ(cl.eOpened(), ARCHIVE_BAD);
        EXPECT_EQ(cl.rclZip().eGetDerniereErreur(), ARCHIVE_BAD);
        EXPECT_THAT(csToUTF8(cl.rclZip().csGetDefaut()).pszGet(), testing::StartsWith(rst.pszFault));
        EXPECT_EQ(cl.rclZip().dwNombreFichier(), 0U);
        EXPECT_EQ(cl.csExtract(), "!1000");
    }
}

// What becomes of an entry whose headers lie, or whose data is not what they say.
TEST(HostileArchive, EntryIsDeliveredOnlyAsStated) {
    constexpr std::uint32_t dwCrcOfHello = 0x3610A686;  // of the first five characters
    constexpr std::uint32_t dwSaturated = 0xFFFFFFFF;
    const std::string csZip64Id = csLe(1, 2);
    struct STCase {
        const char* pszExpected;
        std::function<void(STCraftedZip&, STCraftedEntry&)> change;
        bool bDeflate = false;
    };
    using Z = STCraftedZip;
    using E = STCraftedEntry;
    const STCase tabCase[] = {
        {"hello, archive", [](Z&, E&) {}},
        {"hello, archive", [](Z&, E&) {}, true},
        {"", [](Z&, E& e) { e.csData.clear(); }},
        {"hello, archive", [](Z& z, E&) { z.csPrefix = "anything"; }},
        // Another story in the local header.
        {"!3", [](Z&, E& e) { e.dwLocalSignature = 0; }},
        {"!3", [](Z&, E& e) { e.wLocalMethode = 8; }},
        {"!3", [](Z&, E& e) { e.wMethode = 8; }},
        {"!3", [](Z&, E& e) { e.wMethode = 12, e.wLocalMethode = 12; }},
        {"!3", [](Z&, E& e) { e.dwLocalCrc = 1; }},
        {"hello, archive", [](Z&, E& e) { e.dwLocalCrc = 0, e.wLocalFlags = wFLAG_DESCRIPTEUR; }},
        {"hello, archive", [](Z&, E& e) { e.csLocalName = "A.TXT"; }},
        {"!3", [](Z&, E& e) { e.csLocalName = "b.txt"; }},
        {"!3", [](Z&, E& e) { e.csLocalName = "a.txt.exe"; }},
        {"!3", [](Z&, E& e) { e.dwOffset = 1; }},
        {"!3", [](Z&, E& e) { e.dwOffset = 0xFFFFFFFE; }},
        {"!3", [](Z& z, E&) { z.wDisk = z.wDirectoryDisk = 2; }},  // lies in a volume that is not there
        // Sizes and checks.
        {"!3", [](Z&, E& e) { e.dwOriginale = 15; }},
        {"!3", [](Z&, E& e) { e.dwOriginale = 15; }, true},
        {"!3", [](Z&, E& e) { e.dwCompresse = 13; }},
        {"!30", [](Z&, E& e) { e.dwCompresse = 9; }, true},
        {"!30", [](Z&, E& e) { e.dwCompresse = 0; }, true},
        {"!30", [](Z&, E& e) { e.dwCompresse = 0xFFFFFFF0; }},
        {"!30", [](Z&, E& e) { e.wMethode = e.wLocalMethode = 8; }},  // a text is no deflate stream
        {"!30", [](Z&, E& e) { e.dwCrc = e.dwLocalCrc = 1; }},
        {"!30", [](Z&, E& e) { e.dwOriginale = 5; }},
        {"!30", [](Z&, E& e) { e.dwOriginale = 0; }},
        {"hello", [](Z&, E& e) { e.dwOriginale = 5, e.dwCrc = e.dwLocalCrc = dwCrcOfHello; }},
        {"hello", [](Z&, E& e) { e.dwOriginale = 5, e.dwCrc = e.dwLocalCrc = dwCrcOfHello; }, true},
        {"!3", [](Z&, E& e) { e.wFlags = wFLAG_CRYPTE, e.csData.resize(11); }},
        {"!21", [](Z&, E& e) { e.wFlags = wFLAG_CRYPTE; }},
        // Zip64 values: those that are needed, or all of them, in the first block of the extra field.
        {"!30", [](Z&, E& e) { e.dwCompresse = e.dwOriginale = dwSaturated; }},
        {"hello, archive",
         [&](Z&, E& e) { e.dwOriginale = dwSaturated, e.csExtra = csZip64Id + csLe(8, 2) + csLe(14, 8); }},
        {"hello, archive",
         [&](Z&, E& e) { e.dwOffset = dwSaturated, e.csExtra = csZip64Id + csLe(8, 2) + csLe(0, 8); }},
        {"hello, archive",
         [&](Z&, E& e) {
             e.dwOriginale = e.dwOffset = dwSaturated;
             e.csExtra = csZip64Id + csLe(16, 2) + csLe(14, 8) + csLe(0, 8);
         }},
        {"hello, archive",
         [&](Z&, E& e) {
             e.dwOffset = dwSaturated;
             e.csExtra = csZip64Id + csLe(24, 2) + csLe(99, 8) + csLe(99, 8) + csLe(0, 8);
         }},
        {"!3",
         [&](Z&, E& e) {
             e.dwOriginale = dwSaturated;
             e.csExtra = csLe(0x5455, 2) + csLe(0, 2) + csZip64Id + csLe(8, 2) + csLe(14, 8);
         }},
        {"!3",
         [&](Z&, E& e) { e.dwOriginale = dwSaturated, e.csExtra = csZip64Id + csLe(9, 2) + csLe(14, 8); }},
    };
    for (const STCase& rst : tabCase) {
        SCOPED_TRACE(&rst - tabCase);
        STCraftedZip st;
        st.tabEntry[0].bDeflate = rst.bDeflate;
        rst.change(st, st.tabEntry[0]);
        CCraftedArchive cl(st.csBytes());
        EXPECT_EQ(cl.eOpened(), ARCHIVE_OK);
        EXPECT_EQ(cl.csExtract(), rst.pszExpected);
        EXPECT_EQ(cl.csExtract(), rst.pszExpected) << "the second time";
    }
}

TEST(HostileArchive, OneBadEntryLeavesTheOthersReadable) {
    STCraftedZip st;
    st.tabEntry.resize(3);
    st.tabEntry[1].csName = "b.txt";
    st.tabEntry[1].wLocalMethode = 14;
    st.tabEntry[2].csName = "c.txt";
    CCraftedArchive cl(st.csBytes());
    EXPECT_EQ(cl.csExtract(L"b.txt"), "!3");
    EXPECT_EQ(cl.rclZip().csGetDefaut().svGet(), L"local header: unsupported method, at byte 49");
    EXPECT_EQ(cl.csExtract(L"c.txt"), "hello, archive");
}

// 0xFFFF entries without Zip64 records are just that many entries.
TEST(HostileArchive, EntryCountAloneIsNoZip64) {
    STCraftedZip st;
    st.tabEntry.resize(0xFFFF);
    CCraftedArchive cl(st.csBytes());
    EXPECT_EQ(cl.eOpened(), ARCHIVE_OK);
    EXPECT_EQ(cl.rclZip().dwNombreFichier(), 0xFFFFU);
}

TEST(HostileArchive, LastEndRecordWins) {
    STCraftedZip st;
    st.csComment = "PK\5\6" + std::string(18, '\0') + "rest";
    CCraftedArchive cl(st.csBytes());
    EXPECT_EQ(cl.eOpened(), ARCHIVE_OK);
    EXPECT_EQ(cl.rclZip().dwNombreFichier(), 0U);
}

}  // namespace
}  // namespace kalmo
