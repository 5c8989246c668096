// Version notes: any file at all, and any text as the note's description.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "framework/file_version.h"
#include "framework/json_text.h"
#include "framework/memory_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    using namespace kalmo;
    CMemoryStream clStream(CTLBIN(pbyData, pbyData + nSize));
    CFileVersion clVersion;
    CTString csVersion;
    const bool bInit = clVersion.bInit(clStream);
    const bool bString = clVersion.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &csVersion);
    const auto bControl = [](wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); };
    if (bInit != bString || bString == csVersion.bEmpty() ||
        std::ranges::any_of(csVersion.svGet(), bControl)) {
        std::abort();
    }
    csJsonString({reinterpret_cast<const char*>(pbyData), nSize}, "version");
    return 0;
}
