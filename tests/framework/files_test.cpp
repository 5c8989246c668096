#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "framework/disk_file.h"
#include "framework/memory_stream.h"
#include "framework/read_cache.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

using namespace std::string_literals;
using eMODE = CDiskFile::eMODE;

TEST(FSPath, JoinsUpTo260Characters) {
    using CCase = std::array<std::wstring, 3>;  // path, name, result; empty: refused
    for (const auto& [csPath, csName, csJoined] :
         {CCase{L"", L"a", L"a"},
          {L"\\a\\", L"b\\c", L"/a/b/c"},
          {L"/a", L"", L"/a/"},
          {std::wstring(258, L'x'), L"y", std::wstring(258, L'x') + L"/y"},
          {std::wstring(259, L'x'), L"y", L""},
          {L"/a", std::wstring(L"b\0c", 3), L""}}) {
        CFSPath clPath;
        ASSERT_TRUE(clPath.bSet(csPath));
        EXPECT_EQ(clPath.bAppend(csName), !csJoined.empty());
        EXPECT_EQ(clPath.svGet(), csJoined.empty() ? csPath : csJoined);
    }
    CPathBuffer szPath;
    EXPECT_TRUE(CDiskFile::MakePath(szPath, L"/a/", L"ZDConf", L"ini"));
    EXPECT_EQ(szPath, L"/a/ZDConf.ini"s);
    EXPECT_FALSE(CDiskFile::MakePath(szPath, std::wstring(255, L'x'), L"ab", L"ini"));
    EXPECT_EQ(szPath, L""s);
}

TEST(FSPath, Splits) {
    using CCase = std::array<const wchar_t*, 4>;
    for (const auto& [pszPath, pszDirectory, pszBase, pszExtension] :
         {CCase{L"/a/b.c.d", L"/a/", L"b.c", L"d"},
          {L"a.x\\b", L"a.x\\", L"b", L""},
          {L".d", L"", L"", L"d"}}) {
        const STPathParts st = CFSPath::stSplit(pszPath);
        EXPECT_EQ(st.svDirectory, pszDirectory);
        EXPECT_EQ(st.svBaseName, pszBase);
        EXPECT_EQ(st.svExtension, pszExtension);
    }
}

TEST(DiskFile, RefusesPathsThatMustNotBeUsed) {
    const CTempFolder clFolder;
    // A path of exactly 260 characters, in parts of at most 255.
    std::wstring csLongest = clFolder.csWide("") + std::wstring(150, L'd') + L"/";
    ASSERT_TRUE(CDiskFile::bCreateDirectory(csLongest));
    csLongest.resize(nTailleMaxPath, L'\u00E9');
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
    EXPECT_TRUE(CDiskFile::bCreateDirectory(clFolder.csWide("x/../y")));
    EXPECT_TRUE(CDiskFile::bDirectoryExists(clFolder.csWide("y")));
    EXPECT_TRUE(CDiskFile::bCreateDirectory(L"/"));
    ASSERT_TRUE(clFolder.bShell("touch file; ln -s a link"));
    EXPECT_FALSE(CDiskFile::bCreateDirectory(clFolder.csWide("file")));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(CDiskFile::bSameDirectoryName(L"/none/a/", L"\\none\\\\.\\a"));
    EXPECT_FALSE(CDiskFile::bSameDirectoryName(L"/none/a", L"/none/A"));
    EXPECT_TRUE(CDiskFile::bSameDirectoryName(clFolder.csWide("a/b/.."), clFolder.csWide("link")));
    EXPECT_FALSE(CDiskFile::bSameDirectoryName(L"", L"."));
}

TEST(DiskFile, LoadsUpToALimit) {
    const CTempFolder clFolder;
    std::string cs;
    clFolder.Write("f", std::string(4096, 'x'));
    EXPECT_TRUE(CDiskFile::bLoad(clFolder.csWide("f"), 4096, &cs));
    EXPECT_EQ(cs, std::string(4096, 'x'));
    EXPECT_FALSE(CDiskFile::bLoad(clFolder.csWide("f"), 4095, &cs));
    EXPECT_EQ(errno, EFBIG);
    EXPECT_TRUE(CDiskFile::bLoad(L"/proc/self/status", 100000, &cs));
    EXPECT_TRUE(cs.starts_with("Name:")) << "a file that tells no length";
}

