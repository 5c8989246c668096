#include "framework/disk_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <exception>

#include "framework/conversion.h"
#include "framework/errno_kept.h"
#include "framework/memory_scope.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

// Opening never waits: a named pipe without a writer in a file's place is opened, and fails to be read.
constexpr int OPEN_FLAGS = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// The path for the system; empty, with errno set, when it is one that must not be used.
CXYString<char> csSystemPath(std::wstring_view svPath) {
    if (svPath.empty() || svPath.size() > TAILLE_MAX_PATH || svPath.find(L'\0') != std::wstring_view::npos) {
        errno = svPath.size() > TAILLE_MAX_PATH ? ENAMETOOLONG : EINVAL;
        return {};
    }
    return csToUTF8(svPath);
}

bool bStat(std::wstring_view svPath, struct stat* pst) {
    const CXYString<char> csPath = csSystemPath(svPath);
    return !csPath.bEmpty() && ::stat(csPath.pszGet(), pst) == 0;
}

// Opens a file for writing without following or sharing anything that stands in its place; *pbNew tells
// whether it was made.
int nCreate(const char* pszPath, mode_t unPermission, bool* pbNew) {
    // Most files are new, and of one that this call made nothing has to be asked.
    constexpr int FLAGS = O_RDWR | O_CREAT | O_NOFOLLOW | OPEN_FLAGS;
    const int nNew = ::open(pszPath, FLAGS | O_EXCL, unPermission);
    *pbNew = nNew >= 0;
    if (*pbNew || errno != EEXIST) {
        return nNew;
    }
    struct stat st {};
    const auto bPlainFile = [&] { return CDiskFile::bEmptiedByCreate(st, unPermission); };
    // Looked at before it is opened: opening a device may do something.
    if (::lstat(pszPath, &st) == 0 && !S_ISDIR(st.st_mode) && !bPlainFile()) {
        *pbNew = true;
        return ::unlink(pszPath) == 0 ? ::open(pszPath, FLAGS | O_EXCL, unPermission) : -1;
    }
    // Emptied only once it is known that what was opened is no other file put there in between.
    CUniqueFd clFd(::open(pszPath, FLAGS, unPermission));
    if (!clFd.bValid() || ::fstat(clFd.nGet(), &st) != 0) {
        return -1;
    }
    if (!bPlainFile()) {
        errno = EEXIST;
        return -1;
    }
    return ::ftruncate(clFd.nGet(), 0) == 0 ? clFd.nRelease() : -1;
}

// Opens an existing file to be written in place. A link is followed only where root or this user made it: in
// a directory that others may write, theirs could lead anywhere.
int nOpenInPlace(const char* pszPath) {
    const int nFd = ::open(pszPath, O_RDWR | O_NOFOLLOW | OPEN_FLAGS);
    struct stat st {};
    if (nFd >= 0 || errno != ELOOP || ::lstat(pszPath, &st) != 0) {
        return nFd;
    }
    if (st.st_uid != 0 && st.st_uid != ::geteuid()) {
        errno = ELOOP;
        return -1;
    }
    return ::open(pszPath, O_RDWR | OPEN_FLAGS);
}

// Opens a file or directory whose owner or mode is to be changed. Not through a link, nor a file that has
// other names as well.
CUniqueFd clOpenToChange(std::wstring_view svPath) {
    const CXYString<char> csPath = csSystemPath(svPath);
    if (csPath.bEmpty()) {
        return {};
    }
    CUniqueFd clFd(::open(csPath.pszGet(), O_RDONLY | O_NOFOLLOW | OPEN_FLAGS));
    struct stat st {};
    if (!clFd.bValid() || ::fstat(clFd.nGet(), &st) != 0) {
        return {};
    }
    if (S_ISREG(st.st_mode) && st.st_nlink > 1) {
        errno = EMLINK;
        return {};
    }
    return clFd;
}

std::wstring_view svWithoutTrailingSlashes(std::wstring_view sv) {
    const std::size_t nLast = sv.find_last_not_of(L'/');
    return nLast == std::wstring_view::npos ? sv.substr(0, 1) : sv.substr(0, nLast + 1);
}

