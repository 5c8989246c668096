#include "services/service_command.h"

#include <cerrno>
#include <cstdlib>
#include <exception>

#include "framework/conversion.h"
#include "framework/errno_kept.h"
#include "framework/memory_scope.h"
#include "services/command_witness.h"
#include "services/error_catcher.h"
#include "services/service_manager.h"

namespace kalmo {

int nShellCommand(const char* pszCommand) {
    // A shell that could not be started is told as one that ended with 127, a command that it does not find.
    // The reason in errno tells the two apart.
    constexpr int NOT_STARTED = 127 << 8;
    errno = 0;
    const int nStatus = std::system(pszCommand);
    return nStatus == NOT_STARTED && errno != 0 && errno != EINTR ? -1 : nStatus;
}

int nShellCommand(std::wstring_view svCommand) try {
    const CMemoryScope clScope;
    return nShellCommand(csToUTF8(svCommand).pszGet());
} catch (const std::exception&) {
    return NoMemory(-1);
}

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

CTString csBootCommand(const CTString& csName) {
    switch (CServiceManager::ms_eDistri) {
        case eDebian: return L"update-rc.d -f " + csName + L" remove >/dev/null";
        case eRedHat:
        case eMandriva:
        case eFedora: return L"chkconfig --del " + csName + L" >/dev/null";
        case eSuSE: return L"insserv -r " + csName + L" >/dev/null";
        case eGentoo: return L"rc-update del " + csName + L" >/dev/null";
        default: return {};
    }
}

int nRunBootTool(std::wstring_view svCommand) {
    const STEnd st = stRun(svCommand);
    Tell(svCommand, st);
    return st.nStatus;
}

}  // namespace kalmo