// A file, memory and a cache over them do what a string does, wherever they are written and read.
TEST(Stream, AllKindsAgreeWithAString) {
    const CTempFolder clFolder;
    CDiskFile clFile;
    CMemoryStream clMemory;
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::Create));
    std::string csModel;
    std::mt19937 clRandom(1);
    for (int n = 0; n < 100; ++n) {
        const std::size_t nAt = clRandom() % 5000;
        const std::string csBytes(1 + clRandom() % 300, static_cast<char>(n));
        csModel.resize(std::max(csModel.size(), nAt + csBytes.size()));
        csModel.replace(nAt, csBytes.size(), csBytes);
        csModel.resize(n == 50 ? 2000 : csModel.size());
        for (IXStream* const pcl : std::initializer_list<IXStream*>{&clFile, &clMemory}) {
            EXPECT_TRUE(pcl->bSeek(static_cast<std::int64_t>(nAt)) &&
                        pcl->bWrite(csBytes.data(), csBytes.size()) && (n != 50 || pcl->bTruncate(2000)));
        }
    }
    CReadCache clSmall(clFile, 7);
    CReadCache clLarge(clMemory, 4096);
    for (IXStream* const pcl : std::initializer_list<IXStream*>{&clSmall, &clLarge, &clFile, &clMemory}) {
        EXPECT_EQ(pcl->i64GetLength(), static_cast<std::int64_t>(csModel.size()));
        std::size_t nRead = 0;
        for (int n = 0; n < 500; ++n) {
            std::string cs(clRandom() % 100, '#');
            ASSERT_TRUE(n % 3 == 0 || pcl->bSeek(static_cast<std::int64_t>(clRandom() % 5400)));
            const auto nFrom = std::min(static_cast<std::size_t>(pcl->i64GetPosition()), csModel.size());
            ASSERT_TRUE(pcl->bRead(cs.data(), cs.size(), &nRead));
            ASSERT_EQ(cs.substr(0, nRead), csModel.substr(nFrom, cs.size()));
        }
        char c = '#';
        EXPECT_TRUE(pcl->bSeek(INT64_MAX) && pcl->bRead(&c, 1, &nRead) && nRead == 0);
        EXPECT_FALSE(pcl->bSeek(-1));
    }
    clFile.bClose();
    EXPECT_TRUE(clSmall.bSeek(0));
    EXPECT_FALSE(clSmall.bReadAll(csModel.data(), 1));
    EXPECT_EQ(clSmall.i64GetPosition(), 0);
}

TEST(FileSearch, FindsByPatternAndKind) {
    const CTempFolder clFolder;
    ASSERT_TRUE(
        clFolder.bShell("touch tva.so 'tv[1].so' tv1.so TVB.so .tvc.so 'tv\xFF.so'"
                        "; mkdir tvd.so; ln -s tva.so tvl.so; ln -s none tvx.so"));
    using CNames = std::set<std::wstring>;
    const struct {
        const char* pszPattern;
        unsigned dwMask;
        CNames setFound;
    } tabCase[] = {
        {"tv*.so", dwAttributFichier, {L"tva.so", L"tv[1].so", L"tv1.so", L"tvl.so", L"tv\xDCFF.so"}},
        {"*", dwAttributRepertoire, {L"tvd.so"}},
        {"tv[1].so", 0, {L"tv[1].so"}},
        {"?tv*", 0, {L".tvc.so"}},
        {"tvx.so", 0, {L"tvx.so"}},
        {"none/*", 0, {}},
    };
    for (const auto& rst : tabCase) {
        CNames setFound;
        CFileSearch clSearch;
        for (bool b = CDiskFile::bFindFirst(clFolder.csWide(rst.pszPattern), rst.dwMask, &clSearch); b;
             b = CDiskFile::bFindNext(&clSearch)) {
            setFound.emplace(clSearch.csGetName().svGet());
        }
        EXPECT_EQ(setFound, rst.setFound) << rst.pszPattern;
    }
}

}  // namespace
}  // namespace kalmo
