#ifndef KALMO_TESTKIT_TUI_TERMINAL_H
#define KALMO_TESTKIT_TUI_TERMINAL_H

#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "testkit/terminal.h"

namespace kalmo {

/// The looks of the toolkit, by letter.
inline constexpr STLegend TAB_LEGEND[] = {
    {'.', {.nForeground = 4, .nBackground = 4}},                    // the screen behind
    {'n', {.nForeground = 7, .nBackground = 0}},                    // normal text, shadows
    {'r', {.nForeground = 7, .nBackground = 0, .bReverse = true}},  // windows, frames, selected with focus
    {'s', {.nForeground = 7, .nBackground = 4}},                    // selected without focus, scroll bar
    {'b', {.nForeground = 7, .nBackground = 1}},                    // button
    {'B', {.nForeground = 7, .nBackground = 1, .bReverse = true}},  // caption with focus
    {'g', {.nForeground = 7, .nBackground = 3}},                    // gauge
    {'d', {.nForeground = 7, .nBackground = 8}},                    // disabled field
    {'M', {.nForeground = 1, .nBackground = 4}},                    // mark with focus
    {'m', {.nForeground = 1, .nBackground = 0}},                    // mark without focus
    {'R', {.bReverse = true}},                                      // reverse on a terminal without colours
    {'r', {.nForeground = 0, .nBackground = 7}},  // reverse where the colours are exchanged instead
    {'B', {.nForeground = 1, .nBackground = 7}},
};

/// A program of the toolkit at a terminal, settled from the start.
class CTuiTerminal : public CTerminal {
  public:
    explicit CTuiTerminal(const std::vector<std::string>& tabArgument, const STOptions& rstOptions = {})
        : CTerminal(tabArgument, rstOptions) {
        bSettle();
    }
    /// Program and arguments in one text, blanks between them.
    explicit CTuiTerminal(const std::string& rcsCommand, const STOptions& rstOptions = {})
        : CTuiTerminal(tabWords(rcsCommand), rstOptions) {}

    static std::vector<std::string> tabWords(const std::string& rcs) {
        std::istringstream clWords(rcs);
        return {std::istream_iterator<std::string>(clWords), {}};
    }

    using CTerminal::csText;
    [[nodiscard]] std::string csText(int nRow, int nColumn, int nWidth) const {
        return clScreen().csText(nRow, nColumn, nWidth);
    }
    [[nodiscard]] std::string csLooks(int nRow, int nColumn, int nWidth) const {
        return clScreen().csLooks(TAB_LEGEND, nRow, nColumn, nWidth);
    }
    /// CEmulator::csShow of the screen.
    [[nodiscard]] std::string csShow() const { return clScreen().csShow(TAB_LEGEND); }
    [[nodiscard]] bool bShows(std::string_view sv) const { return csText().find(sv) != std::string::npos; }
    /// The last line that a program which has ended left on the screen; the whole screen when it fails or
    /// goes on.
    std::string csReport() {
        const bool bEnded = nWaitEnd() == 0;
        std::string cs = csText();
        cs.pop_back();
        return bEnded ? cs.substr(cs.rfind('\n') + 1) : "failed, or still open:" + cs;
    }
};

}  // namespace kalmo

#endif
