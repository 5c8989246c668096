#include "samples/server/failure.h"

#include <cstdlib>
#include <string>

#include "framework/conversion.h"
#include "framework/disk_file.h"

namespace kalmo::sample {

std::optional<int> nToldToFail(const STInstance& rst, std::wstring_view svProgram, CInstallLog& rclLog) {
    CFSPath clFile = rst.clDirectory;
    std::string csText;
    if (!clFile.bAppend(svProgram, L"fail") || !CDiskFile::bLoad(clFile.svGet(), 1U << 20U, &csText)) {
        return {};
    }
    const int nCode = std::atoi(csText.c_str());
    rclLog.Line(CTString(svProgram) + L" was told to end with " + std::to_wstring(nCode));
    if (const std::size_t nSecond = csText.find('\n') + 1; nSecond != 0 && nSecond < csText.size()) {
        std::string_view svRest = std::string_view(csText).substr(nSecond);
        svRest.remove_suffix(svRest.ends_with('\n') ? 1 : 0);
        rclLog.Line(csFromUTF8(svRest));
    }
    return nCode;
}

}  // namespace kalmo::sample
