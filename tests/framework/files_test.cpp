#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <set>
#include <string>
#include <tuple>

#include "framework/disk_file.h"
#include "framework/file_version.h"
#include "framework/json_text.h"
#include "framework/memory_stream.h"
#include "framework/process_info.h"
#include "framework/whole_file.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

using namespace std::string_literals;
using eMODE = CDiskFile::eMODE;

struct Files : testing::Test {
    const CTempFolder m_clFolder;
};

TEST(FSPath, JoinsUpTo260Characters) {
    using CCase = std::array<std::wstring, 3>;  // path, name, result; empty: refused
    for (const auto& [csPath, csName, csJoined] :
         {CCase{L"", L"a", L"a"},
          {L"\\a\\", L"b\\c", L"/a/b/c"},
          {std::wstring(258, L'x'), L"y", std::wstring(258, L'x') + L"/y"},
          {std::wstring(259, L'x'), L"y", L""},
          {L"/a", L"b\0c"s, L""}}) {
        CFSPath clPath;
        ASSERT_TRUE(clPath.bSet(csPath));
        EXPECT_EQ(clPath.bAppend(csName), !csJoined.empty());
        EXPECT_EQ(clPath.svGet(), csJoined.empty() ? csPath : csJoined);
    }
    CPathBuffer szPath;
    EXPECT_FALSE(CDiskFile::MakePath(szPath, std::wstring(255, L'x'), L"ab", L"ini"));
    EXPECT_EQ(szPath, L""s);
    const STPathParts st = CFSPath::stSplit(L"a.x\\b.c.d");
    EXPECT_EQ(std::tie(st.svDirectory, st.svBaseName, st.svExtension), std::tuple(L"a.x\\"s, L"b.c"s, L"d"s));
}

TEST_F(Files, PathsThatMustNotBeUsedAreRefused) {
    // A path of exactly 260 characters, in parts of at most 255.
    std::wstring csLongest = m_clFolder.csWide("") + std::wstring(150, L'd') + L"/";
    ASSERT_TRUE(CDiskFile::bCreateDirectory(csLongest));
    csLongest.resize(TAILLE_MAX_PATH, L'\u00E9');
    CDiskFile clFile;
    EXPECT_TRUE(clFile.bOpen(csLongest, eMODE::Create));
    for (const auto& [csPath, nError] : {std::pair(csLongest + L"x", ENAMETOOLONG),
                                         {m_clFolder.csWide("a") + L'\0', EINVAL},
                                         {L"", EINVAL},
                                         {m_clFolder.csWide(""), EISDIR},
                                         {m_clFolder.csWide("none/a"), ENOENT}}) {
        EXPECT_FALSE(clFile.bOpen(csPath, eMODE::Create));
        EXPECT_EQ(errno, nError) << csPath.size();
        EXPECT_FALSE(CDiskFile::bFileExists(csPath));
    }
}

// Neither a link's target nor another name of the file is written to, and no pipe.
TEST_F(Files, CreateWritesNowhereElse) {
    const auto bCreate = [this] {
        CDiskFile clFile;
        return clFile.bOpen(m_clFolder.csWide("f"), eMODE::Create, 0600) && clFile.bWrite("new", 3);
    };
    m_clFolder.Write("other", "other file");
    for (const char* const pszPutInTheWay : {"ln -s other f", "ln -s none f", "ln other f", "mkfifo f"}) {
        ASSERT_TRUE(m_clFolder.bShell("rm -f f; "s + pszPutInTheWay));
        EXPECT_TRUE(bCreate());
        EXPECT_EQ(m_clFolder.csRead("other") + m_clFolder.csRead("none") + m_clFolder.csRead("f"),
                  "other file(none)new");
    }
    // A plain file stays the same one, with its permissions.
    ASSERT_TRUE(m_clFolder.bShell("rm f; echo longer than before >f; chmod 640 f; stat -c %i%a f >i"));
    EXPECT_TRUE(bCreate());
    EXPECT_TRUE(m_clFolder.bShell("stat -c %i%a f | cmp - i"));
    EXPECT_EQ(m_clFolder.csRead("f"), "new");
}

