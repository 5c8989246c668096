#ifndef KALMO_TUI_TOOLKIT_KEY_H
#define KALMO_TUI_TOOLKIT_KEY_H

#include <cstddef>
#include <optional>

#include "tui/toolkit/ncurses.h"

/// Keys: how they are numbered, read and looked up.
///
/// Characters (UTF-32) and the key codes of the curses library (KEY_...) share one space of integers. A code
/// can so be taken for the character of the same number, which is intended.
namespace kalmo {

constexpr int TOUCHE_TAB = 9;
constexpr int TOUCHE_ENTREE = 10;
constexpr int TOUCHE_ESPACE = 32;
constexpr int TOUCHE_EFFACE = 127;  ///< What most terminals send for Backspace.

/// Waits for a key and stores it. A read that fails is tried again. False when no key can come any more: the
/// input is closed, at its end, or its terminal has gone away.
/// Precondition: the screen is open.
[[nodiscard]] bool bReadKey(int* pnKey);

/// Drops the keys that were pressed but not read. For a dialog that appears after a long work, so that a key
/// pressed during it does not answer unseen. A change of the screen's size is not forgotten: it comes as the
/// next key, and COLS and LINES are the new ones at once.
void ForgetKeys();

/// One row of a control's key table: the key and what it does. The action tells whether it consumed the key.
template <class TControl>
struct STKeyAction {
    int nKey;
    bool (TControl::*pfnAction)();
};

/// Runs the action of a key. Nothing when the table has no row for it, else whether the action consumed it.
template <class TControl, std::size_t nCount>
std::optional<bool> RunKey(TControl* pclControl, const STKeyAction<TControl> (&rtabKey)[nCount], int nKey) {
    for (const STKeyAction<TControl>& rstKey : rtabKey) {
        if (rstKey.nKey == nKey) {
            return (pclControl->*rstKey.pfnAction)();
        }
    }
    return std::nullopt;
}

}  // namespace kalmo

#endif