// The name with backslashes turned, doubled separators and "." components dropped.
CTString csPlainDirectory(std::wstring_view svName) {
    CTString cs;
    std::wstring csTurned(svName);
    std::replace(csTurned.begin(), csTurned.end(), L'\\', L'/');
    std::wstring_view sv = csTurned;
    if (sv.starts_with(L'/')) {
        cs += L'/';
    }
    while (!sv.empty()) {
        const std::wstring_view svPart = sv.substr(0, sv.find(L'/'));
        sv.remove_prefix(std::min(sv.size(), svPart.size() + 1));
        if (!svPart.empty() && svPart != L".") {
            cs += svPart;
            cs += L'/';
        }
    }
    return cs;
}

// Creates one directory; true too when it is there.
bool bMakeDirectory(const char* pszPath) {
    struct stat st {};
    if (::mkdir(pszPath, 0755) == 0) {
        return true;
    }
    if (errno != EEXIST) {
        return false;
    }
    const bool bDirectory = ::stat(pszPath, &st) == 0 && S_ISDIR(st.st_mode);
    errno = bDirectory ? 0 : ENOTDIR;
    return bDirectory;
}

// Creates a directory with those above it.
bool bMakeDirectories(std::wstring_view svPath) {
    const std::wstring_view svName = svWithoutTrailingSlashes(svPath);
    const CXYString<char> csPath = csSystemPath(svName);
    if (csPath.bEmpty()) {
        return false;
    }
    if (bMakeDirectory(csPath.pszGet())) {
        return true;
    }
    const std::wstring_view svAbove = svWithoutTrailingSlashes(CFSPath::stSplit(svName).svDirectory);
    return errno == ENOENT && !svAbove.empty() && svAbove.size() < svName.size() &&
           bMakeDirectories(svAbove) && bMakeDirectory(csPath.pszGet());
}

// The outcome of an operation on a path; a failure is told to the error object, errno stays.
bool bReport(bool bSuccess, std::wstring_view svPath, CXError* pclError) {
    if (!bSuccess && pclError != nullptr) {
        const CErrnoKept clKept;
        pclError->SetSystemErrorParam(static_cast<unsigned>(clKept.nGet()), CTString(svPath).pszGet());
    }
    return bSuccess;
}

}  // namespace

