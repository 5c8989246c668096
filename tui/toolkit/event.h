#ifndef KALMO_TUI_TOOLKIT_EVENT_H
#define KALMO_TUI_TOOLKIT_EVENT_H

namespace kalmo {

/// What a control tells its window (CWidget::bOnEvent).
enum eEVENT {
    eEVENT_PRESSED = 0,       ///< Button: Enter, keypad Enter or space.
    eEVENT_MOVED = 1,         ///< List: Up or Down moved the highlighted line.
    eEVENT_SELECTED = 2,      ///< List, radio list: space, Enter or keypad Enter on an item.
    eEVENT_VALIDATED = 3,     ///< List, radio list: follows SELECTED when the key was no space.
    eEVENT_END_REACHED = 4,   ///< Scrollable label: scrolled so that the last line is visible.
    eEVENT_DIR_CHANGED = 5,   ///< Path field: the directory part of the path changed.
    eEVENT_TEXT_CHANGED = 6,  ///< Path field: the path changed; after DIR_CHANGED where both are sent.
    eEVENT_ENTER = 7,         ///< Entry field: Enter or keypad Enter.
    eEVENT_TOGGLED = 8,       ///< Check box: changed state.
};

}  // namespace kalmo

#endif
