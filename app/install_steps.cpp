#include "app/install_steps.h"

#include <array>
#include <cerrno>
#include <string>

#include "app/config/server_config.h"
#include "app/shell_command.h"
#include "app/trace.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/errno_kept.h"
#include "framework/profile.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

void TellStep(CTrace& rclTrace, std::wstring_view svWhat, bool bSuccess, const CXError& rclError) {
    if (bSuccess) {
        rclTrace.Step(svWhat, L"ok");
    } else {
        rclTrace.Error(svWhat, rclError);
    }
}

// Whether a key of the configuration now holds a value.
bool bHolds(const wchar_t* pszConfPath, const wchar_t* pszKey, std::wstring_view svValue) {
    std::array<wchar_t, nTailleMaxPath + 2> szValue{};
    GetPrivateProfileString(PSZ_SECTION_INIT, pszKey, L"", szValue.data(), szValue.size(), pszConfPath);
    return szValue.data() == svValue.substr(0, szValue.size() - 1);
}

}  // namespace

bool bCreateDirectory(std::wstring_view svDir, CTrace& rclTrace, CXError* pclError) {
    const bool bCreated = CDiskFile::bCreateDirectory(svDir, pclError);
    TellStep(rclTrace, L"create directory " + CTString(svDir), bCreated, *pclError);
    return bCreated;
}

bool bDeleteFile(const CTString& csPath, CTrace& rclTrace, CXError* pclError) {
    const bool bDeleted = CDiskFile::bDelete(csPath, pclError);
    const CErrnoKept clKept;
    TellStep(rclTrace, L"delete " + csPath, bDeleted, *pclError);
    return bDeleted;
}

void WriteNewConfiguration(const wchar_t* pszConfPath, const wchar_t* pszDbRoot, const CTString& csPort,
                           const CTString& csName, CTrace& rclTrace) {
    errno = 0;
    WriteDBRootPath(pszConfPath, pszDbRoot);
    WriteServerPort(pszConfPath, csPort.pszGet());
    WriteServerName(pszConfPath, csName.pszGet());
    const CErrnoKept clKept;
    const bool bWritten = bHolds(pszConfPath, L"DBRootPath", pszDbRoot) &&
                          bHolds(pszConfPath, PSZ_KEY_PORT, csPort) && bHolds(pszConfPath, L"Name", csName);
    errno = clKept.nGet();
    rclTrace.Outcome(L"configuration " + CTString(pszConfPath), bWritten);
}

int nRunServerProgram(const CFSPath& rclDir, std::string_view svShown, std::string_view svHidden,
                      std::size_t nMaxBytes, CTrace& rclTrace) {
    static constexpr std::string_view svDropErrors = " 2>/dev/null";
    const std::string csProgram = csShellWord(rclDir.csGetUTF8().svGet()) + std::string(svShown);
    std::string csCommand = csProgram;
    csCommand.append(svHidden).append(svDropErrors);
    std::string csTold = csProgram;
    csTold.append(svHidden.empty() ? "" : "***").append(svDropErrors);
    if (csCommand.size() > nMaxBytes) {
        csCommand.resize(nMaxBytes);
        csTold += " (cut to " + std::to_string(csCommand.size()) + " bytes)";
    }
    return nRunShell(csCommand, rclTrace, csTold);
}

bool bCreateSystemAccount(const CTString& csUser, CTrace& rclTrace) {
    if (csUser.svGet().starts_with(L'-')) {
        rclTrace.Step(L"create account " + csUser, L"failed: useradd would take it for an option");
        return false;
    }
    const std::string csWord = csShellWord(csToUTF8(csUser));
    // Not every useradd knows -M; 9 is its code for an account that exists.
    for (const char* const pszOptions : {"-s/bin/false -M ", "-s/bin/false "}) {
        const int nCode = nExitCode(
            nRunShell(std::string("/usr/sbin/useradd ") + pszOptions + csWord + " 2>/dev/null", rclTrace));
        if (nCode == 0 || nCode == 9) {
            return true;
        }
    }
    return false;
}

}  // namespace kalmo
