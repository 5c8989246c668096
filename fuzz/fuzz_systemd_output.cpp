// What systemctl prints: any bytes give some result, and the names of a listing are what they promise to be.
//
// Input: the output as it comes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "services/systemctl_output.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    using namespace kalmo;
    const std::string_view svOutput(reinterpret_cast<const char*>(pbyData), nSize);

    const STUnitProperties st = stReadUnitProperties(svOutput);
    if (st.csProgram && st.csProgram->svGet().find_first_of(L";\n") != std::wstring_view::npos) {
        std::abort();
    }
    if (st.bInitScript && !st.csProgram) {
        std::abort();
    }
    const CTString csProperty = csReadProperty(svOutput);
    if (csProperty.nGetLength() > nSize) {
        std::abort();
    }
    eReadActiveState(csProperty);
    for (const std::wstring_view svPrefix : {L"ZDCS-", L""}) {
        for (const CTString& rcsName : tabReadUnitNames(svOutput, svPrefix)) {
            const std::wstring_view svName = rcsName;
            if (!svName.starts_with(svPrefix) || svName.find(L'\n') != std::wstring_view::npos ||
                svName.find(L".service") != std::wstring_view::npos) {
                std::abort();
            }
        }
        bHasMarkedNames(svOutput, svPrefix);
    }
    return 0;
}
