#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
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
    eARCHIVE eOpen(const STCraftedZip& rst) {
        m_clFolder.Write("a.zip", rst.csBytes());
        return m_cl.eOuvreArchive(m_clFolder.csWide("a.zip"), 0, 0);
    }
    eARCHIVE eExtract(std::wstring_view svName, std::string_view svTo, unsigned dwFlags = 0) {
        return m_cl.eExtraitFichier(svName, m_clFolder.csWide(svTo), 0, nullptr, 0, dwFlags, nullptr);
    }
    struct stat stOf(std::string_view svName) {
        struct stat st {};
        EXPECT_EQ(::lstat(m_clFolder.clPath(svName).c_str(), &st), 0);
        return st;
    }

    CTempFolder m_clFolder;
    CTVWinZip m_cl;
    const int m_nDescriptors = nOpenDescriptors();
};

TEST_F(Extraction, NothingIsOpen) {
    EXPECT_EQ(eExtract(L"a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(m_cl.eOuvreArchive(m_clFolder.csWide("missing"), 0, 0), ARCHIVE_NOT_FOUND);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(m_cl.eOuvreArchiveStream(nullptr, 0, 0), ARCHIVE_NOT_FOUND);
    // A failed opening lets go of the archive that was open before, and of its file.
    ASSERT_EQ(eOpen({}), ARCHIVE_OK);
    m_clFolder.Write("bad", "no archive");
    EXPECT_EQ(m_cl.eOuvreArchive(m_clFolder.csWide("bad"), 0, 0), ARCHIVE_BAD);
    EXPECT_EQ(eExtract(L"a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
}

TEST_F(Extraction, PermissionsAndTimesComeFromTheEntry) {
    const struct {
        std::uint16_t wMadeBy;
        std::uint32_t dwAttribut;
        mode_t unExpected;
    } tabCase[] = {
        {0x031E, 0x81ED0000, 0755}, {0x031E, 0x8D800000, 0600},  // set-id bits stay behind
        {0x031E, 0x81A40021, 0644}, {0x031E, 0x00000010 | 0444, 0464},
        {0x0014, 0x00000000, 0666}, {0x0014, 0x00000020, 0726},  // 438 is added, whatever it makes
    };
    STCraftedZip st;
    st.tabEntry.resize(std::size(tabCase));
    for (std::size_t n = 0; n < std::size(tabCase); ++n) {
        st.tabEntry[n].csName = "f" + std::to_string(n);
        st.tabEntry[n].wMadeBy = tabCase[n].wMadeBy;
        st.tabEntry[n].dwAttribut = tabCase[n].dwAttribut;
        if (n % 2 == 1) {
            st.tabEntry[n].csData.clear();  // without data they are made another way
        }
    }
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    ::setenv("TZ", "America/New_York", 1);
    ::tzset();
    for (std::size_t n = 0; n < std::size(tabCase); ++n) {
        const std::string csName = "f" + std::to_string(n);
        m_clFolder.Write(csName, "what stood there before, and longer than what comes");
        EXPECT_EQ(eExtract(std::wstring(csName.begin(), csName.end()), csName), ARCHIVE_OK);
        EXPECT_EQ(m_clFolder.csRead(csName), st.tabEntry[n].csData);
        EXPECT_EQ(stOf(csName).st_mode, S_IFREG | tabCase[n].unExpected) << csName;
        const std::time_t nTime = stOf(csName).st_mtime;
        char szTime[32];
        std::strftime(szTime, sizeof szTime, "%Y-%m-%d %H:%M:%S", std::localtime(&nTime));
        EXPECT_STREQ(szTime, "2024-01-01 13:23:30");
    }
    ::unsetenv("TZ");
    ::tzset();
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors + 1) << "the archive's own";
}

TEST_F(Extraction, DirectoriesByAttribute) {
    STCraftedZip st;
    const struct {
        const char* pszName;
        std::uint32_t dwAttribut;
        mode_t unExpected;
    } tabCase[] = {
        {"unix", 0x41ED0010, S_IFDIR | 0755},
        {"low", 0x4000 | 0700, S_IFDIR | 0700},
        {"finder", 0x81A44000, S_IFREG | 0644},  // the bit alone is no directory where Unix says file
    };
    for (const auto& rst : tabCase) {
        STCraftedEntry& rstEntry = st.tabEntry.emplace_back();
        rstEntry.csName = rst.pszName;
        rstEntry.dwAttribut = rst.dwAttribut;
        rstEntry.csData.clear();
    }
    st.tabEntry[0].csName = "real/";  // a directory as archivers write it: not listed
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    EXPECT_EQ(m_cl.dwNombreFichier(), 3U);
    EXPECT_EQ(m_cl.lRangFichier(L"real/"), -1);
    for (const auto& rst : tabCase) {
        const std::wstring csName(rst.pszName, rst.pszName + std::string_view(rst.pszName).size());
        EXPECT_EQ(eExtract(csName, rst.pszName), ARCHIVE_OK);
        EXPECT_EQ(stOf(rst.pszName).st_mode, rst.unExpected) << rst.pszName;
    }
    EXPECT_EQ(stOf("unix").st_mtime, stOf("finder").st_mtime);
    EXPECT_EQ(m_cl.eExtraitFichier(L"unix", L"", 0, nullptr, 0, 0, nullptr), ARCHIVE_OK);
    EXPECT_EQ(m_cl.eExtraitFichier(L"finder", L"", 0, nullptr, 0, 0, nullptr), ARCHIVE_CREATE);
    EXPECT_EQ(eExtract(L"unix", "finder"), ARCHIVE_CREATE) << "a file is in the way";
    std::filesystem::create_directory_symlink(m_clFolder.clPath("low"), m_clFolder.clPath("link"));
    EXPECT_EQ(eExtract(L"unix", "link"), ARCHIVE_CREATE);
    EXPECT_EQ(stOf("low").st_mode, S_IFDIR | 0700U) << "changed through a link";
}

TEST_F(Extraction, NamesFlagsAndLookups) {
    STCraftedZip st;
    st.tabEntry.resize(2);
    st.tabEntry[0].csName = "Sub\\File.txt";
    st.tabEntry[1].csName = "sub/FILE.txt";
    st.tabEntry[1].csData = "the second";
    ASSERT_EQ(eOpen(st), ARCHIVE_OK);
    EXPECT_STREQ(m_cl.pszNomFichier(0), L"Sub/File.txt");
    EXPECT_EQ(eExtract(L"SUB\\file.TXT", "out"), ARCHIVE_OK);
    EXPECT_EQ(m_clFolder.csRead("out"), "hello, archive");
    EXPECT_EQ(eExtract(L"sub\\FILE.txt", "out", CTVZipBase::dwEXTRAIT_CASSE), ARCHIVE_OK);
    EXPECT_EQ(m_clFolder.csRead("out"), "the second");
    EXPECT_EQ(eExtract(L"SUB\\file.TXT", "out", CTVZipBase::dwEXTRAIT_CASSE), ARCHIVE_NOT_LOCATED);
    EXPECT_EQ(eExtract(L"File.txt", "out"), ARCHIVE_NOT_FOUND);
    EXPECT_EQ(m_clFolder.csRead("out"), "the second");
    // The flag takes away what stands there before anything else is looked at.
    EXPECT_EQ(eExtract(L"File.txt", "out", CTVZipBase::dwEXTRAIT_SUPPRIME), ARCHIVE_NOT_FOUND);
    EXPECT_EQ(m_clFolder.csRead("out"), "(none)");
    // Without it the file is overwritten in place.
    m_clFolder.Write("out", "x");
    std::ifstream clBefore(m_clFolder.clPath("out"));
    EXPECT_EQ(eExtract(L"sub/file.txt", "out"), ARCHIVE_OK);
    std::string csLine;
    EXPECT_TRUE(std::getline(clBefore, csLine));
    EXPECT_EQ(csLine, "hello, archive");
}

TEST_F(Extraction, DestinationsThatFailAndLinksThatAreReplaced) {
    ASSERT_EQ(eOpen({}), ARCHIVE_OK);
    fs::create_directory(m_clFolder.clPath("directory"));
    EXPECT_EQ(eExtract(L"a.txt", "directory"), ARCHIVE_CREATE);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(eExtract(L"a.txt", "missing/out"), ARCHIVE_CREATE);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(eExtract(L"a.txt", std::string(261, 'x')), ARCHIVE_CREATE);
    EXPECT_EQ(errno, ENAMETOOLONG);

    m_clFolder.Write("victim", "untouched");
    fs::create_symlink("victim", m_clFolder.clPath("link"));
    fs::create_hard_link(m_clFolder.clPath("victim"), m_clFolder.clPath("hard"));
    for (const char* const psz : {"link", "hard"}) {
        EXPECT_EQ(eExtract(L"a.txt", psz), ARCHIVE_OK);
        EXPECT_EQ(m_clFolder.csRead(psz), "hello, archive");
        EXPECT_TRUE(S_ISREG(stOf(psz).st_mode));
    }
    EXPECT_EQ(m_clFolder.csRead("victim"), "untouched");
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
    const std::pair<const wchar_t*, eARCHIVE> tabCase[] = {
        {L"a.txt", ARCHIVE_DATA}, {L"short", ARCHIVE_BAD}, {L"secret", ARCHIVE_PASSWORD}};
    for (const auto& [pszName, eExpected] : tabCase) {
        EXPECT_EQ(eExtract(pszName, "out"), eExpected);
        EXPECT_EQ(m_cl.eGetDerniereErreur(), eExpected);
        EXPECT_EQ(m_clFolder.csRead("out"), "(none)");
    }
    // A password that does not fit is found out before the old file is touched.
    m_clFolder.Write("out", "old");
    EXPECT_EQ(eExtract(L"secret", "out"), ARCHIVE_PASSWORD);
    EXPECT_EQ(m_clFolder.csRead("out"), "old");
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors + 1);
}

TEST_F(Extraction, LockGivesTheFileFreeAndTakesItAgain) {
    ASSERT_EQ(eOpen({}), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
    EXPECT_EQ(eExtract(L"a.txt", "out"), ARCHIVE_OK) << "opens it for as long as it takes";
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_OK);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
    EXPECT_EQ(m_cl.LockLectureEcritureOuvertEnLectureEcriture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.LockLectureEcritureOuvertEnLectureEcriture(0), ARCHIVE_OK);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
    // Opened for writing too, the write lock alone lets go; until the access flag is cleared.
    ASSERT_EQ(m_cl.eOuvreArchive(m_clFolder.csWide("a.zip"), CTVZipBase::dwOUVRE_ECRITURE, 0), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors + 1);
    EXPECT_EQ(m_cl.Lock(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
    EXPECT_EQ(m_cl.LockEcritureOuvertEnLecture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
    fs::remove(m_clFolder.clPath("a.zip"));
    EXPECT_EQ(m_cl.Lock(1), ARCHIVE_CREATE);
    EXPECT_EQ(eExtract(L"a.txt", "out"), ARCHIVE_CREATE);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(m_cl.eLitRepertoireMono(), ARCHIVE_CREATE);
    EXPECT_EQ(nOpenDescriptors(), m_nDescriptors);
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
    CTString cs;
    EXPECT_EQ(m_cl.eGetInfoFichier(0, cs), ARCHIVE_OK);
    EXPECT_EQ(cs.svGet(), L"a.txt\t14\t2\t20240101132330\t20240101132330\t20240101132330\tH\t+");
    EXPECT_EQ(m_cl.eGetInfoFichier(1, cs), ARCHIVE_OK);
    EXPECT_EQ(cs.svGet(), L"sub/empty\t\t\t20240101132330\t20240101132330\t20240101132330\t\tN");
    for (const int nRank : {2, -1}) {
        EXPECT_EQ(m_cl.eGetInfoFichier(nRank, cs), ARCHIVE_NOT_FOUND);
        EXPECT_TRUE(cs.bEmpty());
        EXPECT_EQ(m_cl.pszNomFichier(nRank), nullptr);
    }
}

}  // namespace
}  // namespace kalmo
