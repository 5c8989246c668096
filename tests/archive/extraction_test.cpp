#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <set>
#include <sstream>
#include <tuple>

#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

int nOpenDescriptors() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

// Archives that no archiver would write are described in the words of tests/support/zip_bytes.py.
class Extraction : public testing::Test {
  protected:
    void Make(const std::string& csName, const std::string& csZip) const {
        ASSERT_TRUE(m_clFolder.bShell("python3 -B - <<'END'\nimport sys\nsys.path.insert(0, '" KALMO_SUPPORT
                                      "')\nfrom zip_bytes import *\nopen('" +
                                      csName + "', 'wb').write(" + csZip + ")\nEND"));
    }
    eARCHIVE eOpen(std::string_view svArchive, unsigned dwFlags = 0) {
        return m_cl.eOuvreArchive(m_clFolder.csWide(svArchive), dwFlags, 0);
    }
    eARCHIVE eMakeAndOpen(const std::string& csZip, unsigned dwFlags = 0) {
        Make("made.zip", csZip);
        return eOpen("made.zip", dwFlags);
    }
    eARCHIVE eExtract(std::string_view svName, std::string_view svTo, unsigned dwFlags = 0) {
        return m_cl.eExtraitFichier(std::wstring(svName.begin(), svName.end()), m_clFolder.csWide(svTo), 0,
                                    nullptr, 0, dwFlags, nullptr);
    }
    // Extracts into memory: the text, or "!" and the code.
    std::string csExtract(std::wstring_view svName = L"a.txt") {
        CTLBIN tab;
        const eARCHIVE e = m_cl.eExtraitFichier(svName, &tab, 0, nullptr, 0, nullptr);
        return e == ARCHIVE_OK ? std::string(tab.begin(), tab.end()) : "!" + std::to_string(e);
    }
    struct stat stOf(std::string_view svName) {
        struct stat st {};
        ::lstat(m_clFolder.clPath(svName).c_str(), &st);
        return st;
    }
    // How many descriptors are open that were not at the start.
    [[nodiscard]] int nOpen() const { return nOpenDescriptors() - m_nDescriptors; }

    const CTempFolder m_clFolder;
    struct CArchive : CTVWinZip {
        using CTVWinZip::_SetPermissionsInterdites;
    } m_cl;
    const int m_nDescriptors = nOpenDescriptors();
};

// What independent archivers write is read back byte for byte: how each makes ../a.zip of what is in the
// current folder, and shows that it is that kind.
const char* const TAB_ARCHIVER[][2] = {
    {"deflated", "zip -q -r -9 ../a.zip ."},
    {"enciphered", "zip -q -r -P 'pass word' ../a.zip ."},
    // Its directory is split too: the end record counts fewer headers on its own disk than there are in all.
    {"split",
     "zip -q -r -s 64k ../a.zip . && test -e ../a.z02 && "
     "test $(tail -c 14 ../a.zip | od -An -tu2 -N2) -lt $(tail -c 12 ../a.zip | od -An -tu2 -N2)"},
    {"split_enciphered", "zip -q -r -s 64k -P 'pass word' ../a.zip . && test -e ../a.z02"},
    {"split_zip64", "zip -q -r -s 64k -X -fz ../a.zip . && grep -aq 'PK\006\007' ../a.zip"},
    {"streamed", "zip -q -r - . | cat >../a.zip && grep -aq 'PK\007\010' ../a.zip"},
    {"7z_enciphered",
     ": >'\u20AC\u00E9'; 7z a -tzip -mem=ZipCrypto '-ppass word' -bd -y ../a.zip . >/dev/null"},
    {"bsdtar_stored",
     ": >'\u20AC\u00E9'; bsdtar --format zip --options zip:compression=store -cf ../a.zip *"},
    {"python_deflated_zip64",
     ": >'\u20AC\u00E9'; python3 -c 'import sys, os, zipfile as z\n"
     "a = z.ZipFile(sys.stdout.buffer, \"w\", z.ZIP_DEFLATED)\n"
     "for n in [os.path.join(d, n) for d, _, f in os.walk(\".\") for n in f]:\n"
     "    with a.open(n[2:], \"w\", force_zip64=True) as e:\n"
     "        e.write(open(n, \"rb\").read())\n"
     "a.close()' | cat >../a.zip"},
    // The tool for payloads: in any locale, and nothing where a name is none.
    {"make_payload",
     ": >'\u20AC\u00E9'; mkdir ../bad && : >\"../bad/$(printf '\\377')\" && export LC_ALL=C && "
     "! " KALMO_MAKE_PAYLOAD " ../bad ../a.zip && test ! -e ../a.zip && " KALMO_MAKE_PAYLOAD " . ../a.zip"},
    {"make_payload_enciphered",
     "cp nothing '\u65E5'; printf '#!/bin/sh\necho pass word\n' >../p && chmod +x ../p && " KALMO_MAKE_PAYLOAD
     " --password-from ../p --encipher '*[x\u65E5]*' . ../a.zip && ! 7z t -pwrong ../a.zip >/dev/null 2>&1"},
    {"self_extractor", "zip -q -r ../b.zip . && cat /bin/ls ../b.zip >../a.zip && zip -q -A ../a.zip"},
};

