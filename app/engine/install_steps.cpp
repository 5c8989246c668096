#include "app/engine/install_steps.h"

#include <array>
#include <cerrno>
#include <string>

#include "app/config/server_config.h"
#include "app/engine/trace.h"
#include "app/engine/traced_command.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/profile.h"
#include "framework/profile_line.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

// The longest value that is looked at.
constexpr std::size_t MAX_HELD = TAILLE_MAX_PATH + 1;

// The longest beginning of a path that is a directory.
CTString csNearestDirectory(std::wstring_view svDir) {
    while (!svDir.empty() && !CDiskFile::bDirectoryExists(svDir)) {
        const std::size_t nSlash = svDir.rfind(L'/');
        svDir = svDir.substr(0, nSlash == svDir.npos ? 0 : nSlash);
    }
    return CTString(svDir);
}

// What a key of the configuration now holds; empty when it is missing.
CTString csHeld(const wchar_t* pszConfPath, const wchar_t* pszKey) {
    std::array<wchar_t, MAX_HELD + 1> szValue{};
    GetPrivateProfileString(PSZ_SECTION_INIT, pszKey, L"", szValue.data(), szValue.size(), pszConfPath);
    return szValue.data();
}

}  // namespace

bool bCreateDirectory(std::wstring_view svDir, CTrace& rclTrace, CXError* pclError) {
    const CTString csThere = csNearestDirectory(svDir);
    const bool bCreated = !rclTrace.bMayChange() || CDiskFile::bCreateDirectory(svDir, pclError);
    if (!bCreated && csNearestDirectory(svDir) != csThere) {
        rclTrace.Changed();  // one above it was made
    }
    const CTString csWhat = L"create directory " + CTString(svDir);
    if (bCreated) {
        rclTrace.Step(csWhat, L"ok");
    } else {
        rclTrace.Error(csWhat, *pclError);
    }
    return bCreated;
}

bool bWriteNewConfiguration(const wchar_t* pszConfPath, const wchar_t* pszDbRoot, const CTString& csPort,
                            const CTString& csName, CTrace& rclTrace) {
    const CTString csWhat = L"configuration " + CTString(pszConfPath);
    if (!rclTrace.bMayChange()) {
        rclTrace.Outcome(csWhat, 0);
        return true;
    }
    struct STKey {
        const wchar_t* pszKey;
        bool (*pfnWrite)(const wchar_t* pszConfPath, const wchar_t* pszValue);
        const wchar_t* pszValue;
    };
    const std::array tabKey{STKey{L"DBRootPath", WriteDBRootPath, pszDbRoot},
                            STKey{PSZ_KEY_PORT, WriteServerPort, csPort.pszGet()},
                            STKey{L"Name", WriteServerName, csName.pszGet()}};
    std::array<bool, tabKey.size()> tabWrote{};
    int nError = 0;
    for (std::size_t n = 0; n < tabKey.size(); ++n) {
        errno = 0;
        tabWrote[n] = tabKey[n].pfnWrite(pszConfPath, tabKey[n].pszValue);
        if (!tabWrote[n]) {
            nError = errno != 0 ? errno : EIO;
        }
    }
    // A change is made whole or not at all: a key that could not be written and tells something else tells
    // what it did before.
    bool bWritten = true;
    bool bOfAnother = false;
    for (std::size_t n = 0; n < tabKey.size(); ++n) {
        const CTString csNow = csHeld(pszConfPath, tabKey[n].pszKey);
        const bool bHolds = csNow == csValeurRelue(tabKey[n].pszValue).svGet().substr(0, MAX_HELD);
        bWritten = bWritten && bHolds;
        bOfAnother = bOfAnother || (!tabWrote[n] && !bHolds && !csNow.bEmpty());
    }
    rclTrace.Outcome(csWhat, bWritten ? 0 : nFailure(nError));
    errno = nError;
    return !bOfAnother;
}

std::string csServerCommand(const CFSPath& rclDir, std::string_view svShown, std::string_view svHidden) {
    return csShellWord(rclDir.csGetUTF8().svGet()).append(svShown).append(svHidden).append(" 2>/dev/null");
}

int nRunServerProgram(const CFSPath& rclDir, std::string_view svShown, std::string_view svHidden,
                      std::size_t nMaxBytes, CTrace& rclTrace) {
    std::string csCommand = csServerCommand(rclDir, svShown, svHidden);
    std::string csTold = csServerCommand(rclDir, svShown, svHidden.empty() ? "" : "***");
    if (csCommand.size() > nMaxBytes) {
        csCommand.resize(nMaxBytes);
        csTold += " (cut to " + std::to_string(csCommand.size()) + " bytes)";
    }
    return nRunShell(csCommand, rclTrace, csTold);
}

bool bCreateSystemAccount(const CTString& csUser, CTrace& rclTrace) {
    if (csUser.svGet().starts_with(L'-')) {
        rclTrace.Failed(L"create account " + csUser, L"useradd would take it for an option");
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
