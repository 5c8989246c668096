#include "app/check/removal_check.h"

#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "app/check/room_judge.h"
#include "app/config/server_config.h"
#include "app/engine/uninstall_record.h"
#include "app/removal/removal.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/fs_path.h"
#include "framework/text.h"
#include "services/init_script.h"
#include "services/service.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

std::string csBytes(const CTString& cs) {
    return std::string(csToUTF8(cs).svGet());
}

// The links that start a unit with the machine, which systemctl deletes or fails. The tools that make those
// of scripts leave what they cannot delete, and say nothing of it. No service's name is made like a pattern.
std::vector<std::string> tabBootLink(const std::string& csName) {
    std::vector<std::string> tab;
    for (const char* const pszFolder : {"wants", "requires"}) {
        glob_t st{};
        const std::string csPattern =
            "/etc/systemd/system/*." + std::string(pszFolder) + "/" + csName + ".service";
        if (::glob(csPattern.c_str(), 0, nullptr, &st) == 0) {
            tab.insert(tab.end(), st.gl_pathv, st.gl_pathv + st.gl_pathc);
        }
        ::globfree(&st);
    }
    return tab;
}

void CheckDefinition(CService& rclService, CRoomJudge& rclRoom) {
    const wchar_t* const pszName = rclService.pszGetName();
    if (CServiceManager::ms_eDistri != eSystemd) {
        rclRoom.Deleted(csBytes(csScriptPath(pszName)));
        return;
    }
    for (const char* const pszProperty : {"FragmentPath", "SourcePath"}) {
        if (const CTString csFile = CServiceManager::csGetSystemdProp(pszProperty, pszName);
            csFile.svGet().starts_with(L'/')) {
            rclRoom.Deleted(csBytes(csFile));
        }
    }
    for (const std::string& rcsLink : tabBootLink(csBytes(pszName))) {
        rclRoom.Deleted(rcsLink);
    }
}

void CheckFiles(const CTString& csProgram, const CTString& csDirectory, CRoomJudge& rclRoom) {
    const std::string csRoot = csBytes(csDirectory);
    if (!CDiskFile::bDirectoryExists(csDirectory)) {
        return;
    }
    rclRoom.Inside(csRoot, true);
    rclRoom.Marker(csRoot);
    rclRoom.Deleted(csBytes(csProgram));
    if (bEgalSansCasse(CFSPath::stSplit(csProgram).svFileName, PSZ_MANAGER_PROGRAM)) {
        return;
    }
    for (const wchar_t* const pszLibrary : TAB_NEEDED_LIBRARY) {
        rclRoom.Deleted(csBytes(csDirectory + pszLibrary));
    }
    rclRoom.Deleted(csBytes(csDirectory + L"zdlogger"));
    for (const CTString& rcsLibrary : tabServerLibraries(csDirectory)) {
        rclRoom.Deleted(csBytes(rcsLibrary));
    }
}

// Without a note the run goes on, but one that is made must be taken away in the end.
void CheckNote(const std::string& csNote, CRoomJudge& rclRoom) {
    const std::string csFolder = csNote.substr(0, csNote.rfind('/') + 1);
    struct stat st {};
    if (::stat(csFolder.substr(0, csFolder.size() - 1).c_str(), &st) != 0) {
        return;
    }
    const bool bReadOnly = S_ISDIR(st.st_mode) &&
                           ::faccessat(AT_FDCWD, csFolder.c_str(), W_OK, AT_EACCESS) != 0 && errno == EROFS;
    if (!rclRoom.bDirectory(csFolder)) {
        return;
    }
    if (bReadOnly || CRoomJudge::bAttribute(csFolder, STATX_ATTR_APPEND)) {
        rclRoom.Inside(csFolder, true);
    }
    rclRoom.Deleted(csNote);
}

}  // namespace

void CheckRemoval(const CTString& csService, CService* pclService, CFindings& rclFindings) {
    CRoomJudge clRoom(rclFindings);
    const CUninstallRecord clRecord(csService);
    CUninstallRecord::STNote stNote;
    clRecord.bRead(&stNote);
    const CTString csProgram = pclService != nullptr ? csGetProgramWithoutArg(pclService) : stNote.csProgram;
    CheckFiles(csProgram, CTString(CFSPath::stSplit(csProgram).svDirectory), clRoom);
    if (pclService != nullptr) {
        CheckDefinition(*pclService, clRoom);
    }
    CheckNote(csBytes(clRecord.csGetPath()), clRoom);
}

}  // namespace kalmo