class Archiver : public Extraction, public testing::WithParamInterface<int> {};

TEST_P(Archiver, EveryByteComesBack) {
    const auto& [pszName, pszCommand] = TAB_ARCHIVER[GetParam()];
    // Texts, noise, a program, nothing at all, in folders and with awkward names. For split sets so many
    // small ones that the directory crosses from one volume to the next.
    ASSERT_TRUE(m_clFolder.bShell(R"(mkdir -p in/lib/deep/er in/'empty folder' && cd in
        head -c 200000 /dev/urandom >noise.bin; head -c 32768 noise.bin >exactly32768; : >nothing
        seq 50000 >lib/text.txt; printf 1 >'lib/deep/er/one byte'
        cp /bin/ls lib/program.so; chmod 4751 lib/program.so
        split -n l/)"s + (std::string_view(pszName).starts_with("split") ? "650" : "30") +
                                  " -a 3 exactly32768 a_name_of_some_length_so_that_the_directory_grows_"));
    // Archivers mark names as UTF-8 only where the locale is.
    ASSERT_TRUE(m_clFolder.bShell("export LC_ALL=C.UTF-8; cd in; "s + pszCommand));
    ASSERT_EQ(m_cl.eMotDePasse(L"pass word"), ARCHIVE_OK);
    ASSERT_EQ(eOpen("a.zip"), ARCHIVE_OK) << m_cl.csGetDefaut().pszGet();
    fs::create_directory(m_clFolder.clPath("out"));
    for (int n = 0; n < static_cast<int>(m_cl.dwNombreFichier()); ++n) {
        const CTString csEntry = m_cl.pszNomFichier(n);
        CFSPath clPath;
        ASSERT_EQ(eCheminEntree(m_clFolder.csWide("out"), csEntry, &clPath), ARCHIVE_OK);
        ASSERT_EQ(m_cl.eExtraitFichier(csEntry, clPath.svGet(), 0, nullptr, 0, 0, nullptr), ARCHIVE_OK)
            << csEntry.pszGet() << L": " << m_cl.csGetDefaut().pszGet();
    }
    // Directories without files are not kept, nor are set-id bits.
    EXPECT_TRUE(
        m_clFolder.bShell("rmdir in/'empty folder' && diff -r in out && test ! -u out/lib/program.so"));
}

INSTANTIATE_TEST_SUITE_P(Each, Archiver, testing::Range(0, static_cast<int>(std::size(TAB_ARCHIVER))),
                         [](const auto& rst) { return TAB_ARCHIVER[rst.param][0]; });

