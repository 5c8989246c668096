#ifndef KALMO_TESTS_DIALOGS_DIALOG_TERMINAL_H
#define KALMO_TESTS_DIALOGS_DIALOG_TERMINAL_H

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/terminal.h"

namespace kalmo {

/// One of the dialogs of scene.cpp at a terminal, waiting for its first key.
class CDialogTerminal : public Terminal {
  public:
    explicit CDialogTerminal(const std::vector<std::string>& tabArgument, const STOptions& rstOptions = {})
        : Terminal(tabCommand(tabArgument), rstOptions) {
        bSettle();
    }

    bool bTypeAll(const std::vector<std::string_view>& tabKey) {
        for (const std::string_view sv : tabKey) {
            if (!bType({sv})) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] bool bShows(std::string_view sv) const { return csText().find(sv) != std::string::npos; }
    /// What the dialog reported when it ended.
    std::string csReport() {
        if (nWaitEnd() != 0) {
            return "failed, or still open:" + csText();
        }
        const std::string cs = csText();
        const std::size_t nStart = cs.rfind('\n', cs.size() - 2) + 1;
        return cs.substr(nStart, cs.size() - 1 - nStart);
    }

  private:
    static std::vector<std::string> tabCommand(std::vector<std::string> tabArgument) {
        tabArgument.insert(tabArgument.begin(), DIALOG_SCENE);
        return tabArgument;
    }
};

}  // namespace kalmo

#endif
