#include "tui/toolkit/geometry.h"

#include <algorithm>
#include <cmath>

#include "tui/toolkit/text_columns.h"

namespace kalmo {

int nDialogSize(int nPreferred, int nScreen) noexcept {
    return std::max(1, std::min(nPreferred, nScreen - 4));
}

int nCentred(int nSize, int nScreen) noexcept {
    return std::max(0, (nScreen - nSize) / 2);
}

std::wstring csCentredCaption(std::wstring_view svCaption, int nWidth) {
    const int nSpare = nWidth - nColumns(svCaption);
    if (nSpare <= 0) {
        return csVisible(svCaption, 0, nWidth);
    }
    const auto unBefore = static_cast<std::size_t>(nSpare / 2);
    const auto unAfter = static_cast<std::size_t>(nSpare) - unBefore;
    std::wstring csOut(unBefore, L' ');
    csOut += svCaption;
    csOut.append(unAfter, L' ');
    return csOut;
}

int nEntryOffset(int nOffset, int nCursor, int nTotal, int nVisible, bool bFocus) noexcept {
    if (nTotal <= nVisible && (!bFocus || nCursor < nVisible)) {
        return 0;
    }
    const int nLast = std::max(0, nTotal + 1 - nVisible);  // The cursor has a cell behind the text too.
    const int nFollow =
        std::clamp(nOffset, nCursor - nVisible + 1, std::max(nCursor, nCursor - nVisible + 1));
    return std::clamp(nFollow, 0, nLast);
}

int nGaugeBar(double dValue, double dMinimum, double dMaximum, int nWidth) noexcept {
    const double dLength = dValue / (dMaximum - dMinimum) * nWidth;
    if (!(dLength > 0)) {  // Also where minimum and maximum leave nothing to divide by.
        return 0;
    }
    return dLength < nWidth ? static_cast<int>(std::lround(dLength)) : std::max(0, nWidth);
}

int nFirstToSelect(int nFirst, int nSelected, int nCount, int nVisible) noexcept {
    if (nSelected < nFirst) {
        return nSelected;
    }
    if (nSelected >= nFirst + nVisible) {
        return std::max(0, std::min(nSelected, nCount - nVisible));
    }
    return nFirst;
}

int nFirstToFollow(int nFirst, int nSelected, int nVisible) noexcept {
    return std::max(0, std::min(nSelected, std::max(nFirst, nSelected - nVisible + 1)));
}

int nThumbRow(int nFirst, int nCount, int nVisible) noexcept {
    return static_cast<int>(static_cast<long long>(nVisible - 1) * nFirst / (nCount - nVisible));
}

int nThumbColumn(int nOffset, int nLongest, int nVisible) noexcept {
    return static_cast<int>(static_cast<long long>(nVisible) * nOffset / nLongest);
}

}  // namespace kalmo
