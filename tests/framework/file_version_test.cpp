#include "framework/file_version.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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

std::wstring csVersionOfFile(const std::wstring& csPath) {
    CFileVersion cl;
    const bool bInit = cl.bInit(csPath);
    EXPECT_EQ(bInit, csVersion(cl) != svNone);
    return csVersion(cl);
}

std::wstring csVersionOfBytes(std::string_view sv) {
    CMemoryStream clStream(CTLBIN(sv.begin(), sv.end()));
    CFileVersion cl;
    cl.bInit(clStream);
    return csVersion(cl);
}

TEST(FileVersion, OfProgramsAndOtherFiles) {
    CPathBuffer szProgram;
    ASSERT_TRUE(GetModuleFileNameW(szProgram));
    EXPECT_EQ(csVersionOfFile(szProgram), L"12.3.4.5");
    const CTString csObject = csFromUTF8(KALMO_NOTED_OBJECT);
    EXPECT_EQ(csVersionOfFile(csObject.pszGet()), L"12.3.4.6") << "32-bit, sections only";

    const CTempFolder clFolder;
    clFolder.Write("empty", "");
    ASSERT_EQ(::mkfifo(clFolder.clPath("fifo").c_str(), 0600), 0);
    for (const std::wstring& rcs : {std::wstring(L"/bin/ls"), clFolder.csWide("empty"),
                                    clFolder.csWide("fifo"), clFolder.csWide(""), clFolder.csWide("none")}) {
        EXPECT_EQ(csVersionOfFile(rcs), svNone) << std::filesystem::path(rcs);
    }
}

/// ELF files of other word sizes and byte orders, and what no linker writes.
class MadeElf : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(m_clFolder.bShell("python3 " KALMO_MAKE_ELF)); }
    [[nodiscard]] std::wstring csOf(const std::string& csFile) const {
        return csVersionOfFile(m_clFolder.csWide(csFile));
    }
    const CTempFolder m_clFolder;
};

TEST_F(MadeElf, NotesAreToldApart) {
    for (const char c : {'0', '1', '2', '3', '4', '5', '6', '7'}) {
        EXPECT_EQ(csOf(std::string("behind others") + c), L"1.2") << c;
        EXPECT_EQ(csOf(std::string("others") + c), svNone) << c;
    }
    EXPECT_EQ(csOf("plain"), L"1.2");
    EXPECT_EQ(csOf("4096th note"), L"1.2");
    EXPECT_EQ(csOf("4097th note"), svNone);
    EXPECT_EQ(csOf("too long"), svNone);
    for (const char c : {'0', '1', '2', '3', '4'}) {
        EXPECT_EQ(csOf(std::string("no version") + c), svNone) << "or one that a terminal obeys: " << c;
    }
}

TEST_F(MadeElf, SizesThatLie) {
    const std::string csGood = m_clFolder.csRead("plain");
    const auto csPatched = [&csGood](std::size_t nAt, std::string_view svBytes) {
        return std::string(csGood).replace(nAt, svBytes.size(), svBytes);
    };
    const std::string csHuge(8, '\xFF');
    const std::pair<std::size_t, std::string> tabPatch[] = {
        {0, "\x7E"},                               // magic
        {4, "\3"},                                 // class
        {5, "\3"},                                 // byte order
        {32, csHuge},                              // e_phoff
        {72, "\xF0\xFF\xFF\xFF\xFF\xFF\xFF\x7F"},  // p_offset
        {96, "\x0B"},                              // p_filesz
        {96, "\x20"},                              //
        {120, "\3"},                               // length of the owner
        {124, csHuge.substr(4)},                   // length of the description
        {124, "\x25"},                             //
    };
    for (const auto& [nAt, csBytes] : tabPatch) {
        EXPECT_EQ(csVersionOfBytes(csPatched(nAt, csBytes)), svNone) << nAt;
    }
    EXPECT_EQ(csVersionOfBytes(csPatched(96, csHuge)), L"1.2") << "beyond the file, but the note is whole";
    EXPECT_EQ(csVersionOfBytes(csPatched(56, "\xFF\xFF")), L"1.2") << "e_phnum";
    for (std::size_t n = 0; n < csGood.size() - 3; ++n) {
        EXPECT_EQ(csVersionOfBytes(csGood.substr(0, n)), svNone) << "cut at " << n;
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
