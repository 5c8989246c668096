#include <cerrno>
#include <exception>

#include "framework/disk_file.h"
#include "framework/memory_scope.h"
#include "services/init_script.h"
#include "services/service.h"
#include "services/service_manager.h"
#include "services/shell_command.h"
#include "services/systemctl.h"

namespace kalmo {
namespace {

// Deletes a file that a removal does not depend on. 0, or why it stays.
int nDelete(const CTString& csPath) {
    return CDiskFile::bDelete(csPath) || errno == ENOENT ? 0 : errno;
}

// The same for the file that a unit property names. A few characters are no path but a stray answer.
int nDeleteUnitFile(const CTString& csPath) {
    return csPath.nGetLength() > 3 ? nDelete(csPath) : 0;
}

// The result of the last step of a removal: a file that is already gone is as good as one deleted.
bool bLastStep(int nResult) {
    const bool bDone = nResult != -1 || errno == ENOENT;
    errno = bDone ? 0 : errno;
    return bDone;
}

bool bDeleteLast(const CTString& csPath) {
    return bLastStep(CDiskFile::bDelete(csPath) ? 0 : -1);
}

}  // namespace

bool CService::bRemove() try {
    const CMemoryScope clScope;
    return CServiceManager::ms_eDistri == eSystemd ? __bRemoveSystemd() : __bRemoveSysV();
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CService::__bRemoveSystemd() {
    // Asked for first: a disabled unit that is not in use may be forgotten, and its files with it.
    const CTString csFragmentPath = CServiceManager::csGetSystemdProp("FragmentPath", pszGetName());
    const CTString csSourcePath = CServiceManager::csGetSystemdProp("SourcePath", pszGetName());
    if (!bCommandSystemctl(CTString(L"disable ") + __svName())) {
        errno = EPERM;
        return false;
    }
    bCommandSystemctl(CTString(L"stop ") + __svName());
    const int nFragmentError = nDeleteUnitFile(csFragmentPath);
    const int nSourceError = nDeleteUnitFile(csSourcePath);
    bCommandSystemctl(L"daemon-reload");
    errno = nFragmentError != 0 ? nFragmentError : nSourceError;
    return true;
}

bool CService::__bRemoveSysV() {
    const CTString csName(__svName());
    const CTString csScript = csScriptPath(csName);
    switch (CServiceManager::ms_eDistri) {
        case eDebian: {
            const int nScriptError = nDelete(csScript);
            // Forced, because the script is gone by now.
            const bool bRemoved =
                bLastStep(nShellCommand(L"update-rc.d -f " + csName + L" remove >/dev/null"));
            errno = bRemoved ? nScriptError : errno;
            return bRemoved;
        }
        case eRedHat:
        case eMandriva:
        case eFedora:
            nShellCommand(L"chkconfig --del " + csName + L" >/dev/null");
            return bDeleteLast(csScript);
        case eSuSE: nShellCommand(L"insserv -r " + csName + L" >/dev/null"); return bDeleteLast(csScript);
        case eGentoo:
            nShellCommand(L"rc-update del " + csName + L" >/dev/null");
            return bDeleteLast(csScript);
        case eSlackware: return bDeleteLast(L"/etc/rc.d/rc." + csName);
        // No step is taken, so what counts is the error that the caller's last call left.
        default: return errno == ENOENT;
    }
}

}  // namespace kalmo