TEST_F(Extraction, MoreThanSixteenBitsCount) {
    ASSERT_TRUE(m_clFolder.bShell(R"(seq 70000 >list && mkdir in && cd in && xargs touch <../list
        echo last >70000 && )" KALMO_MAKE_PAYLOAD " . ../many.zip"));
    ASSERT_EQ(eOpen("many.zip"), ARCHIVE_OK);
    EXPECT_EQ(m_cl.dwNombreFichier(), 70000U);
    EXPECT_EQ(csExtract(L"70000"), "last\n");
}

TEST_F(Extraction, NothingIsOpen) {
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(eOpen("missing"), ARCHIVE_NOT_FOUND);
    EXPECT_EQ(errno, ENOENT);
    // A failed opening lets go of the archive that was open before, and of its file.
    ASSERT_EQ(eMakeAndOpen("archive(entry())"), ARCHIVE_OK);
    EXPECT_TRUE(CWinZip::bFichierZip(m_clFolder.csWide("made.zip")));
    EXPECT_EQ(eMakeAndOpen("archive(entry())[:-22]"), ARCHIVE_BAD);
    EXPECT_FALSE(CWinZip::bFichierZip(m_clFolder.csWide("made.zip")));
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_NOT_OPEN);
    EXPECT_EQ(nOpen(), 0);
}

// The entries are called by what is to come of them: mode and content.
TEST_F(Extraction, PermissionsAndTimesComeFromTheEntry) {
    ASSERT_EQ(eMakeAndOpen(R"(archive(
        entry(b"100755:x", b"x", attributes=0x81ED0000),
        entry(b"100600:", b"", attributes=0x8D800000),  # set-id bits stay behind
        entry(b"100464:", b"", attributes=0x00000010 | 0o444),
        entry(b"100666:x", b"x", made=0x0014, attributes=0),  # 438 is added, whatever it makes
        entry(b"40755:", b"", attributes=0x41ED0010),
        entry(b"40700:", b"", attributes=0x4000 | 0o700),
        entry(b"100644:", b"", attributes=0x81A44000),  # the bit alone is no directory where Unix says file
        entry(b"40755:not listed/", b"", attributes=0x41ED0010)))"),
              ARCHIVE_OK);
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
    ASSERT_EQ(eMakeAndOpen("archive(entry(b'f', b'new', attributes=0x81FF0000),"
                           "entry(b'd', b'', attributes=0x41FF0000))"),
              ARCHIVE_OK);
    EXPECT_EQ(eExtract("d", "d"), ARCHIVE_OK);
    EXPECT_EQ(stOf("d").st_mode, S_IFDIR | 0755U);
    for (const char* const pszBefore : {"644", "666", "620", "602"}) {
        ASSERT_TRUE(m_clFolder.bShell("rm -f f; echo old >f; chmod "s + pszBefore + " f"));
        std::ofstream clHeld(m_clFolder.clPath("f"), std::ios::in);
        EXPECT_EQ(eExtract("f", "f"), ARCHIVE_OK);
        EXPECT_EQ(stOf("f").st_mode, S_IFREG | 0755U) << pszBefore;
        clHeld << "evil" << std::flush;
        EXPECT_EQ(m_clFolder.csRead("f"), pszBefore == "644"s ? "evil" : "new") << pszBefore;
    }
}

TEST_F(Extraction, NamesFlagsAndLookups) {
    ASSERT_EQ(eMakeAndOpen(R"(archive(entry(b"Sub\\File.txt"), entry(b"sub/FILE.txt", b"the second"),
                                      entry(b"\x82/\xb1"), entry(b"mixed/a\\b", crc=1, local=dict(crc=1))))"),
              ARCHIVE_OK);
    EXPECT_STREQ(m_cl.pszNomFichier(0), L"Sub/File.txt");
    EXPECT_STREQ(m_cl.pszNomFichier(2), L"\u00E9/\u2592");
    for (const auto& [pszName, dwFlags, eResult, pszOut] :
         {std::tuple("SUB\\file.TXT", 0U, ARCHIVE_OK, "hello, archive"),
          {"sub\\FILE.txt", CTVZipBase::EXTRAIT_CASSE, ARCHIVE_OK, "the second"},
          {"SUB\\file.TXT", CTVZipBase::EXTRAIT_CASSE, ARCHIVE_NOT_LOCATED, "the second"},
          {"File.txt", 0U, ARCHIVE_NOT_FOUND, "the second"},
          // The flag takes away what stands there before anything else is looked at.
          {"File.txt", CTVZipBase::EXTRAIT_SUPPRIME, ARCHIVE_NOT_FOUND, "(none)"},
          {"Mixed/A\\b", 0U, ARCHIVE_DATA, "(none)"}}) {
        EXPECT_EQ(eExtract(pszName, "out", dwFlags), eResult);
        EXPECT_EQ(m_clFolder.csRead("out"), pszOut);
    }
}

