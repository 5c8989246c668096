#include <gtest/gtest.h>

#include <set>
#include <string>

#include "archive/entry_cipher.h"
#include "tests/archive/crafted_zip.h"

namespace kalmo {
namespace {

using STKeys = CEntryCipher::STKeys;

// The answers come from an implementation of the published description in another language.
TEST(EntryCipher, KnownAnswers) {
    CEntryCipher cl;
    EXPECT_EQ(cl.rstGetKeys(), (STKeys{0x12345678, 0x23456789, 0x34567890}));
    cl.CryptInitKeys(L"secret");
    EXPECT_EQ(cl.rstGetKeys(), (STKeys{0xDDA9E469, 0x96212999, 0xF9FC9651}));
    // Of each character only the low 8 bits count.
    cl.CryptInitKeys(L"\x1F373\x100065\U00000163ret");
    EXPECT_EQ(cl.rstGetKeys(), (STKeys{0xDDA9E469, 0x96212999, 0xF9FC9651}));

    CTLBIN tab(16, 0);
    tab[0] = cl.CryptEncode(tab[0]);
    cl.CryptEncodeBuffer(std::span(tab).subspan(1));
    const std::string csStream(tab.begin(), tab.end());
    EXPECT_EQ(csStream, "\xC8\x89\xC9\x5B\xB4\xDE\xAC\x0E\x5A\x9D\x7E\x61\x0B\xBA\x69\xE7");
    CEntryCipher clDecode;
    clDecode.CryptInitKeys(L"secret");
    tab[0] = clDecode.CryptDecode(tab[0]);
    clDecode.CryptDecodeBuffer(std::span(tab).subspan(1));
    EXPECT_EQ(tab, CTLBIN(16, 0));
    EXPECT_EQ(clDecode.rstGetKeys(), cl.rstGetKeys());
}

TEST(EntryCipher, HeaderHoldsTheCheck) {
    CEntryCipher cl;
    CCryptHeader tabHeader;
    cl.CryptCryptHeader(L"right", 0xA1B2C3D4, &tabHeader);
    const STKeys stAfter = cl.rstGetKeys();

    CCryptHeader tabOpened = tabHeader;
    cl.CryptInitKeys(L"right");
    EXPECT_TRUE(cl.bCryptCheck(tabOpened, 0xA1));
    EXPECT_EQ(tabOpened[10], 0xB2);
    EXPECT_EQ(cl.rstGetKeys(), stAfter);
}

// What this system enciphers itself it reads back; a wrong password that passes the header by chance fails
// at the CRC.
TEST(EntryCipher, EntryOpensWithItsPasswordOnly) {
    const auto Encipher = [](std::wstring_view svPassword, bool bStreamed) {
        STCraftedEntry stEntry;
        CTLBIN tab = tabBytes(stEntry.csData);
        const std::uint32_t dwCrc = 0xFFBA6A1D;
        CEntryCipher cl;
        CCryptHeader tabHeader;
        cl.CryptCryptHeader(svPassword, bStreamed ? stEntry.dwDate << 16 : dwCrc, &tabHeader);
        cl.CryptEncodeBuffer(tab);
        tab.insert(tab.begin(), tabHeader.begin(), tabHeader.end());
        stEntry.csData.assign(tab.begin(), tab.end());
        stEntry.dwCrc = stEntry.dwLocalCrc = dwCrc;
        stEntry.dwOriginale = static_cast<std::uint32_t>(tab.size() - tabHeader.size());
        stEntry.wFlags = static_cast<std::uint16_t>(wFLAG_CRYPTE | (bStreamed ? wFLAG_DESCRIPTEUR : 0));
        STCraftedZip stZip;
        stZip.tabEntry[0] = stEntry;
        return stZip.csBytes();
    };
    for (const bool bStreamed : {false, true}) {
        CCraftedArchive cl(Encipher(L"p\u00E9", bStreamed));
        EXPECT_EQ(cl.csExtract(), "!21");
        EXPECT_EQ(cl.rclZip().eMotDePasse(L"p\u00E9"), ARCHIVE_OK);
        EXPECT_EQ(cl.csExtract(), "hello, archive");
        std::set<std::string> tabResult;
        for (int n = 0; n < 3000; ++n) {
            (void)cl.rclZip().eMotDePasse((L"wrong" + std::to_wstring(n)).c_str());
            tabResult.insert(cl.csExtract());
        }
        EXPECT_EQ(tabResult, (std::set<std::string>{"!21", "!30"}));
        EXPECT_EQ(cl.rclZip().eMotDePasse(nullptr), ARCHIVE_OK);
        EXPECT_EQ(cl.csExtract(), "!21");
    }
}

TEST(EntryCipher, PasswordsThatCannotBeUsedAreRefused) {
    CTVWinZip cl;
    CTString csPassword;
    EXPECT_EQ(cl.eMotDePasse(L"kept"), ARCHIVE_OK);
    EXPECT_EQ(cl.eGetMotDePasse(csPassword), ARCHIVE_OK);
    EXPECT_EQ(csPassword.svGet(), L"kept");
    const wchar_t szNegative[] = {L'a', static_cast<wchar_t>(0x80000000), L'\0'};
    EXPECT_EQ(cl.eMotDePasse(szNegative), ARCHIVE_PASSWORD);
    EXPECT_EQ(cl.eGetMotDePasse(csPassword), ARCHIVE_OK);
    EXPECT_TRUE(csPassword.bEmpty());
    EXPECT_FALSE(CWinZip().bSetPassword({L"a\0b", 3}));
}

}  // namespace
}  // namespace kalmo
