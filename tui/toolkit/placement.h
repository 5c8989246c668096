#ifndef KALMO_TUI_TOOLKIT_PLACEMENT_H
#define KALMO_TUI_TOOLKIT_PLACEMENT_H

#include <utility>

#include "tui/toolkit/geometry.h"
#include "tui/toolkit/ncurses.h"

namespace kalmo {

/// Makes a dialog in the middle of the screen, of the preferred size in cells or, along an axis where the
/// screen has not four cells more than that, of four cells less than the screen. The rest of the arguments
/// go to the dialog's constructor behind position and size.
template <class TDialog, class... TArg>
[[nodiscard]] TDialog clMakeCentred(int nPreferredWidth, int nPreferredHeight, TArg&&... arg) {
    const int nWidth = nDialogSize(nPreferredWidth, COLS);
    const int nHeight = nDialogSize(nPreferredHeight, LINES);
    return TDialog(nCentred(nWidth, COLS), nCentred(nHeight, LINES), nWidth, nHeight,
                   std::forward<TArg>(arg)...);
}

}  // namespace kalmo

#endif
