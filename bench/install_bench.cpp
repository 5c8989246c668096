// The measurements of bench/install.sh, which runs it where the installer may install: both start the program
// in FOLDER, which holds a payload whose licence fits the screen, at an emulated terminal.
//
//   install_bench license FOLDER    prints the seconds from the start until the licence is on the screen
//   install_bench install FOLDER    answers every question as proposed and prints the seconds from the last
//                                   answer until the result is on the screen
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

#include "testkit/terminal.h"

namespace kalmo {
namespace {

constexpr std::string_view SV_LICENCE = "Licence agreement";
constexpr std::string_view SV_RESULT = "The server is installed.";

using CClock = std::chrono::steady_clock;

double dSince(CClock::time_point st) {
    return std::chrono::duration<double>(CClock::now() - st).count();
}

// Accepts the licence, then takes the directory, name, port and system account, administrator account and
// telemetry choice that are proposed; what is left is to press OK.
bool bAnswer(CTerminal& rclTerminal) {
    return rclTerminal.bPress("Enter*9");
}

int nMain(int nArgc, char** ppszArgv) {
    const std::string_view svMode = nArgc == 3 ? ppszArgv[1] : "";
    if (svMode != "license" && svMode != "install") {
        std::fputs("usage: install_bench license | install FOLDER\n", stderr);
        return 2;
    }
    const CClock::time_point stStart = CClock::now();
    CTerminal clTerminal({std::string(ppszArgv[2]) + "/kalmoinstall"},
                         {.stPatience = std::chrono::minutes(5)});
    bool bShown = clTerminal.bWaitText(SV_LICENCE);
    double dTime = dSince(stStart);
    if (svMode == "install" && bShown) {
        bShown = clTerminal.bSettle() && bAnswer(clTerminal);
        const CClock::time_point stAnswered = CClock::now();
        clTerminal.Send("\r");
        bShown = bShown && clTerminal.bWaitText(SV_RESULT);
        dTime = dSince(stAnswered);
    }
    if (!bShown) {
        std::fprintf(stderr, "install_bench: not shown; the screen is\n%s\n", clTerminal.csText().c_str());
        return 1;
    }
    std::printf("%.4f\n", dTime);
    return 0;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    return kalmo::nMain(nArgc, ppszArgv);
}
