#include "framework/file_version.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "framework/conversion.h"
#include "framework/memory_stream.h"
#include "framework/process_info.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

constexpr std::wstring_view SV_NONE = L"(none)";

std::wstring csVersion(const CFileVersion& rcl) {
    CTString cs(SV_NONE);
    rcl.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &cs);
    return std::wstring(cs.svGet());
}

std::wstring csVersionOfFile(const std::wstring& csPath) {
    CFileVersion cl;
    const bool bInit = cl.bInit(csPath);
    EXPECT_EQ(bInit, csVersion(cl) != SV_NONE);
    return csVersion(cl);
}

TEST(FileVersion, OfProgramsAndOtherFiles) {
    CPathBuffer szProgram;
    ASSERT_TRUE(GetModuleFileNameW(szProgram));
    EXPECT_EQ(csVersionOfFile(szProgram), L"12.3.4.5");
    const CTempFolder clFolder;
    ASSERT_TRUE(clFolder.bShell("touch empty; mkfifo fifo; cp " KALMO_VERSION_NOTES "/* ."));
    for (const char* const psz :
         {"program_32", "program_64", "program_64_big_endian_align_8", "object_64", "object_32_big_endian"}) {
        EXPECT_EQ(csVersionOfFile(clFolder.csWide(psz)), L"25.0.98.0") << psz;
    }
    for (const char* const psz : {"/bin/ls", "text", "empty_notes", "empty", "fifo", "", "none"}) {
        EXPECT_EQ(csVersionOfFile(clFolder.csWide(psz)), SV_NONE) << psz;
    }
}

TEST(FileVersion, NotesAreToldApartAndSizesMayLie) {
    // Behind the headers come a note of GNU at 120 and the right one at 156, with three bytes to fill it up.
    const std::string csGood = CTempFolder().csRead(KALMO_VERSION_NOTES "/program_64");
    const auto csPatched = [&csGood](std::size_t nAt, std::string_view svBytes) {
        return std::string(csGood).replace(nAt, svBytes.size(), svBytes);
    };
    const auto csOf = [](std::string_view sv) {
        CMemoryStream clStream(CTLBIN(sv.begin(), sv.end()));
        CFileVersion cl;
        cl.bInit(clStream);
        return csVersion(cl);
    };
    const std::pair<std::size_t, std::string> tabBad[] = {
        {0, "\x7E"},                               // magic
        {5, "\3"},                                 // byte order
        {32, std::string(8, '\xFF')},              // e_phoff
        {72, "\xF0\xFF\xFF\xFF\xFF\xFF\xFF\x7F"},  // p_offset
        {96, "\x74"},                              // p_filesz
        {156, "\3"},                               // length of the owner
        {160, "\xFF\xFF\xFF\xFF"},                 // length of the description
        {168, "FDX"},                              // owner
        {csGood.find("25."), R"(\u001b[2J)"},      // what a terminal obeys
        {csGood.find("\"25."), R"(""         )"},  // nothing
    };
    for (const auto& [nAt, csBytes] : tabBad) {
        EXPECT_EQ(csOf(csPatched(nAt, csBytes)), SV_NONE) << nAt;
    }
    EXPECT_EQ(csOf(csPatched(128, "\x7E\x1A\xFE\xCA")), L"25.0.98.0") << "the type, another owner";
}

}  // namespace
}  // namespace kalmo
