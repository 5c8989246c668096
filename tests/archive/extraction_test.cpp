#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>

#include "tests/archive/crafted_zip.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;

int nOpenDescriptors() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

class Extraction : public testing::Test {
  protected:
    /// Puts an archive into the folder and opens it.
    eARCHIVE eOpen(const STCraftedZip& rst = {}, unsigned dwFlags = 0) {
        m_clFolder.Write("a.zip", rst.csBytes());
        return m_cl.eOuvreArchive(m_clFolder.csWide("a.zip"), dwFlags, 0);
    }
    eARCHIVE eExtract(std::string_view svName, std::string_view svTo, unsigned dwFlags = 0) {
        return m_cl.eExtraitFichier(std::wstring(svName.begin(), svName.end()), m_clFolder.csWide(svTo), 0,
                                    nullptr, 0, dwFlags, nullptr);
    }
    mode_t unMode(std::string_view svName) {
        struct stat st {};
        return ::lstat(m_clFolder.clPath(svName).c_str(), &st) == 0 ? st.st_mode : 0;
    }
    /// How many descriptors are open that were not at the start.
    [[nodiscard]] int nOpen() const { return nOpenDescriptors() - m_nDescriptors; }

    const CTempFolder m_clFolder;
    CTVWinZip m_cl;
    const int m_nDescriptors = nOpenDescriptors();
};

TEST_F(Extraction, NothingIsOpen) {
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(m_cl.eOuvreArchive(m_clFolder.csWide("missing"), 0, 0), ARCHIVE_NOT_FOUND);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(m_cl.eOuvreArchiveStream(nullptr, 0, 0), ARCHIVE_NOT_FOUND);
    // A failed opening lets go of the archive that was open before, and of its file.
    ASSERT_EQ(eOpen(), ARCHIVE_OK);
    m_clFolder.Write("bad", "no archive");
    EXPECT_EQ(m_cl.eOuvreArchive(m_clFolder.csWide("bad"), 0, 0), ARCHIVE_BAD);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(nOpen(), 0);
}

TEST_F(Extraction, PermissionsAndTimesComeFromTheEntry) {
    const struct {
        const char *pszName, *pszData;  // without data they are made another way
        std::uint16_t wMadeBy;
        std::uint32_t dwAttribut;
        mode_t unMode;
    } tabCase[] = {
        {"program", "x", 0x031E, 0x81ED0000, S_IFREG | 0755},
        {"set-id bits stay behind", "", 0x031E, 0x8D800000, S_IFREG | 0600},
        {"low bits too", "x", 0x031E, 0x81A40021, S_IFREG | 0644},
        {"unix in the low half", "", 0x031E, 0x00000010 | 0444, S_IFREG | 0464},
        {"dos", "x", 0x0014, 0x00000000, S_IFREG | 0666},  // 438 is added, whatever it makes
        {"dos archive bit", "", 0x0014, 0x00000020, S_IFREG | 0726},
        {"directory", "", 0x031E, 0x41ED0010, S_IFDIR | 0755},
        {"low directory bit", "", 0x031E, 0x4000 | 0700, S_IFDIR | 0700},
        {"but Unix says file", "", 0x031E, 0x81A44000, S_IFREG | 0644},
        {"listed/", "", 0x031E, 0x41ED0010, 0},  // not so: a directory as archivers write it
    };
    STCraftedZip st;
    st.tabEntry.clear();
    for (const auto& rst : tabCase) {
        STCraftedEntry& rstEntry = st.tabEntry.emplace_back();
        rstEntry.csName = rst.pszName;
        rstEntry.csData = rst.pszData;
        rstEntry.wMadeBy = rst.wMadeBy;
        rstEntry.dwAttribut = rst.dwAttribut;
    }
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    ::setenv("TZ", "America/New_York", 1);
    ::tzset();
    for (const auto& rst : tabCase) {
        SCOPED_TRACE(rst.pszName);
        if (S_ISREG(rst.unMode)) {
            m_clFolder.Write(rst.pszName, "what stood there before, and longer than what comes");
        }
        EXPECT_EQ(eExtract(rst.pszName, rst.pszName), rst.unMode == 0 ? ARCHIVE_NOT_FOUND : ARCHIVE_OK);
        EXPECT_EQ(unMode(rst.pszName), rst.unMode);
        EXPECT_TRUE(!S_ISREG(rst.unMode) || m_clFolder.csRead(rst.pszName) == rst.pszData);
        struct stat stFile {};
        if (::stat(m_clFolder.clPath(rst.pszName).c_str(), &stFile) == 0) {
            char szTime[32];
            std::strftime(szTime, sizeof szTime, "%F %T", std::localtime(&stFile.st_mtime));
            EXPECT_STREQ(szTime, "2024-01-01 13:23:30");
        }
    }
    ::unsetenv("TZ");
    ::tzset();
    EXPECT_EQ(nOpen(), 1) << "the archive's own";
    // To nowhere goes a directory, but no file; nothing in the way is taken for a directory.
    EXPECT_EQ(m_cl.eExtraitFichier(L"directory", L"", 0, nullptr, 0, 0, nullptr), ARCHIVE_OK);
    EXPECT_EQ(m_cl.eExtraitFichier(L"dos", L"", 0, nullptr, 0, 0, nullptr), ARCHIVE_CREATE);
    EXPECT_EQ(eExtract("directory", "dos"), ARCHIVE_CREATE);
    fs::create_directory_symlink(m_clFolder.clPath("low directory bit"), m_clFolder.clPath("link"));
    EXPECT_EQ(eExtract("directory", "link"), ARCHIVE_CREATE);
    EXPECT_EQ(unMode("low directory bit"), S_IFDIR | 0700U) << "changed through a link";
}

