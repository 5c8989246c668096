#include "framework/file_version.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "framework/conversion.h"
#include "framework/json_text.h"
#include "framework/memory_stream.h"
#include "framework/process_info.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

constexpr std::wstring_view svNone = L"(none)";

std::wstring csVersion(const CFileVersion& rcl) {
    CTString cs(svNone);
    rcl.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &cs);
    return std::wstring(cs.svGet());
}

std::wstring csVersionOfFile(std::wstring_view svPath) {
    CFileVersion cl;
    const bool bInit = cl.bInit(svPath);
    EXPECT_EQ(bInit, csVersion(cl) != svNone);
    return csVersion(cl);
}

std::wstring csVersionOfBytes(std::string_view sv) {
    CMemoryStream clStream(CTLBIN(sv.begin(), sv.end()));
    CFileVersion cl;
    cl.bInit(clStream);
    return csVersion(cl);
}

/// Makes small ELF files: a header, one program header, and the notes it tells of.
struct STElfMaker {
    bool m_bWide = true;
    bool m_bBigEndian = false;
    std::uint64_t m_u64Align = 4;

    /// Numbers of unSize bytes each.
    [[nodiscard]] std::string csInts(unsigned unSize, std::initializer_list<std::uint64_t> tabValue) const {
        std::string cs;
        for (const std::uint64_t u64 : tabValue) {
            for (unsigned un = 0; un < unSize; ++un) {
                cs += static_cast<char>(u64 >> 8 * (m_bBigEndian ? unSize - 1 - un : un));
            }
        }
        return cs;
    }
    [[nodiscard]] std::string csMake(const std::string& csNotes) const {
        const unsigned unWord = m_bWide ? 8 : 4;
        const std::uint64_t u64Header = 40 + 3 * unWord;
        const std::uint64_t u64Entry = 8 + 6 * unWord;
        const std::uint64_t u64Size = csNotes.size();
        std::string cs = std::string("\177ELF") + (m_bWide ? '\2' : '\1') + (m_bBigEndian ? '\2' : '\1');
        cs.resize(16);
        cs += csInts(2, {2, 62}) + csInts(4, {1}) + csInts(unWord, {0, u64Header, 0}) + csInts(4, {0}) +
              csInts(2, {u64Header, u64Entry, 1, 0, 0, 0});
        cs += csInts(4, {4}) + csInts(m_bWide ? 4 : 0, {0}) +
              csInts(unWord, {u64Header + u64Entry, 0, 0, u64Size, u64Size}) + csInts(m_bWide ? 0 : 4, {0}) +
              csInts(unWord, {m_u64Align});
        return cs + csNotes;
    }
    /// A note with its padding.
    [[nodiscard]] std::string csNote(std::string_view svOwner, std::uint32_t dwType,
                                     std::string_view svText) const {
        std::string cs = csInts(4, {svOwner.size(), svText.size(), dwType});
        for (const std::string_view sv : {svOwner, svText}) {
            cs += sv;
            cs.resize((cs.size() + m_u64Align - 1) / m_u64Align * m_u64Align);
        }
        return cs;
    }
};

constexpr std::string_view svFDO("FDO\0", 4);
constexpr std::uint32_t dwPackage = 0xcafe1a7e;
constexpr std::string_view svJson("{\"type\":\"deb\",\"version\":\"1.2\"}\0\0\0", 33);

TEST(FileVersion, OfProgramsAndOtherFiles) {
    CPathBuffer szProgram;
    ASSERT_TRUE(GetModuleFileNameW(szProgram));
    EXPECT_EQ(csVersionOfFile(szProgram), L"12.3.4.5");
    EXPECT_EQ(csVersionOfFile(csFromUTF8(KALMO_NOTED_OBJECT)), L"12.3.4.6");  // 32-bit, sections only

    const CTempFolder clFolder;
    clFolder.Write("empty", "");
    ASSERT_EQ(::mkfifo(clFolder.clPath("fifo").c_str(), 0600), 0);
    for (const std::wstring& rcs : {std::wstring(L"/bin/ls"), clFolder.csWide("empty"),
                                    clFolder.csWide("fifo"), clFolder.csWide(""), clFolder.csWide("none")}) {
        EXPECT_EQ(csVersionOfFile(rcs), svNone) << std::filesystem::path(rcs);
    }
}

TEST(FileVersion, WordSizesByteOrdersAndPadding) {
    for (int n = 0; n < 8; ++n) {
        STElfMaker cl;
        cl.m_bWide = (n & 1) != 0;
        cl.m_bBigEndian = (n & 2) != 0;
        cl.m_u64Align = (n & 4) != 0 ? 8 : 4;
        const std::string csOthers =
            cl.csNote(std::string_view("GNU\0", 4), 3, "build id") + cl.csNote("", dwPackage, "") +
            cl.csNote(std::string_view("FDX\0", 4), dwPackage, svJson) + cl.csNote(svFDO, 1, svJson);
        EXPECT_EQ(csVersionOfBytes(cl.csMake(csOthers + cl.csNote(svFDO, dwPackage, svJson))), L"1.2") << n;
        EXPECT_EQ(csVersionOfBytes(cl.csMake(csOthers)), svNone) << n;
    }
}

