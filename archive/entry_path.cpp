#include "archive/entry_path.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <span>
#include <utility>
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

// Opens a directory right below another one. Follows no link.
CUniqueFd clOpenDirectory(const CUniqueFd& rclAbove, const char* pszName) {
    return CUniqueFd(::openat(rclAbove.nGet(), pszName, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// The same, which creates one when there is none.
CUniqueFd clEnterDirectory(const CUniqueFd& rclAbove, const char* pszName) {
    CUniqueFd clFd = clOpenDirectory(rclAbove, pszName);
    if (clFd.bValid() || errno != ENOENT) {
        return clFd;
    }
    const bool bCreated = ::mkdirat(rclAbove.nGet(), pszName, MODE_REPERTOIRE) == 0;
    if (!bCreated && errno != EEXIST) {
        return {};
    }
    clFd = clOpenDirectory(rclAbove, pszName);
    if (bCreated && clFd.bValid() && ::fchmod(clFd.nGet(), MODE_REPERTOIRE) != 0) {
        return {};
    }
    return clFd;
}

bool bMakeDirectories(std::wstring_view svRoot, std::span<const std::wstring_view> tabName) {
    if (tabName.empty()) {
        return true;
    }
    CUniqueFd clFd(::open(csToUTF8(svRoot).pszGet(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const std::wstring_view svName : tabName) {
        if (!clFd.bValid()) {
            break;
        }
        clFd = clEnterDirectory(clFd, csToUTF8(svName).pszGet());
    }
    return clFd.bValid();
}

// Opens a directory or, where it is missing, the nearest one above it that is there.
CUniqueFd clNearestDirectory(std::wstring_view svPath, bool* pbMissing) {
    CUniqueFd clFd;
    for (*pbMissing = false;; *pbMissing = true) {
        clFd.Reset(::open(csToUTF8(svPath).pszGet(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        // One whose own name is too long is missing, and not what is judged here.
        if (clFd.bValid() || (errno != ENOENT && errno != ENAMETOOLONG)) {
            return clFd;
        }
        const std::size_t nLast = svPath.find_last_not_of(L'/');
        const std::size_t nSlash = svPath.substr(0, nLast == svPath.npos ? 0 : nLast).rfind(L'/');
        if (nSlash == svPath.npos) {
            return clFd;
        }
        svPath = svPath.substr(0, nSlash + 1);
    }
}

// Whether the directories of a name are there or can be made, and its file in them. What is missing will lie
// on the file system of the nearest directory: a name is looked up there, to learn whether it is one at all.
bool bVerifyNames(std::wstring_view svRoot, std::span<const std::wstring_view> tabName) {
    bool bMissing = false;
    CUniqueFd clFd = clNearestDirectory(svRoot, &bMissing);
    if (!clFd.bValid()) {
        return errno == ENOENT;
    }
    for (std::size_t n = 0; n < tabName.size(); ++n) {
        const CXYString<char> csName = csToUTF8(tabName[n]);
        if (!bMissing && n + 1 < tabName.size()) {
            CUniqueFd clNext = clOpenDirectory(clFd, csName.pszGet());
            bMissing = !clNext.bValid();
            if (!bMissing) {
                clFd = std::move(clNext);
            } else if (errno != ENOENT) {
                return false;
            }
            continue;
        }
        struct stat st {};
        if (::fstatat(clFd.nGet(), csName.pszGet(), &st, AT_SYMLINK_NOFOLLOW) != 0 && errno != ENOENT) {
            return false;
        }
    }
    return true;
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
    const std::wstring_view svJoined = clPath.svGet().substr(0, svRoot.size());
    if (eMissing == eMISSING::Leave
            ? !bVerifyNames(svJoined, tabName)
            : !bMakeDirectories(svJoined, std::span(tabName).first(tabName.size() - 1))) {
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
