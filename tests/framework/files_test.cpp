#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "framework/disk_file.h"
#include "framework/memory_stream.h"
#include "framework/process_info.h"
#include "framework/read_cache.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

using namespace std::string_literals;
using eMODE = CDiskFile::eMODE;

TEST(FSPath, JoinsUpTo260Characters) {
    const struct {
        std::wstring csPath, csName, csJoined;  // an empty result: refused
    } tabCase[] = {{L"", L"a", L"a"},
                   {L"/", L"a", L"/a"},
                   {L"\\a\\", L"b\\c", L"/a/b/c"},
                   {L"/a", L"", L"/a/"},
                   {std::wstring(258, L'x'), L"y", std::wstring(258, L'x') + L"/y"},
                   {std::wstring(259, L'x'), L"y", L""},
                   {L"/a", std::wstring(L"b\0c", 3), L""}};
    for (const auto& rst : tabCase) {
        CFSPath clPath;
        ASSERT_TRUE(clPath.bSet(rst.csPath));
        EXPECT_EQ(clPath.bAppend(rst.csName), !rst.csJoined.empty());
        EXPECT_EQ(clPath.svGet(), rst.csJoined.empty() ? rst.csPath : rst.csJoined);
    }
    CPathBuffer szPath;
    EXPECT_TRUE(CDiskFile::MakePath(szPath, L"/a/", L"ZDConf", L"ini"));
    EXPECT_EQ(szPath, L"/a/ZDConf.ini"s);
    EXPECT_FALSE(CDiskFile::MakePath(szPath, std::wstring(255, L'x'), L"ab", L"ini"));
    EXPECT_EQ(szPath, L""s);
}

TEST(FSPath, Splits) {
    const struct {
        const wchar_t *pszPath, *pszDirectory, *pszBase, *pszExtension;
    } tabCase[] = {{L"/a/b.c.d", L"/a/", L"b.c", L"d"},
                   {L"a\\b.", L"a\\", L"b", L""},
                   {L"/a.b/", L"/a.b/", L"", L""},
                   {L".d", L"", L"", L"d"},
                   {L"b", L"", L"b", L""}};
    for (const auto& rst : tabCase) {
        const STPathParts st = CFSPath::stSplit(rst.pszPath);
        EXPECT_EQ(st.svDirectory, rst.pszDirectory);
        EXPECT_EQ(st.svBaseName, rst.pszBase);
        EXPECT_EQ(st.svExtension, rst.pszExtension);
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
    const std::pair<std::wstring, int> tabCase[] = {{csLongest + L"x", ENAMETOOLONG},
                                                    {clFolder.csWide("a") + std::wstring(1, L'\0'), EINVAL},
                                                    {L"", EINVAL},
                                                    {clFolder.csWide(""), EISDIR},
                                                    {clFolder.csWide("none/a"), ENOENT}};
    for (const auto& [csPath, nError] : tabCase) {
        EXPECT_FALSE(clFile.bOpen(csPath, eMODE::Create));
        EXPECT_EQ(errno, nError) << csPath.size();
        EXPECT_FALSE(CDiskFile::bFileExists(csPath));
    }
}

TEST(DiskFile, CreateWritesNowhereElse) {
    const CTempFolder clFolder;
    const std::string csPath = clFolder.clPath("f");
    const auto Create = [&clFolder] {
        CDiskFile clFile;
        EXPECT_TRUE(clFile.bOpen(clFolder.csWide("f"), eMODE::Create, 0600) && clFile.bWrite("new", 3));
    };
    const std::function<int()> tabPutInTheWay[] = {
        [&] { return ::symlink("other", csPath.c_str()); },
        [&] { return ::symlink("none", csPath.c_str()); },
        [&] { return ::link(clFolder.clPath("other").c_str(), csPath.c_str()); },
        [&] { return ::mkfifo(csPath.c_str(), 0600); },
    };
    clFolder.Write("other", "other file");
    for (const auto& rPutInTheWay : tabPutInTheWay) {
        ::unlink(csPath.c_str());
        ASSERT_EQ(rPutInTheWay(), 0);
        Create();
        EXPECT_EQ(clFolder.csRead("other") + "|" + clFolder.csRead("none") + "|" + clFolder.csRead("f"),
                  "other file|(none)|new");
    }

    // A plain file stays the same one, with its permissions.
    clFolder.Write("f", "longer than before");
    ASSERT_EQ(::chmod(csPath.c_str(), 0640), 0);
    std::ifstream clBefore(csPath);
    Create();
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(clBefore), {}), "new");
    EXPECT_EQ(std::filesystem::status(csPath).permissions(), std::filesystem::perms(0640));
}

