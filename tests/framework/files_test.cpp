#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <iterator>
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
          {L"/", L"a", L"/a"},
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
          {L"a\\b.", L"a\\", L"b", L""},
          {L"/a.b/", L"/a.b/", L"", L""},
          {L".d", L"", L"", L"d"},
          {L"b", L"", L"b", L""}}) {
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
    const auto Create = [&clFolder] {
        CDiskFile clFile;
        EXPECT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::Create, 0600) && clFile.bWrite("new", 3));
    };
    clFolder.Write("other", "other file");
    for (const char* const pszPutInTheWay : {"ln -s other f", "ln -s none f", "ln other f", "mkfifo f"}) {
        ASSERT_TRUE(clFolder.bShell(std::string("rm -f f; ") + pszPutInTheWay));
        Create();
        EXPECT_EQ(clFolder.csRead("other") + "|" + clFolder.csRead("none") + "|" + clFolder.csRead("f"),
                  "other file|(none)|new");
    }
    // A plain file stays the same one, with its permissions.
    ASSERT_TRUE(clFolder.bShell("rm f; echo longer than before >f; chmod 640 f"));
    std::ifstream clBefore(clFolder.clPath("f"));
    Create();
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(clBefore), {}), "new");
    EXPECT_EQ(std::filesystem::status(clFolder.clPath("f")).permissions(), std::filesystem::perms(0640));
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
    const auto bSame = [](const std::wstring& csLeft, const std::wstring& csRight) {
        const bool b = CDiskFile::bSameDirectoryName(csLeft, csRight);
        EXPECT_EQ(CDiskFile::bSameDirectoryName(csRight, csLeft), b);
        return b;
    };
    EXPECT_TRUE(bSame(L"/none/a/", L"\\none\\\\.\\a"));
    EXPECT_FALSE(bSame(L"/none/a", L"/none/A"));
    EXPECT_TRUE(bSame(clFolder.csWide("a/b/.."), clFolder.csWide("link")));
    EXPECT_FALSE(bSame(L"", L"."));
}

TEST(DiskFile, LoadsAndSetsTimes) {
    const CTempFolder clFolder;
    std::string cs;
    clFolder.Write("f", std::string(4096, 'x'));
    EXPECT_TRUE(CDiskFile::bLoad(clFolder.csWide("f"), 4096, &cs));
    EXPECT_EQ(cs, std::string(4096, 'x'));
    EXPECT_FALSE(CDiskFile::bLoad(clFolder.csWide("f"), 4095, &cs));
    EXPECT_EQ(errno, EFBIG);
    EXPECT_FALSE(CDiskFile::bLoad(clFolder.csWide("none"), 4096, &cs));
    EXPECT_TRUE(CDiskFile::bLoad(L"/proc/self/status", 100000, &cs));
    EXPECT_TRUE(cs.starts_with("Name:"));

    // 31 February is 2 March of a leap year.
    CDiskFile clFile;
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::ReadWrite));
    EXPECT_TRUE(clFile.bSetTime({2024, 2, 31, 12, 30, 58}));
    struct stat st {};
    ASSERT_EQ(::stat(clFolder.clPath("f").c_str(), &st), 0);
    std::array<char, 30> szTime{};
    std::strftime(szTime.data(), szTime.size(), "%F %T", std::localtime(&st.st_mtime));
    EXPECT_STREQ(szTime.data(), "2024-03-02 12:30:58");
}

