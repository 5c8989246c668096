#include "services/command_witness.h"

#include <csignal>

#include "framework/errno_kept.h"
#include "services/wait_status.h"

namespace kalmo {
namespace {

ICommandWitness* pclWitness = nullptr;

}  // namespace

void SetCommandWitness(ICommandWitness* pcl) noexcept {
    pclWitness = pcl;
}

void TellCommandEnd(const STCommandEnd& rst) noexcept {
    const CErrnoKept clKept;
    if (pclWitness != nullptr) {
        pclWitness->CommandEnded(rst);
    }
}

bool bInterrupted(int nStatus) noexcept {
    constexpr int SHELL_SIGNAL = 128;
    if (nStatus == -1) {
        return false;
    }
    const STWaitStatus st(nStatus);
    const int nSignal = st.nSignal != 0 ? st.nSignal : st.nExitCode - SHELL_SIGNAL;
    return nSignal == SIGINT || nSignal == SIGQUIT;
}

}  // namespace kalmo
