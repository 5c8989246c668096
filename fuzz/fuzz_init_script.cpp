// Init scripts: any bytes either hold a marked text within the limits of a line, or leave the result alone.
//
// Input: the script.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "framework/memory_stream.h"
#include "services/init_script.h"

namespace {

using namespace kalmo;

void Read(const CTLBIN& rtabScript, std::string_view svMarker, std::size_t nMaxLine) {
    CMemoryStream clScript(rtabScript);
    CTString csText(L"before");
    const bool bFound = bReadMarkedText(clScript, svMarker, nMaxLine, &csText);
    const bool bSound = bFound ? csText.nGetLength() + svMarker.size() <= nMaxLine &&
                                     csText.svGet().find_first_of(L"\"\n") == std::wstring_view::npos
                               : csText.svGet() == L"before";
    if (!bSound) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    const CTLBIN tabScript(pbyData, pbyData + nSize);
    Read(tabScript, SV_DISPLAY_NAME_MARKER, MAX_DISPLAY_NAME_LINE);
    Read(tabScript, SV_PROGRAM_MARKER, MAX_PROGRAM_LINE);
    return 0;
}
