#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "testkit/temp_folder.h"

// What independent archivers write is read back byte for byte.

namespace kalmo {
namespace {

struct STArchiver {
    const char* pszName;
    /// Makes ../a.zip of what is in the current folder, and shows that it is that kind.
    const char* pszCommand;
};

const STArchiver tabArchiver[] = {
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
     "for d, _, f in os.walk(\".\"):\n"
     "    for n in f:\n"
     "        with a.open(os.path.join(d, n)[2:], \"w\", force_zip64=True) as e:\n"
     "            e.write(open(os.path.join(d, n), \"rb\").read())\n"
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

class Archiver : public testing::TestWithParam<STArchiver> {};

TEST_P(Archiver, EveryByteComesBack) {
    const std::string csName = GetParam().pszName;
    const CTempFolder clFolder;
    // Texts, noise, a program, nothing at all, in folders and with awkward names. For split sets so many
    // small ones that the directory crosses from one volume to the next.
    ASSERT_TRUE(clFolder.bShell(R"(mkdir -p in/lib/deep/er in/'empty folder' && cd in
        head -c 200000 /dev/urandom >noise.bin; head -c 32768 noise.bin >exactly32768; : >nothing
        seq 50000 >lib/text.txt; printf 1 >'lib/deep/er/one byte'
        cp /bin/ls lib/program.so; chmod 4751 lib/program.so
        split -n l/)" + std::string(csName.starts_with("split") ? "650" : "30") +
                                " -a 3 exactly32768 a_name_of_some_length_so_that_the_directory_grows_"));
    // Archivers mark names as UTF-8 only where the locale is.
    ASSERT_TRUE(clFolder.bShell(std::string("export LC_ALL=C.UTF-8; cd in; ") + GetParam().pszCommand));
    CTVWinZip cl;
    ASSERT_EQ(cl.eMotDePasse(L"pass word"), ARCHIVE_OK);
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0), ARCHIVE_OK) << cl.csGetDefaut().pszGet();
    std::filesystem::create_directory(clFolder.clPath("out"));
    for (int n = 0; n < static_cast<int>(cl.dwNombreFichier()); ++n) {
        const CTString csEntry = cl.pszNomFichier(n);
        CFSPath clPath;
        ASSERT_EQ(eCheminEntree(clFolder.csWide("out"), csEntry, &clPath), ARCHIVE_OK);
        ASSERT_EQ(cl.eExtraitFichier(csEntry, clPath.svGet(), 0, nullptr, 0, 0, nullptr), ARCHIVE_OK)
            << csEntry.pszGet() << L": " << cl.csGetDefaut().pszGet();
    }
    // Directories without files are not kept, nor are set-id bits.
    EXPECT_TRUE(clFolder.bShell("rmdir in/'empty folder' && diff -r in out && test ! -u out/lib/program.so"));
}

INSTANTIATE_TEST_SUITE_P(Each, Archiver, testing::ValuesIn(tabArchiver),
                         [](const auto& rst) { return std::string(rst.param.pszName); });

TEST(ArchiverCounts, MoreThanSixteenBitsCount) {
    const CTempFolder clFolder;
    ASSERT_TRUE(clFolder.bShell(R"(seq 70000 >list && mkdir in && cd in && xargs touch <../list
        echo last >70000 && )" KALMO_MAKE_PAYLOAD " . ../many.zip"));
    CTVWinZip cl;
    ASSERT_EQ(cl.eOuvreArchive(clFolder.csWide("many.zip"), 0, 0), ARCHIVE_OK);
    EXPECT_EQ(cl.dwNombreFichier(), 70000U);
    CTLBIN tab;
    EXPECT_EQ(cl.eExtraitFichier(L"70000", &tab, 0, nullptr, 0, nullptr), ARCHIVE_OK);
    EXPECT_EQ(std::string(tab.begin(), tab.end()), "last\n");
}

}  // namespace
}  // namespace kalmo
