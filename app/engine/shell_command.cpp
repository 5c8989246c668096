#include "app/engine/shell_command.h"

#include <sys/wait.h>

#include "app/engine/command_tracer.h"
#include "app/engine/trace.h"
#include "framework/conversion.h"
#include "framework/errno_kept.h"
#include "services/shell_command.h"
#include "tui/toolkit/screen.h"

namespace kalmo {

CTString csStatus(int nStatus) {
    return CTString(WIFEXITED(nStatus) ? L"exit code " + std::to_wstring(WEXITSTATUS(nStatus))
                                       : L"killed by signal " + std::to_wstring(WTERMSIG(nStatus)));
}

std::string csShellWord(std::string_view sv) {
    static constexpr std::string_view svPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=.,:@%/";
    if (!sv.empty() && sv.find_first_not_of(svPlain) == std::string_view::npos) {
        return std::string(sv);
    }
    std::string cs = "'";
    for (const char c : sv) {
        cs += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return cs + "'";
}

std::string csShellQuoted(std::string_view sv) {
    std::string cs = "\"";
    for (const char c : sv) {
        if (std::string_view("\"\\$`").find(c) != std::string_view::npos) {
            cs += '\\';
        }
        cs += c;
    }
    return cs + '"';
}

int nRunShell(const std::string& csCommand, CTrace& rclTrace, std::string_view svTold) {
    const int nStatus = nShellCommand(csCommand.c_str());
    const CErrnoKept clKept;
    const CTString csTold = csFromUTF8(svTold.empty() ? csCommand : svTold);
    if (nStatus == -1) {
        rclTrace.Outcome(csTold, false);
    } else {
        rclTrace.Step(csTold, csStatus(nStatus));
    }
    if (bInterrupted(nStatus)) {
        EndInterruptedRun(csTold, rclTrace);
    }
    RepaintScreen();
    return nStatus;
}

int nExitCode(int nStatus) {
    return nStatus != -1 && WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}

}  // namespace kalmo
