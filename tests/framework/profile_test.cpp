#include "framework/profile.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <string>
#include <tuple>

#include "framework/memory_stream.h"
#include "framework/process_info.h"
#include "framework/profile_encoding.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

using namespace std::string_literals;

// The same text as a wide file.
std::string csWideFile(std::string_view svAscii) {
    std::string cs = "\xFF\xFE";
    for (const char c : svAscii) {
        cs += {c, '\0'};
    }
    return cs;
}

// What a write leaves at the end that was killed before it cut the file.
const std::string csKilled(600, '\0');

class Profile : public testing::Test {
  protected:
    void File(std::string_view sv) const { m_clFolder.Write("f.ini", sv); }
    [[nodiscard]] std::string csFile() const { return m_clFolder.csRead("f.ini"); }
    [[nodiscard]] std::wstring csGet(const wchar_t* pszSection, const wchar_t* pszKey) const {
        std::array<wchar_t, 4000> szValue{};
        const unsigned dwLength =
            GetPrivateProfileString(pszSection, pszKey, L"(default)", szValue.data(), 4000, m_csPath.c_str());
        return {szValue.data(), dwLength};
    }
    bool bSet(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszValue) {
        return WritePrivateProfileString(pszSection, pszKey, pszValue, m_csPath.c_str());
    }

    const CTempFolder m_clFolder;
    std::wstring m_csPath = m_clFolder.csWide("f.ini");
    const std::string m_csPath8 = m_clFolder.clPath("f.ini");
};

TEST_F(Profile, ReadsValues) {
    const std::pair<const char*, const wchar_t*> tabCase[] = {
        // Blanks, tabs and line ends.
        {"  [AB]\n\n  k \t = \t v w \n", L"v w "},
        {"[AB]\nk = \t\nk=2", L""},
        {"[AB]\r\nk=v\r\n", L"v"},
        {"[AB]\nk=v\rw\n", L"v"},
        {"[AB]\n\tk=v\n", L"(default)"},  // a tab is no blank
        {"[AB]\n  k=1\nk = 2\n", L"1"},   // what a write behind the blanks leaves
        // Names.
        {"[AB ]\nk=1\n[ABC]\nk=2\n[A]\nk=3\n[ab] rest\nK=4\n", L"4"},
        {"[AB]\nkey=1\nk no value\nk\n=1\nk other = b=c\nk=2\n", L"b=c"},
        // Comments and the section's end.
        {"[AB]\n [C] \nk=1\n[AB]\nk=2\n", L"(default)"},
        {"k=1\n[AB\nk=2\n:[AB]\nk=3\n[AB]\n[C\n:[D]\nk=4\n", L"4"},
    };
    for (const auto& [pszFile, pszValue] : tabCase) {
        for (const bool bWide : {false, true}) {
            File((bWide ? csWideFile(pszFile) : pszFile) + csKilled);
            EXPECT_EQ(csGet(L"AB", L"k"), pszValue) << pszFile << bWide;
        }
    }
    File("[AB]\na=b = c\n");
    EXPECT_EQ(csGet(L"AB", L"a=b"), L"c");
}

TEST_F(Profile, WritesInPlace) {
    const std::tuple<const char*, const wchar_t*, const wchar_t*, const char*> tabCase[] = {
        // A section that is not there.
        {"", L"k", L"v", "[AB]\nk = v\n"},
        {"[AB ]\n[ABC]\n [AB]", L"k", L"v", "[AB ]\n[ABC]\n [AB]\n[AB]\nk = v\n"},
        {"[C]\nk=1\n", nullptr, nullptr, "[C]\nk=1\n"},
        // A key that is there.
        {"[ab] x\nK=1\nl=2\n", L"k", L"a longer value", "[ab] x\nk = a longer value\nl=2\n"},
        {"[AB]\r\nk=a longer value\r\nk=2\n", L"k", L"v", "[AB]\r\nk = v\nk=2\n"},
        {"[AB]\nl=2\nk\t=1", L"k", L"", "[AB]\nl=2\nk = \n"},
        // A key that is not there, or that writing does not see.
        {"[AB]\n k=1\n", L"k", L"v", "[AB]\n k=1\nk = v\n"},  // only the first column counts
        {"[AB]\nkey=1\nk\n:k=1\n [C]\n", L"k", L"v", "[AB]\nkey=1\nk\n:k=1\n [C]\nk = v\n"},
        {"[AB]\r\nl=2\r\n\r\nk=1\r\n", L"k", L"v", "[AB]\r\nl=2\r\nk = v\n\r\nk=1\r\n"},
        {"[AB]\nl=2\n\nk=1\n", L"k", L"v", "[AB]\nl=2\nk = v\n\nk=1\n"},
        {"[AB]\nl=2\n[C]\nk=1\n", L"k", L"v", "[AB]\nl=2\nk = v\n[C]\nk=1\n"},
        // Removing a key.
        {"[AB]\nk=1\nl=2\n", L"K", nullptr, "[AB]\nl=2\n"},
        {"[AB]\nl=2\n", L"k", nullptr, "[AB]\nl=2\n"},
        // Removing the section, to the next line that begins with "[".
        {"[C]\nk=1\n[ab]\nk=2\n\n [D]\n[E]\nk=3\n", nullptr, L"x", "[C]\nk=1\n[E]\nk=3\n"},
        {"[AB]\nk=1\n[C\nk=2\n[AB]\n", nullptr, nullptr, "[C\nk=2\n[AB]\n"},
        // A text that could not be read back.
        {"[AB]\nk=1\n", L"k", L"1\nl=2", nullptr},
        {"[AB]\nk=1\n", L"k\r", L"v", nullptr},
    };
    for (const auto& [pszBefore, pszKey, pszValue, pszAfter] : tabCase) {
        for (const bool bWide : {false, true}) {
            const auto csAs = [bWide](const char* psz) { return bWide ? csWideFile(psz) : std::string(psz); };
            for (const std::string& rcsEnd : {""s, csKilled}) {
                const std::string csBefore = csAs(pszBefore) + rcsEnd;
                const bool bSame = pszAfter == nullptr || pszBefore == std::string(pszAfter);
                File(csBefore);
                EXPECT_EQ(bSet(L"AB", pszKey, pszValue), pszAfter != nullptr);
                EXPECT_EQ(csFile(), bSame ? csBefore : csAs(pszAfter));
            }
        }
    }
}