// A file, memory and caches over them do what a string does, wherever they are written and read.
TEST(Stream, AllKindsAgreeWithAString) {
    const CTempFolder clFolder;
    CDiskFile clFile;
    CMemoryStream clMemory;
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::Create));
    std::string csModel;
    std::mt19937 clRandom(1);
    const auto nBelow = [&clRandom](std::size_t n) { return clRandom() % n; };
    for (int n = 0; n < 200; ++n) {
        const std::size_t nAt = nBelow(5000);
        const std::string csBytes(1 + nBelow(300), static_cast<char>(n));
        csModel.resize(std::max(csModel.size(), nAt + csBytes.size()));
        csModel.replace(nAt, csBytes.size(), csBytes);
        csModel.resize(n % 50 == 0 ? nBelow(6000) : csModel.size());
        for (IXStream* const pcl : std::initializer_list<IXStream*>{&clFile, &clMemory}) {
            EXPECT_TRUE(pcl->bSeek(static_cast<std::int64_t>(nAt)) &&
                        pcl->bWrite(csBytes.data(), csBytes.size()) &&
                        (n % 50 != 0 || pcl->bTruncate(static_cast<std::int64_t>(csModel.size()))));
        }
    }
    CReadCache clSmall(clFile, 7);
    CReadCache clLarge(clMemory, 4096);
    for (IXStream* const pcl : std::initializer_list<IXStream*>{&clSmall, &clLarge, &clFile, &clMemory}) {
        EXPECT_EQ(pcl->i64GetLength(), static_cast<std::int64_t>(csModel.size()));
        std::size_t nRead = 0;
        for (int n = 0; n < 500; ++n) {
            std::string cs(nBelow(100), '#');
            ASSERT_TRUE(n % 3 == 0 || pcl->bSeek(static_cast<std::int64_t>(nBelow(csModel.size() + 100))));
            const auto nFrom = std::min(static_cast<std::size_t>(pcl->i64GetPosition()), csModel.size());
            ASSERT_TRUE(pcl->bRead(cs.data(), cs.size(), &nRead));
            ASSERT_EQ(cs.substr(0, nRead), csModel.substr(nFrom, cs.size()));
        }
        char c = '#';
        EXPECT_TRUE(pcl->bSeek(INT64_MAX) && pcl->bRead(&c, 1, &nRead) && nRead == 0);
        EXPECT_FALSE(pcl->bSeek(-1));
        EXPECT_EQ(pcl->i64GetPosition(), INT64_MAX);
    }
}

TEST(ReadCache, ForgetsItsWindowWhenAReadFails) {
    const CTempFolder clFolder;
    clFolder.Write("f", "abcdef");
    CDiskFile clFile;
    CReadCache clCache(clFile, 2);
    char szRead[7] = {};
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::Read));
    EXPECT_TRUE(clCache.bReadAll(szRead, 1));
    clFile.bClose();
    EXPECT_FALSE(clCache.bReadAll(szRead, 3)) << "the second byte is still there";
    EXPECT_EQ(clCache.i64GetPosition(), 1);
    clFolder.Write("f", "ABCDEF");
    ASSERT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::Read));
    EXPECT_TRUE(clCache.bSeek(0) && clCache.bReadAll(szRead, 6));
    EXPECT_STREQ(szRead, "ABCDEF");
}

TEST(FileSearch, FindsByPatternAndKind) {
    const CTempFolder clFolder;
    ASSERT_TRUE(
        clFolder.bShell("touch tva.so tv.so 'tv[1].so' tv1.so TVB.so .tvc.so 'tv\xFF.so'"
                        "; mkdir tvd.so; ln -s tva.so tvl.so; ln -s none tvx.so"));
    using CNames = std::set<std::wstring>;
    const auto setFind = [&clFolder](const char* pszPattern, unsigned dwMask) {
        CNames setFound;
        CFileSearch clSearch;
        for (bool b = CDiskFile::bFindFirst(clFolder.csWide(pszPattern), dwMask, &clSearch); b;
             b = CDiskFile::bFindNext(&clSearch)) {
            setFound.emplace(clSearch.csGetName().svGet());
        }
        EXPECT_FALSE(CDiskFile::bFindNext(&clSearch));
        return setFound;
    };
    EXPECT_EQ(setFind("tv*.so", dwAttributFichier),
              (CNames{L"tva.so", L"tv.so", L"tv[1].so", L"tv1.so", L"tvl.so", L"tv\xDCFF.so"}));
    EXPECT_EQ(setFind("*", dwAttributRepertoire), CNames{L"tvd.so"});
    EXPECT_EQ(setFind("tv[1].so", 0), CNames{L"tv[1].so"});
    EXPECT_EQ(setFind("?tv*", 0), CNames{L".tvc.so"});
    EXPECT_EQ(setFind("tvx.so", 0), CNames{L"tvx.so"});
    EXPECT_EQ(setFind("tvx.so", dwAttributFichier), CNames());
    EXPECT_EQ(setFind("none/*", 0), CNames());
}

}  // namespace
}  // namespace kalmo