// The old file or the new one, whoever else has a name of the old one; and nothing beside it.
TEST_F(Files, AreReplacedWhole) {
    ASSERT_TRUE(
        m_clFolder.bShell("mkdir d; mkfifo pipe; ln -s other link; umask 0; echo old >f; ln f other"));
    for (const auto& [pszName, nError] : {std::pair("f", 0),
                                          {"new", 0},
                                          {"d", EISDIR},
                                          {"d/", EISDIR},
                                          {"link", ELOOP},
                                          {"pipe", EEXIST},
                                          {"none/f", ENOENT},
                                          {"other/f", ENOTDIR}}) {
        EXPECT_EQ(bReplaceable(m_clFolder.csWide(pszName)) ? 0 : errno, nError) << pszName;
        EXPECT_EQ(bReplaceFile(m_clFolder.csWide(pszName), "bytes") ? 0 : errno, nError) << pszName;
    }
    EXPECT_EQ(m_clFolder.csRead("f") + m_clFolder.csRead("new") + m_clFolder.csRead("other"),
              "bytesbytesold\n");
    EXPECT_TRUE(m_clFolder.bShell("[ \"$(stat -c %a f new | uniq)\" = 600 ] && [ $(ls -A | wc -l) = 6 ]"));
}

TEST_F(Files, Directories) {
    EXPECT_TRUE(CDiskFile::bCreateDirectory(m_clFolder.csWide("a//b/c//")));
    EXPECT_TRUE(CDiskFile::bCreateDirectory(L"/"));
    ASSERT_TRUE(m_clFolder.bShell("touch file; ln -s a link"));
    EXPECT_FALSE(CDiskFile::bCreateDirectory(m_clFolder.csWide("file")));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(CDiskFile::bSameDirectoryName(L"/none/a/", L"\\none\\\\.\\a"));
    EXPECT_FALSE(CDiskFile::bSameDirectoryName(L"/none/a", L"/none/A"));
    EXPECT_TRUE(CDiskFile::bSameDirectoryName(m_clFolder.csWide("a/b/.."), m_clFolder.csWide("link")));
}

TEST_F(Files, SearchFindsByPatternAndKind) {
    ASSERT_TRUE(
        m_clFolder.bShell("touch tva.so 'tv[1].so' tv1.so TVB.so .tvc.so 'tv\xFF.so'"
                          "; mkdir tvd.so; ln -s tva.so tvl.so; ln -s none tvx.so"));
    using CNames = std::set<std::wstring>;
    using CCase = std::tuple<const char*, unsigned, CNames>;
    for (const auto& [pszPattern, dwMask, setExpected] :
         {CCase{"tv*.so", ATTRIBUT_FICHIER, {L"tva.so", L"tv[1].so", L"tv1.so", L"tvl.so", L"tv\xDCFF.so"}},
          {"*", ATTRIBUT_REPERTOIRE, {L"tvd.so"}},
          {"tv[1].so", 0, {L"tv[1].so"}},
          {"tvx.so", 0, {L"tvx.so"}},
          {"none/*", 0, {}}}) {
        CNames setFound;
        CFileSearch clSearch;
        for (bool b = CDiskFile::bFindFirst(m_clFolder.csWide(pszPattern), dwMask, &clSearch); b;
             b = CDiskFile::bFindNext(&clSearch)) {
            setFound.emplace(clSearch.csGetName().svGet());
        }
        EXPECT_EQ(setFound, setExpected) << pszPattern;
    }
}

// The version that a file or a stream tells, "(none)" where it tells none.
template <class TSource>
std::wstring csVersion(TSource&& source) {
    CFileVersion cl;
    CTString cs(L"(none)");
    const bool bInit = cl.bInit(source);
    EXPECT_TRUE(!cl.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &cs) || bInit);
    return std::wstring(cs.svGet());
}

