#include "app/run.h"

#include <cstdio>
#include <string_view>

#include "app/config/program_version.h"
#include "app/interactive_run.h"
#include "app/pilot.h"
#include "framework/conversion.h"

namespace kalmo {
namespace {

constexpr const char* PSZ_HELP =
    "Usage: kalmoinstall [/PILOT=FILE] [/DEBUG=FILE]\n"
    "\n"
    "Installs, upgrades or uninstalls an instance of the ZDSQL database server from the payload\n"
    "\"kalmoinstall.zip\" beside this program. Run it as root, from a terminal: dialogs lead through it.\n"
    "\n"
    "  /PILOT=FILE   work unattended and without a terminal, as the parameter file says\n"
    "  /DEBUG=FILE   append a trace of every step to a file\n"
    "  --help        show this text\n"
    "  --version     show the version\n"
    "\n"
    "A successful unattended run leaves the file \"Install.log\" holding \"OK\" in the instance's "
    "directory.\n";

// Answers an option that asks about the program itself; true when there was one.
bool bAnswerAboutProgram(int nArgc, char** ppszArgv) {
    for (int n = 1; n < nArgc; ++n) {
        const std::string_view svArgument = ppszArgv[n];
        if (svArgument == "--help") {
            std::fputs(PSZ_HELP, stdout);
            return true;
        }
        if (svArgument == "--version") {
            std::printf("kalmoinstall %s\n", csToUTF8(csGetOwnVersion()).pszGet());
            return true;
        }
    }
    return false;
}

}  // namespace

void Run(int nArgc, char** ppszArgv) {
    if (bAnswerAboutProgram(nArgc, ppszArgv)) {
        return;
    }
    CPilot clPilot;
    if (clPilot.bCheckPilot(nArgc, ppszArgv)) {
        clPilot.Pilot();
        return;
    }
    RunInteractive(clPilot.rclGetTrace());
}

}  // namespace kalmo