TEST(FileVersion, SizesThatLie) {
    STElfMaker cl;
    const std::string csGood = cl.csMake(cl.csNote(svFDO, dwPackage, svJson));
    ASSERT_EQ(csVersionOfBytes(csGood), L"1.2");
    const struct {
        std::size_t nAt;
        std::string_view svBytes;
    } tabPatch[] = {
        {0, "\x7E"},                                      // magic
        {4, "\3"},                                        // class
        {5, "\3"},                                        // byte order
        {32, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"},         // e_phoff
        {72, "\xF0\xFF\xFF\xFF\xFF\xFF\xFF\x7F"},         // p_offset
        {96, std::string_view("\x0B\0\0\0\0\0\0\0", 8)},  // p_filesz
        {96, std::string_view("\x20\0\0\0\0\0\0\0", 8)},  //
        {120, "\3"},                                      // length of the owner
        {124, "\xFF\xFF\xFF\xFF"},                        // length of the description
        {124, std::string_view("\x25\0\0\0", 4)},         //
    };
    for (const auto& rst : tabPatch) {
        std::string cs = csGood;
        cs.replace(rst.nAt, rst.svBytes.size(), rst.svBytes);
        EXPECT_EQ(csVersionOfBytes(cs), svNone) << rst.nAt;
    }
    // Cut anywhere before the padding.
    for (std::size_t n = 0; n < csGood.size() - 3; ++n) {
        EXPECT_EQ(csVersionOfBytes(csGood.substr(0, n)), svNone) << n;
    }
    // Sizes beyond the file, but a note that is whole: it is read.
    std::string cs = csGood;
    cs.replace(96, 8, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
    cs.replace(56, 2, "\xFF\xFF");
    EXPECT_EQ(csVersionOfBytes(cs), L"1.2");
    EXPECT_EQ(csVersionOfBytes(
                  cl.csMake(cl.csNote(svFDO, dwPackage, std::string(0x10001, ' ') + R"({"version":"1"})"))),
              svNone);
    // No more than 4096 notes are looked at.
    const std::string csNote = cl.csNote(svFDO, dwPackage, svJson);
    EXPECT_EQ(csVersionOfBytes(cl.csMake(std::string(49140, '\0') + csNote)), L"1.2");
    EXPECT_EQ(csVersionOfBytes(cl.csMake(std::string(49152, '\0') + csNote)), svNone);
}

TEST(FileVersion, HoldsNothingATerminalObeys) {
    STElfMaker cl;
    for (const char* const psz : {R"({"version":"1\u001b[2J"})", R"({"version":"1\u009b2J"})",
                                  R"({"version":""})", R"({"version":"1\n"})", "no object"}) {
        EXPECT_EQ(csVersionOfBytes(cl.csMake(cl.csNote(svFDO, dwPackage, psz))), svNone) << psz;
    }
}

TEST(JsonText, FindsAStringOfTheObject) {
    const std::pair<const char*, const wchar_t*> tabCase[] = {
        {" {\t\"a\" : [ 1 , -0.5e+3 , true , null , {} , [] ] ,\n\"version\" : \"1\" }\r\n", L"1"},
        {R"({"a":{"version":"2"},"version":"1"})", L"1"},
        {R"({"version":[],"version":"1","version":"2"})", L"2"},
        {R"({"v\u0065rsion":"\"\\\/\b\f\n\r\t\u00e9\uD83D\uDE00\ufffd"})",
         L"\"\\/\b\f\n\r\t\u00E9\U0001F600\uFFFD"},
        {"{\"version\":\"\xC3\xA9\"}", L"\u00E9"},
    };
    for (const auto& [pszText, pszString] : tabCase) {
        EXPECT_EQ(csJsonString(pszText, "version").value_or(CTString(svNone)).svGet(), pszString);
    }
    for (const char* const psz :
         {R"({"Version":"1"})", R"({"version":"1")", R"({"version":"1"}})", R"({"version":"1",})",
          R"({"version" "1"})", R"({"version":"1)", R"({"a":01,"version":"1"})"}) {
        EXPECT_FALSE(csJsonString(psz, "version")) << psz;
    }
    for (const std::string cs : {"2", R"("\x")", R"("\u12")", R"("\u+123")", R"("\ud83d")",
                                 R"("\ud83d\u0041")", R"("\ude00")", "\"\xFF\"", "\"a\nb\""}) {
        EXPECT_FALSE(csJsonString(R"({"version":)" + cs + "}", "version")) << cs;
    }
    const auto csNested = [](std::size_t n) {
        return R"({"a":)" + std::string(n, '[') + std::string(n, ']') + R"(,"version":"1"})";
    };
    EXPECT_TRUE(csJsonString(csNested(32), "version"));
    EXPECT_FALSE(csJsonString(csNested(33), "version"));
    EXPECT_FALSE(csJsonString(csNested(1000000), "version"));
}

}  // namespace
}  // namespace kalmo
