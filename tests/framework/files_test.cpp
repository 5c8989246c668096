#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "framework/disk_file.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

using namespace std::string_literals;
using eMODE = CDiskFile::eMODE;

TEST(FSPath, JoinsUpTo260Characters) {
    using CCase = std::array<std::wstring, 3>;  // path, name, result; empty: refused
    for (const auto& [csPath, csName, csJoined] :
         {CCase{L"", L"a", L"a"},
          {L"\\a\\", L"b\\c", L"/a/b/c"},
          {std::wstring(258, L'x'), L"y", std::wstring(258, L'x') + L"/y"},
          {std::wstring(259, L'x'), L"y", L""},
          {L"/a", std::wstring(L"b\0c", 3), L""}}) {
        CFSPath clPath;
        ASSERT_TRUE(clPath.bSet(csPath));
        EXPECT_EQ(clPath.bAppend(csName), !csJoined.empty());
        EXPECT_EQ(clPath.svGet(), csJoined.empty() ? csPath : csJoined);
    }
    CPathBuffer szPath;
    EXPECT_FALSE(CDiskFile::MakePath(szPath, std::wstring(255, L'x'), L"ab", L"ini"));
    EXPECT_EQ(szPath, L""s);
    const STPathParts st = CFSPath::stSplit(L"a.x\\b.c.d");
    EXPECT_EQ(st.svDirectory, L"a.x\\");
    EXPECT_EQ(st.svBaseName, L"b.c");
    EXPECT_EQ(st.svExtension, L"d");
}

TEST(DiskFile, RefusesPathsThatMustNotBeUsed) {
    const CTempFolder clFolder;
    // A path of exactly 260 characters, in parts of at most 255.
    std::wstring csLongest = clFolder.csWide("") + std::wstring(150, L'd') + L"/";
    ASSERT_TRUE(CDiskFile::bCreateDirectory(csLongest));
    csLongest.resize(TAILLE_MAX_PATH, L'\u00E9');
    CDiskFile clFile;
    EXPECT_TRUE(clFile.bOpen(csLongest, eMODE::Create));
    for (const auto& [csPath, nError] : {std::pair(csLongest + L"x", ENAMETOOLONG),
                                         {clFolder.csWide("a") + L'\0', EINVAL},
                                         {L"", EINVAL},
                                         {clFolder.csWide(""), EISDIR},
                                         {clFolder.csWide("none/a"), ENOENT}}) {
        EXPECT_FALSE(clFile.bOpen(csPath, eMODE::Create));
        EXPECT_EQ(errno, nError) << csPath.size();
        EXPECT_FALSE(CDiskFile::bFileExists(csPath));
    }
}

// Neither a link's target nor another name of the file is written to, and no pipe.
TEST(DiskFile, CreateWritesNowhereElse) {
    const CTempFolder clFolder;
    const auto bCreate = [&clFolder] {
        CDiskFile clFile;
        return clFile.bOpen(clFolder.csWide("f"), eMODE::Create, 0600) && clFile.bWrite("new", 3);
    };
    clFolder.Write("other", "other file");
    for (const char* const pszPutInTheWay : {"ln -s other f", "ln -s none f", "ln other f", "mkfifo f"}) {
        ASSERT_TRUE(clFolder.bShell(std::string("rm -f f; ") + pszPutInTheWay));
        EXPECT_TRUE(bCreate());
        EXPECT_EQ(clFolder.csRead("other") + clFolder.csRead("none") + clFolder.csRead("f"),
                  "other file(none)new");
    }
    // A plain file stays the same one, with its permissions.
    ASSERT_TRUE(clFolder.bShell("rm f; echo longer than before >f; chmod 640 f; stat -c %i%a f >i"));
    EXPECT_TRUE(bCreate());
    EXPECT_TRUE(clFolder.bShell("stat -c %i%a f | cmp - i"));
    EXPECT_EQ(clFolder.csRead("f"), "new");
}

TEST(DiskFile, Directories) {
    const CTempFolder clFolder;
    EXPECT_TRUE(CDiskFile::bCreateDirectory(clFolder.csWide("a//b/c//")));
    EXPECT_TRUE(CDiskFile::bCreateDirectory(L"/"));
    ASSERT_TRUE(clFolder.bShell("touch file; ln -s a link"));
    EXPECT_FALSE(CDiskFile::bCreateDirectory(clFolder.csWide("file")));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(CDiskFile::bSameDirectoryName(L"/none/a/", L"\\none\\\\.\\a"));
    EXPECT_FALSE(CDiskFile::bSameDirectoryName(L"/none/a", L"/none/A"));
    EXPECT_TRUE(CDiskFile::bSameDirectoryName(clFolder.csWide("a/b/.."), clFolder.csWide("link")));
}

TEST(FileSearch, FindsByPatternAndKind) {
    const CTempFolder clFolder;
    ASSERT_TRUE(
        clFolder.bShell("touch tva.so 'tv[1].so' tv1.so TVB.so .tvc.so 'tv\xFF.so'"
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
        for (bool b = CDiskFile::bFindFirst(clFolder.csWide(pszPattern), dwMask, &clSearch); b;
             b = CDiskFile::bFindNext(&clSearch)) {
            setFound.emplace(clSearch.csGetName().svGet());
        }
        EXPECT_EQ(setFound, setExpected) << pszPattern;
    }
}

}  // namespace
}  // namespace kalmo
