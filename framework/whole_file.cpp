#include "framework/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>

#include "framework/conversion.h"
#include "framework/errno_kept.h"
#include "framework/fs_path.h"
#include "framework/memory_scope.h"
#include "framework/random_bytes.h"
#include "framework/signal_block.h"
#include "framework/unique_fd.h"

namespace kalmo {
namespace {

constexpr mode_t MODE = S_IRUSR | S_IWUSR;
using CTemporaryName = char[40];

// Where a file goes: its folder, open, so that all calls mean the same one, and its name in there.
struct STPlace {
    CUniqueFd clFolder;
    std::string csName;
};

// Whether a file can go there: nothing stands at the place, or a regular file.
bool bFree(const STPlace& rst) {
    struct stat st {};
    if (::fstatat(rst.clFolder.nGet(), rst.csName.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT;
    }
    if (S_ISREG(st.st_mode)) {
        return true;
    }
    errno = S_ISDIR(st.st_mode) ? EISDIR : S_ISLNK(st.st_mode) ? ELOOP : EEXIST;
    return false;
}

// False, with errno set, when no file can go there.
bool bFindPlace(std::wstring_view svPath, STPlace* pst) {
    if (svPath.empty() || svPath.size() > TAILLE_MAX_PATH || svPath.find(L'\0') != std::wstring_view::npos) {
        errno = svPath.size() > TAILLE_MAX_PATH ? ENAMETOOLONG : EINVAL;
        return false;
    }
    const std::size_t nName = svPath.rfind(L'/') + 1;  // 0 without one
    pst->csName = csToUTF8(svPath.substr(nName)).pszGet();
    if (pst->csName.empty()) {
        errno = EISDIR;
        return false;
    }
    const std::wstring csFolder = nName == 0 ? L"." : std::wstring(svPath.substr(0, nName));
    pst->clFolder.Reset(::open(csToUTF8(csFolder).pszGet(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return pst->clFolder.bValid() && bFree(*pst);
}

bool bWriteAll(int nFd, std::string_view svBytes) {
    while (!svBytes.empty()) {
        const ssize_t nPut = ::write(nFd, svBytes.data(), svBytes.size());
        if (nPut < 0 && errno != EINTR) {
            return false;
        }
        svBytes.remove_prefix(nPut > 0 ? static_cast<std::size_t>(nPut) : 0);
    }
    return true;
}

// Makes a file of a name that nobody could foresee.
CUniqueFd clMakeTemporary(int nFolder, CTemporaryName& rszName) {
    std::uint64_t u64Random = 0;
    if (!bRandomBytes(&u64Random, sizeof u64Random)) {
        return {};
    }
    std::snprintf(rszName, sizeof rszName, ".kalmoinstall-%016" PRIx64, u64Random);
    constexpr int FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    return CUniqueFd(::openat(nFolder, rszName, FLAGS, MODE));
}

// A file system that cannot put a folder onto the disk says that the call means nothing to it.
bool bSyncFolder(int nFolder) {
    return ::fsync(nFolder) == 0 || errno == EINVAL;
}

}  // namespace

bool bReplaceFile(std::wstring_view svPath, std::string_view svBytes) try {
    const CMemoryScope clScope;
    STPlace stPlace;
    if (!bFindPlace(svPath, &stPlace)) {
        return false;
    }
    const int nFolder = stPlace.clFolder.nGet();
    // Until no temporary file is left: any of these would end the process before.
    const CSignalBlock clHeld{SIGHUP, SIGINT, SIGQUIT, SIGTERM};
    CTemporaryName szName{};
    CUniqueFd clFile = clMakeTemporary(nFolder, szName);
    if (!clFile.bValid()) {
        return false;
    }
    // Some file systems tell only at the close that a byte was lost.
    if (!bWriteAll(clFile.nGet(), svBytes) || ::fsync(clFile.nGet()) != 0 ||
        ::close(clFile.nRelease()) != 0 ||
        ::renameat(nFolder, szName, nFolder, stPlace.csName.c_str()) != 0) {
        const CErrnoKept clKept;
        ::unlinkat(nFolder, szName, 0);
        return false;
    }
    return bSyncFolder(nFolder);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool bReplaceable(std::wstring_view svPath) try {
    const CMemoryScope clScope;
    STPlace stPlace;
    return bFindPlace(svPath, &stPlace) &&
           ::faccessat(stPlace.clFolder.nGet(), ".", W_OK | X_OK, AT_EACCESS) == 0;
} catch (const std::exception&) {
    return NoMemory(false);
}

}  // namespace kalmo
