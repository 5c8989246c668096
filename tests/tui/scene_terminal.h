#ifndef KALMO_TESTS_TUI_SCENE_TERMINAL_H
#define KALMO_TESTS_TUI_SCENE_TERMINAL_H

#include <string>
#include <utility>

#include "tests/support/terminal.h"

namespace kalmo {

/// The looks of the toolkit, by letter: "." the screen behind, n normal, r reverse, s selected, b button and
/// B the same in reverse, g gauge, d disabled field, M and m a mark with and without focus.
inline constexpr STLegend TAB_LEGEND[] = {
    {'.', {.nForeground = 4, .nBackground = 4}},
    {'n', {.nForeground = 7, .nBackground = 0}},
    {'r', {.nForeground = 7, .nBackground = 0, .bReverse = true}},
    {'s', {.nForeground = 7, .nBackground = 4}},
    {'b', {.nForeground = 7, .nBackground = 1}},
    {'B', {.nForeground = 7, .nBackground = 1, .bReverse = true}},
    {'g', {.nForeground = 7, .nBackground = 3}},
    {'d', {.nForeground = 7, .nBackground = 8}},
    {'M', {.nForeground = 1, .nBackground = 4}},
    {'m', {.nForeground = 1, .nBackground = 0}},
};

/// A scene of scene.cpp at a terminal. Its window starts at column 1 of row 0.
class CSceneTerminal : public Terminal {
  public:
    CSceneTerminal(const std::string& rcsScene, int nColumns, int nRows,
                   const std::string& rcsType = "xterm-256color")
        : Terminal({TUI_SCENE, rcsScene}, {.csType = rcsType, .nColumns = nColumns, .nRows = nRows}) {
        bSettle();
    }

    [[nodiscard]] std::string csLooks() const { return clScreen().csLooks(TAB_LEGEND); }
    /// The characters, then the looks of the screen.
    [[nodiscard]] std::string csShow() const { return csText() + csLooks(); }
    /// One line of these, from a column on.
    [[nodiscard]] static std::string csPart(const std::string& rcsPicture, int nRow, int nColumn,
                                            int nWidth) {
        std::size_t nStart = 1;
        for (; nRow > 0; --nRow) {
            nStart = rcsPicture.find('\n', nStart) + 1;
        }
        return rcsPicture.substr(nStart + static_cast<std::size_t>(nColumn),
                                 static_cast<std::size_t>(nWidth));
    }
    /// Ends the scene with F1; the events that it printed then.
    std::string csEnd() {
        bType({"F1"});
        nWaitEnd();
        const std::string csScreen = csText();
        const std::size_t nStart = csScreen.find("events:");
        return nStart == std::string::npos
                   ? "no events"
                   : csScreen.substr(nStart + 7, csScreen.find('\n', nStart) - nStart - 7);
    }
};

}  // namespace kalmo

#endif