TEST_F(Extraction, InfoLinesAndAPasswordThatIsMissing) {
    ASSERT_EQ(eMakeAndOpen(R"(archive(
        entry(flags=ENCIPHERED), entry(b"sub\\empty", b"", attributes=0x7FFFFFFF),
        entry(b"."), entry(b"sub/.profile")))"),  // nothing but the last has neither a base name nor an
                                                  // extension
              ARCHIVE_OK);
    for (const auto& [nRank, pszLine] :
         {std::pair(0, L"a.txt\t14\t2\t20240101132330\t20240101132330\t20240101132330\tH\t+"),
          {1, L"sub/empty\t\t\t20240101132330\t20240101132330\t20240101132330\t\tN"},
          {2, L"sub/.profile\t14\t14\t20240101132330\t20240101132330\t20240101132330\tH\tN"},
          {3, nullptr},
          {-1, nullptr}}) {
        CTString cs(L"before");
        EXPECT_EQ(m_cl.eGetInfoFichier(nRank, cs), pszLine != nullptr ? ARCHIVE_OK : ARCHIVE_NOT_FOUND);
        EXPECT_EQ(cs.svGet(), pszLine != nullptr ? pszLine : L"");
        EXPECT_EQ(m_cl.pszNomFichier(nRank) != nullptr, pszLine != nullptr);
    }
    m_clFolder.Write("out", "old");
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_PASSWORD);
    EXPECT_EQ(m_cl.eGetDerniereErreur(), ARCHIVE_PASSWORD);
    EXPECT_EQ(m_clFolder.csRead("out"), "old");
    EXPECT_EQ(nOpen(), 1);
}

mode_t unWhileWriting = 0;

TEST_F(Extraction, AFullDiskHasItsOwnCode) {
    ASSERT_STREQ(::getenv("KALMO_PRIVATE_ROOT"), "1") << "run by testkit/in_private_root";
    ASSERT_EQ(eMakeAndOpen("archive(entry(data=b'x' * 200000, deflate=True), entry(b'small'))"), ARCHIVE_OK);
    ASSERT_TRUE(m_clFolder.bShell("mkdir disk; mount -t tmpfs -o size=64k kalmo disk"));
    EXPECT_EQ(eExtract("a.txt", "disk/out"), ARCHIVE_DISK_FULL);
    EXPECT_EQ(m_clFolder.csRead("disk/out"), "(none)");
    EXPECT_EQ(eExtract("small", "disk/out"), ARCHIVE_OK) << "the room is free again";
    ASSERT_TRUE(m_clFolder.bShell("umount disk"));

    // Any other reason is another code, with errno. Until then nobody else reads the file.
    rlimit stBefore{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &stBefore), 0);
    fs::current_path(m_clFolder.clPath(""));
    const auto pfnBefore = std::signal(SIGXFSZ, [](int) {
        struct stat st {};
        ::stat("out", &st);
        unWhileWriting = st.st_mode;
    });
    const rlimit stSmall{50000, stBefore.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &stSmall), 0);
    EXPECT_EQ(eExtract("a.txt", "out"), ARCHIVE_WRITE);
    EXPECT_EQ(errno, EFBIG);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &stBefore), 0);
    std::signal(SIGXFSZ, pfnBefore);
    fs::current_path("/");
    EXPECT_EQ(unWhileWriting, S_IFREG | 0600U);
    EXPECT_EQ(m_clFolder.csRead("out"), "(none)");
}

