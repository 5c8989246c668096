#include "archive/zip64_extra.h"

#include <algorithm>

#include "framework/le_cursor.h"

namespace kalmo {

void ApplyZip64Extra(std::span<const unsigned char> tabExtra,
                     std::initializer_list<std::uint64_t*> tabField) noexcept {
    constexpr std::uint16_t ZIP64_ID = 1;
    CLeCursor clExtra(tabExtra);
    const std::uint16_t wId = clExtra.wNext();
    const std::uint16_t wSize = clExtra.wNext();
    CLeCursor clValue(clExtra.tabNext(wSize));
    if (wId != ZIP64_ID) {
        return;  // and of a block that is cut short every value fails to be read below
    }
    const auto bSaturated = [](const std::uint64_t* pu64) { return *pu64 == SATURE; };
    const auto nNeeded = std::count_if(tabField.begin(), tabField.end(), bSaturated);
    const bool bOnlyNeeded = wSize / 8 == nNeeded;
    for (std::uint64_t* const pu64Field : tabField) {
        const bool bReplace = bSaturated(pu64Field);
        if (!bReplace && bOnlyNeeded) {
            continue;
        }
        const std::uint64_t u64Value = clValue.u64Next();
        if (bReplace && clValue.bOk()) {
            *pu64Field = u64Value;
        }
    }
}

}  // namespace kalmo