TEST(DiskFile, CreateLeavesARunningProgram) {
    const CTempFolder clFolder;
    std::filesystem::copy_file("/bin/sleep", clFolder.clPath("f"));
    const std::string csPath = clFolder.clPath("f");
    const std::string csBefore = clFolder.csRead("f");
    char szSeconds[] = "600";
    char* tabArgument[] = {szSeconds, szSeconds, nullptr};
    pid_t nPid = 0;
    ASSERT_EQ(::posix_spawn(&nPid, csPath.c_str(), nullptr, nullptr, tabArgument, nullptr), 0);
    CDiskFile clFile;
    EXPECT_FALSE(clFile.bOpen(clFolder.csWide("f"), eMODE::Create));
    EXPECT_EQ(errno, ETXTBSY);
    ::kill(nPid, SIGKILL);
    ::waitpid(nPid, nullptr, 0);
    EXPECT_TRUE(clFolder.csRead("f") == csBefore);
}

TEST(DiskFile, Directories) {
    const CTempFolder clFolder;
    EXPECT_TRUE(CDiskFile::bCreateDirectory(clFolder.csWide("a//b/c//")));
    EXPECT_TRUE(CDiskFile::bCreateDirectory(clFolder.csWide("x/../y")));
    EXPECT_TRUE(CDiskFile::bDirectoryExists(clFolder.csWide("y")));
    clFolder.Write("file", "");
    EXPECT_FALSE(CDiskFile::bCreateDirectory(clFolder.csWide("file")));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(CDiskFile::bCreateDirectory(L"/"));

    ASSERT_EQ(::symlink("a", clFolder.clPath("link").c_str()), 0);
    const struct {
        std::wstring csLeft, csRight;
        bool bSame;
    } tabCase[] = {{L"/none/a/", L"\\none\\\\.\\a", true},
                   {L"/none/a", L"/none/A", false},
                   {clFolder.csWide("a/b/.."), clFolder.csWide("link"), true},
                   {L"", L".", false}};
    for (const auto& rst : tabCase) {
        EXPECT_EQ(CDiskFile::bSameDirectoryName(rst.csLeft, rst.csRight), rst.bSame) << rst.csRight;
        EXPECT_EQ(CDiskFile::bSameDirectoryName(rst.csRight, rst.csLeft), rst.bSame) << rst.csRight;
    }
}

TEST(DiskFile, LoadsTimesAndNames) {
    const CTempFolder clFolder;
    std::string cs;
    clFolder.Write("f", std::string(4096, 'x'));
    EXPECT_TRUE(CDiskFile::bLoad(clFolder.csWide("f"), 4096, &cs));
    EXPECT_EQ(cs, std::string(4096, 'x'));
    EXPECT_FALSE(CDiskFile::bLoad(clFolder.csWide("f"), 4095, &cs));
    EXPECT_EQ(errno, EFBIG);
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

    CPathBuffer szProgram;
    EXPECT_TRUE(GetModuleFileNameW(szProgram));
    EXPECT_EQ(std::filesystem::path(szProgram), std::filesystem::read_symlink("/proc/self/exe"));
}

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
        const bool bTruncate = n % 50 == 0;
        csModel.resize(bTruncate ? nBelow(6000) : csModel.size());
        for (IXStream* const pcl : std::initializer_list<IXStream*>{&clFile, &clMemory}) {
            EXPECT_TRUE(pcl->bSeek(static_cast<std::int64_t>(nAt)) &&
                        pcl->bWrite(csBytes.data(), csBytes.size()));
            EXPECT_TRUE(!bTruncate || pcl->bTruncate(static_cast<std::int64_t>(csModel.size())));
        }
    }
    CReadCache clSmall(clFile, 7);
    CReadCache clLarge(clMemory, 4096);
    for (IXStream* const pcl : std::initializer_list<IXStream*>{&clSmall, &clLarge, &clFile, &clMemory}) {
        EXPECT_EQ(pcl->i64GetLength(), static_cast<std::int64_t>(csModel.size()));
        for (int n = 0; n < 500; ++n) {
            const std::size_t nAt = nBelow(csModel.size() + 100);
            std::string cs(nBelow(100), '#');
            std::size_t nRead = 0;
            ASSERT_TRUE(n % 3 == 0 || pcl->bSeek(static_cast<std::int64_t>(nAt)));
            const auto nFrom = std::min(static_cast<std::size_t>(pcl->i64GetPosition()), csModel.size());
            ASSERT_TRUE(pcl->bRead(cs.data(), cs.size(), &nRead));
            ASSERT_EQ(cs.substr(0, nRead), csModel.substr(nFrom, cs.size()));
        }
        std::size_t nRead = 1;
        char c = '#';
        EXPECT_TRUE(pcl->bSeek(INT64_MAX) && pcl->bRead(&c, 1, &nRead));
        EXPECT_EQ(nRead, 0U);
        EXPECT_FALSE(pcl->bSeek(-1));
        EXPECT_EQ(pcl->i64GetPosition(), INT64_MAX);
    }
}

