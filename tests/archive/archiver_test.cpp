#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "framework/conversion.h"
#include "tests/support/temp_folder.h"

// What independent archivers write is read back byte for byte.

namespace kalmo {
namespace {

namespace fs = std::filesystem;

// Runs a shell command in a folder. Archivers mark names as UTF-8 only where the locale is.
void Shell(const fs::path& rclFolder, const std::string& csCommand) {
    const std::string cs =
        "export LC_ALL=C.UTF-8; cd '" + rclFolder.string() + "' && { " + csCommand + "; } >/dev/null";
    ASSERT_EQ(std::system(cs.c_str()), 0) << csCommand;
}

// The originals: texts, noise, a program, nothing at all, in folders and with awkward names.
void MakeOriginals(const fs::path& rclFolder, int nSmallOnes) {
    fs::create_directories(rclFolder / "lib/deep/er");
    fs::create_directory(rclFolder / "empty folder");
    const auto Write = [&](const char* pszName, const std::string& rcs) {
        std::ofstream(rclFolder / pszName, std::ios::binary) << rcs;
    };
    std::mt19937 clRandom(1);
    std::string csNoise;
    std::string csText;
    while (csNoise.size() < 200000) {
        csNoise += static_cast<char>(clRandom());
        csText += std::to_string(clRandom() % 1000) + "\n";
    }
    Write("noise.bin", csNoise);
    Write("lib/text.txt", csText);
    Write("lib/deep/er/one byte", "1");
    Write("nothing", "");
    Write("exactly32768", csNoise.substr(0, 32768));
    fs::copy_file("/bin/ls", rclFolder / "lib/program.so");
    fs::permissions(rclFolder / "lib/program.so", fs::perms(04751));
    for (int n = 0; n < nSmallOnes; ++n) {
        Write(("a_name_of_some_length_so_that_the_directory_grows_" + std::to_string(n)).c_str(),
              csNoise.substr(static_cast<std::size_t>(n), static_cast<std::size_t>(n % 50)));
    }
}

struct STArchiver {
    const char* pszName;
    const char* pszCommand;  ///< Makes ../a.zip of what is in the current folder.
    const wchar_t* pszPassword = nullptr;
    const char* pszProof = nullptr;  ///< A command that shows that the archive is of the kind it is to be.
};

const STArchiver tabArchiver[] = {
    {"stored", "zip -q -r -0 ../a.zip ."},
    {"deflated", "zip -q -r -9 ../a.zip ."},
    {"enciphered", "zip -q -r -P 'pass word' ../a.zip .", L"pass word"},
    // Its directory is split too: the end record counts fewer headers on its own disk than there are in all.
    {"split", "zip -q -r -s 64k ../a.zip .", nullptr,
     "test -e a.z02 && "
     "test $(tail -c 14 a.zip | head -c 2 | od -An -tu2) -lt $(tail -c 12 a.zip | head -c 2 | od -An -tu2)"},
    {"split_stored", "zip -q -r -0 -s 64k ../a.zip .", nullptr, "test -e a.z08"},
    {"split_enciphered", "zip -q -r -s 64k -P secret ../a.zip .", L"secret", "test -e a.z02"},
    {"split_zip64", "zip -q -r -s 64k -X -fz ../a.zip .", nullptr,
     "test -e a.z02 && grep -aq 'PK\006\007' a.zip"},
    {"zip64", "zip -q -r -X -fz ../a.zip .", nullptr, "grep -aq 'PK\006\007' a.zip"},
    {"streamed", "zip -q -r - . | cat >../a.zip", nullptr, "grep -aq 'PK\007\010' a.zip"},
    {"streamed_enciphered", "zip -q -r -P secret - . | cat >../a.zip", L"secret"},
    {"7z", "7z a -tzip -bd -y ../a.zip ."},
    {"7z_stored", "7z a -tzip -mm=Copy -bd -y ../a.zip ."},
    {"7z_enciphered", "7z a -tzip -mem=ZipCrypto -psecret -bd -y ../a.zip .", L"secret"},
    {"bsdtar", "bsdtar --format zip -c -f ../a.zip *"},
    {"bsdtar_stored", "bsdtar --format zip --options zip:compression=store -c -f ../a.zip *"},
    {"bsdtar_enciphered",
     "bsdtar --format zip --options zip:encryption=traditional --passphrase secret -c -f ../a.zip *",
     L"secret"},
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
     "a = z.ZipFile(\"../a.zip\", \"a\")\n"
     "a.comment = b\"c\" * 65535'",
     nullptr, "test \"$(tail -c 65535 a.zip | tr -d c | wc -c)\" = 0"},
};

class Archiver : public testing::TestWithParam<STArchiver> {};

TEST_P(Archiver, EveryByteComesBack) {
    const CTempFolder clFolder;
    // For split sets enough small ones that the directory crosses from one volume to the next.
    const bool bSplit = std::string_view(GetParam().pszName).starts_with("split");
    MakeOriginals(clFolder.clPath("in"), bSplit ? 650 : 30);
    Shell(clFolder.clPath("in"), GetParam().pszCommand);
    if (GetParam().pszProof != nullptr) {
        Shell(clFolder.clPath(""), GetParam().pszProof);
    }

    CTVWinZip cl;
    ASSERT_EQ(cl.eMotDePasse(GetParam().pszPassword), ARCHIVE_OK);
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK)
        << csToUTF8(cl.csGetDefaut()).pszGet();
    fs::create_directory(clFolder.clPath("out"));
    for (int n = 0; n < static_cast<int>(cl.dwNombreFichier()); ++n) {
        const CTString csName = cl.rclGetRepertoire().pclGetEntree(n)->csGetNom();
        CFSPath clPath;
        ASSERT_EQ(eCheminEntree(clFolder.csWide("out"), csName, &clPath), ARCHIVE_OK);
        ASSERT_EQ(cl.eExtraitFichier(csName, clPath.svGet(), 0, nullptr, 0, 0, nullptr), ARCHIVE_OK)
            << csToUTF8(csName).pszGet() << ": " << csToUTF8(cl.csGetDefaut()).pszGet();
    }
    fs::remove(clFolder.clPath("in/empty folder"));  // directories without files are not kept
    Shell(clFolder.clPath(""), "diff -r in out");
    EXPECT_EQ(fs::status(clFolder.clPath("out/lib/program.so")).permissions() & fs::perms(07000),
              fs::perms::none);
    if (GetParam().pszPassword != nullptr) {
        ASSERT_EQ(cl.eMotDePasse(nullptr), ARCHIVE_OK);
        CTLBIN tab;
        EXPECT_EQ(cl.eExtraitFichier(L"noise.bin", &tab, 0, nullptr, 0, nullptr), ARCHIVE_PASSWORD);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Archiver, testing::ValuesIn(tabArchiver),
                         [](const auto& rst) { return std::string(rst.param.pszName); });

TEST(ArchiverNames, CodePage437AndUtf8) {
    const struct {
        const char* pszCommand;
        const wchar_t* pszName;
    } tabCase[] = {
        {"python3 -c 'import zipfile as z\n"
         "class Old(z.ZipInfo):\n"
         "    def _encodeFilenameFlags(self):\n"
         "        return self.filename.encode(\"cp437\"), self.flag_bits\n"
         "z.ZipFile(\"a.zip\", \"w\").writestr(Old(\"\\u00e9t\\u00e9/\\u2592.txt\"), \"body\")'",
         L"\u00E9t\u00E9/\u2592.txt"},
        {"python3 -c 'import zipfile as z\n"
         "z.ZipFile(\"a.zip\", \"w\").writestr(\"\\u20ac/\\U0001f600.txt\", \"body\")'",
         L"\u20AC/\U0001F600.txt"},
        {"printf body >'\xE2\x82\xAC\xC3\xA9' && 7z a -tzip -bd -y a.zip '\xE2\x82\xAC\xC3\xA9'",
         L"\u20AC\u00E9"},
        {"printf body >'\xE2\x82\xAC\xC3\xA9' && bsdtar --format zip -c -f a.zip '\xE2\x82\xAC\xC3\xA9'",
         L"\u20AC\u00E9"},
    };
    for (const auto& rst : tabCase) {
        SCOPED_TRACE(rst.pszCommand);
        const CTempFolder clFolder;
        Shell(clFolder.clPath(""), rst.pszCommand);
        CTVWinZip cl;
        ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK);
        ASSERT_EQ(cl.dwNombreFichier(), 1U);
        EXPECT_STREQ(cl.pszNomFichier(0), rst.pszName);
        CTLBIN tab;
        EXPECT_EQ(cl.eExtraitFichier(rst.pszName, &tab, 0, nullptr, 0, nullptr), ARCHIVE_OK);
        EXPECT_EQ(tab, (CTLBIN{'b', 'o', 'd', 'y'}));
    }
}

TEST(ArchiverCounts, NoneAndAHundredThousand) {
    const CTempFolder clFolder;
    CTVWinZip cl;
    Shell(clFolder.clPath(""),
          "python3 -m zipfile -c none.zip && seq -f '%06.0f' 100000 >list && mkdir in && cd in && "
          "xargs touch <../list && echo last >100000 && zip -q -X -fz -r ../many.zip .");
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
    MakeOriginals(clFolder.clPath("in"), 30);
    Shell(clFolder.clPath("in"), "zip -q -r -0 -s 64k ../a.zip lib noise.bin");
    CTVWinZip cl;
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK);
    fs::remove(clFolder.clPath("a.z02"));
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
