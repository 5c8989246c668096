#include "services/init_script.h"

#include <algorithm>
#include <array>

#include "framework/conversion.h"

namespace kalmo {
namespace {

using CLineBuffer = std::array<char, nMaxDisplayNameLine>;

// Reads one line without its line feed and moves behind it. False at the end of the script.
bool bReadLine(IXStream& rclScript, std::size_t nMaxLine, CLineBuffer& rtabBuffer,
               std::string_view* psvLine) {
    const std::int64_t i64Start = rclScript.i64GetPosition();
    std::size_t nRead = 0;
    if (!rclScript.bRead(rtabBuffer.data(), std::min(nMaxLine, rtabBuffer.size()), &nRead) || nRead == 0) {
        return false;
    }
    const std::string_view svRead(rtabBuffer.data(), nRead);
    *psvLine = svRead.substr(0, svRead.find('\n'));
    // The line feed behind a line of full length is read as an empty line, which does no harm.
    const std::size_t nTaken = std::min(psvLine->size() + 1, nRead);
    return rclScript.bSeek(i64Start + static_cast<std::int64_t>(nTaken));
}

}  // namespace

bool bReadMarkedText(IXStream& rclScript, std::string_view svMarker, std::size_t nMaxLine,
                     CTString* pcsValue) {
    CLineBuffer tabBuffer;
    std::string_view svLine;
    for (bool bMore = rclScript.bSeek(0); bMore && bReadLine(rclScript, nMaxLine, tabBuffer, &svLine);) {
        const std::size_t nMarker = svLine.find(svMarker);
        if (nMarker == std::string_view::npos) {
            continue;
        }
        svLine.remove_prefix(nMarker + svMarker.size());
        const std::size_t nQuote = svLine.find('"');
        if (nQuote == std::string_view::npos && svLine.ends_with('\r')) {
            svLine.remove_suffix(1);
        }
        *pcsValue = csFromUTF8(svLine.substr(0, nQuote));
        return true;
    }
    return false;
}

}  // namespace kalmo