/// An endless text of one letter; a read that breaks off has spoilt the buffer.
class CBreakingStream final : public IXStream {
  public:
    bool m_bBreak = false;

    bool bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) override {
        std::fill_n(static_cast<char*>(pBuffer), nSize, m_bBreak ? '#' : 'a');
        *pnRead = nSize;
        return !m_bBreak;
    }
    bool bWrite(const void* /*pBuffer*/, std::size_t /*nSize*/) override { return false; }
    bool bSeek(std::int64_t /*i64Position*/) override { return true; }
    [[nodiscard]] std::int64_t i64GetPosition() const override { return 0; }
    std::int64_t i64GetLength() override { return INT64_MAX; }
};

TEST(ReadCache, ForgetsItsWindowWhenAReadFails) {
    CBreakingStream clStream;
    CReadCache clCache(clStream, 2);
    char tabByte[4] = {};
    EXPECT_TRUE(clCache.bReadAll(tabByte, 2));
    clStream.m_bBreak = true;
    EXPECT_FALSE(clCache.bReadAll(tabByte, 2));
    EXPECT_EQ(clCache.i64GetPosition(), 2);
    clStream.m_bBreak = false;
    EXPECT_TRUE(clCache.bSeek(0) && clCache.bReadAll(tabByte, 4));
    EXPECT_EQ(std::string(tabByte, 4), "aaaa");
}

TEST(FileSearch, FindsByPatternAndKind) {
    const CTempFolder clFolder;
    for (const char* const psz :
         {"tva.so", "tv.so", "tv[1].so", "tv1.so", "TVB.so", ".tvc.so", "tv\xFF.so"}) {
        clFolder.Write(psz, "");
    }
    std::filesystem::create_directory(clFolder.clPath("tvd.so"));
    ASSERT_EQ(::symlink("tva.so", clFolder.clPath("tvl.so").c_str()), 0);
    ASSERT_EQ(::symlink("none", clFolder.clPath("tvx.so").c_str()), 0);
    const struct {
        const char* pszPattern;
        unsigned dwMask;
        std::set<std::wstring> setName;
    } tabCase[] = {{"tv*.so",
                    dwAttributFichier,
                    {L"tva.so", L"tv.so", L"tv[1].so", L"tv1.so", L"tvl.so", L"tv\xDCFF.so"}},
                   {"*", dwAttributRepertoire, {L"tvd.so"}},
                   {"tv[1].so", 0, {L"tv[1].so"}},
                   {"?tv*", 0, {L".tvc.so"}},
                   {"tvx.so", 0, {L"tvx.so"}},
                   {"tvx.so", dwAttributFichier, {}},
                   {"none/*", 0, {}}};
    for (const auto& rst : tabCase) {
        std::set<std::wstring> setFound;
        CFileSearch clSearch;
        for (bool b = CDiskFile::bFindFirst(clFolder.csWide(rst.pszPattern), rst.dwMask, &clSearch); b;
             b = CDiskFile::bFindNext(&clSearch)) {
            setFound.emplace(clSearch.csGetName().svGet());
        }
        EXPECT_FALSE(CDiskFile::bFindNext(&clSearch));
        EXPECT_EQ(setFound, rst.setName) << rst.pszPattern;
    }
}

}  // namespace
}  // namespace kalmo
