#include <set>
#include <string>

#include "archive/entry_cipher.h"
#include "tests/archive/made_zips.h"

namespace kalmo {
namespace {

using STKeys = CEntryCipher::STKeys;

// The answers come from an implementation of the published description in another language.
TEST(EntryCipher, KnownAnswersAndTheCheckOfTheHeader) {
    CEntryCipher cl;
    // Of each character only the low 8 bits count.
    for (const wchar_t* const psz : {L"secret", L"\x1F373\x100065\U00000163ret"}) {
        cl.CryptInitKeys(psz);
        EXPECT_EQ(cl.rstGetKeys(), (STKeys{0xDDA9E469, 0x96212999, 0xF9FC9651}));
    }
    CTLBIN tab(16, 0);
    tab[0] = cl.CryptEncode(tab[0]);
    cl.CryptEncodeBuffer(std::span(tab).subspan(1));
    const std::string csStream(tab.begin(), tab.end());
    EXPECT_EQ(csStream, "\xC8\x89\xC9\x5B\xB4\xDE\xAC\x0E\x5A\x9D\x7E\x61\x0B\xBA\x69\xE7");
    cl.CryptInitKeys(L"secret");
    tab[0] = cl.CryptDecode(tab[0]);
    cl.CryptDecodeBuffer(std::span(tab).subspan(1));
    EXPECT_EQ(tab, CTLBIN(16, 0));
    CCryptHeader tabHeader;
    cl.CryptCryptHeader(L"right", 0xA1B2C3D4, &tabHeader);
    cl.CryptInitKeys(L"right");
    EXPECT_TRUE(cl.bCryptCheck(tabHeader, 0xA1));
    EXPECT_EQ(tabHeader[10], 0xB2);
}

// A wrong password that passes the header by chance fails at the CRC.
TEST(EntryCipher, EntryOpensWithItsPasswordOnly) {
    const CTempFolder clFolder;
    clFolder.Write("a.txt", "hello");
    for (const char* const psz :
         {"zip -q -P 'p\xE9' a.zip a.txt", "zip -q -P 'p\xE9' - a.txt | cat >a.zip"}) {
        ASSERT_TRUE(clFolder.bShell(psz));
        CTVWinZip cl;
        ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK);
        EXPECT_EQ(cl.eMotDePasse(L"p\u00E9"), ARCHIVE_OK);
        EXPECT_EQ(csExtract(cl), "hello");
        std::set<std::string> setResult;
        for (int n = 0; n < 3000; ++n) {
            (void)cl.eMotDePasse((L"wrong" + std::to_wstring(n)).c_str());
            setResult.insert(csExtract(cl));
        }
        setResult.erase("!3");  // a deflate stream that happens to end early
        EXPECT_EQ(setResult, (std::set<std::string>{"!21", "!30"}));
    }
}

TEST(EntryCipher, PasswordsThatCannotBeUsedAreRefused) {
    CWinZip clRecords;
    EXPECT_TRUE(clRecords.bSetPassword(L"dropped") && clRecords.bSetPassword(nullptr));
    EXPECT_STREQ(clRecords.pszGetPassword(), L"");
    CTVWinZip cl;
    CTString csPassword;
    EXPECT_EQ(cl.eMotDePasse(L"dropped"), ARCHIVE_OK);
    const wchar_t szNegative[] = {L'a', static_cast<wchar_t>(0x80000000), L'\0'};
    EXPECT_EQ(cl.eMotDePasse(szNegative), ARCHIVE_PASSWORD);
    EXPECT_EQ(cl.eGetMotDePasse(csPassword), ARCHIVE_OK);
    EXPECT_TRUE(csPassword.bEmpty());
}

}  // namespace
}  // namespace kalmo
