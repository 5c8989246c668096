#ifndef KALMO_TUI_TOOLKIT_GEOMETRY_H
#define KALMO_TUI_TOOLKIT_GEOMETRY_H

#include <string>
#include <string_view>

/// The arithmetic of the screen, apart from drawing. All values are columns, rows or numbers of lines;
/// divisions are those of integers.
namespace kalmo {

/// The size of a dialog along one axis: the preferred one, or four cells less than the screen has where that
/// is smaller; at least 1.
int nDialogSize(int nPreferred, int nScreen) noexcept;
/// Where something of a size starts to be in the middle; never negative.
int nCentred(int nSize, int nScreen) noexcept;

/// One or two buttons side by side above the lower edge of a dialog, as far from its edges as from each
/// other.
struct STButtonRow {
    static constexpr int HEIGHT = 4;

    int nDialogWidth;
    int nDialogHeight;
    int nButtons;      ///< 1 or 2.
    int nButtonWidth;  ///< Of each.

    [[nodiscard]] constexpr int nRow() const noexcept { return nDialogHeight - 6; }
    /// The column of the button nRank, which is 0 for the first.
    [[nodiscard]] constexpr int nColumn(int nRank) const noexcept {
        const int nGap = (nDialogWidth - nButtons * nButtonWidth) / (nButtons + 1);
        return (nRank + 1) * nGap + nRank * nButtonWidth;
    }
};

/// A button's caption in its nWidth columns: centred and padded, or cut.
std::wstring csCentredCaption(std::wstring_view svCaption, int nWidth);

/// How many columns of a text are scrolled out so that the cursor's cell lies in a field of nVisible columns.
/// nOffset is what is scrolled out now, nCursor the cursor's column in the text, nTotal the columns of the
/// text. Without the focus no cursor is shown, and a text that just fits is not scrolled for its sake.
int nEntryOffset(int nOffset, int nCursor, int nTotal, int nVisible, bool bFocus) noexcept;

/// Length of a gauge's bar in nWidth columns, rounded to the nearest and never outside of 0 to nWidth.
int nGaugeBar(double dValue, double dMinimum, double dMaximum, int nWidth) noexcept;

/// First visible line of a list once the line nSelected has been brought into view: the line itself when it
/// was above, and when it was below, the line as far as the last page allows.
int nFirstToSelect(int nFirst, int nSelected, int nCount, int nVisible) noexcept;
/// First visible line of a list after a key moved the selection to nSelected: the least that shows it.
int nFirstToFollow(int nFirst, int nSelected, int nVisible) noexcept;

/// Row of the thumb in a scroll bar of nVisible rows. Precondition: nCount > nVisible.
int nThumbRow(int nFirst, int nCount, int nVisible) noexcept;
/// Column of the thumb under lines scrolled sideways. Precondition: nLongest > 0.
int nThumbColumn(int nOffset, int nLongest, int nVisible) noexcept;

}  // namespace kalmo

#endif