TEST_F(Files, VersionOfProgramsAndOtherFiles) {
    CPathBuffer szProgram;
    ASSERT_TRUE(GetModuleFileNameW(szProgram));
    EXPECT_EQ(csVersion(std::wstring(szProgram)), L"12.3.4.5");
    ASSERT_TRUE(m_clFolder.bShell("touch empty; mkfifo fifo; cp " KALMO_VERSION_NOTES "/* ."));
    for (const char* const psz :
         {"program_32", "program_64", "program_64_big_endian_align_8", "object_64", "object_32_big_endian"}) {
        EXPECT_EQ(csVersion(m_clFolder.csWide(psz)), L"25.0.98.0") << psz;
    }
    for (const char* const psz : {"/bin/ls", "text", "empty_notes", "empty", "fifo", "", "none"}) {
        EXPECT_EQ(csVersion(m_clFolder.csWide(psz)), L"(none)") << psz;
    }
}

TEST(FileVersion, NotesAreToldApartAndSizesMayLie) {
    // Behind the headers come a note of GNU at 120 and the right one at 156, with three bytes to fill it up.
    const std::string csGood = CTempFolder().csRead(KALMO_VERSION_NOTES "/program_64");
    const std::tuple<std::size_t, std::string, const wchar_t*> tabPatch[] = {
        {0, "\x7E", L"(none)"},                               // magic
        {5, "\3", L"(none)"},                                 // byte order
        {32, std::string(8, '\xFF'), L"(none)"},              // e_phoff
        {72, "\xF0\xFF\xFF\xFF\xFF\xFF\xFF\x7F", L"(none)"},  // p_offset
        {96, "\x74", L"(none)"},                              // p_filesz
        {128, "\x7E\x1A\xFE\xCA", L"25.0.98.0"},              // the type, another owner
        {156, "\3", L"(none)"},                               // length of the owner
        {160, "\xFF\xFF\xFF\xFF", L"(none)"},                 // length of the description
        {168, "FDX", L"(none)"},                              // owner
        {csGood.find("25."), R"(\u001b[2J)", L"(none)"},      // what a terminal obeys
        {csGood.find("\"25."), R"(""         )", L"(none)"},  // nothing
    };
    for (const auto& [nAt, csBytes, pszVersion] : tabPatch) {
        const std::string cs = std::string(csGood).replace(nAt, csBytes.size(), csBytes);
        EXPECT_EQ(csVersion(CMemoryStream(CTLBIN(cs.begin(), cs.end()))), pszVersion) << nAt;
    }
}

TEST(JsonText, OneObjectWellFormedAndNotTooDeep) {
    const auto csNested = [](std::size_t n) {
        return R"({"v":"1","x":)" + std::string(n, '[') + std::string(n, ']') + "}";
    };
    for (const auto& [csJson, pszValue] :
         {std::pair(R"( {"v" : "\u00e9\ud83d\ude00\n"} )"s, L"é😀\n"),
          {R"({"v":"1","v":"2","v":3,"x":{"v":"4"},"y":["v","5"]})", L"2"},  // the last text of that name
          {csNested(32), L"1"},
          {csNested(33), L"(none)"},
          {csNested(100000), L"(none)"},
          {"[" + csNested(1) + "]", L"(none)"},
          {R"({"v":"1"}{})", L"(none)"},
          {"{\"v\":\"1\"}\0"s, L"(none)"},
          {"\xEF\xBB\xBF{\"v\":\"1\"}", L"(none)"},
          {"{\"v\":\"1\",\"x\":\"\xFF\"}", L"(none)"},
          {R"({"v":"\ud83d"})", L"(none)"},
          {R"({"v":"1",})", L"(none)"},
          {R"("v")", L"(none)"},
          {"", L"(none)"}}) {
        EXPECT_EQ(csJsonString(csJson, "v").value_or(L"(none)").svGet(), pszValue) << csJson.substr(0, 50);
    }
}

}  // namespace
}  // namespace kalmo
