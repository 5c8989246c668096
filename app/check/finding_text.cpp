#include "app/check/finding_text.h"

#include <algorithm>
#include <string>

#include "framework/conversion.h"

namespace kalmo {
namespace {

// How many slips lead from one name to the other; letter case does not count.
std::size_t nSlips(std::wstring_view svLeft, std::wstring_view svRight) {
    const auto bSame = [](wchar_t cLeft, wchar_t cRight) { return cMajuscule(cLeft) == cMajuscule(cRight); };
    std::vector<std::size_t> tabBefore(svRight.size() + 1);
    std::vector<std::size_t> tabLast(svRight.size() + 1);
    std::vector<std::size_t> tabRow(svRight.size() + 1);
    for (std::size_t n = 0; n <= svRight.size(); ++n) {
        tabLast[n] = n;
    }
    for (std::size_t y = 1; y <= svLeft.size(); ++y) {
        tabRow[0] = y;
        for (std::size_t x = 1; x <= svRight.size(); ++x) {
            const bool bEqual = bSame(svLeft[y - 1], svRight[x - 1]);
            tabRow[x] = std::min({tabLast[x] + 1, tabRow[x - 1] + 1, tabLast[x - 1] + (bEqual ? 0 : 1)});
            if (x > 1 && y > 1 && bSame(svLeft[y - 1], svRight[x - 2]) &&
                bSame(svLeft[y - 2], svRight[x - 1])) {
                tabRow[x] = std::min(tabRow[x], tabBefore[x - 2] + 1);
            }
        }
        tabBefore.swap(tabLast);
        tabLast.swap(tabRow);
    }
    return tabLast[svRight.size()];
}

}  // namespace

const CTString* pcsNearest(std::wstring_view svName, const std::vector<CTString>& rtabKnown) {
    static constexpr std::size_t MAX_SLIPS = 2;
    static constexpr std::size_t MAX_NAME = 200;  // no name that is known is longer by far
    const CTString* pcsBest = nullptr;
    std::size_t nBest = MAX_SLIPS + 1;
    for (const CTString& rcs : rtabKnown) {
        if (svName.size() > MAX_NAME || rcs.nGetLength() > MAX_NAME) {
            continue;
        }
        const std::size_t n = nSlips(svName, rcs);
        if (n <= std::min(MAX_SLIPS, rcs.nGetLength() / 2) && n < nBest) {
            nBest = n;
            pcsBest = &rcs;
        }
    }
    return pcsBest;
}

}  // namespace kalmo
