#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "framework/conversion.h"
#include "tests/archive/crafted_zip.h"

// Archives that are damaged or made to deceive: each breaks one rule, and is refused for that very reason.

namespace kalmo {
namespace {

using Z = STCraftedZip;
using E = STCraftedEntry;

std::string csZip(const std::function<void(Z&, E&)>& rclChange) {
    STCraftedZip st;
    rclChange(st, st.tabEntry[0]);
    return st.csBytes();
}

std::string csLocator(std::uint64_t u64Offset, std::uint32_t dwDisks = 1) {
    return csLe(0x07064B50, 4) + csLe(0, 4) + csLe(u64Offset, 8) + csLe(dwDisks, 4);
}

/// The sound archive of one entry with something before its end record that is to be Zip64 records.
std::string csZip64(const std::string& rcsRecords) {
    return csZip([&](Z& z, E&) { z.csBeforeEnd = rcsRecords, z.dwDirectoryOffset = 0xFFFFFFFF; });
}

/// Zip64 records of that archive that say what they are told to.
std::string csRecords(std::uint64_t u64Entries, std::uint64_t u64Size, std::uint64_t u64RecordSize = 44) {
    constexpr std::uint64_t u64Start = 49;  // behind a local header with name and data
    return csLe(0x06064B50, 4) + csLe(u64RecordSize, 8) + csLe(0, 12) + csLe(u64Entries, 8) +
           csLe(u64Entries, 8) + csLe(u64Size, 8) + csLe(u64Start, 8) +
           csLocator(u64Start + 51);  // a central header of 51 bytes
}

TEST(HostileArchive, IsNotOpened) {
    const struct {
        const char* pszFault;
        std::string csBytes;
    } tabCase[] = {
        {"end record: not found", ""},
        {"end record: not found", "PK\5\6"},
        {"end record: not found", std::string(100000, 'P')},
        {"end record: not found", STCraftedZip().csBytes() + std::string(65536, 'x')},
        {"end record: cut short", STCraftedZip().csBytes() + "PK\5\6" + std::string(17, 0)},
        {"end record: the directory does not fit", csZip([](Z& z, E&) { z.dwDirectorySize = 0xFFFFFFFF; })},
        {"end record: the directory does not fit", csZip([](Z& z, E&) { z.dwDirectoryOffset = 0xFFFFFFFE; })},
        {"central header: wrong signature", csZip([](Z&, E& e) { e.dwSignature = 0x02014B51; })},
        {"central header: wrong signature", csZip([](Z& z, E&) { z.csBeforeEnd = "gap"; })},
        {"central header: cut short", csZip([](Z& z, E&) { z.wEntries = 0xFFFF; })},
        {"central header: name cut short", csZip([](Z&, E& e) { e.wNameLength = 250; })},
        {"central header: extra field cut short", csZip([](Z&, E& e) { e.wExtraLength = 0xFFFF; })},
        {"central header: cannot be read", csZip([](Z& z, E&) { z.wDisk = 2; })},  // in a missing volume
        {"Zip64 locator: no room", csLe(0x06054B50, 4) + csLe(0, 12) + csLe(0xFFFFFFFF, 4) + csLe(0, 2)},
        {"Zip64 locator: wrong signature", csZip64("")},
        {"Zip64 end record: wrong signature", csZip64(csLocator(0))},
        {"Zip64 end record: cannot be read", csZip64(csLocator(UINT64_MAX))},
        {"Zip64 end record: cut short", csZip64(csLocator(STCraftedZip().csBytes().size()))},
        {"Zip64 end record: cannot be read", csZip64(csLocator(0, 0xFFFFFFFF))},  // volumes without end
        {"Zip64 end record: longer than the room", csZip64(csRecords(1, 51, UINT64_MAX - 3))},
        {"end record: the directory does not fit", csZip64(csRecords(1, UINT64_MAX))},
        {"central header: wrong signature", csZip64(csRecords(UINT64_MAX, 51))},
    };
    for (const auto& rst : tabCase) {
        SCOPED_TRACE(rst.pszFault);
        CCraftedArchive cl(rst.csBytes);
        EXPECT_EQ(cl.eOpened(), ARCHIVE_BAD);
        EXPECT_EQ(cl.rclZip().eGetDerniereErreur(), ARCHIVE_BAD);
        EXPECT_THAT(csToUTF8(cl.rclZip().csGetDefaut()).pszGet(), testing::StartsWith(rst.pszFault));
        EXPECT_EQ(cl.rclZip().dwNombreFichier(), 0U);
        EXPECT_EQ(cl.csExtract(), "!1000");
    }
}

// What becomes of an entry whose headers lie, or whose data is not what they say.
TEST(HostileArchive, EntryIsDeliveredOnlyAsStated) {
    static constexpr std::uint32_t dwCrcOfHello = 0x3610A686;  // of the first five characters
    static constexpr std::uint32_t dwSaturated = 0xFFFFFFFF;
    const auto csBlock = [](std::initializer_list<std::uint64_t> tab) {  // a Zip64 block of these values
        std::string cs = csLe(1, 2) + csLe(tab.size() * 8, 2);
        for (const std::uint64_t u64 : tab) {
            cs += csLe(u64, 8);
        }
        return cs;
    };
    const std::string csBoth = csBlock({14, 0});
    const std::string csAll = csBlock({99, 99, 0});
    struct STCase {
        const char* pszExpected;
        std::function<void(Z&, E&)> change;
        bool bDeflate = false;
    };
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
        {"hello, archive",  // where the end record has no room for them, volumes are counted in the Zip64 one
         [](Z& z, E&) {
             z.wDisk = z.wDirectoryDisk = 0xFFFF;
             z.csBeforeEnd = csRecords(1, 51), z.dwDirectoryOffset = dwSaturated;
         }},
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
        {"hello, archive", [&](Z&, E& e) { e.dwOriginale = dwSaturated, e.csExtra = csBlock({14}); }},
        {"hello, archive", [&](Z&, E& e) { e.dwOffset = dwSaturated, e.csExtra = csBlock({0}); }},
        {"hello, archive", [&](Z&, E& e) { e.dwOriginale = e.dwOffset = dwSaturated, e.csExtra = csBoth; }},
        {"hello, archive", [&](Z&, E& e) { e.dwOffset = dwSaturated, e.csExtra = csAll; }},
        {"hello, archive", [&](Z&, E& e) { e.csExtra = csAll; }},  // nothing to replace
        {"!3", [&](Z&, E& e) { e.dwOriginale = dwSaturated, e.csExtra = csLe(0x5455, 4) + csBlock({14}); }},
        {"!3", [&](Z&, E& e) { e.dwOriginale = dwSaturated, e.csExtra = csLe(0x00090001, 4) + csLe(14, 8); }},
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
    st.tabEntry.resize(2);
    st.tabEntry[0].csName = "b.txt";
    st.tabEntry[0].wLocalMethode = 14;
    CCraftedArchive cl(st.csBytes());
    EXPECT_EQ(cl.csExtract(L"b.txt"), "!3");
    EXPECT_EQ(cl.rclZip().csGetDefaut().svGet(), L"local header: unsupported method, at byte 0");
    EXPECT_EQ(cl.csExtract(), "hello, archive");
}

TEST(HostileArchive, WhatIsOddButSound) {
    STCraftedZip stMany;
    stMany.tabEntry.resize(0xFFFF);
    const struct {
        const char* pszWhat;
        std::string csBytes;
        unsigned dwEntries;
    } tabCase[] = {
        {"that many entries alone are no Zip64", stMany.csBytes(), 0xFFFF},
        {"a directory of no bytes has no entries", csZip([](Z& z, E&) { z.dwDirectorySize = 0; }), 0},
        {"the last end record wins",
         csZip([](Z& z, E&) { z.csComment = "PK\5\6" + std::string(18, '\0') + "rest"; }), 0},
    };
    for (const auto& rst : tabCase) {
        CCraftedArchive cl(rst.csBytes);
        EXPECT_EQ(cl.eOpened(), ARCHIVE_OK) << rst.pszWhat;
        EXPECT_EQ(cl.rclZip().dwNombreFichier(), rst.dwEntries) << rst.pszWhat;
    }
    // Its offset alone finds a Zip64 end record: with bytes in front the caller has to tell how many.
    CMemoryStream clStream(tabBytes("in front" + csZip64(csRecords(1, 51))));
    CTVWinZip cl;
    EXPECT_EQ(cl.eOuvreArchiveStream(&clStream, 0, 0), ARCHIVE_BAD);
    EXPECT_EQ(cl.eOuvreArchiveStream(&clStream, 0, 8), ARCHIVE_OK);
    EXPECT_EQ(cl.dwNombreFichier(), 1U);
}

}  // namespace
}  // namespace kalmo