TEST_F(Extraction, LockGivesTheFileFreeAndTakesItAgain) {
    ASSERT_EQ(eMakeAndOpen("archive(entry())"), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(csExtract(), "hello, archive") << "opens it for as long as it takes";
    EXPECT_EQ(nOpen(), 0);
    // Opened for writing too, the write lock alone lets go; until the access flag is cleared.
    ASSERT_EQ(eOpen("made.zip", CTVZipBase::OUVRE_ECRITURE), ARCHIVE_OK);
    EXPECT_EQ(m_cl.LockEcritureOuvertEnLecture(1), ARCHIVE_OK);
    EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
    EXPECT_EQ(nOpen(), 0);
    ASSERT_EQ(eOpen("made.zip", CTVZipBase::OUVRE_ECRITURE), ARCHIVE_OK);
    for (const int nStillOpen : {1, 0}) {
        EXPECT_EQ(m_cl.Lock(0), ARCHIVE_OK);
        EXPECT_EQ(nOpen(), nStillOpen);
        EXPECT_EQ(m_cl.Lock(1), ARCHIVE_OK);
    }
    fs::remove(m_clFolder.clPath("made.zip"));
    EXPECT_EQ(m_cl.Lock(1), ARCHIVE_CREATE);
    EXPECT_EQ(csExtract(), "!2");
}

// A wrong password that passes the header by chance fails at the CRC.
TEST_F(Extraction, AnEntryOpensWithItsPasswordOnly) {
    m_clFolder.Write("a.txt", "hello");
    for (const char* const psz :
         {"zip -q -P 'p\xE9' a.zip a.txt", "zip -q -P 'p\xE9' - a.txt | cat >a.zip"}) {
        ASSERT_TRUE(m_clFolder.bShell(psz));
        ASSERT_EQ(eOpen("a.zip"), ARCHIVE_OK);
        EXPECT_EQ(m_cl.eMotDePasse(L"p\u00E9"), ARCHIVE_OK);
        EXPECT_EQ(csExtract(), "hello");
        std::set<std::string> setResult;
        for (int n = 0; n < 3000; ++n) {
            (void)m_cl.eMotDePasse((L"wrong" + std::to_wstring(n)).c_str());
            setResult.insert(csExtract());
        }
        setResult.erase("!3");  // a deflate stream that happens to end early
        EXPECT_EQ(setResult, (std::set<std::string>{"!21", "!30"}));
    }
    const wchar_t szNegative[] = {L'a', static_cast<wchar_t>(0x80000000), L'\0'};
    EXPECT_EQ(m_cl.eMotDePasse(szNegative), ARCHIVE_PASSWORD);
    CTString csPassword(L"before");
    EXPECT_EQ(m_cl.eGetMotDePasse(csPassword), ARCHIVE_OK);
    EXPECT_TRUE(csPassword.bEmpty());
}

// Names that would lead out of the directory are among the hostile archives.
TEST_F(Extraction, DirectoriesAreMadeBelowTheRoot) {
    ASSERT_TRUE(m_clFolder.bShell("ln -s win way"));  // the administrator's choice
    CFSPath clPath;
    const mode_t unBefore = ::umask(077);
    for (const auto& [pszRoot, pszName, pszJoined, pszMade] :
         {std::tuple("", L"win\\dows\\file", "win/dows/file", "win/dows"),
          {"", L"x//.///y", "x/y", "x"},
          {"", L"a/..b/c..", "a/..b/c..", "a/..b"},
          {"", L"1:/x", "1:/x", "1:"},
          {"way", L"through/fine", "way/through/fine", "win/through"}}) {
        EXPECT_EQ(eCheminEntree(m_clFolder.csWide(pszRoot), pszName, &clPath), ARCHIVE_OK);
        EXPECT_EQ(clPath.svGet(), m_clFolder.csWide(pszJoined));
        EXPECT_EQ(stOf(pszMade).st_mode, S_IFDIR | 0755U) << pszMade;
    }
    ::umask(unBefore);
    for (const wchar_t* const psz : {L"dir/", L"dir\\", L".", L"a/.", L"a/./../../x"}) {
        EXPECT_EQ(eCheminEntree(m_clFolder.csWide(""), psz, &clPath), ARCHIVE_BAD) << psz;
        EXPECT_TRUE(clPath.bEmpty());
    }
    // 260 characters in all just fit.
    const std::wstring csLongest(260 - m_clFolder.csWide("").size(), L'z');
    EXPECT_EQ(eCheminEntree(m_clFolder.csWide(""), csLongest, &clPath), ARCHIVE_OK);
    EXPECT_EQ(eCheminEntree(m_clFolder.csWide(""), csLongest + L"z", &clPath), ARCHIVE_CREATE);
    EXPECT_EQ(eCheminEntree(m_clFolder.csWide("missing"), L"a/b", &clPath), ARCHIVE_CREATE);
}

TEST_F(Extraction, RecordsThatAreOddButSound) {
    // So many entries alone are no Zip64; a directory of no bytes has none, whatever is counted. Its offset
    // alone finds a Zip64 end record: with bytes in front the caller has to tell how many.
    for (const auto& [pszZip, nBase, eOpened, nEntries] :
         {std::tuple("archive(*[entry()] * 0xFFFF)", 0, ARCHIVE_OK, 65535U),
          {"archive(entry(), size=0)", 0, ARCHIVE_OK, 0U},
          {"archive(entry(), comment=b'PK\\5\\6' + bytes(18) + b'rest')", 0, ARCHIVE_OK, 0U},
          {"b'in front' + zip64(records(1, 51))", 0, ARCHIVE_BAD, 0U},
          {"b'in front' + zip64(records(1, 51))", 8, ARCHIVE_OK, 1U},
          {"b'in front' + zip64(locator(2**64 - 1))", 8, ARCHIVE_BAD, 0U}}) {
        Make("made.zip", pszZip);
        EXPECT_EQ(m_cl.eOuvreArchive(m_clFolder.csWide("made.zip"), 0, nBase), eOpened) << pszZip;
        EXPECT_EQ(m_cl.dwNombreFichier(), nEntries) << pszZip;
    }
    EXPECT_TRUE(m_cl.csGetDefaut().svGet().starts_with(L"Zip64 locator: offset"));
    // A name is used in part, and compared whole; what follows is found behind all that.
    ASSERT_EQ(eMakeAndOpen(R"(b'12345' + archive(
        entry(b"n" * 272, extra=b"extra", comment=b"entry comment", disk=3, local=dict(name=b"n" * 273)),
        entry(b"l" * 273, extra=b"extra", disk=3), entry(), comment=b"caf\xE9 \x80", disk=3, directory_disk=3))"),
              ARCHIVE_OK);
    EXPECT_EQ(m_cl.csGetCommentaire().svGet(), L"caf\u00E9 \u20AC");
    EXPECT_EQ(csExtract(std::wstring(260, L'n')), "!3");
    EXPECT_EQ(csExtract(std::wstring(260, L'l')), "hello, archive");
    EXPECT_EQ(csExtract(), "hello, archive");
}