TEST_F(Extraction, NamesFlagsAndLookups) {
    STCraftedZip st;
    st.tabEntry.resize(2);
    st.tabEntry[0].csName = "Sub\\File.txt";
    st.tabEntry[1].csName = "sub/FILE.txt";
    st.tabEntry[1].csData = "the second";
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    EXPECT_STREQ(m_cl.pszNomFichier(0), L"Sub/File.txt");
    const struct {
        const char* pszName;
        unsigned dwFlags;
        eARCHIVE eResult;
        const char* pszOut;
    } tabCase[] = {
        {"SUB\\file.TXT", 0, ARCHIVE_OK, "hello, archive"},
        {"sub\\FILE.txt", CTVZipBase::dwEXTRAIT_CASSE, ARCHIVE_OK, "the second"},
        {"SUB\\file.TXT", CTVZipBase::dwEXTRAIT_CASSE, ARCHIVE_NOT_LOCATED, "the second"},
        {"File.txt", 0, ARCHIVE_NOT_FOUND, "the second"},
        // The flag takes away what stands there before anything else is looked at.
        {"File.txt", CTVZipBase::dwEXTRAIT_SUPPRIME, ARCHIVE_NOT_FOUND, "(none)"},
    };
    for (const auto& rst : tabCase) {
        EXPECT_EQ(eExtract(rst.pszName, "out", rst.dwFlags), rst.eResult);
        EXPECT_EQ(m_clFolder.csRead("out"), rst.pszOut);
    }
}

TEST_F(Extraction, DestinationsThatFail) {
    ASSERT_EQ(eOpen(), ARCHIVE_OK);
    fs::create_directory(m_clFolder.clPath("directory"));
    for (const auto& [csTo, nError] : {std::pair(std::string("directory"), EISDIR),
                                       {"missing/out", ENOENT},
                                       {std::string(261, 'x'), ENAMETOOLONG}}) {
        EXPECT_EQ(eExtract("a.txt", csTo), ARCHIVE_CREATE);
        EXPECT_EQ(errno, nError);
    }
    // A link in the way is not followed.
    m_clFolder.Write("victim", "untouched");
    fs::create_symlink("victim", m_clFolder.clPath("link"));
    EXPECT_EQ(eExtract("a.txt", "link"), ARCHIVE_OK);
    EXPECT_EQ(m_clFolder.csRead("link") + "|" + m_clFolder.csRead("victim"), "hello, archive|untouched");
}

TEST_F(Extraction, FailuresLeaveNoFile) {
    STCraftedZip st;
    st.tabEntry.resize(3);
    st.tabEntry[0].dwCrc = st.tabEntry[0].dwLocalCrc = 1;
    st.tabEntry[1].csName = "short";
    st.tabEntry[1].dwOriginale = 20;
    st.tabEntry[2].csName = "secret";
    st.tabEntry[2].wFlags = wFLAG_CRYPTE;
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    for (const auto& [pszName, eExpected] :
         {std::pair("a.txt", ARCHIVE_DATA), {"short", ARCHIVE_BAD}, {"secret", ARCHIVE_PASSWORD}}) {
        EXPECT_EQ(eExtract(pszName, "out"), eExpected);
        EXPECT_EQ(m_cl.eGetDerniereErreur(), eExpected);
        EXPECT_EQ(m_clFolder.csRead("out"), "(none)");
    }
    // A password that does not fit is found out before the old file is touched.
    m_clFolder.Write("out", "old");
    EXPECT_EQ(eExtract("secret", "out"), ARCHIVE_PASSWORD);
    EXPECT_EQ(m_clFolder.csRead("out"), "old");
    EXPECT_EQ(nOpen(), 1);
}

