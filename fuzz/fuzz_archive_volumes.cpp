// Split sets: any bytes cut into volumes anywhere, also a set of which one is missing.
//
// Input: a byte whose lowest bit says whether a password is set, whose next two how many volumes come before
// the last one, and whose next three which of them is missing; two bytes a volume with its length,
// little-endian; behind them the volumes' bytes, the last volume being what is left.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "fuzz/extract_entries.h"
#include "testkit/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    using namespace kalmo;
    static const CTempFolder clFolder;
    if (nSize == 0) {
        return 0;
    }
    std::string_view sv(reinterpret_cast<const char*>(pbyData), nSize);
    const unsigned unFirst = pbyData[0];
    const unsigned unVolumes = unFirst >> 1 & 3;
    const unsigned unMissing = unFirst >> 3 & 7;
    if (nSize < 1 + 2 * unVolumes) {
        return 0;
    }
    sv.remove_prefix(1 + 2 * unVolumes);
    for (unsigned un = 0; un < 3; ++un) {
        const std::string csName = "a.z0" + std::to_string(un + 1);
        if (un >= unVolumes || un + 1 == unMissing) {
            std::filesystem::remove(clFolder.clPath(csName));
            continue;
        }
        const std::size_t nLength = pbyData[1 + 2 * un] | std::size_t{pbyData[2 + 2 * un]} << 8U;
        const std::string_view svVolume = sv.substr(0, nLength);
        clFolder.Write(csName, svVolume);
        sv.remove_prefix(svVolume.size());
    }
    clFolder.Write("a.zip", sv);
    CTVWinZip cl;
    Check(cl.eMotDePasse((unFirst & 1) != 0 ? L"password" : nullptr) == ARCHIVE_OK);
    ExtractEntries(cl, cl.eOuvreArchive(clFolder.csWide("a.zip"), 0, 0));
    return 0;
}
