#ifndef KALMO_FRAMEWORK_DISK_FILE_H
#define KALMO_FRAMEWORK_DISK_FILE_H

#include <sys/stat.h>
#include <sys/types.h>

#include <ctime>
#include <string>

#include "framework/file_search.h"
#include "framework/fs_path.h"
#include "framework/unique_fd.h"
#include "framework/x_stream.h"

namespace kalmo {

class CXError;

/// A file on disk as a stream, and the operations on files and directories by name.
///
/// Paths are wide, at most 260 characters; a longer one fails with errno ENAMETOOLONG. Operations that fail
/// return false (or -1 where stated) and leave the reason in errno. Files are opened close-on-exec, and
/// opening never waits for a named pipe or a device that stands in a file's place.
class CDiskFile final : public IXStream {
  public:
    enum class eMODE {
        Read,           ///< An existing file, for reading.
        ReadWrite,      ///< An existing file, for reading and writing.
        ReadDirectory,  ///< An existing directory itself, for its times and permissions; not through a link.
        Create,         ///< Created, or emptied, for reading and writing; never through a link (see bOpen).
    };

    /// A moment as calendar fields in local time: month and day count from 1.
    struct STFileTime {
        int nAnnee = 0;
        int nMois = 0;
        int nJour = 0;
        int nHeure = 0;
        int nMinute = 0;
        int nSeconde = 0;

        friend bool operator==(const STFileTime&, const STFileTime&) = default;
    };

    /// Opens a file; one that was open is closed first.
    ///
    /// Create empties a regular file in place. Anything else that stands there (a symbolic link, a device,
    /// a file with several names or of another user, a file that group or others may write although
    /// unPermission does not let them) is unlinked first, so that the bytes never land outside the named
    /// place and nobody who holds the old file open can change them. A new file gets the permission bits
    /// unPermission, less the umask. ReadWrite follows a symbolic link only when root or this user made it
    /// (else errno ELOOP).
    bool bOpen(std::wstring_view svPath, eMODE eMode, mode_t unPermission = 0644);
    /// True when the file that is open was made by this bOpen, and was nobody's before.
    [[nodiscard]] bool bIsNew() const noexcept { return m_bNew; }
    /// Whether Create empties what lstat(2) tells so of, rather than put a new file into its place.
    static bool bEmptiedByCreate(const struct stat& rst, mode_t unPermission);
    /// Closes the file. False when the system reports a late write error.
    bool bClose();
    [[nodiscard]] bool bIsOpen() const noexcept { return m_clFd.bValid(); }

    bool bRead(void* pBuffer, std::size_t nSize, std::size_t* pnRead) override;
    bool bWrite(const void* pBuffer, std::size_t nSize) override;
    bool bSeek(std::int64_t i64Position) override;
    [[nodiscard]] std::int64_t i64GetPosition() const override { return m_i64Position; }
    std::int64_t i64GetLength() override;
    bool bTruncate(std::int64_t i64Length) override;
    bool bReserve(std::int64_t i64Length) override;
    /// Waits until the content, or that of a directory, is on the disk.
    bool bSync();
    /// A moment as the system counts it; one that does not exist is moved to one that does. Costs a look at
    /// the machine's time zone.
    static std::time_t nSystemTime(const STFileTime& rstTime);
    /// Sets access and modification time.
    bool bSetTime(std::time_t nTime);
    /// Sets the permission bits; owner and group, which takes set-id bits away.
    bool bSetPermission(mode_t unPermission);
    bool bSetOwner(uid_t unUser, gid_t unGroup);

    /// True when the path names an existing file of any kind but a directory (links are followed).
    static bool bFileExists(std::wstring_view svPath);
    static bool bDirectoryExists(std::wstring_view svPath);
    /// Deletes a file. A failure fills the error object, which may be null, with the system's reason.
    static bool bDelete(std::wstring_view svPath, CXError* pclError = nullptr);
    /// Creates a directory with those above it, mode 0755 less the umask. An existing one is a success. A
    /// failure fills the error object, which may be null, with the system's reason.
    static bool bCreateDirectory(std::wstring_view svPath, CXError* pclError = nullptr);
    /// True when both names mean the same directory: the same name once doubled and trailing separators are
    /// dropped, or two names of one existing directory. An empty name means none.
    static bool bSameDirectoryName(std::wstring_view svLeft, std::wstring_view svRight);
    /// Sets owner and group, and permission bits: of what the path itself names, never through a symbolic
    /// link (errno ELOOP) nor of a file that has other names too (errno EMLINK). Unix_chmod gives 0, or -1 on
    /// failure.
    static bool bSetFileOwnerUnix(std::wstring_view svPath, uid_t unUser, gid_t unGroup);
    static int Unix_chmod(std::wstring_view svPath, mode_t unPermission);
    /// Joins directory, base name and extension (with a "." unless it is empty). False, with an empty result,
    /// when it would be too long.
    static bool MakePath(CPathBuffer& rszOut, std::wstring_view svDirectory, std::wstring_view svBaseName,
                         std::wstring_view svExtension);
    /// Waits until everything written to the file system that holds this directory is on the disk.
    static bool bSyncFileSystem(std::wstring_view svDirectory);
    /// Reads a whole file of at most nMax bytes. False too when it is longer (errno EFBIG).
    static bool bLoad(std::wstring_view svPath, std::size_t nMax, std::string* pcsContent);

    /// Starts a search: the first entry that matches the pattern. See CFileSearch.
    static bool bFindFirst(std::wstring_view svPattern, unsigned dwMask, CFileSearch* pclSearch);
    static bool bFindNext(CFileSearch* pclSearch);
    static void bFindClose(CFileSearch* pclSearch);

  private:
    CUniqueFd m_clFd;
    bool m_bNew = false;
    std::int64_t m_i64Position = 0;
};

}  // namespace kalmo

#endif
