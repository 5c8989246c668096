#include "app/engine/command_tracer.h"

#include <cerrno>
#include <cstdlib>

#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"

namespace kalmo {

void CCommandTracer::CommandEnded(const STCommandEnd& rst) noexcept {
    CTString csResult;
    if (rst.nStatus != -1) {
        csResult = csStatus(rst.nStatus);
    } else {
        csResult = L"not run (" + csReason(errno) + L")";
    }
    if (!rst.svSaid.empty()) {
        csResult += L": " + CTString(rst.svSaid);
    }
    m_rclTrace.Step(rst.svCommand, csResult);
    if (bInterrupted(rst.nStatus)) {
        EndInterruptedRun(rst.svCommand, m_rclTrace);
    }
}

void EndInterruptedRun(std::wstring_view svCommand, CTrace& rclTrace) {
    rclTrace.Step(L"run", L"interrupted during: " + CTString(svCommand));
    rclTrace.rclGetView().Close();
    std::exit(0);
}

}  // namespace kalmo
