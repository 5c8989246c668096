#include <sys/stat.h>

#include <cerrno>
#include <exception>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/memory_scope.h"
#include "services/init_script.h"
#include "services/service.h"
#include "services/service_command.h"
#include "services/service_manager.h"
#include "services/systemctl.h"

namespace kalmo {
namespace {

// Deletes a unit file, a script or a link to one. Whatever else has the name stays: systemd tells of a masked
// unit, for one, that its file is /dev/null.
bool bDelete(const CTString& csPath) {
    struct stat st {};
    if (::lstat(csToUTF8(csPath).pszGet(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISLNK(st.st_mode)) {
        errno = S_ISDIR(st.st_mode) ? EISDIR : EINVAL;
        return false;
    }
    return CDiskFile::bDelete(csPath);
}

// The same for a file that a removal does not depend on. 0, or why it stays.
int nDelete(const CTString& csPath) {
    return bDelete(csPath) || errno == ENOENT ? 0 : errno;
}

// The path in a unit property, and why it could not be asked for, or 0.
struct STUnitFile {
    CTString csPath;
    int nError = 0;

    STUnitFile(const char* pszProperty, const wchar_t* pszName) {
        csPath = CServiceManager::csGetSystemdProp(pszProperty, pszName, &nError);
    }
    // 0, or why the file stays. A few characters are no path but a stray answer.
    [[nodiscard]] int nDeleteIt() const { return csPath.nGetLength() > 3 ? nDelete(csPath) : nError; }
};

// The result of the last step of a removal: a file that is already gone is as good as one deleted.
bool bLastStep(int nResult) {
    return nResult != -1 || errno == ENOENT;
}

bool bDeleteLast(const CTString& csPath) {
    return bLastStep(bDelete(csPath) ? 0 : -1);
}

}  // namespace

bool CService::bRemove(int* pnStays) try {
    const CMemoryScope clScope;
    int nStays = 0;
    const bool bRemoved =
        CServiceManager::ms_eDistri == eSystemd ? __bRemoveSystemd(&nStays) : __bRemoveSysV(&nStays);
    if (pnStays != nullptr) {
        *pnStays = nStays;
    }
    return bRemoved;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CService::__bRemoveSystemd(int* pnStays) {
    // Asked for first: a disabled unit that is not in use may be forgotten, and its files with it.
    const STUnitFile stFragment("FragmentPath", pszGetName());
    const STUnitFile stSource("SourcePath", pszGetName());
    CXYString<char> csSaid;
    if (!bCommandSystemctl(CTString(L"disable ") + __svName(), &csSaid)) {
        errno = errno != 0 ? errno : nReasonInWords(csSaid);
        return false;
    }
    bCommandSystemctl(CTString(L"stop ") + __svName());
    const int nFragmentError = stFragment.nDeleteIt();
    const int nSourceError = stSource.nDeleteIt();
    bCommandSystemctl(L"daemon-reload");
    *pnStays = nFragmentError != 0 ? nFragmentError : nSourceError;
    return true;
}

bool CService::__bRemoveSysV(int* pnStays) {
    const CTString csName(__svName());
    const CTString csScript = csScriptPath(csName);
    switch (CServiceManager::ms_eDistri) {
        case eDebian:
            *pnStays = nDelete(csScript);
            // Forced, because the script is gone by now.
            return bLastStep(nRunBootTool(csBootCommand(csName)));
        case eRedHat:
        case eMandriva:
        case eFedora:
        case eSuSE:
        case eGentoo: nRunBootTool(csBootCommand(csName)); return bDeleteLast(csScript);
        case eSlackware: return bDeleteLast(L"/etc/rc.d/rc." + csName);
        // No step is taken, so what counts is the error that the caller's last call left.
        default: return errno == ENOENT;
    }
}

}  // namespace kalmo
