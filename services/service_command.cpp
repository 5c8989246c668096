#include "services/service_command.h"

#include "framework/conversion.h"
#include "framework/errno_kept.h"
#include "services/command_witness.h"
#include "services/error_catcher.h"
#include "services/shell_command.h"

namespace kalmo {
namespace {

struct STEnd {
    int nStatus;
    std::string csSaid;
};

// errno is that of the command.
STEnd stRun(std::wstring_view svCommand) {
    CErrorCatcher clCatcher;
    const int nStatus = nShellCommand(svCommand);
    return {nStatus, clCatcher.csRelease(MAX_SAID)};
}

void Tell(std::wstring_view svCommand, const STEnd& rst) {
    const CErrnoKept clKept;
    const CTString csSaid = csFromUTF8(rst.csSaid);
    errno = clKept.nGet();
    TellCommandEnd({svCommand, rst.nStatus, csSaid});
}

}  // namespace

bool bRunScript(std::wstring_view svCommand) {
    const STEnd st = stRun(svCommand);
    const bool bDone = bShellSuccess(st.nStatus);
    if (!bDone || bInterrupted(st.nStatus)) {
        Tell(svCommand, st);
    }
    return bDone;
}

int nRunBootTool(std::wstring_view svCommand) {
    const STEnd st = stRun(svCommand);
    Tell(svCommand, st);
    return st.nStatus;
}

}  // namespace kalmo
