#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <sstream>

#include "tests/archive/made_zips.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;

int nOpenDescriptors() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

class Extraction : public CMadeZips {
  protected:
    eARCHIVE eOpen(std::string_view svArchive, unsigned dwFlags = 0) {
        return m_cl.eOuvreArchive(m_clFolder.csWide(svArchive), dwFlags, 0);
    }
    eARCHIVE eExtract(std::string_view svName, std::string_view svTo, unsigned dwFlags = 0) {
        return m_cl.eExtraitFichier(std::wstring(svName.begin(), svName.end()), m_clFolder.csWide(svTo), 0,
                                    nullptr, 0, dwFlags, nullptr);
    }
    struct stat stOf(std::string_view svName) {
        struct stat st {};
        ::lstat(m_clFolder.clPath(svName).c_str(), &st);
        return st;
    }
    /// How many descriptors are open that were not at the start.
    [[nodiscard]] int nOpen() const { return nOpenDescriptors() - m_nDescriptors; }

    struct CArchive : CTVWinZip {
        using CTVWinZip::_SetPermissionsInterdites;
    } m_cl;
    const int m_nDescriptors = nOpenDescriptors();
};

TEST_F(Extraction, NothingIsOpen) {
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(eOpen("missing"), ARCHIVE_NOT_FOUND);
    EXPECT_EQ(errno, ENOENT);
    // A failed opening lets go of the archive that was open before, and of its file.
    ASSERT_EQ(eOpen("sound"), ARCHIVE_OK);
    EXPECT_EQ(eOpen("no end"), ARCHIVE_BAD);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(nOpen(), 0);
}

// The entries are called by what is to come of them: mode and content.
TEST_F(Extraction, PermissionsAndTimesComeFromTheEntry) {
    ASSERT_EQ(eOpen("modes"), ARCHIVE_OK);
    ASSERT_EQ(m_cl.dwNombreFichier(), 7U) << "a directory as archivers write it is not listed";
    ::setenv("TZ", "America/New_York", 1);
    ::tzset();
    for (int n = 0; n < 7; ++n) {
        const std::wstring csWide = m_cl.pszNomFichier(n);
        const std::string csName(csWide.begin(), csWide.end());
        if (csName.starts_with("10")) {
            m_clFolder.Write(csName, "what stood there before, and longer than what comes");
        }
        EXPECT_EQ(eExtract(csName, csName), ARCHIVE_OK);
        const struct stat st = stOf(csName);
        std::ostringstream clGot;
        clGot << std::oct << st.st_mode << ":" << (S_ISREG(st.st_mode) ? m_clFolder.csRead(csName) : "");
        EXPECT_EQ(clGot.str(), csName);
        char szTime[32];
        std::strftime(szTime, sizeof szTime, "%F %T", std::localtime(&st.st_mtime));
        EXPECT_STREQ(szTime, "2024-01-01 13:23:30") << csName;
    }
    ::unsetenv("TZ");
    ::tzset();
    EXPECT_EQ(nOpen(), 1) << "the archive's own";
    // Nothing in the way is taken for a directory, and a directory for no file.
    EXPECT_EQ(eExtract("40755:", "100644:"), ARCHIVE_CREATE);
    EXPECT_EQ(eExtract("100644:", "40755:"), ARCHIVE_CREATE);
    EXPECT_EQ(errno, EISDIR);
    fs::create_directory_symlink("40700:", m_clFolder.clPath("link"));
    EXPECT_EQ(eExtract("40755:", "link"), ARCHIVE_CREATE);
    EXPECT_EQ(stOf("40700:").st_mode, S_IFDIR | 0700U) << "changed through a link";
}

// A moment is enough for somebody who waits for it, and a descriptor outlives the permission.
TEST_F(Extraction, NothingIsWritableForOthersAtAnyMoment) {
    m_cl._SetPermissionsInterdites(0022);
    ASSERT_EQ(eOpen("open modes"), ARCHIVE_OK);
    EXPECT_EQ(eExtract("d", "d"), ARCHIVE_OK);
    EXPECT_EQ(stOf("d").st_mode, S_IFDIR | 0755U);
    for (const char* const pszBefore : {"644", "666", "620", "602"}) {
        ASSERT_TRUE(m_clFolder.bShell(std::string("rm -f f; echo old >f; chmod ") + pszBefore + " f"));
        std::ofstream clHeld(m_clFolder.clPath("f"), std::ios::in);
        EXPECT_EQ(eExtract("f", "f"), ARCHIVE_OK);
        EXPECT_EQ(stOf("f").st_mode, S_IFREG | 0755U) << pszBefore;
        clHeld << "evil" << std::flush;
        EXPECT_EQ(m_clFolder.csRead("f"), pszBefore == std::string("644") ? "evil" : "new") << pszBefore;
    }
}

