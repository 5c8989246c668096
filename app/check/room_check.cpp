#include "app/check/room_check.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "app/check/finding_text.h"
#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/trace.h"
#include "app/unattended/pilot.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"
#include "framework/disk_file.h"

namespace kalmo {
namespace {

enum ePLACE_TEXTE : int {
    FULL,
    NO_INODES,
    READ_ONLY,
    NO_EXEC,
    NOT_WRITABLE,
    IN_THE_WAY,
    DIRECTORY_IN_THE_WAY
};

// What is written on one file system: now, and at the most so far.
struct STVolume {
    std::string csPath;         // a directory on it
    std::uint64_t u64Kept = 0;  // of the blocks that count as free
    struct statvfs st {};
    std::int64_t i64Bytes = 0;
    std::int64_t i64MostBytes = 0;
    std::int64_t i64Inodes = 0;
    std::int64_t i64MostInodes = 0;

    void Add(std::int64_t i64NewBytes, std::int64_t i64NewInodes) {
        i64Bytes += i64NewBytes;
        i64Inodes += i64NewInodes;
        i64MostBytes = std::max(i64MostBytes, i64Bytes);
        i64MostInodes = std::max(i64MostInodes, i64Inodes);
    }
    [[nodiscard]] std::int64_t i64InBlocks(std::uint64_t u64Size) const {
        const std::uint64_t u64Block = std::max<std::uint64_t>(st.f_frsize, 1);
        return static_cast<std::int64_t>((u64Size + u64Block - 1) / u64Block * u64Block);
    }
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

class CRoomCheck {
  public:
    explicit CRoomCheck(CFindings& rclFindings) : m_rclFindings(rclFindings) {}

    // The file system of a directory, whose path ends in "/"; one that is missing is going to be made. Null,
    // and told, when it cannot be.
    STVolume* pstDirectory(const std::string& csPath);
    // A file is going to be written.
    void File(const std::string& csPath, std::uint64_t u64Size);
    // Something else is where a directory or a file is going to be.
    void InTheWay(std::string_view svPath, int nText) {
        constexpr std::size_t ENOUGH = 100;
        if (m_tabTold.size() < ENOUGH && m_tabTold.emplace(svPath).second) {
            __Tell("in-the-way", nText, csQuoted(csFromUTF8(svPath)));
        }
    }
    void Judge(const std::string& csInstallDir);

  private:
    template <class... TArg>
    void __Tell(const char* pszCode, int nText, const TArg&... arg) {
        m_rclFindings.Add(eSEVERITY::Error, pszCode, csFindingText(TEXTE_CHECK_PLACE, nText, arg...));
    }
    STVolume* __pstVolume(const std::string& csPath, dev_t unDevice);
    void __JudgeVolume(const STVolume& rst);

