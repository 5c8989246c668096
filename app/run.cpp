#include "app/run.h"

#include <cstdio>
#include <string_view>

#include "app/config/server_config.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"
#include "app/interactive/interactive_run.h"
#include "app/unattended/pilot.h"
#include "framework/console_message.h"
#include "framework/conversion.h"
#include "framework/text.h"

namespace kalmo {
namespace {

// Answers an option that asks about the program itself; true when there was one.
bool bAnswerAboutProgram(int nArgc, char** ppszArgv) {
    for (int n = 1; n < nArgc; ++n) {
        const std::string_view svArgument = ppszArgv[n];
        if (svArgument == "--help") {
            ConsoleLine(csFormatText(TEXTE_AIDE, csGetOwnVersion()), stdout);
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
    const bool bUnattended = clPilot.bCheckPilot(nArgc, ppszArgv);
    CTrace& rclTrace = clPilot.rclGetTrace();
    const CCommandTracer clTracer(rclTrace);
    // Runs that append to one trace are told apart by their first line.
    rclTrace.Step(L"kalmoinstall " + csGetOwnVersion(),
                  bUnattended ? L"unattended run, parameter file " + csQuoted(clPilot.csGetPilotPath())
                              : CTString(L"interactive run"));
    if (bUnattended) {
        clPilot.Pilot();
        return;
    }
    RunInteractive(rclTrace);
}

}  // namespace kalmo
