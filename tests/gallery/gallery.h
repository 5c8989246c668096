#ifndef KALMO_TESTS_GALLERY_GALLERY_H
#define KALMO_TESTS_GALLERY_GALLERY_H

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/terminal.h"

namespace kalmo {

/// The looks of the toolkit on a terminal with colours.
inline constexpr STLegend LEGEND[] = {
    {'.', {.nForeground = 4, .nBackground = 4}},                    // background
    {'w', {.nForeground = 7, .nBackground = 0, .bReverse = true}},  // windows, frames, selected with focus
    {'n', {.nForeground = 7, .nBackground = 0}},                    // normal text, shadows
    {'s', {.nForeground = 7, .nBackground = 4}},                    // selected without focus, scroll bar
    {'b', {.nForeground = 7, .nBackground = 1}},                    // button
    {'B', {.nForeground = 7, .nBackground = 1, .bReverse = true}},  // caption with focus
};

/// The gallery at a terminal. With GALLERY_WRAPPER in the environment it runs under that command.
class CGallery : public Terminal {
  public:
    explicit CGallery(const std::vector<std::string>& tabArgument, const STOptions& rstOptions = {})
        : Terminal(tabCommand(tabArgument), rstOptions) {}

    static std::vector<std::string> tabCommand(const std::vector<std::string>& tabArgument) {
        std::vector<std::string> tab;
        if (const char* const psz = std::getenv("GALLERY_WRAPPER"); psz != nullptr) {
            std::string csWord;
            for (std::istringstream clWords(psz); clWords >> csWord;) {
                tab.push_back(csWord);
            }
        }
        tab.emplace_back(KALMO_GALLERY);
        tab.insert(tab.end(), tabArgument.begin(), tabArgument.end());
        return tab;
    }

    /// Types keys as bType does, for keys that stand in a table.
    bool bTypeAll(const std::vector<std::string_view>& tabKey) {
        for (const std::string_view sv : tabKey) {
            if (!bType({sv})) {
                return false;
            }
        }
        return true;
    }

    /// Whether the terminal is as a shell expects it back.
    [[nodiscard]] bool bRestored() const {
        return bCooked() && !clScreen().bAlternateScreen() && clScreen().stCursor().bVisible &&
               clScreen().unPaletteColour(8) == CEmulator(1, 1, {}).unPaletteColour(8);
    }
};

}  // namespace kalmo

#endif
