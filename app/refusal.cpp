#include "app/refusal.h"

#include <array>
#include <string>

#include "app/config/server_config.h"
#include "app/install_steps.h"
#include "app/message.h"
#include "app/texts.h"
#include "app/trace.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "services/service_manager.h"
#include "services/told_program.h"

namespace kalmo {
namespace {

CTString csCommandOf(CService& rclService) {
    return CTString(rclService.pszBinaryPathName());
}

// A command of several words, of which the first is a program, was cut in the wrong place: nobody's path has
// a file in the middle.
bool bBeginsWithAnotherFile(const CTString& csProgram) {
    for (std::size_t nBlank = csProgram.svGet().find(L' '); nBlank != CTString::npos;
         nBlank = csProgram.svGet().find(L' ', nBlank + 1)) {
        if (CDiskFile::bFileExists(csProgram.svGet().substr(0, nBlank))) {
            return !CDiskFile::bFileExists(csProgram);
        }
    }
    return false;
}

bool bBeginsWithName(std::wstring_view svFileName, std::wstring_view svName) {
    return bEgalSansCasse(svFileName.substr(0, svName.size()), svName);
}

STRefusal stForeign(CService& rclService) {
    const CTString csCommand = csCommandOf(rclService);
    return {L"the service " + CTString(rclService.pszGetName()) +
                L" runs a program that is not of this product: " + csQuoted(csCommand),
            csFormatText(TEXTE_PROGRAMME_ETRANGER, csGetDisplayName(rclService), csCommand)};
}

// A service whose command names another's program and, behind it, something in the directory.
bool bHiddenIn(CService& rclService, std::wstring_view svDir) {
    return !bOwnProgram(rclService) && csCommandOf(rclService).svGet().find(svDir) != CTString::npos;
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
    const std::wstring_view svName = CFSPath::stSplit(csProgram).svFileName;
    // The manager's name cut short is that of the daemon beside it.
    const bool bOfServer = bBeginsWithName(svName, PSZ_SERVER_PROGRAM);
    if (bOfServer) {
        return !bIsManager(rclService) || bBeginsWithName(svName, PSZ_MANAGER_PROGRAM);
    }
    CPathBuffer szConfPath;
    GetZDConfPath(&rclService, szConfPath);
    return CDiskFile::bFileExists(szConfPath);
}

CRefusal clRefuseRemoval(CService& rclService) {
    return csCommandOf(rclService).bEmpty() || bOwnProgram(rclService) ? CRefusal() : stForeign(rclService);
}

CRefusal clRefuseUpgrade(CService& rclService) {
    if (csGetProgramWithoutArg(&rclService).bEmpty()) {
        return STRefusal{L"the service tells no program",
                         csFormatText(TEXTE_SANS_PROGRAMME, csGetDisplayName(rclService))};
    }
    if (!bOwnProgram(rclService)) {
        return stForeign(rclService);
    }
    const CTString csDirectory = csGetProgramDirectory(&rclService);
    if (!CDiskFile::bDirectoryExists(csDirectory)) {
        return STRefusal{L"its directory " + csDirectory + L" is gone",
                         csFormatText(TEXTE_REPERTOIRE_PERDU, csGetDisplayName(rclService), csDirectory)};
    }
    CServiceManager clManager;
    const CXPtr_deleteRCV<CService> pclKalmoManager = clManager.pclGetService(PSZ_MANAGER_SERVICE, 0);
    return pclKalmoManager != nullptr && bHiddenIn(*pclKalmoManager, csDirectory)
               ? stForeign(*pclKalmoManager)
               : CRefusal();
}

CRefusal clRefuseDirectory(const CFSPath& rclDir, CServiceList& rtabServer) {
    for (const wchar_t* const pszProgram : {PSZ_MANAGER_PROGRAM, PSZ_SERVER_PROGRAM}) {
        if (!bFoundAgain(rclDir.csGet() + pszProgram)) {
            return STRefusal{L"a service in " + csQuoted(rclDir.csGet()) +
                                 L" could not be found again: its path would be cut when it is read",
                             csFormatText(TEXTE_REPERTOIRE_INTROUVABLE, rclDir.csGet())};
        }
    }
    for (const CXPtr_deleteRCV<CService>& rpclService : rtabServer) {
        if (bHiddenIn(*rpclService, rclDir.svGet())) {
            return stForeign(*rpclService);
        }
    }
    return {};
}

CRefusal clRefuseCommandRoom(const CFSPath& rclDir, std::size_t nMaxBytes) {
    const std::size_t nLength = csServerCommand(rclDir, "kalmomanager --INSTALLER", "").size();
    if (nLength <= nMaxBytes) {
        return {};
    }
    const int nTooMany = static_cast<int>(nLength - nMaxBytes);
    return STRefusal{L"the server's programs in " + csQuoted(rclDir.csGet()) + L" could not be called: " +
                         std::to_wstring(nTooMany) + L" bytes too many",
                     csFormatText(TEXTE_REPERTOIRE_TROP_LONG, rclDir.csGet(), nTooMany)};
}

CRefusal clRefuseName(const CTString& csName) {
    return bServiceCanBeNamed(csName) ? CRefusal()
                                      : STRefusal{L"no name that a service can have: " + csQuoted(csName),
                                                  csFormatText(TEXTE_NOM_IMPOSSIBLE, csName)};
}

bool bTellRefusal(std::wstring_view svWhat, const STRefusal& rst, CTrace& rclTrace) {
    rclTrace.Step(svWhat, L"failed: " + rst.csTraced);
    ShowErrorBox(rst.csShown);
    return false;
}

}  // namespace kalmo
