#include "services/init_script.h"

#include <algorithm>
#include <array>
#include <exception>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

// One character more than a line may have tells a line that ends there from one that goes on.
using CLineBuffer = std::array<char, MAX_DISPLAY_NAME_LINE + 1>;

struct STLine {
    std::string_view sv;   // Without its line feed.
    bool bGoesOn = false;  // The script's line is longer than what was read.
};

// Reads one line and moves behind it. False at the end of the script.
bool bReadLine(IXStream& rclScript, std::size_t nMaxLine, CLineBuffer& rtabBuffer, STLine* pstLine) {
    const std::int64_t i64Start = rclScript.i64GetPosition();
    std::size_t nRead = 0;
    if (!rclScript.bRead(rtabBuffer.data(), std::min(nMaxLine + 1, rtabBuffer.size()), &nRead) ||
        nRead == 0) {
        return false;
    }
    const std::string_view svRead(rtabBuffer.data(), nRead);
    pstLine->sv = svRead.substr(0, svRead.find('\n')).substr(0, nMaxLine);
    pstLine->bGoesOn = pstLine->sv.size() < nRead && svRead[pstLine->sv.size()] != '\n';
    const std::size_t nTaken = pstLine->sv.size() + (pstLine->bGoesOn ? 0 : 1);
    return rclScript.bSeek(i64Start + static_cast<std::int64_t>(std::min(nTaken, nRead)));
}

}  // namespace

bool bReadMarkedText(IXStream& rclScript, std::string_view svMarker, std::size_t nMaxLine,
                     CTString* pcsValue) try {
    const CMemoryScope clScope;
    CLineBuffer tabBuffer;
    STLine stLine;
    for (bool bMore = rclScript.bSeek(0); bMore && bReadLine(rclScript, nMaxLine, tabBuffer, &stLine);) {
        const std::size_t nMarker = stLine.sv.find(svMarker);
        if (nMarker == std::string_view::npos) {
            continue;
        }
        std::string_view svValue = stLine.sv.substr(nMarker + svMarker.size());
        const std::size_t nQuote = svValue.find('"');
        if (nQuote == std::string_view::npos && !stLine.bGoesOn && svValue.ends_with('\r')) {
            svValue.remove_suffix(1);
        }
        *pcsValue = csFromUTF8(svValue.substr(0, nQuote));
        return true;
    }
    return false;
} catch (const std::exception&) {
    return NoMemory(false);
}

}  // namespace kalmo