TEST_F(Extraction, AFullDiskHasItsOwnCode) {
    ASSERT_STREQ(::getenv("KALMO_PRIVATE_ROOT"), "1") << "run by tests/support/in_private_root";
    STCraftedZip st;
    st.tabEntry.resize(2);
    st.tabEntry[0].csData.assign(200000, 'x');
    st.tabEntry[0].bDeflate = true;
    st.tabEntry[1].csName = "small";
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    fs::create_directory(m_clFolder.clPath("disk"));
    ASSERT_EQ(::mount("kalmo", m_clFolder.clPath("disk").c_str(), "tmpfs", 0, "size=64k"), 0);
    EXPECT_EQ(eExtract("a.txt", "disk/out"), ARCHIVE_DISK_FULL);
    EXPECT_EQ(unMode("disk/out"), 0U);
    EXPECT_EQ(eExtract("small", "disk/out"), ARCHIVE_OK) << "the room is free again";
    ASSERT_EQ(::umount(m_clFolder.clPath("disk").c_str()), 0);

    // Any other reason is another code, with errno.
    rlimit stBefore{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &stBefore), 0);
    const auto pfnBefore = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit stSmall{50000, stBefore.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &stSmall), 0);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_WRITE);
    EXPECT_EQ(errno, EFBIG);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &stBefore), 0);
    std::signal(SIGXFSZ, pfnBefore);
    EXPECT_EQ(unMode("out"), 0U);
}

TEST_F(Extraction, LockGivesTheFileFreeAndTakesItAgain) {
    ASSERT_EQ(eOpen(), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_OK) << "opens it for as long as it takes";
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    EXPECT_EQ(m_cl.LockLectureEcritureOuvertEnLectureEcriture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.LockLectureEcritureOuvertEnLectureEcriture(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    // Opened for writing too, the write lock alone lets go; until the access flag is cleared.
    ASSERT_EQ(eOpen({}, CTVZipBase::dwOUVRE_ECRITURE), ARCHIVE_OK);
    for (const int nStillOpen : {1, 0}) {
        EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
        EXPECT_EQ(nOpen(), nStillOpen);
        EXPECT_EQ(m_cl.Lock(1), ARCHIVE_OK);
    }
    EXPECT_EQ(m_cl.LockEcritureOuvertEnLecture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    fs::remove(m_clFolder.clPath("a.zip"));
    EXPECT_EQ(m_cl.Lock(1), ARCHIVE_CREATE);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_CREATE);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_CREATE);
    EXPECT_EQ(nOpen(), 0);
}

TEST_F(Extraction, InfoLines) {
    STCraftedZip st;
    st.tabEntry.resize(3);
    st.tabEntry[0].wFlags = wFLAG_CRYPTE;
    st.tabEntry[1].csName = "sub\\empty";
    st.tabEntry[1].csData.clear();
    st.tabEntry[1].dwAttribut = 0x7FFFFFFF;
    st.tabEntry[2].csName = ".";  // neither a base name nor an extension: not listed
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    const std::pair<int, const wchar_t*> tabLine[] = {
        {0, L"a.txt\t14\t2\t20240101132330\t20240101132330\t20240101132330\tH\t+"},
        {1, L"sub/empty\t\t\t20240101132330\t20240101132330\t20240101132330\t\tN"},
        {2, nullptr},
        {-1, nullptr},
    };
    for (const auto& [nRank, pszLine] : tabLine) {
        CTString cs(L"before");
        EXPECT_EQ(m_cl.eGetInfoFichier(nRank, cs), pszLine != nullptr ? ARCHIVE_OK : ARCHIVE_NOT_FOUND);
        EXPECT_EQ(cs.svGet(), pszLine != nullptr ? pszLine : L"");
        EXPECT_EQ(m_cl.pszNomFichier(nRank) != nullptr, pszLine != nullptr);
    }
}

}  // namespace
}  // namespace kalmo
