#include "app/run.h"

#include "app/config/server_config.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"
#include "app/interactive/interactive_run.h"
#include "app/unattended/pilot.h"
#include "framework/xy_string.h"

namespace kalmo {

void Run(int nArgc, char** ppszArgv) {
    CPilot clPilot;
    const bool bUnattended = clPilot.bCheckPilot(nArgc, ppszArgv);
    CTrace& rclTrace = clPilot.rclGetTrace();
    const CCommandTracer clTracer(rclTrace);
    clPilot.TellKind(bUnattended);
    if (bUnattended) {
        clPilot.Pilot();
        return;
    }
    RunInteractive(rclTrace, clPilot.csGetRecordPath());
}

}  // namespace kalmo
