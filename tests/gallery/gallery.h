#ifndef KALMO_TESTS_GALLERY_GALLERY_H
#define KALMO_TESTS_GALLERY_GALLERY_H

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/tui/tui_terminal.h"

namespace kalmo {

/// The gallery at a terminal. With GALLERY_WRAPPER in the environment it runs under that command.
class CGallery : public CTuiTerminal {
  public:
    explicit CGallery(const std::vector<std::string>& tabArgument, const STOptions& rstOptions = {})
        : CTuiTerminal(tabCommand(tabArgument), rstOptions) {}

    static std::vector<std::string> tabCommand(const std::vector<std::string>& tabArgument) {
        const char* const pszWrapper = std::getenv("GALLERY_WRAPPER");
        std::vector<std::string> tab = tabWords(pszWrapper == nullptr ? "" : pszWrapper);
        tab.emplace_back(KALMO_GALLERY);
        tab.insert(tab.end(), tabArgument.begin(), tabArgument.end());
        return tab;
    }
};

}  // namespace kalmo

#endif