    CFindings& m_rclFindings;
    std::map<dev_t, STVolume> m_tabVolume;
    std::map<std::string, STVolume*> m_tabDirectory;
    std::set<std::string, std::less<>> m_tabTold;
};

STVolume* CRoomCheck::__pstVolume(const std::string& csPath, dev_t unDevice) {
    const auto [it, bNew] = m_tabVolume.try_emplace(unDevice);
    if (bNew) {
        it->second.csPath = csPath;
        ::statvfs(csPath.c_str(), &it->second.st);
        it->second.u64Kept = u64KeptBlocks(unDevice);
    }
    return &it->second;
}

STVolume* CRoomCheck::pstDirectory(const std::string& csPath) {
    const auto [it, bNew] = m_tabDirectory.try_emplace(csPath, nullptr);
    if (!bNew) {
        return it->second;
    }
    struct stat st {};
    struct stat stLink {};
    const std::string csName = csPath.size() > 1 ? csPath.substr(0, csPath.size() - 1) : csPath;
    const bool bThere = ::stat(csName.c_str(), &st) == 0;
    STVolume* pstVolume = nullptr;
    if (bThere && S_ISDIR(st.st_mode)) {
        pstVolume = __pstVolume(csPath, st.st_dev);
        struct statx stMore {};
        const bool bFixed = ::statx(AT_FDCWD, csName.c_str(), 0, STATX_TYPE, &stMore) == 0 &&
                            (stMore.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
        if (bFixed ||
            (::faccessat(AT_FDCWD, csName.c_str(), W_OK | X_OK, AT_EACCESS) != 0 && errno != EROFS)) {
            __Tell("not-writable", NOT_WRITABLE, csQuoted(csFromUTF8(csName)));
        }
    } else if (bThere || ::lstat(csName.c_str(), &stLink) == 0) {
        InTheWay(csName, IN_THE_WAY);
    } else if (const std::string csAbove = csParent(csPath); !csAbove.empty()) {
        pstVolume = pstDirectory(csAbove);
        if (pstVolume != nullptr) {
            pstVolume->Add(pstVolume->i64InBlocks(1), 1);
        }
    }
    m_tabDirectory[csPath] = pstVolume;
    return pstVolume;
}

void CRoomCheck::File(const std::string& csPath, std::uint64_t u64Size) {
    constexpr std::int64_t STAT_BLOCK = 512;
    STVolume* const pst = pstDirectory(csParent(csPath));
    if (pst == nullptr) {
        return;
    }
    struct stat st {};
    if (::lstat(csPath.c_str(), &st) != 0) {
        pst->Add(pst->i64InBlocks(u64Size), 1);
        return;
    }
    if (S_ISDIR(st.st_mode)) {
        InTheWay(csPath, DIRECTORY_IN_THE_WAY);
        return;
    }
    // A file with another name stays on the disk under that one, and so does what lies elsewhere.
    struct stat stParent {};
    const bool bFreed =
        ::stat(csParent(csPath).c_str(), &stParent) == 0 && stParent.st_dev == st.st_dev && st.st_nlink <= 1;
    pst->Add(pst->i64InBlocks(u64Size) - (bFreed ? st.st_blocks * STAT_BLOCK : 0), bFreed ? 0 : 1);
}

void CRoomCheck::__JudgeVolume(const STVolume& rst) {
    const CTString csPath = csQuoted(csFromUTF8(rst.csPath));
    if ((rst.st.f_flag & ST_RDONLY) != 0) {
        __Tell("read-only", READ_ONLY, csPath);
        return;
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
        __Tell("disk-full", FULL, csPath, csMegaBytes(u64Needed + ALMOST_ONE), csMegaBytes(u64Free));
    }
    const std::uint64_t u64FreeInodes = bRoot ? rst.st.f_ffree : rst.st.f_favail;
    const auto u64Inodes = static_cast<std::uint64_t>(rst.i64MostInodes);
    if (rst.st.f_files != 0 && u64Inodes > u64FreeInodes) {
        __Tell("inodes-full", NO_INODES, csPath, std::to_wstring(u64Inodes), std::to_wstring(u64FreeInodes));
    }
}

void CRoomCheck::Judge(const std::string& csInstallDir) {
    for (const auto& [unDevice, rstVolume] : m_tabVolume) {
        __JudgeVolume(rstVolume);
    }
    const auto it = m_tabDirectory.find(csInstallDir);
    if (it != m_tabDirectory.end() && it->second != nullptr && (it->second->st.f_flag & ST_NOEXEC) != 0) {
        __Tell("noexec", NO_EXEC, csQuoted(csFromUTF8(it->second->csPath)));
    }
}

}  // namespace

void CheckRoom(const CDataExtractor& rclExtractor, const CFSPath& rclDirectory, bool bNew,
               CFindings& rclFindings) {
    CRoomCheck clRoom(rclFindings);
    const std::string csRoot(rclDirectory.csGetUTF8().svGet());
    if (clRoom.pstDirectory(csRoot) == nullptr) {
        return;
    }
    if (bNew) {
        clRoom.pstDirectory(csRoot + std::string(csToUTF8(PSZ_DATABASE_FOLDER).svGet()));
    }
    const CRepertoire& rclRepertoire = rclExtractor.rclGetRepertoire();
    for (int nRang = 0; nRang < static_cast<int>(rclRepertoire.dwTaille()); ++nRang) {
        const CRepEntree& rclEntree = *rclRepertoire.pclGetEntree(nRang);
        const CTString csName = CDataExtractor::csInstalledName(rclEntree);
        CFSPath clTarget;
        const eARCHIVE eCode =
            csName.bEmpty() ? ARCHIVE_BAD : eVerifieChemin(rclDirectory.svGet(), csName, &clTarget);
        if (eCode == ARCHIVE_CREATE && errno != ENAMETOOLONG) {
            const CTString csPath = rclDirectory.csGet() + CFSPath::stSplit(csName).svDirectory;
            clRoom.InTheWay(csToUTF8(csPath).svGet(), IN_THE_WAY);
        }
        if (eCode != ARCHIVE_OK) {
            continue;  // The payload's own faults are told with it.
        }
        const std::string csTarget(clTarget.csGetUTF8().svGet());
        const std::uint64_t u64Size = rclEntree.u64GetTailleOriginale();
        if (u64Size == 0 && rclEntree.bRepertoire()) {
            clRoom.pstDirectory(csTarget + "/");
        } else {
            clRoom.File(csTarget, u64Size);
        }
    }
    // A few lines each; the configuration is changed in place where there is one.
    CPathBuffer szConfPath;
    if (bNew && bConfPath(rclDirectory.svGet(), szConfPath)) {
        clRoom.File(std::string(csToUTF8(szConfPath).svGet()), 1);
    }
    clRoom.File(csRoot + std::string(csToUTF8(PSZ_MARKER).svGet()), 1);
    clRoom.Judge(csRoot);
}

}  // namespace kalmo
