#ifndef KALMO_APP_ENGINE_DATA_EXTRACTOR_H
#define KALMO_APP_ENGINE_DATA_EXTRACTOR_H

#include <sys/types.h>

#include <string>
#include <string_view>

#include "archive/tv_win_zip.h"
#include "framework/fs_path.h"

namespace kalmo {

/// The entry of the payload with the licence text, which is shown and never installed.
inline constexpr const wchar_t* PSZ_LICENCE = L"license.txt";

class CTrace;
class CXError;
class _CXErrorModule604;
class IInstallProgress;
class IUpgradeProgress;

/// The install engine: the payload archive and what is done with it on the machine.
///
/// One object lives for a whole run. bInit first; then an operation on one install directory. An operation
/// returns true on success; what failed has been told when it returns false (in the trace, and to the view of
/// the run), and nothing that was done before is undone. It draws nothing itself: the windows of the
/// interactive run see what it tells them of its progress, and may be null.
///
/// Its methods lie in data_extractor.cpp; those for bInstall and its steps in data_extractor_install.cpp.
class CDataExtractor : public CTVWinZip {
  public:
    /// The settings of a new instance.
    struct STInstallParam {
        CTString csServerName;
        CTString csPort;        ///< The TCP port as decimal digits.
        CTString csDaemonUser;  ///< The system account that runs the server; empty stands for root.
        CTString csAdminAccount{L"Admin"};
        CTString csAdminPassword;  ///< May be empty.
        int nTelemetry = 0;        ///< 1 on, 0 off.
    };

    /// rclTrace must live longer than this object.
    explicit CDataExtractor(CTrace& rclTrace);

    /// Opens the payload "kalmoinstall.zip" beside the program's executable and sets the archive password.
    bool bInit();

    /// Installs a new instance: directories, files, configuration, system account, and the server's programs
    /// in their installer mode, which register and start the services. Ends with a box that tells the result.
    /// pszDbRoot is the database root; one that begins with "%%EXE%%" lies in the install directory.
    bool bInstall(const wchar_t* pszDir, const wchar_t* pszDbRoot, const STInstallParam& rstParam,
                  IInstallProgress* pclProgress);

    /// How many bytes too many the command has that tells the server's program in a directory its
    /// administrator account; 0 when it fits.
    static std::size_t nCommandExcess(const wchar_t* pszDir, const STInstallParam& rstParam);

    /// Extracts the payload into the directory of an instance, over what is there, and writes the operator's
    /// telemetry choice into its configuration file. Without one the configuration stays as it is.
    bool bUpgrade(const wchar_t* pszDir, IUpgradeProgress* pclProgress);

    /// Puts what was installed into a directory onto the disk: called once, after the last file and before
    /// any service starts, so that a power cut leaves no started service and no success without its files.
    bool bSync(const wchar_t* pszDir);

    /// What an entry is installed as, below the directory: its name, the manager's program in fixed letters.
    /// Empty for the licence text, which is not installed.
    static CTString csInstalledName(const CRepEntree& rclEntree);
    /// What an archive result nCode (an eARCHIVE, or 1001: could not be installed) for an entry means, for
    /// the operator. The system's reason is taken from errno.
    [[nodiscard]] CTString csZipError(int nCode, std::wstring_view svName, std::wstring_view svPath) const;

    /// The number of entries in the payload.
    [[nodiscard]] unsigned dwGetNbFile() const { return rclGetRepertoire().dwTaille(); }
    [[nodiscard]] CTrace& rclGetTrace() const noexcept { return m_rclTrace; }

  protected:
    /// Installs every entry but the licence text, in the archive's order, and tells of each. Stops at the
    /// first that fails.
    bool _bExtractFile(const wchar_t* pszDir, IInstallProgress* pclProgress);
    /// Extracts one entry below the directory, creating the directories of its name, then sets its owner
    /// (root, when asked) and mode. An extraction that fails is tried again for ten seconds: the target may
    /// be a program that is just ending.
    bool _bInstalFile(const wchar_t* pszDir, std::wstring_view svName, mode_t unMode, bool bRootOwner);
    /// Creates the system account unless it exists, and writes it into the configuration; for root, or an
    /// empty name, takes the key out. An account that cannot be created is told and written all the same.
    void _SetDaemonUser(const CTString& csUser, const wchar_t* pszConfPath, IInstallProgress* pclProgress);
    /// Shows a failure: what its error object says or, without one, the reason in errno.
    void _ShowError(const CXError* pclError);
    /// Shows the log that the server's programs left in the install directory, or that there is none.
    void _ShowErrorLog(const wchar_t* pszDir);
    /// Shows what such a result means.
    void _ProcessZipError(int nCode, std::wstring_view svName, std::wstring_view svPath);
    /// Gives what is being installed its owner and mode, and keeps what failed. Always true then.
    bool _bTermine(CDiskFile& rclFile, mode_t unPermission) override;

  private:
    /// Tells where an entry would be installed.
    bool __bRehearseFile(const wchar_t* pszDir, std::wstring_view svName);
    /// Fills the error object of such a result.
    void __MakeZipError(int nCode, std::wstring_view svName, std::wstring_view svPath,
                        _CXErrorModule604* pclError) const;
    bool __bCreateDirectory(std::wstring_view svDir);
    /// Runs one of the server's programs in its installer mode; false, and the log has been shown, when that
    /// failed. The arguments behind svShown, with a password in them, do not get into the trace.
    bool __bRunServerProgram(const CFSPath& rclDir, std::string_view svShown, std::string_view svHidden);
    /// The name and arguments of the server's program in its installer mode; behind them, what nobody may
    /// see.
    static void __AddInstallerMode(const STInstallParam& rstParam, std::string* pcsShown,
                                   std::string* pcsHidden);
    /// Appends a password, enciphered for the account.
    static void __AddCryptPassword(const STInstallParam& rstParam, std::string* pcsCommand);

    /// What the entry that is being installed is to be given, and what became of that.
    struct STTermine {
        mode_t unMode = 0;  ///< 0: what the entry says, for one that is not being installed.
        bool bRootOwner = false;
        const wchar_t* pszFailed = nullptr;  ///< What could not be set; null as long as nothing failed.
        int nError = 0;
    };

    STTermine m_stTermine;
    CFSPath m_clArchivePath;
    CTrace& m_rclTrace;
};

}  // namespace kalmo

#endif
