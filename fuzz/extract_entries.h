#ifndef KALMO_FUZZ_EXTRACT_ENTRIES_H
#define KALMO_FUZZ_EXTRACT_ENTRIES_H

#include <algorithm>
#include <cstdlib>

#include "archive/tv_win_zip.h"

namespace kalmo {

constexpr int MAX_ENTRIES = 40;  // many entries may share one run of data: enough of them is enough
constexpr std::size_t MAX_BYTES = 1 << 20;

inline void Check(bool b) {
    if (!b) {
        std::abort();
    }
}

/// Looks every entry of an archive up and extracts it into memory; eOpened is what opening it came to.
inline void ExtractEntries(CTVWinZip& rcl, eARCHIVE eOpened) {
    Check(eOpened == ARCHIVE_OK || (eOpened == ARCHIVE_BAD && rcl.dwNombreFichier() == 0));
    const int nCount = static_cast<int>(rcl.rclGetRepertoire().dwTaille());
    for (int n = 0; n < std::min(nCount, MAX_ENTRIES); ++n) {
        CTString csInfo;
        Check(rcl.eGetInfoFichier(n, csInfo) == ARCHIVE_OK);
        const CTString csNom = rcl.rclGetRepertoire().pclGetEntree(n)->csGetNom();
        const int nFirst = rcl.lRangFichier(csNom);
        Check(nFirst >= 0 && nFirst <= n);
        const std::uint64_t u64Size = rcl.rclGetRepertoire().pclGetEntree(nFirst)->u64GetTailleOriginale();
        if (u64Size > MAX_BYTES) {
            continue;
        }
        CTLBIN tab;
        const eARCHIVE e = rcl.eExtraitFichier(csNom, &tab, 0, nullptr, 0, nullptr);
        Check(e == ARCHIVE_OK || e == ARCHIVE_BAD || e == ARCHIVE_PASSWORD || e == ARCHIVE_DATA);
        Check(tab.size() == (e == ARCHIVE_OK ? u64Size : 0));
    }
}

}  // namespace kalmo

#endif
