#include "services/systemctl.h"

#include <cerrno>
#include <cstdlib>
#include <exception>

#include "framework/conversion.h"
#include "framework/memory_scope.h"
#include "services/command_witness.h"
#include "services/lance_processus.h"

namespace kalmo {

namespace {

// What is in the administrator's environment must not get into the output that is read here.
void ForgetSettings() {
    for (const char* const psz :
         {"SYSTEMD_COLORS", "SYSTEMD_LOG_LEVEL", "SYSTEMD_LOG_TARGET", "SYSTEMD_URLIFY"}) {
        ::unsetenv(psz);
    }
}

bool bRun(CLanceProcessus& rclSystemctl, std::wstring_view svArguments, CXYString<char>* pcsOutput,
          unsigned* pdwExitCode) {
    ForgetSettings();
    return rclSystemctl.bLanceProcessus(PSZ_SYSTEMCTL, CTString(svArguments).pszGet(), nullptr) &&
           rclSystemctl.bLitSortieEtAttendFinExecution(pcsOutput, pdwExitCode);
}

}  // namespace

bool bRunSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode) try {
    const CMemoryScope clScope;
    CLanceProcessus clSystemctl;
    return bRun(clSystemctl, svArguments, pcsOutput, pdwExitCode);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool bAskSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode) try {
    const CMemoryScope clScope;
    CLanceProcessus clSystemctl;
    clSystemctl.ExpectAnswer();
    return bRun(clSystemctl, svArguments, pcsOutput, pdwExitCode);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool bCommandSystemctl(std::wstring_view svArguments, CXYString<char>* pcsSaid) try {
    const CMemoryScope clScope;
    CLanceProcessus clSystemctl;
    clSystemctl.KeepAtMost(MAX_SAID);
    CXYString<char> csSaid;
    unsigned dwExitCode = 0;
    errno = 0;
    const bool bRan = bRun(clSystemctl, svArguments, &csSaid, &dwExitCode);
    const int nErrno = bRan ? 0 : errno;
    if (!bRan || dwExitCode != 0) {
        const CTString csCommand = CTString(PSZ_SYSTEMCTL) + L" " + svArguments;
        const CTString csWords = csFromUTF8(csSaid);
        errno = nErrno;
        TellCommandEnd({csCommand, bRan ? clSystemctl.nGetStatus() : -1, csWords});
    }
    if (pcsSaid != nullptr) {
        *pcsSaid = csSaid;
    }
    errno = nErrno;
    return bRan && dwExitCode == 0;
} catch (const std::exception&) {
    return NoMemory(false);
}

}  // namespace kalmo