TEST_F(Profile, EveryByteAndUnitOutsideAChangeStays) {
    // Bytes that are no UTF-8 and null characters in an 8-bit file; a null ends the value that holds it.
    const std::string csOdd = "\0[AB]\n[AB]\nn=v\0w\n\xFF\xC3=\xE9\n"s;
    const std::wstring csLong(3900, L'x');  // lines have no length limit
    const std::tuple<std::string, std::wstring, std::wstring, std::string, std::wstring> tabCase[] = {
        {csOdd, L"\xDCFF\xDCC3", L"\xDCE8", "\0[AB]\n[AB]\nn=v\0w\n\xFF\xC3 = \xE8\n"s, L"\xDCE8"},
        // Half a unit at the end of a wide file stays behind what is appended.
        {csWideFile("[AB]\nl=2") + "\n", L"k", L"v", csWideFile("[AB]\nl=2\nk = v\n") + "\n", L"v"},
        // Units of a wide file are wide characters; in an 8-bit file two of them mean one character.
        {csWideFile("[AB]\n"), L"k\U0001F600", L"\u010A\U0001F600\xDC80",
         csWideFile("[AB]\nk") + "\x3D\xD8\x00\xDE \0=\0 \0\x0A\x01\x3D\xD8\x00\xDE\x80\xDC\n\0"s,
         L"\u010A\xD83D\xDE00\xDC80"},
        {"", L"k", L"\xD83D\xDE00", "[AB]\nk = \xF0\x9F\x98\x80\n", L"\U0001F600"},
        {"", L"k", csLong, "[AB]\nk = " + std::string(3900, 'x') + "\n", csLong},
    };
    for (const auto& [csBefore, csKey, csValue, csAfter, csRead] : tabCase) {
        File(csBefore);
        EXPECT_TRUE(bSet(L"AB", csKey.c_str(), csValue.c_str()));
        EXPECT_EQ(csFile(), csAfter);
        EXPECT_EQ(csGet(L"AB", csKey.c_str()), csRead);
    }
    File(csOdd);
    EXPECT_EQ(csGet(L"AB", L"n"), L"v");
    // The file stays the same one.
    ASSERT_TRUE(m_clFolder.bShell("ln f.ini link; chmod 600 f.ini"));
    EXPECT_TRUE(bSet(L"AB", nullptr, nullptr));
    EXPECT_EQ(m_clFolder.csRead("link"), "\0[AB]\n"s);
    EXPECT_EQ(std::filesystem::status(m_csPath).permissions(), std::filesystem::perms(0600));
}

TEST_F(Profile, FindsTheMarkAndPutsTheStreamBack) {
    CMemoryStream clStream(CTLBIN{0xFF, 0xFE, '['});
    for (const auto& [nBefore, nAfter] : {std::pair{0, 2}, {1, 1}}) {
        clStream.bSeek(nBefore);
        EXPECT_TRUE(bFichierUnicode(clStream));
        EXPECT_EQ(clStream.i64GetPosition(), nAfter);
    }
}

