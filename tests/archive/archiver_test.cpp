#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "tests/support/temp_folder.h"

// What independent archivers write is read back byte for byte.

namespace kalmo {
namespace {

namespace fs = std::filesystem;

// The originals, in the folder "in": texts, noise, a program, nothing at all, in folders and with awkward
// names.
void MakeOriginals(const CTempFolder& rcl, int nSmallOnes = 30) {
    ASSERT_TRUE(rcl.bShell(R"(mkdir -p in/lib/deep/er in/'empty folder' && cd in
        head -c 200000 /dev/urandom >noise.bin; head -c 32768 noise.bin >exactly32768; : >nothing
        seq 50000 >lib/text.txt; printf 1 >'lib/deep/er/one byte'
        cp /bin/ls lib/program.so; chmod 4751 lib/program.so
        split -n l/)" + std::to_string(nSmallOnes) +
                           " -a 3 exactly32768 a_name_of_some_length_so_that_the_directory_grows_"));
}

// Opens FOLDER/a.zip and extracts all of it into FOLDER/out.
void Extract(CTVWinZip& rcl, const CTempFolder& rclFolder) {
    ASSERT_EQ(rcl.eOuvreArchive(rclFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK) << rcl.csGetDefaut().pszGet();
    fs::create_directory(rclFolder.clPath("out"));
    for (int n = 0; n < static_cast<int>(rcl.dwNombreFichier()); ++n) {
        const CTString csName = rcl.rclGetRepertoire().pclGetEntree(n)->csGetNom();
        CFSPath clPath;
        ASSERT_EQ(eCheminEntree(rclFolder.csWide("out"), csName, &clPath), ARCHIVE_OK);
        ASSERT_EQ(rcl.eExtraitFichier(csName, clPath.svGet(), 0, nullptr, 0, 0, nullptr), ARCHIVE_OK)
            << csName.pszGet() << L": " << rcl.csGetDefaut().pszGet();
    }
}

struct STArchiver {
    const char* pszName;
    const char*
        pszCommand;  ///< Makes ../a.zip of what is in the current folder, and shows that it is that kind.
};

const STArchiver tabArchiver[] = {
    {"stored", "zip -q -r -0 ../a.zip ."},
    {"deflated", "zip -q -r -9 ../a.zip ."},
    {"enciphered", "zip -q -r -P 'pass word' ../a.zip ."},
    // Its directory is split too: the end record counts fewer headers on its own disk than there are in all.
    {"split",
     "zip -q -r -s 64k ../a.zip . && test -e ../a.z02 && "
     "test $(tail -c 14 ../a.zip | od -An -tu2 -N2) -lt $(tail -c 12 ../a.zip | od -An -tu2 -N2)"},
    {"split_stored", "zip -q -r -0 -s 64k ../a.zip . && test -e ../a.z08"},
    {"split_enciphered", "zip -q -r -s 64k -P 'pass word' ../a.zip . && test -e ../a.z02"},
    {"split_zip64", "zip -q -r -s 64k -X -fz ../a.zip . && grep -aq 'PK\006\007' ../a.zip"},
    {"zip64", "zip -q -r -X -fz ../a.zip . && grep -aq 'PK\006\007' ../a.zip"},
    {"streamed", "zip -q -r - . | cat >../a.zip && grep -aq 'PK\007\010' ../a.zip"},
    {"streamed_enciphered", "zip -q -r -P 'pass word' - . | cat >../a.zip"},
    {"7z", "7z a -tzip -bd -y ../a.zip . >/dev/null"},
    {"7z_stored", "7z a -tzip -mm=Copy -bd -y ../a.zip . >/dev/null"},
    {"7z_enciphered", "7z a -tzip -mem=ZipCrypto '-ppass word' -bd -y ../a.zip . >/dev/null"},
    {"bsdtar", "bsdtar --format zip -c -f ../a.zip *"},
    {"bsdtar_stored", "bsdtar --format zip --options zip:compression=store -c -f ../a.zip *"},
    {"bsdtar_enciphered",
     "bsdtar --format zip --options zip:encryption=traditional --passphrase 'pass word' -c -f ../a.zip *"},
    {"python", "python3 -m zipfile -c ../a.zip *"},
    {"python_streamed",
     "python3 -c 'import sys, os, zipfile as z\n"
     "a = z.ZipFile(sys.stdout.buffer, \"w\", z.ZIP_DEFLATED)\n"
     "for d, _, f in os.walk(\".\"):\n"
     "    for n in f:\n"
     "        with a.open(os.path.join(d, n)[2:], \"w\", force_zip64=True) as e:\n"
     "            e.write(open(os.path.join(d, n), \"rb\").read())\n"
     "a.close()' | cat >../a.zip"},
    {"bytes_in_front", "zip -q -r ../b.zip . && { head -c 1000 /dev/urandom; cat ../b.zip; } >../a.zip"},
    {"self_extractor", "zip -q -r ../b.zip . && cat /bin/ls ../b.zip >../a.zip && zip -q -A ../a.zip"},
    {"longest_comment",
     "zip -q -r ../a.zip . && python3 -c 'import zipfile as z\n"
     "z.ZipFile(\"../a.zip\", \"a\").comment = b\"c\" * 65535' && test -z \"$(tail -c 65535 ../a.zip | tr -d "
     "c)\""},
};

// Archivers mark names as UTF-8 only where the locale is.
const std::string csInUtf8 = "export LC_ALL=C.UTF-8; ";

class Archiver : public testing::TestWithParam<STArchiver> {};

TEST_P(Archiver, EveryByteComesBack) {
    const std::string csName = GetParam().pszName;
    const CTempFolder clFolder;
    // For split sets so many small ones that the directory crosses from one volume to the next.
    MakeOriginals(clFolder, csName.starts_with("split") ? 650 : 30);
    ASSERT_TRUE(clFolder.bShell(csInUtf8 + "cd in; " + GetParam().pszCommand));
    CTVWinZip cl;
    ASSERT_EQ(cl.eMotDePasse(L"pass word"), ARCHIVE_OK);
    Extract(cl, clFolder);
    // Directories without files are not kept, nor are set-id bits.
    EXPECT_TRUE(clFolder.bShell("rmdir in/'empty folder' && diff -r in out && test ! -u out/lib/program.so"));
    if (csName.ends_with("enciphered")) {
        ASSERT_EQ(cl.eMotDePasse(nullptr), ARCHIVE_OK);
        CTLBIN tab;
        EXPECT_EQ(cl.eExtraitFichier(L"noise.bin", &tab, 0, nullptr, 0, nullptr), ARCHIVE_PASSWORD);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Archiver, testing::ValuesIn(tabArchiver),
                         [](const auto& rst) { return std::string(rst.param.pszName); });

TEST(ArchiverNames, CodePage437AndUtf8) {
    const std::pair<const char*, const wchar_t*> tabCase[] = {
        {"python3 -c 'import zipfile as z\n"
         "class Old(z.ZipInfo):\n"
         "    def _encodeFilenameFlags(self):\n"
         "        return self.filename.encode(\"cp437\"), self.flag_bits\n"
         "z.ZipFile(\"a.zip\", \"w\").writestr(Old(\"\\u00e9t\\u00e9/\\u2592.txt\"), \"body\")'",
         L"\u00E9t\u00E9/\u2592.txt"},
        {"python3 -c 'import zipfile as z\n"
         "z.ZipFile(\"a.zip\", \"w\").writestr(\"\\u20ac/\\U0001f600.txt\", \"body\")'",
         L"\u20AC/\U0001F600.txt"},
        {"echo >'\xE2\x82\xAC\xC3\xA9' && 7z a -tzip -bd -y a.zip '\xE2\x82\xAC\xC3\xA9' >/dev/null",
         L"\u20AC\u00E9"},
        {"echo >'\xE2\x82\xAC\xC3\xA9' && bsdtar --format zip -c -f a.zip '\xE2\x82\xAC\xC3\xA9'",
         L"\u20AC\u00E9"},
    };
    for (const auto& [pszCommand, pszName] : tabCase) {
        const CTempFolder clFolder;
        ASSERT_TRUE(clFolder.bShell(csInUtf8 + pszCommand));
        CTVWinZip cl;
        Extract(cl, clFolder);
        EXPECT_STREQ(cl.pszNomFichier(0), pszName);
        EXPECT_TRUE(CDiskFile::bFileExists(clFolder.csWide("out/") + pszName)) << pszCommand;
    }
}

TEST(ArchiverCounts, NoneAndAHundredThousand) {
    const CTempFolder clFolder;
    CTVWinZip cl;
    ASSERT_TRUE(clFolder.bShell(R"(python3 -m zipfile -c none.zip
        seq -f %06.0f 100000 >list && mkdir in && cd in && xargs touch <../list && echo last >100000
        zip -q -X -fz -r ../many.zip .)"));
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("none.zip"), 0, 0), ARCHIVE_OK);
    EXPECT_EQ(cl.dwNombreFichier(), 0U);
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("many.zip"), 0, 0), ARCHIVE_OK);
    EXPECT_EQ(cl.dwNombreFichier(), 100000U);
    CTLBIN tab;
    EXPECT_EQ(cl.eExtraitFichier(L"100000", &tab, 0, nullptr, 0, nullptr), ARCHIVE_OK);
    EXPECT_EQ(std::string(tab.begin(), tab.end()), "last\n");
    EXPECT_EQ(cl.lRangFichier(L"100001"), -1);
}

TEST(ArchiverVolumes, AMissingOneIsACleanFailure) {
    const CTempFolder clFolder;
    MakeOriginals(clFolder);
    ASSERT_TRUE(clFolder.bShell("cd in; zip -q -r -0 -s 64k ../a.zip lib noise.bin && rm ../a.z02"));
    CTVWinZip cl;
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK);
    int nGood = 0;
    for (int n = 0; n < static_cast<int>(cl.dwNombreFichier()); ++n) {
        CTLBIN tab;
        const eARCHIVE e = cl.eExtraitFichier(cl.pszNomFichier(n), &tab, 0, nullptr, 0, nullptr);
        EXPECT_TRUE(e == ARCHIVE_OK || e == ARCHIVE_BAD || e == ARCHIVE_DATA) << e;
        EXPECT_EQ(tab.size(), e == ARCHIVE_OK ? cl.dwTailleOriginale(n) : 0);
        nGood += e == ARCHIVE_OK ? 1 : 0;
    }
    EXPECT_GT(nGood, 0);
    EXPECT_LT(nGood, static_cast<int>(cl.dwNombreFichier()));
}

}  // namespace
}  // namespace kalmo
