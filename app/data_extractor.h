#ifndef KALMO_APP_DATA_EXTRACTOR_H
#define KALMO_APP_DATA_EXTRACTOR_H

#include <sys/types.h>

#include <string_view>

#include "archive/tv_win_zip.h"
#include "framework/fs_path.h"

namespace kalmo {

class CTrace;
class CXError;

/// Watches an extraction. Owned by the caller of the extraction, told after each installed file.
class IInstallProgress {
  public:
    IInstallProgress() = default;
    IInstallProgress(const IInstallProgress&) = delete;
    IInstallProgress& operator=(const IInstallProgress&) = delete;
    virtual ~IInstallProgress() = default;
    virtual void FileInstalled() = 0;
};

/// The install engine: the payload archive and what is done with it on the machine.
///
/// One object lives for a whole run. bInit first; then an operation on one install directory. An operation
/// returns true on success; what failed has been told (the trace) when it returns false, and nothing that
/// was done before is undone.
class CDataExtractor : public CTVWinZip {
  public:
    /// rclTrace must live longer than this object.
    explicit CDataExtractor(CTrace& rclTrace);

    /// Opens the payload "kalmoinstall.zip" beside the program's executable and sets the archive password.
    bool bInit();

    /// Extracts the payload into the directory of an instance, over what is there.
    /// piProgress may be null: nothing watches.
    bool bUpgrade(const wchar_t* pszDir, IInstallProgress* piProgress);

    /// The entries of the payload that are files.
    unsigned dwGetNbFile() { return dwNombreFichier(); }

  protected:
    /// Installs every entry but the licence text, in the archive's order. Stops at the first that fails.
    bool _bExtractFile(const wchar_t* pszDir, IInstallProgress* piProgress);
    /// Extracts one entry below the directory, creating the directories of its name, then sets its owner
    /// (root, when asked) and mode. An extraction that fails is tried again for ten seconds: the target may
    /// be a program that is just ending.
    bool _bInstalFile(const wchar_t* pszDir, std::wstring_view svName, mode_t unMode, bool bRootOwner);
    /// Tells a failure with its error object; without one, the reason in errno.
    void _ShowError(const CXError* pclError);
    /// Tells the archive result nCode (an eARCHIVE, or 1001: could not be installed) for an entry.
    void _ProcessZipError(int nCode, std::wstring_view svName, std::wstring_view svPath);

  private:
    CFSPath m_clArchivePath;
    CTrace& m_rclTrace;
};

}  // namespace kalmo

#endif
