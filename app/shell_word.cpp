#include "app/shell_word.h"

#include <sys/wait.h>

namespace kalmo {

std::string csShellWord(std::string_view sv) {
    static constexpr std::string_view svPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=.,:@%/";
    if (sv.find_first_not_of(svPlain) == std::string_view::npos) {
        return std::string(sv);
    }
    std::string cs = "'";
    for (const char c : sv) {
        cs += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return cs + "'";
}

std::wstring csShellStatus(int nStatus) {
    if (nStatus == -1) {
        return L"not run";
    }
    return WIFEXITED(nStatus) ? L"exit code " + std::to_wstring(WEXITSTATUS(nStatus))
                              : L"killed by signal " + std::to_wstring(WTERMSIG(nStatus));
}

}  // namespace kalmo
