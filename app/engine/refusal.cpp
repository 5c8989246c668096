#include "app/engine/refusal.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include "app/config/server_config.h"
#include "app/engine/install_steps.h"
#include "app/engine/process_list.h"
#include "app/engine/run_view.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"
#include "services/service_manager.h"
#include "services/told_program.h"

namespace kalmo {
namespace {

CTString csCommandOf(CService& rclService) {
    CTString csCommand(rclService.pszBinaryPathName());
    csCommand.TrimRight(L' ');  // systemctl leaves one behind it
    return csCommand;
}

// A command of several words, of which the first is a program, was cut in the wrong place: nobody's path has
// a file in the middle, nor one that does not exist a second path.
bool bBeginsWithAnotherFile(const CTString& csProgram) {
    const std::wstring_view svProgram = csProgram;
    if (CDiskFile::bFileExists(svProgram)) {
        return false;
    }
    for (std::size_t nBlank = svProgram.find(L' '); nBlank != svProgram.npos;
         nBlank = svProgram.find(L' ', nBlank + 1)) {
        if (CDiskFile::bFileExists(svProgram.substr(0, nBlank))) {
            return true;
        }
    }
    return svProgram.find(L" /") != svProgram.npos &&
           !CDiskFile::bDirectoryExists(CFSPath::stSplit(svProgram).svDirectory);
}

// A link to a program in another directory: that one holds the instance, not the link's.
bool bLeadsElsewhere(const CTString& csProgram, const CTString& csDirectory) {
    const std::unique_ptr<char, decltype(&std::free)> pszReal(
        ::realpath(csToUTF8(csProgram).pszGet(), nullptr), &std::free);
    return pszReal != nullptr && !CDiskFile::bSameDirectoryName(
                                     CFSPath::stSplit(csFromUTF8(pszReal.get())).svDirectory, csDirectory);
}

// Whether a program file is being run. It is not opened to find out: whoever starts it at that moment could
// not.
bool bIsRun(const CTString& csPath) {
    struct stat st {};
    return ::lstat(csToUTF8(csPath).pszGet(), &st) == 0 &&
           std::ranges::any_of(tabProcesses(), [&st](const STProcess& rst) {
               return rst.unDevice == st.st_dev && rst.unInode == st.st_ino;
           });
}

bool bBeginsWithName(std::wstring_view svFileName, std::wstring_view svName) {
    return bEgalSansCasse(svFileName.substr(0, svName.size()), svName);
}

STRefusal stForeign(CService& rclService) {
    const CTString csCommand = csCommandOf(rclService);
    return {L"the service " + CTString(rclService.pszGetName()) +
                L" runs a program that is not of this product: " + csQuoted(csCommand),
            csFormatText(TEXTE_PROGRAMME_ETRANGER, csGetDisplayName(rclService), csCommand),
            "foreign-program"};
}

// A service whose command does not tell its directory, as it names another's program, but which may be that
// one: the command mentions it, a program in it runs, or the configuration there has the service's name.
bool bHiddenIn(CService& rclService, const CTString& csDirectory) {
    if (bOwnProgram(rclService)) {
        return false;
    }
    const bool bManager = bIsManager(rclService);
    return csCommandOf(rclService).svGet().find(csDirectory) != CTString::npos ||
           bIsRun(csDirectory + (bManager ? PSZ_MANAGER_PROGRAM : PSZ_SERVER_PROGRAM)) ||
           (!bManager && bEgalSansCasse(csServiceConfiguredIn(csDirectory), rclService.pszGetName()));
}

// Whether the rules give a program of that path back, called as services are: the whole command, so that no
// directory is taken whose longer neighbours are, and in it the path.
bool bFoundAgain(const CTString& csProgram) {
    const CTString csCommand = csProgram + L" --service";
    std::optional<CTString> csTold = csProgramAsTold(csCommand);
    if (!csTold) {
        return false;
    }
    csTold->TrimRight(L' ');
    CService clService(nullptr, L"", nullptr, csTold->pszGet());
    return *csTold == csCommand && csGetProgramWithoutArg(&clService) == csProgram &&
           csGetProgramDirectory(&clService) == CFSPath::stSplit(csProgram).svDirectory;
}

}  // namespace

bool bOwnProgram(CService& rclService) {
    const CTString csProgram = csGetProgramWithoutArg(&rclService);
    const CTString csDirectory = csGetProgramDirectory(&rclService);
    if (csDirectory.bEmpty() || bBeginsWithAnotherFile(csProgram)) {
        return false;
    }
    CPathBuffer szConfPath;
    GetZDConfPath(&rclService, szConfPath);
    const bool bConfigured = CDiskFile::bFileExists(szConfPath);
    const std::wstring_view svName = CFSPath::stSplit(csProgram).svFileName;
    if (!bBeginsWithName(svName, PSZ_SERVER_PROGRAM)) {
        return bConfigured;
    }
    // The manager's name cut short is that of the daemon beside it.
    return (!bIsManager(rclService) || bBeginsWithName(svName, PSZ_MANAGER_PROGRAM)) &&
           (bConfigured || !bLeadsElsewhere(csProgram, csDirectory));
}

CRefusal clRefuseRemoval(CService& rclService) {
    return csCommandOf(rclService).bEmpty() || bOwnProgram(rclService) ? CRefusal() : stForeign(rclService);
}

CRefusal clRefuseUpgrade(CService& rclService) {
    CServiceManager clManager;
    const CXPtr_deleteRCV<CService> pclKalmoManager = pclGetKalmoManager(clManager);
    return clRefuseUpgrade(rclService, pclKalmoManager.get());
}

CRefusal clRefuseUpgrade(CService& rclService, CService* pclKalmoManager) {
    if (csGetProgramWithoutArg(&rclService).bEmpty()) {
        return STRefusal{L"the service tells no program",
                         csFormatText(TEXTE_SANS_PROGRAMME, csGetDisplayName(rclService)), "no-program"};
    }
    if (!bOwnProgram(rclService)) {
        return stForeign(rclService);
    }
    const CTString csDirectory = csGetProgramDirectory(&rclService);
    if (!CDiskFile::bDirectoryExists(csDirectory)) {
        return STRefusal{L"its directory " + csDirectory + L" is gone",
                         csFormatText(TEXTE_REPERTOIRE_PERDU, csGetDisplayName(rclService), csDirectory),
                         "directory-gone"};
    }
    return pclKalmoManager != nullptr && bHiddenIn(*pclKalmoManager, csDirectory)
               ? stForeign(*pclKalmoManager)
               : CRefusal();
}

CRefusal clRefuseDirectory(const CFSPath& rclDir, CServiceList& rtabServer) {
    for (const wchar_t* const pszProgram : {PSZ_MANAGER_PROGRAM, PSZ_SERVER_PROGRAM}) {
        if (!bFoundAgain(rclDir.csGet() + pszProgram)) {
            return STRefusal{L"a service in " + csQuoted(rclDir.csGet()) +
                                 L" could not be found again: its path would be cut when it is read",
                             csFormatText(TEXTE_REPERTOIRE_INTROUVABLE, rclDir.csGet()), "directory-cut"};
        }
    }
    for (const CXPtr_deleteRCV<CService>& rpclService : rtabServer) {
        if (bHiddenIn(*rpclService, rclDir.csGet())) {
            return stForeign(*rpclService);
        }
    }
    // A unit that is masked is not listed, and is an instance all the same.
    if (const CTString csService = csServiceConfiguredIn(rclDir.csGet()); bUnitMasked(csService)) {
        return STRefusal{
            csQuoted(rclDir.csGet()) + L" is the directory of " + csService + L", whose unit is masked",
            csFormatText(TEXTE_REPERTOIRE_MASQUE, rclDir.csGet(), csService), "directory-masked"};
    }
    return {};
}

CRefusal clRefuseCommandRoom(const CFSPath& rclDir) {
    const std::size_t nLength = csServerCommand(rclDir, "kalmomanager --INSTALLER", "").size();
    if (nLength <= MAX_SERVER_COMMAND) {
        return {};
    }
    const int nTooMany = static_cast<int>(nLength - MAX_SERVER_COMMAND);
    return STRefusal{L"the server's programs in " + csQuoted(rclDir.csGet()) + L" could not be called: " +
                         std::to_wstring(nTooMany) + L" bytes too many",
                     csFormatText(TEXTE_REPERTOIRE_TROP_LONG, rclDir.csGet(), nTooMany),
                     "directory-too-long"};
}

CRefusal clRefuseName(const CTString& csName) {
    if (!bServiceCanBeNamed(csName)) {
        return STRefusal{L"no name that a service can have: " + csQuoted(csName),
                         csFormatText(TEXTE_NOM_IMPOSSIBLE, csName), "bad-name"};
    }
    return {};
}

bool bTellRefusal(std::wstring_view svWhat, const STRefusal& rst, CTrace& rclTrace) {
    rclTrace.Failed(svWhat, rst.csTraced);
    rclTrace.rclGetView().ShowError(rst.csShown);
    return false;
}

}  // namespace kalmo
