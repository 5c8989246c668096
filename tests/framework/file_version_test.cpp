#include "framework/file_version.h"

#include <gtest/gtest.h>

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

TEST(FileVersion, OfProgramsAndOtherFiles) {
    CPathBuffer szProgram;
    ASSERT_TRUE(GetModuleFileNameW(szProgram));
    EXPECT_EQ(csVersionOfFile(szProgram), L"12.3.4.5");
    const CTempFolder clFolder;
    ASSERT_TRUE(clFolder.bShell("touch empty; mkfifo fifo; cp " KALMO_CORPUS "/* ."));
    for (const char* const psz :
         {"program_32", "program_64", "program_64_big_endian_align_8", "object_64", "object_32_big_endian"}) {
        EXPECT_EQ(csVersionOfFile(clFolder.csWide(psz)), L"25.0.98.0") << psz;
    }
    for (const char* const psz : {"/bin/ls", "text", "empty_notes", "empty", "fifo", "", "none"}) {
        EXPECT_EQ(csVersionOfFile(clFolder.csWide(psz)), svNone) << psz;
    }
}

TEST(FileVersion, NotesAreToldApartAndSizesMayLie) {
    // Behind the headers come a note of GNU at 120 and the right one at 156, with three bytes to fill it up.
    const std::string csGood = CTempFolder().csRead(KALMO_CORPUS "/program_64");
    const auto csPatched = [&csGood](std::size_t nAt, std::string_view svBytes) {
        return std::string(csGood).replace(nAt, svBytes.size(), svBytes);
    };
    const auto csOf = [](std::string_view sv) {
        CMemoryStream clStream(CTLBIN(sv.begin(), sv.end()));
        CFileVersion cl;
        cl.bInit(clStream);
        return csVersion(cl);
    };
    const std::string csHuge(8, '\xFF');
    const std::pair<std::size_t, std::string> tabBad[] = {
        {0, "\x7E"},                               // magic
        {4, "\3"},                                 // class
        {5, "\3"},                                 // byte order
        {32, csHuge},                              // e_phoff
        {72, "\xF0\xFF\xFF\xFF\xFF\xFF\xFF\x7F"},  // p_offset
        {96, "\x0B"},                              // p_filesz
        {96, "\x74"},                              //
        {156, "\3"},                               // length of the owner
        {160, csHuge.substr(4)},                   // length of the description
        {160, "\x46"},                             //
        {164, "\x7F"},                             // type
        {168, "FDX"},                              // owner
        {csGood.find("25."), R"(\u001b[2J)"},      // what a terminal obeys
        {csGood.find("\"25."), R"(""         )"},  // nothing
    };
    for (const auto& [nAt, csBytes] : tabBad) {
        EXPECT_EQ(csOf(csPatched(nAt, csBytes)), svNone) << nAt;
    }
    for (std::size_t n = 0; n < csGood.size() - 3; ++n) {
        EXPECT_EQ(csOf(csGood.substr(0, n)), svNone) << "cut at " << n;
    }
    const auto csManyNotes = [&](std::size_t n) {
        return csPatched(96, csHuge).insert(120, std::string(12 * (n - 2), '\0'));
    };
    const auto csLong = [&](char cLow) {
        std::string cs = csPatched(160, std::string{cLow, '\0', '\1', '\0'}).replace(96, 8, csHuge);
        return cs.replace(cs.size() - 3, 3, std::string(0x10000, ' '));
    };
    for (const std::string& rcs : {csPatched(56, "\xFF\xFF"),           // e_phnum
                                   csPatched(128, "\x7E\x1A\xFE\xCA"),  // the type of GNU's note
                                   csManyNotes(4096), csLong(0)}) {
        EXPECT_EQ(csOf(rcs), L"25.0.98.0");
    }
    EXPECT_EQ(csOf(csManyNotes(4097)), svNone);
    EXPECT_EQ(csOf(csLong(1)), svNone);
}

TEST(JsonText, FindsAStringOfTheObject) {
    const std::pair<const char*, const wchar_t*> tabCase[] = {
        {" {\t\"a\" : [ 1 , -0.5e+3 , true , null , {} , [] ] ,\n\"version\" : \"\xC3\xA9\" }\r\n",
         L"\u00E9"},
        {R"({"a":{"version":"3"},"version":[],"version":"1","version":"2"})", L"2"},
        {R"({"v\u0065rsion":"\"\\\/\b\f\n\r\t\u00e9\uD83D\uDE00\ufffd"})",
         L"\"\\/\b\f\n\r\t\u00E9\U0001F600\uFFFD"},
    };
    for (const auto& [pszText, pszString] : tabCase) {
        EXPECT_EQ(csJsonString(pszText, "version").value_or(CTString(svNone)).svGet(), pszString);
    }
    for (const char* const psz :
         {R"({"Version":"1"})", R"({"version":"1")", R"({"version":"1"}})", R"({"version":"1",})",
          R"({"version" "1"})", R"({"a":01,"version":"1"})", R"({"version":"\x"})", R"({"version":"\u+123"})",
          R"({"version":"\ud83d"})", R"({"version":"\ude00"})", "{\"version\":\"\xFF\"}"}) {
        EXPECT_FALSE(csJsonString(psz, "version")) << psz;
    }
    const auto csNested = [](std::size_t n) {
        return R"({"a":)" + std::string(n, '[') + std::string(n, ']') + R"(,"version":"1"})";
    };
    EXPECT_TRUE(csJsonString(csNested(32), "version"));
    EXPECT_FALSE(csJsonString(csNested(33), "version"));
}

}  // namespace
}  // namespace kalmo
