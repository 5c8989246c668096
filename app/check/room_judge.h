#ifndef KALMO_APP_CHECK_ROOM_JUDGE_H
#define KALMO_APP_CHECK_ROOM_JUDGE_H

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "app/check/finding.h"

namespace kalmo {

/// Collects what a run makes, writes and deletes, and judges whether the file systems let it.
///
/// A local variable of a part of the check. Paths are absolute and in UTF-8, those of directories end in "/".
/// What stands in the way of one of them is added at once, what takes their sum by Judge.
class CRoomJudge {
  public:
    explicit CRoomJudge(CFindings& rclFindings) : m_rclFindings(rclFindings) {}

    /// A directory is needed; one that is missing is going to be made. False when it cannot be.
    bool bDirectory(const std::string& csPath) { return __pstDirectory(csPath) != nullptr; }
    /// Files are going to be made in a directory that may be there, or deleted too.
    void Inside(const std::string& csPath, bool bDeleted);
    /// A file is going to be made, or emptied in place, or replaced where that would give its content away.
    void File(const std::string& csPath, std::uint64_t u64Size);
    /// A file is changed in place, as configurations are; made where it is missing.
    void Changed(const std::string& csPath);
    /// A file is going to be deleted, if there is one.
    void Deleted(const std::string& csPath);
    /// The marker of the directory is deleted, and made again in the end.
    void Marker(const std::string& csDirectory);
    /// A link or a file is where a directory is going to be.
    void NoDirectory(const std::string& csPath);
    /// Whether the sums fit, and the programs in the directory can be run.
    void Judge(const std::string& csInstallDir);

    /// Whether something has one of the attributes STATX_ATTR_... of statx(2).
    static bool bAttribute(const std::string& csPath, std::uint64_t u64Attributes);

  private:
    // What is written on one file system: now, and at the most so far.
    struct STVolume {
        std::string csPath;         // a directory on it
        std::uint64_t u64Kept = 0;  // of the blocks that count as free
        struct statvfs st {};
        std::int64_t i64Bytes = 0;
        std::int64_t i64MostBytes = 0;
        std::int64_t i64Inodes = 0;
        std::int64_t i64MostInodes = 0;

        void Add(std::int64_t i64NewBytes, std::int64_t i64NewInodes);
        [[nodiscard]] std::int64_t i64InBlocks(std::uint64_t u64Size) const;
    };

    template <class... TArg>
    void __Tell(const char* pszCode, int nText, const std::string& csPath, const TArg&... arg);
    void __TellOnce(const char* pszCode, int nText, const std::string& csPath);
    void __TellReadOnly(const std::string& csPath);
    void __InPlace(const std::string& csPath, const struct stat& rst);
    STVolume* __pstDirectory(const std::string& csPath);
    STVolume* __pstVolume(const std::string& csPath, dev_t unDevice);
    void __JudgeVolume(const STVolume& rst);

    CFindings& m_rclFindings;
    std::map<dev_t, STVolume> m_tabVolume;
    std::map<std::string, STVolume*> m_tabDirectory;
    std::set<std::string> m_tabTold;
    std::set<std::uint64_t> m_tabReadOnly;  // the mounts that have been told
};

}  // namespace kalmo

#endif