bool CDiskFile::bOpen(std::wstring_view svPath, eMODE eMode, mode_t unPermission) try {
    const CMemoryScope clScope;
    m_clFd.Reset();
    m_bNew = false;
    m_i64Position = 0;
    const CXYString<char> csPath = csSystemPath(svPath);
    if (csPath.bEmpty()) {
        return false;
    }
    switch (eMode) {
        case eMODE::Read: m_clFd.Reset(::open(csPath.pszGet(), O_RDONLY | OPEN_FLAGS)); break;
        case eMODE::ReadWrite: m_clFd.Reset(nOpenInPlace(csPath.pszGet())); break;
        case eMODE::ReadDirectory:
            m_clFd.Reset(::open(csPath.pszGet(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | OPEN_FLAGS));
            break;
        case eMODE::Create: m_clFd.Reset(nCreate(csPath.pszGet(), unPermission, &m_bNew)); break;
    }
    return bIsOpen();
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bEmptiedByCreate(const struct stat& rst, mode_t unPermission) {
    // Others may hold one open that they may write: emptied in place, it would give them what comes.
    const mode_t unOthersWrite = (S_IWGRP | S_IWOTH) & ~unPermission;
    return S_ISREG(rst.st_mode) && rst.st_nlink <= 1 && rst.st_uid == ::geteuid() &&
           (rst.st_mode & unOthersWrite) == 0;
}

bool CDiskFile::bClose() {
    return !bIsOpen() || ::close(m_clFd.nRelease()) == 0;
}

bool CDiskFile::bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) {
    auto* const pbyBuffer = static_cast<unsigned char*>(pBuffer);
    // No file reaches further; the system refuses a read that would.
    nSize = std::min(nSize, static_cast<std::size_t>(INT64_MAX - m_i64Position));
    std::size_t nDone = 0;
    while (nDone < nSize) {
        const ssize_t nGot = ::pread(m_clFd.nGet(), pbyBuffer + nDone, nSize - nDone,
                                     m_i64Position + static_cast<off_t>(nDone));
        if (nGot < 0 && errno == EINTR) {
            continue;
        }
        if (nGot < 0) {
            return false;
        }
        if (nGot == 0) {
            break;
        }
        nDone += static_cast<std::size_t>(nGot);
    }
    m_i64Position += static_cast<std::int64_t>(nDone);
    *pnRead = nDone;
    return true;
}

bool CDiskFile::bWrite(const void* pBuffer, std::size_t nSize) {
    const auto* const pbyBuffer = static_cast<const unsigned char*>(pBuffer);
    std::size_t nDone = 0;
    while (nDone < nSize) {
        const ssize_t nPut = ::pwrite(m_clFd.nGet(), pbyBuffer + nDone, nSize - nDone,
                                      m_i64Position + static_cast<off_t>(nDone));
        if (nPut < 0 && errno == EINTR) {
            continue;
        }
        if (nPut <= 0) {
            return false;
        }
        nDone += static_cast<std::size_t>(nPut);
    }
    m_i64Position += static_cast<std::int64_t>(nDone);
    return true;
}

bool CDiskFile::bSeek(std::int64_t i64Position) {
    if (i64Position < 0) {
        errno = EINVAL;
        return false;
    }
    m_i64Position = i64Position;
    return true;
}

std::int64_t CDiskFile::i64GetLength() {
    struct stat st {};
    return ::fstat(m_clFd.nGet(), &st) == 0 ? st.st_size : -1;
}

bool CDiskFile::bTruncate(std::int64_t i64Length) {
    return ::ftruncate(m_clFd.nGet(), i64Length) == 0;
}

bool CDiskFile::bReserve(std::int64_t i64Length) {
    const std::int64_t i64Now = i64GetLength();
    if (i64Now < 0 || i64Length <= i64Now) {
        return i64Now >= 0;
    }
    // See fallocate(2): blocks behind the end, which stays where it is.
    const int nErrnoBefore = errno;
    int nResult = -1;
    do {
        nResult = ::fallocate(m_clFd.nGet(), FALLOC_FL_KEEP_SIZE, i64Now, i64Length - i64Now);
    } while (nResult != 0 && errno == EINTR);
    if (nResult != 0 && errno != EOPNOTSUPP && errno != ENOSYS) {
        return false;
    }
    errno = nErrnoBefore;
    return true;
}

bool CDiskFile::bSync() {
    return ::fsync(m_clFd.nGet()) == 0;
}

std::time_t CDiskFile::nSystemTime(const STFileTime& rstTime) {
    std::tm st{};
    st.tm_year = rstTime.nAnnee - 1900;
    st.tm_mon = rstTime.nMois - 1;
    st.tm_mday = rstTime.nJour;
    st.tm_hour = rstTime.nHeure;
    st.tm_min = rstTime.nMinute;
    st.tm_sec = rstTime.nSeconde;
    st.tm_isdst = -1;
    return std::mktime(&st);
}

bool CDiskFile::bSetTime(std::time_t nTime) {
    const timespec tabTime[2] = {{nTime, 0}, {nTime, 0}};
    return ::futimens(m_clFd.nGet(), tabTime) == 0;
}

bool CDiskFile::bSetPermission(mode_t unPermission) {
    return ::fchmod(m_clFd.nGet(), unPermission) == 0;
}

bool CDiskFile::bSetOwner(uid_t unUser, gid_t unGroup) {
    return ::fchown(m_clFd.nGet(), unUser, unGroup) == 0;
}

bool CDiskFile::bFileExists(std::wstring_view svPath) try {
    const CMemoryScope clScope;
    struct stat st {};
    return bStat(svPath, &st) && !S_ISDIR(st.st_mode);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bDirectoryExists(std::wstring_view svPath) try {
    const CMemoryScope clScope;
    struct stat st {};
    return bStat(svPath, &st) && S_ISDIR(st.st_mode);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bDelete(std::wstring_view svPath, CXError* pclError) try {
    const CMemoryScope clScope;
    const CXYString<char> csPath = csSystemPath(svPath);
    return bReport(!csPath.bEmpty() && ::unlink(csPath.pszGet()) == 0, svPath, pclError);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bCreateDirectory(std::wstring_view svPath, CXError* pclError) try {
    const CMemoryScope clScope;
    return bReport(bMakeDirectories(svPath), svPath, pclError);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bSameDirectoryName(std::wstring_view svLeft, std::wstring_view svRight) try {
    const CMemoryScope clScope;
    if (svLeft.empty() || svRight.empty()) {
        return false;
    }
    if (csPlainDirectory(svLeft) == csPlainDirectory(svRight)) {
        return true;
    }
    struct stat stLeft {};
    struct stat stRight {};
    return bStat(svLeft, &stLeft) && bStat(svRight, &stRight) && stLeft.st_dev == stRight.st_dev &&
           stLeft.st_ino == stRight.st_ino;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bSetFileOwnerUnix(std::wstring_view svPath, uid_t unUser, gid_t unGroup) try {
    const CMemoryScope clScope;
    const CUniqueFd clFd = clOpenToChange(svPath);
    return clFd.bValid() && ::fchown(clFd.nGet(), unUser, unGroup) == 0;
} catch (const std::exception&) {
    return NoMemory(false);
}

int CDiskFile::Unix_chmod(std::wstring_view svPath, mode_t unPermission) try {
    const CMemoryScope clScope;
    const CUniqueFd clFd = clOpenToChange(svPath);
    return clFd.bValid() ? ::fchmod(clFd.nGet(), unPermission) : -1;
} catch (const std::exception&) {
    return NoMemory(-1);
}

bool CDiskFile::MakePath(CPathBuffer& rszOut, std::wstring_view svDirectory, std::wstring_view svBaseName,
                         std::wstring_view svExtension) try {
    const CMemoryScope clScope;
    CFSPath clPath;
    const bool bMade = clPath.bSet(svDirectory) && clPath.bAppend(svBaseName, svExtension);
    if (!bMade) {
        rszOut[0] = L'\0';
        return false;
    }
    clPath.CopyTo(rszOut);
    return true;
} catch (const std::exception&) {
    rszOut[0] = L'\0';
    return NoMemory(false);
}

bool CDiskFile::bSyncFileSystem(std::wstring_view svDirectory) {
    CDiskFile clDirectory;
    return clDirectory.bOpen(svDirectory, eMODE::ReadDirectory) && ::syncfs(clDirectory.m_clFd.nGet()) == 0;
}

bool CDiskFile::bLoad(std::wstring_view svPath, std::size_t nMax, std::string* pcsContent) try {
    const CMemoryScope clScope;
    CDiskFile clFile;
    if (!clFile.bOpen(svPath, eMODE::Read)) {
        return false;
    }
    // Read rather than asked for: files of /proc and /sys tell no length.
    std::string csContent;
    char szPiece[4096];
    std::size_t nRead = 0;
    do {
        if (!clFile.bRead(szPiece, sizeof szPiece, &nRead)) {
            return false;
        }
        csContent.append(szPiece, nRead);
        if (csContent.size() > nMax) {
            errno = EFBIG;
            return false;
        }
    } while (nRead == sizeof szPiece);
    *pcsContent = std::move(csContent);
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CDiskFile::bFindFirst(std::wstring_view svPattern, unsigned dwMask, CFileSearch* pclSearch) {
    return pclSearch->bFirst(svPattern, dwMask);
}

bool CDiskFile::bFindNext(CFileSearch* pclSearch) {
    return pclSearch->bNext();
}

void CDiskFile::bFindClose(CFileSearch* pclSearch) {
    pclSearch->Close();
}

}  // namespace kalmo
