// What the archive reader costs, for bench/extract.sh.
//
//   extract_bench extract ARCHIVE DIRECTORY   extracts every entry, as an installation does
//   extract_bench open ARCHIVE                prints: entries, seconds to open, seconds a lookup by name

#include <chrono>
#include <cstdio>
#include <string_view>

#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "framework/conversion.h"
#include "framework/process_info.h"

namespace kalmo {
namespace {

double dSeconds(std::chrono::steady_clock::time_point stFrom, std::chrono::steady_clock::time_point stTo) {
    return std::chrono::duration<double>(stTo - stFrom).count();
}

int nExtract(CTVWinZip& rclZip, std::wstring_view svDirectory) {
    const CRepertoire& rclRepertoire = rclZip.rclGetRepertoire();
    for (int n = 0; n < static_cast<int>(rclRepertoire.dwTaille()); ++n) {
        const CTString csName = rclRepertoire.pclGetEntree(n)->csGetNom();
        CFSPath clPath;
        eARCHIVE e = eCheminEntree(svDirectory, csName, &clPath);
        if (e == ARCHIVE_OK) {
            e = rclZip.eExtraitFichier(csName, clPath.svGet(), 0, nullptr, 0, 0, nullptr);
        }
        if (e != ARCHIVE_OK) {
            std::fprintf(stderr, "extract_bench: %s: %d\n", csToUTF8(csName).pszGet(), static_cast<int>(e));
            return 1;
        }
    }
    return 0;
}

int nOpen(const char* pszArchive) {
    constexpr int LOOKUPS = 1000000;
    constexpr int NAMES =
        64;  // the same few whatever the archive's size: the processor's caches play no part
    const CTString csArchive = csFromUTF8(pszArchive);
    CTVWinZip clZip;
    const auto stStart = std::chrono::steady_clock::now();
    if (clZip.eOuvreArchive(csArchive, 0, 0) != ARCHIVE_OK) {
        return 1;
    }
    const auto stOpened = std::chrono::steady_clock::now();
    const int nCount = static_cast<int>(clZip.dwNombreFichier());
    int nFound = 0;
    for (int n = 0; n < LOOKUPS; ++n) {
        const int nRank = static_cast<int>(static_cast<long long>(n % NAMES) * nCount / NAMES);
        nFound += clZip.lRangFichier(clZip.pszNomFichier(nRank)) == nRank ? 1 : 0;
    }
    const auto stLooked = std::chrono::steady_clock::now();
    std::printf("%d %.6f %.9f\n", nCount, dSeconds(stStart, stOpened),
                dSeconds(stOpened, stLooked) / LOOKUPS);
    return nFound == LOOKUPS ? 0 : 1;
}

int nMain(int argc, char** argv) {
    SetLocaleUTF8();
    const std::string_view svMode = argc > 1 ? argv[1] : "";
    if (svMode == "extract" && argc == 4) {
        CTVWinZip clZip;
        return clZip.eOuvreArchive(csFromUTF8(argv[2]), 0, 0) == ARCHIVE_OK
                   ? nExtract(clZip, csFromUTF8(argv[3]))
                   : 1;
    }
    if (svMode == "open" && argc == 3) {
        return nOpen(argv[2]);
    }
    std::fputs("usage: extract_bench extract ARCHIVE DIRECTORY | open ARCHIVE\n", stderr);
    return 2;
}

}  // namespace
}  // namespace kalmo

int main(int argc, char** argv) {
    return kalmo::nMain(argc, argv);
}
