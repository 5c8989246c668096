#include "app/check/room_judge.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "app/check/finding_text.h"
#include "app/config/server_config.h"
#include "app/unattended/pilot.h"
#include "archive/tv_win_zip.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/text.h"

namespace kalmo {
namespace {

enum ePLACE_TEXTE : int {
    FULL,
    NO_INODES,
    READ_ONLY,
    NO_EXEC,
    NOT_WRITABLE,
    IN_THE_WAY,
    DIRECTORY_IN_THE_WAY,
    FILE_FIXED,
    NAME_TOO_LONG
};

// Blocks that ext4 keeps for itself, from root too, and counts as free; see ext4(5) and what its kernel
// documentation says of reserved_clusters.
std::uint64_t u64KeptBlocks(dev_t unDevice) {
    const std::string csNumber = std::to_string(::major(unDevice)) + ":" + std::to_string(::minor(unDevice));
    std::array<char, PATH_MAX> tabLink{};
    const ssize_t nLength =
        ::readlink(("/sys/dev/block/" + csNumber).c_str(), tabLink.data(), tabLink.size());
    const std::string csLink(tabLink.data(), static_cast<std::size_t>(std::max<ssize_t>(nLength, 0)));
    const std::string csName = csLink.substr(csLink.rfind('/') + 1);
    std::string csKept;
    constexpr std::size_t MAX_ATTRIBUTE = 4096;
    if (csName.empty() || !CDiskFile::bLoad(csFromUTF8("/sys/fs/ext4/" + csName + "/reserved_clusters"),
                                            MAX_ATTRIBUTE, &csKept)) {
        return 0;
    }
    return std::strtoull(csKept.c_str(), nullptr, 10);
}

std::string csParent(const std::string& csPath) {
    const std::size_t nSlash = csPath.find_last_of('/', csPath.size() - 2);
    return nSlash == std::string::npos || csPath.size() < 2 ? std::string() : csPath.substr(0, nSlash + 1);
}

CTString csMegaBytes(std::uint64_t u64Bytes) {
    constexpr std::uint64_t MEGA = 1U << 20U;
    return std::to_wstring(u64Bytes / MEGA);
}

std::string csWithoutSlash(const std::string& csPath) {
    return csPath.size() > 1 && csPath.back() == '/' ? csPath.substr(0, csPath.size() - 1) : csPath;
}

std::string csLastName(const std::string& csPath) {
    const std::string csName = csWithoutSlash(csPath);
    return csName.substr(csName.rfind('/') + 1);
}

// 0, or why something cannot be written.
int nWriteError(const std::string& csPath, int nMode) {
    return ::faccessat(AT_FDCWD, csPath.c_str(), nMode, AT_EACCESS) == 0 ? 0 : errno;
}

}  // namespace

void CRoomJudge::STVolume::Add(std::int64_t i64NewBytes, std::int64_t i64NewInodes) {
    i64Bytes += i64NewBytes;
    i64Inodes += i64NewInodes;
    i64MostBytes = std::max(i64MostBytes, i64Bytes);
    i64MostInodes = std::max(i64MostInodes, i64Inodes);
}

std::int64_t CRoomJudge::STVolume::i64InBlocks(std::uint64_t u64Size) const {
    const std::uint64_t u64Block = std::max<std::uint64_t>(st.f_frsize, 1);
    return static_cast<std::int64_t>((u64Size + u64Block - 1) / u64Block * u64Block);
}

template <class... TArg>
void CRoomJudge::__Tell(const char* pszCode, int nText, const std::string& csPath, const TArg&... arg) {
    m_rclFindings.Add(eSEVERITY::Error, pszCode,
                      csFormatLine(TEXTE_CHECK_PLACE, nText, csQuoted(csFromUTF8(csPath)), arg...));
}

void CRoomJudge::__TellOnce(const char* pszCode, int nText, const std::string& csPath) {
    constexpr std::size_t ENOUGH = 100;
    if (m_tabTold.size() < ENOUGH && m_tabTold.insert(csPath).second) {
        __Tell(pszCode, nText, csPath);
    }
}

// Once for a mount: one that is read-only may show a part of a file system that is not.
void CRoomJudge::__TellReadOnly(const std::string& csPath) {
    struct statx st {};
    if (::statx(AT_FDCWD, csPath.c_str(), 0, STATX_MNT_ID, &st) != 0 ||
        m_tabReadOnly.insert(st.stx_mnt_id).second) {
        __TellOnce("read-only", READ_ONLY, csPath);
    }
}

bool CRoomJudge::bAttribute(const std::string& csPath, std::uint64_t u64Attributes) {
    struct statx st {};
    return ::statx(AT_FDCWD, csPath.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &st) == 0 &&
           (st.stx_attributes & u64Attributes) != 0;
}

CRoomJudge::STVolume* CRoomJudge::__pstVolume(const std::string& csPath, dev_t unDevice) {
    const auto [it, bNew] = m_tabVolume.try_emplace(unDevice);
    if (bNew) {
        it->second.csPath = csPath;
        ::statvfs(csPath.c_str(), &it->second.st);
        it->second.u64Kept = u64KeptBlocks(unDevice);
    }
    return &it->second;
}

CRoomJudge::STVolume* CRoomJudge::__pstDirectory(const std::string& csPath) {
    const auto [it, bNew] = m_tabDirectory.try_emplace(csPath, nullptr);
    if (!bNew) {
        return it->second;
    }
    struct stat st {};
    struct stat stLink {};
    const std::string csName = csWithoutSlash(csPath);
    const std::string csAbove = csParent(csPath);
    const int nError = ::stat(csName.c_str(), &st) == 0 ? 0 : errno;
    STVolume* pstVolume = nullptr;
    if (nError == 0 && S_ISDIR(st.st_mode)) {
        pstVolume = __pstVolume(csPath, st.st_dev);
    } else if (nError == 0 || ::lstat(csName.c_str(), &stLink) == 0) {
        NoDirectory(csName);
    } else if (nError != ENOENT && nError != ENOTDIR && nError != ELOOP && nError != ENAMETOOLONG) {
        __TellOnce("not-writable", NOT_WRITABLE, csName);
    } else if (!csAbove.empty()) {
        pstVolume = __pstDirectory(csAbove);
        // A name is looked up in a directory that is there, whose file system knows how long one may be.
        if (pstVolume != nullptr && ::lstat((pstVolume->csPath + csLastName(csPath)).c_str(), &stLink) != 0 &&
            errno == ENAMETOOLONG) {
            __TellOnce("too-long", NAME_TOO_LONG, csName);
            pstVolume = nullptr;
        } else if (pstVolume != nullptr) {
            Inside(csAbove, false);
            pstVolume->Add(pstVolume->i64InBlocks(1), 1);
        }
    }
    m_tabDirectory[csPath] = pstVolume;
    return pstVolume;
}

void CRoomJudge::NoDirectory(const std::string& csPath) {
    __TellOnce("in-the-way", IN_THE_WAY, csPath);
}

void CRoomJudge::Inside(const std::string& csPath, bool bDeleted) {
    const std::string csName = csWithoutSlash(csPath);
    const int nError = nWriteError(csName, W_OK | X_OK);
    if (nError == EROFS) {
        __TellReadOnly(csName);
    } else if ((nError != 0 && nError != ENOENT) ||
               bAttribute(csPath, STATX_ATTR_IMMUTABLE | (bDeleted ? STATX_ATTR_APPEND : 0))) {
        __TellOnce("not-writable", NOT_WRITABLE, csName);
    }
}

// A file that is there is opened for writing.
void CRoomJudge::__InPlace(const std::string& csPath, const struct stat& rst) {
    const int nError = nWriteError(csPath, W_OK);
    if (S_ISDIR(rst.st_mode)) {
        __TellOnce("in-the-way", DIRECTORY_IN_THE_WAY, csPath);
    } else if (nError == EROFS) {
        __TellReadOnly(csPath);
    } else if (nError != 0 || !S_ISREG(rst.st_mode) ||
               bAttribute(csPath, STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) {
        __TellOnce("not-writable", FILE_FIXED, csPath);
    }
}

void CRoomJudge::Deleted(const std::string& csPath) {
    struct stat st {};
    if (::lstat(csPath.c_str(), &st) != 0) {
        return;
    }
    if (S_ISDIR(st.st_mode)) {
        __TellOnce("in-the-way", DIRECTORY_IN_THE_WAY, csPath);
        return;
    }
    Inside(csParent(csPath), true);
    if (bAttribute(csPath, STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND | STATX_ATTR_MOUNT_ROOT)) {
        __TellOnce("not-writable", FILE_FIXED, csPath);
    }
}

void CRoomJudge::File(const std::string& csPath, std::uint64_t u64Size) {
    constexpr std::int64_t STAT_BLOCK = 512;
    const std::string csDirectory = csParent(csPath);
    STVolume* const pst = __pstDirectory(csDirectory);
    if (pst == nullptr) {
        return;
    }
    struct stat st {};
    if (::lstat(csPath.c_str(), &st) != 0) {
        Inside(csDirectory, false);
        pst->Add(pst->i64InBlocks(u64Size), 1);
        return;
    }
    if (S_ISDIR(st.st_mode) || CDiskFile::bEmptiedByCreate(st, CTVWinZip::PERMISSION_PENDANT)) {
        __InPlace(csPath, st);
    } else {
        Deleted(csPath);
    }
    // A file with another name stays on the disk under that one, and so does what lies elsewhere.
    struct stat stParent {};
    const bool bFreed =
        ::stat(csDirectory.c_str(), &stParent) == 0 && stParent.st_dev == st.st_dev && st.st_nlink <= 1;
    pst->Add(pst->i64InBlocks(u64Size) - (bFreed ? st.st_blocks * STAT_BLOCK : 0), bFreed ? 0 : 1);
}

void CRoomJudge::Changed(const std::string& csPath) {
    struct stat st {};
    struct stat stLink {};
    // A link that leads nowhere is replaced; one that somebody else made is not followed.
    if (::stat(csPath.c_str(), &st) != 0 || ::lstat(csPath.c_str(), &stLink) != 0) {
        File(csPath, 1);
    } else if (stLink.st_uid != 0 && stLink.st_uid != ::geteuid() && S_ISLNK(stLink.st_mode)) {
        __TellOnce("not-writable", FILE_FIXED, csPath);
    } else {
        __InPlace(csPath, st);
    }
}

void CRoomJudge::Marker(const std::string& csDirectory) {
    const std::string csPath = csDirectory + std::string(csToUTF8(PSZ_MARKER).svGet());
    if (csFromUTF8(csPath).nGetLength() > TAILLE_MAX_PATH) {
        __TellOnce("too-long", NAME_TOO_LONG, csPath);
        return;
    }
    Inside(csDirectory, false);
    Deleted(csPath);
    File(csPath, 1);
}

void CRoomJudge::__JudgeVolume(const STVolume& rst) {
    if ((rst.st.f_flag & ST_RDONLY) != 0) {
        return;  // told where something would be written
    }
    // Root may use what is kept for it; a file system without a number of blocks or inodes has no limit.
    const bool bRoot = ::geteuid() == 0;
    const std::uint64_t u64Free =
        (bRoot ? rst.st.f_bfree - std::min<std::uint64_t>(rst.st.f_bfree, rst.u64Kept) : rst.st.f_bavail) *
        rst.st.f_frsize;
    // What a file system needs to keep its own books of files is a few blocks.
    constexpr unsigned SPARE_BLOCKS = 4;
    const std::uint64_t u64Needed =
        static_cast<std::uint64_t>(rst.i64MostBytes) + SPARE_BLOCKS * rst.st.f_frsize;
    if (rst.st.f_blocks != 0 && u64Needed > u64Free) {
        constexpr std::uint64_t ALMOST_ONE = (1U << 20U) - 1;
        __Tell("disk-full", FULL, rst.csPath, csMegaBytes(u64Needed + ALMOST_ONE), csMegaBytes(u64Free));
    }
    const std::uint64_t u64FreeInodes = bRoot ? rst.st.f_ffree : rst.st.f_favail;
    const auto u64Inodes = static_cast<std::uint64_t>(rst.i64MostInodes);
    if (rst.st.f_files != 0 && u64Inodes > u64FreeInodes) {
        __Tell("inodes-full", NO_INODES, rst.csPath, std::to_wstring(u64Inodes),
               std::to_wstring(u64FreeInodes));
    }
}

void CRoomJudge::Judge(const std::string& csInstallDir) {
    for (const auto& [unDevice, rstVolume] : m_tabVolume) {
        __JudgeVolume(rstVolume);
    }
    const auto it = m_tabDirectory.find(csInstallDir);
    if (it != m_tabDirectory.end() && it->second != nullptr && (it->second->st.f_flag & ST_NOEXEC) != 0) {
        __Tell("noexec", NO_EXEC, it->second->csPath);
    }
}

}  // namespace kalmo
