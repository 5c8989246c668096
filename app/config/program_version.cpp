#include "app/config/program_version.h"

#include "framework/file_version.h"
#include "framework/process_info.h"

namespace kalmo {

CTString csGetProgramVersion(std::wstring_view svProgram) {
    CFileVersion clVersion;
    CTString csVersion;
    return clVersion.bInit(svProgram) &&
                   clVersion.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &csVersion)
               ? csVersion
               : CTString(L"?");
}

CTString csGetOwnVersion() {
    CPathBuffer szProgram;
    return GetModuleFileNameW(szProgram) ? csGetProgramVersion(szProgram) : CTString(L"?");
}

}  // namespace kalmo