TEST_F(Extraction, EntriesAreReadInPieces) {
    Make("made.zip",
         R"(archive(entry(b"a/A", b"abc" * 9999, deflate=True), entry(b"a\\b", crc=1, local=dict(crc=1))))");
    CDiskFile clFile;
    ASSERT_TRUE(clFile.bOpen(m_clFolder.csWide("made.zip"), CDiskFile::eMODE::Read));
    CWinZip cl;
    cl.SetStream(&clFile, 0);
    ASSERT_EQ(cl.OuvreZip(L"", 0), ARCHIVE_OK);
    EXPECT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_NO_CURRENT);
    ASSERT_EQ(cl.LocateFile(L"a\\A", true), ARCHIVE_OK);
    EXPECT_EQ(cl.LocateFile(L"A/a", true), ARCHIVE_NOT_LOCATED) << "the one before stays";
    std::string csPiece(99990, '\0');
    std::size_t nRead = 0;
    ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
    for (const std::size_t nSize : {7U, 99990U}) {
        ASSERT_TRUE(cl.bReadCurrentFileInZip(csPiece.data(), nSize, &nRead));
        EXPECT_EQ(nRead, std::min<std::size_t>(nSize, 29997 - 7));
    }
    EXPECT_EQ(cl.CloseCurrentFileInZip(1, 0), ARCHIVE_OK);
    // A reading that is broken off has no CRC to compare.
    ASSERT_EQ(cl.LocateFile(L"A\\B", false), ARCHIVE_OK);
    for (const auto& [nSize, eClosed] : {std::pair(1U, ARCHIVE_OK), {14U, ARCHIVE_CRC}}) {
        ASSERT_EQ(cl.OpenCurrentFileInZip(), ARCHIVE_OK);
        ASSERT_TRUE(cl.bReadCurrentFileInZip(csPiece.data(), nSize, &nRead));
        EXPECT_EQ(cl.CloseCurrentFileInZip(0, 0), eClosed);
    }
}

}  // namespace
}  // namespace kalmo