TEST_F(Profile, ResultsAreCutToTheBuffer) {
    File(" [A] x\nk1 =1\n  k2=\n:no=1\nnone\n[open\n=\n[B\0C]\n[D]\nk=1"s);
    EXPECT_EQ(csGet(nullptr, L"x"), L"A\r\nB\r\nD\r\n");
    EXPECT_EQ(csGet(L"a", nullptr), L"k1\r\nk2\r\n\r\n");
    EXPECT_EQ(csGet(L"B", nullptr), L"(default)");
    File("[Sec1]\nk=\u00E9bcd\n[Sec2]\n");
    using CCase = std::tuple<const wchar_t*, const wchar_t*, std::wstring>;
    for (const auto& [pszSection, pszKey, csCut] :
         {CCase{L"Sec1", L"k", L"\u00E9bc"}, {L"Sec1", L"none", L"def"}, {nullptr, nullptr, L"Sec1\r\nS"}}) {
        std::wstring sz(10, L'#');
        EXPECT_EQ(GetPrivateProfileStringW(pszSection, pszKey, L"default", sz.data(),
                                           static_cast<unsigned>(csCut.size()) + 1, m_csPath.c_str()),
                  csCut.size());
        EXPECT_EQ(sz, csCut + L'\0' + std::wstring(9 - csCut.size(), L'#'));
    }
    // The 8-bit call counts bytes.
    std::string sz(6, '#');
    EXPECT_EQ(GetPrivateProfileStringA("Sec1", "k", "default", sz.data(), 4, m_csPath8.c_str()), 3U);
    EXPECT_EQ(sz, "\u00E9b\0##"s);
    EXPECT_EQ(GetPrivateProfileInt(L"AB", L"k", -7, m_csPath.c_str()), -7);
    for (const auto& [pszValue, nValue] :
         {std::pair(" -4900x", -4900), {"", 0}, {"4294971196", INT_MAX}, {"000000000000000000012", 0}}) {
        File("[AB]\nk="s + pszValue);
        EXPECT_EQ(GetPrivateProfileInt(L"AB", L"k", 7, m_csPath.c_str()), nValue) << pszValue;
    }
}

TEST_F(Profile, AWriteWithoutRoomLeavesTheFile) {
    // The file is on a disk of two pages that it fills.
    ASSERT_TRUE(m_clFolder.bShell("mount -t tmpfs -o size=8k kalmo ."));
    const std::string csBefore = "[AB]\nk=1\n" + std::string(8180, 'x') + "\n";
    File(csBefore);
    EXPECT_FALSE(bSet(L"AB", L"k", L"a longer value"));
    EXPECT_EQ(csFile(), csBefore);
    m_csPath = m_clFolder.csWide("new.ini");
    EXPECT_FALSE(bSet(L"AB", L"k", L"v"));
    EXPECT_EQ(m_clFolder.csRead("new.ini"), "(none)");
    ASSERT_TRUE(m_clFolder.bShell("umount -l ."));
}

TEST_F(Profile, FilesThatCannotBeUsed) {
    ASSERT_TRUE(m_clFolder.bShell("mkfifo fifo; ln -s loop loop; ln -s gone f.ini"));
    for (const std::wstring& rcs :
         {m_clFolder.csWide(""), m_clFolder.csWide("none/f.ini"), m_clFolder.csWide("fifo"),
          m_clFolder.csWide("loop"), L"/" + std::wstring(260, L'x')}) {
        m_csPath = rcs;
        EXPECT_EQ(csGet(L"AB", L"k"), L"(default)");
        EXPECT_FALSE(bSet(L"AB", L"k", L"v"));
    }
    EXPECT_FALSE(WritePrivateProfileStringA("AB", "k", nullptr, m_clFolder.clPath("none/f.ini").c_str()));
    EXPECT_EQ(GetPrivateProfileInt(L"AB", L"k", 3, L"/dev/zero"), 3);
    // Nothing is made for a removal, or where the text is refused.
    EXPECT_TRUE(WritePrivateProfileStringA("AB", "\xC3\xA9", nullptr, m_csPath8.c_str()));
    m_csPath = m_clFolder.csWide("f.ini");
    EXPECT_TRUE(bSet(L"AB", nullptr, nullptr));
    EXPECT_FALSE(bSet(L"A\nB", L"k", L"v"));
    EXPECT_FALSE(bSet(nullptr, L"k", L"v"));
    EXPECT_EQ(csFile(), "(none)");
    EXPECT_TRUE(m_clFolder.bShell("test -h f.ini"));
}

// The test runs in a file tree of its own, so that this account's home may be written to.
TEST_F(Profile, FilesOfTheUser) {
    ASSERT_STREQ(::getenv("KALMO_PRIVATE_ROOT"), "1");
    CFSPath clHome;
    ASSERT_TRUE(bGetHomeDirectory(&clHome));
    const std::wstring csHome(clHome.svGet());
    CPathBuffer szPath;
    for (const auto& [csName, csPath] : {std::pair(L"f.ini"s, csHome + L"/f.ini"),
                                         {L".profile", csHome + L"/.profile"},
                                         {L".\\f.ini", L"./f.ini"},
                                         {std::wstring(261, L'/'), L""},
                                         {std::wstring(260 - csHome.size(), L'x'), L""}}) {
        EXPECT_EQ(__PrivateProfilePatchName(csName.c_str(), szPath), !csPath.empty());
        EXPECT_EQ(szPath, csPath);
    }
    EXPECT_TRUE(WriteProfileString(L"AB", L"k", L"12"));
    EXPECT_EQ(GetProfileInt(L"AB", L"k", 3), 12);
    EXPECT_EQ(GetPrivateProfileInt(L"AB", L"k", 3, L".VLN.conf"), 12);
}

}  // namespace
}  // namespace kalmo
