#include "archive/entry_path.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <span>
#include <vector>

#include "framework/conversion.h"
#include "framework/memory_scope.h"
#include "framework/unique_fd.h"

namespace kalmo {

CTString csDecodeEntryName(std::string_view svStored, std::uint16_t wFlags) {
    return csFromCodePage((wFlags & FLAG_UTF8) != 0 ? eCODEPAGE::Utf8 : eCODEPAGE::OEM, svStored);
}

CTString csWithSlashes(CTString csName) {
    csName.Replace(L'\\', L'/');
    return csName;
}

namespace {

constexpr mode_t MODE_REPERTOIRE = 0755;

bool bSeparator(wchar_t c) {
    return c == L'/' || c == L'\\';
}

bool bDriveLetter(std::wstring_view sv) {
    const auto bLetter = [](wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); };
    return sv.size() >= 2 && sv[1] == L':' && bLetter(sv[0]);
}

// The components of a name that may be joined to a directory; none when it may not.
std::vector<std::wstring_view> tabComponents(std::wstring_view svName) {
    if (svName.empty() || bSeparator(svName.front()) || bSeparator(svName.back()) || bDriveLetter(svName) ||
        svName.find(L'\0') != std::wstring_view::npos) {
        return {};
    }
    std::vector<std::wstring_view> tab;
    for (std::wstring_view svRest = svName; !svRest.empty();) {
        const std::wstring_view svPart = svRest.substr(0, svRest.find_first_of(L"/\\"));
        svRest.remove_prefix(std::min(svRest.size(), svPart.size() + 1));
        const bool bDot = svPart == L".";
        if (svPart == L".." || (bDot && svRest.empty())) {
            return {};
        }
        if (!svPart.empty() && !bDot) {
            tab.push_back(svPart);
        }
    }
    return tab;
}

// What becomes of directories that are missing.
enum class eMISSING { Make, Leave };

// Opens a directory right below another one, which it may create when there is none. Follows no link.
CUniqueFd clEnterDirectory(const CUniqueFd& rclAbove, const char* pszName, eMISSING eMissing) {
    constexpr int FLAGS = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    CUniqueFd clFd(::openat(rclAbove.nGet(), pszName, FLAGS));
    if (clFd.bValid() || errno != ENOENT || eMissing == eMISSING::Leave) {
        return clFd;
    }
    const bool bCreated = ::mkdirat(rclAbove.nGet(), pszName, MODE_REPERTOIRE) == 0;
    if (!bCreated && errno != EEXIST) {
        return {};
    }
    clFd.Reset(::openat(rclAbove.nGet(), pszName, FLAGS));
    if (bCreated && clFd.bValid() && ::fchmod(clFd.nGet(), MODE_REPERTOIRE) != 0) {
        return {};
    }
    return clFd;
}

bool bEnterDirectories(std::wstring_view svRoot, std::span<const std::wstring_view> tabName,
                       eMISSING eMissing) {
    if (tabName.empty()) {
        return true;
    }
    const CXYString<char> csRoot = csToUTF8(svRoot);
    CUniqueFd clFd(::open(csRoot.pszGet(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const std::wstring_view svName : tabName) {
        if (!clFd.bValid()) {
            break;
        }
        clFd = clEnterDirectory(clFd, csToUTF8(svName).pszGet(), eMissing);
    }
    return clFd.bValid() || (eMissing == eMISSING::Leave && errno == ENOENT);
}

eARCHIVE eJugeChemin(std::wstring_view svRoot, std::wstring_view svEntryName, eMISSING eMissing,
                     CFSPath* pclOut) try {
    const CMemoryScope clScope;
    *pclOut = CFSPath();
    const std::vector<std::wstring_view> tabName = tabComponents(svEntryName);
    if (tabName.empty() || svRoot.empty()) {
        return ARCHIVE_BAD;
    }
    CFSPath clPath;
    const auto bJoin = [&] {
        bool bFits = clPath.bSet(svRoot);
        for (const std::wstring_view svName : tabName) {
            bFits = bFits && clPath.bAppend(svName);
        }
        return bFits;
    };
    if (!bThrowingNoMemory(bJoin)) {
        errno = ENAMETOOLONG;
        return ARCHIVE_CREATE;
    }
    if (!bEnterDirectories(clPath.svGet().substr(0, svRoot.size()),
                           std::span(tabName).first(tabName.size() - 1), eMissing)) {
        return ARCHIVE_CREATE;
    }
    *pclOut = clPath;
    return ARCHIVE_OK;
} catch (const std::exception&) {
    return NoMemory(ARCHIVE_CREATE);
}

}  // namespace

eARCHIVE eCheminEntree(std::wstring_view svRoot, std::wstring_view svEntryName, CFSPath* pclOut) {
    return eJugeChemin(svRoot, svEntryName, eMISSING::Make, pclOut);
}

eARCHIVE eVerifieChemin(std::wstring_view svRoot, std::wstring_view svEntryName, CFSPath* pclOut) {
    return eJugeChemin(svRoot, svEntryName, eMISSING::Leave, pclOut);
}

}  // namespace kalmo
