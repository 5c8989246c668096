#include "services/command_witness.h"

#include <sys/wait.h>

#include <csignal>

#include "framework/errno_kept.h"

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
    constexpr int nShellSignal = 128;
    if (nStatus == -1) {
        return false;
    }
    const int nSignal = WIFSIGNALED(nStatus) ? WTERMSIG(nStatus) : WEXITSTATUS(nStatus) - nShellSignal;
    return nSignal == SIGINT || nSignal == SIGQUIT;
}

}  // namespace kalmo
