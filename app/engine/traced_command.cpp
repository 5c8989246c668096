#include "app/engine/traced_command.h"

#include <cerrno>
#include <cstdlib>

#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "framework/conversion.h"
#include "services/service_command.h"
#include "services/wait_status.h"

namespace kalmo {

CTString csStatus(int nStatus) {
    const STWaitStatus st(nStatus);
    return CTString(st.nSignal == 0 ? L"exit code " + std::to_wstring(st.nExitCode)
                                    : L"killed by signal " + std::to_wstring(st.nSignal));
}

std::string csShellWord(std::string_view sv) {
    static constexpr std::string_view SV_PLAIN =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=.,:@%/";
    if (!sv.empty() && sv.find_first_not_of(SV_PLAIN) == std::string_view::npos) {
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
    const int nStatus = rclTrace.bMayChange() ? nShellCommand(csCommand.c_str()) : 0;
    const int nError = nOutcome(nStatus != -1);
    // One that failed may have done something before.
    const CTString csTold = csFromUTF8(svTold.empty() ? csCommand : svTold);
    if (nStatus == -1) {
        rclTrace.Outcome(csTold, nError);
    } else {
        rclTrace.Step(csTold, csStatus(nStatus));
    }
    if (bInterrupted(nStatus)) {
        EndInterruptedRun(csTold, rclTrace);
    }
    rclTrace.rclGetView().Repaint();
    return nStatus;
}

int nExitCode(int nStatus) {
    return nStatus == -1 || STWaitStatus(nStatus).nSignal != 0 ? -1 : STWaitStatus(nStatus).nExitCode;
}

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
    m_rclTrace.Told(rst.svCommand, csResult, rst.nStatus != 0);
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
