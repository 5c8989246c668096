// Message templates: any template with any arguments makes a message of bounded length, or fails.
//
// Input: a byte with the number of arguments (its low 4 bits), one byte an argument whose low 2 bits are its
// kind and whose others are its value, then the template as UTF-8.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "framework/conversion.h"
#include "framework/format_message.h"

namespace {

using namespace kalmo;

CFormatArg clMakeArgument(std::uint8_t by) {
    static constexpr std::int64_t TAB_INTEGER[] = {0, 1, -1, 65, 1024, 1025, INT64_MIN, INT64_MAX};
    const unsigned unValue = by >> 2U;
    switch (by & 3U) {
        case 0: return CFormatArg(std::wstring_view(L"wide \u20AC\U0001F600").substr(unValue % 7));
        case 1: return CFormatArg(std::string_view("narrow \xC3\xA9\xFF").substr(unValue % 10));
        case 2: return unValue < 8 ? CFormatArg(TAB_INTEGER[unValue]) : CFormatArg(static_cast<int>(unValue));
        default: return CFormatArg(reinterpret_cast<const void*>(std::uintptr_t{unValue}));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    if (nSize == 0) {
        return 0;
    }
    const std::size_t nArgument = pbyData[0] & 15U;
    if (nSize < 1 + nArgument) {
        return 0;
    }
    // On the heap and of the exact size, so that a read behind the last argument is seen.
    std::vector<CFormatArg> tabArg;
    tabArg.reserve(nArgument);
    for (std::size_t n = 1; n <= nArgument; ++n) {
        tabArg.push_back(clMakeArgument(pbyData[n]));
    }
    const std::string_view svTemplate(reinterpret_cast<const char*>(pbyData) + 1 + nArgument,
                                      nSize - 1 - nArgument);
    CTString cs(L"before");
    const bool bMade = bFormatMessage(csFromUTF8(svTemplate), tabArg, &cs);
    if (bMade ? cs.nGetLength() > 65535 : cs.svGet() != L"before") {
        std::abort();
    }
    return 0;
}