TEST_F(Extraction, NamesFlagsAndLookups) {
    ASSERT_EQ(eOpen("names"), ARCHIVE_OK);
    EXPECT_STREQ(m_cl.pszNomFichier(0), L"Sub/File.txt");
    EXPECT_STREQ(m_cl.pszNomFichier(2), L"\u00E9/\u2592");
    const struct {
        const char* pszName;
        unsigned dwFlags;
        eARCHIVE eResult;
        const char* pszOut;
    } tabCase[] = {
        {"SUB\\file.TXT", 0, ARCHIVE_OK, "hello, archive"},
        {"sub\\FILE.txt", CTVZipBase::EXTRAIT_CASSE, ARCHIVE_OK, "the second"},
        {"SUB\\file.TXT", CTVZipBase::EXTRAIT_CASSE, ARCHIVE_NOT_LOCATED, "the second"},
        {"File.txt", 0, ARCHIVE_NOT_FOUND, "the second"},
        // The flag takes away what stands there before anything else is looked at.
        {"File.txt", CTVZipBase::EXTRAIT_SUPPRIME, ARCHIVE_NOT_FOUND, "(none)"},
    };
    for (const auto& rst : tabCase) {
        EXPECT_EQ(eExtract(rst.pszName, "out", rst.dwFlags), rst.eResult);
        EXPECT_EQ(m_clFolder.csRead("out"), rst.pszOut);
    }
}

TEST_F(Extraction, AWrongPasswordLeavesTheOldFile) {
    ASSERT_EQ(eOpen("listed"), ARCHIVE_OK);
    m_clFolder.Write("out", "old");
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_PASSWORD);
    EXPECT_EQ(m_cl.eGetDerniereErreur(), ARCHIVE_PASSWORD);
    EXPECT_EQ(m_clFolder.csRead("out"), "old");
    EXPECT_EQ(nOpen(), 1);
}

TEST_F(Extraction, AFullDiskHasItsOwnCode) {
    ASSERT_STREQ(::getenv("KALMO_PRIVATE_ROOT"), "1") << "run by testkit/in_private_root";
    ASSERT_EQ(eOpen("large"), ARCHIVE_OK);
    ASSERT_TRUE(m_clFolder.bShell("mkdir disk; mount -t tmpfs -o size=64k kalmo disk"));
    EXPECT_EQ(eExtract("a.txt", "disk/out"), ARCHIVE_DISK_FULL);
    EXPECT_EQ(m_clFolder.csRead("disk/out"), "(none)");
    EXPECT_EQ(eExtract("small", "disk/out"), ARCHIVE_OK) << "the room is free again";
    ASSERT_TRUE(m_clFolder.bShell("umount disk"));

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
    EXPECT_EQ(m_clFolder.csRead("out"), "(none)");
}

TEST_F(Extraction, LockGivesTheFileFreeAndTakesItAgain) {
    ASSERT_EQ(eOpen("sound"), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_OK) << "opens it for as long as it takes";
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    EXPECT_EQ(m_cl.LockLectureEcritureOuvertEnLectureEcriture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.LockLectureEcritureOuvertEnLectureEcriture(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    // Opened for writing too, the write lock alone lets go; until the access flag is cleared.
    ASSERT_EQ(eOpen("sound", CTVZipBase::OUVRE_ECRITURE), ARCHIVE_OK);
    for (const int nStillOpen : {1, 0}) {
        EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
        EXPECT_EQ(nOpen(), nStillOpen);
        EXPECT_EQ(m_cl.Lock(1), ARCHIVE_OK);
    }
    EXPECT_EQ(m_cl.LockEcritureOuvertEnLecture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    fs::remove(m_clFolder.clPath("sound"));
    EXPECT_EQ(m_cl.Lock(1), ARCHIVE_CREATE);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_CREATE);
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_CREATE);
}

TEST_F(Extraction, InfoLines) {
    ASSERT_EQ(eOpen("listed"), ARCHIVE_OK);
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
