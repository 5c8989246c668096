#ifndef KALMO_APP_UNATTENDED_PILOT_H
#define KALMO_APP_UNATTENDED_PILOT_H

#include "app/engine/trace.h"
#include "app/unattended/orders.h"
#include "app/unattended/run_result.h"
#include "framework/fs_path.h"
#include "framework/xy_string.h"
#include "services/service_manager.h"

namespace kalmo {

class CDataExtractor;
class CRemoval;
class CRunLock;

/// What an unattended run puts into an instance's directory beside what the payload brings: the marker of its
/// success, and the database directory of a new one.
inline constexpr const wchar_t* PSZ_MARKER = L"Install.log";
inline constexpr const wchar_t* PSZ_DATABASE_FOLDER = L"BDD/";

/// The unattended run: installs, upgrades or removes one instance as a parameter file says.
///
/// Owned by the program's run. bCheckPilot first; when it is true, Pilot once. Nothing is drawn and no
/// question is asked; a success leaves the marker "Install.log" holding "OK" in the instance's directory,
/// and the trace, when one is asked for, tells every step.
class CPilot {
  public:
    /// Looks for "/PILOT=path" and "/DEBUG=path", and for "/RESULT=path" and "/RECORD=path", among the
    /// arguments 1 to nArgc - 1, in any letter case; the last of each counts. Opens the trace. True when
    /// "/PILOT=" was there.
    bool bCheckPilot(int nArgc, char** ppszArgv);
    /// Begins the trace: tells version and kind of run.
    void TellKind(bool bUnattended);
    /// Does the work. Non-zero on success; an unknown "MAJ" is returned as it is. From here on standard input
    /// is empty, for the programs that are run as well.
    int Pilot();
    /// Tells the steps of the run that a parameter file orders to the trace, and does none of them: what
    /// stands in the way at a step is not looked for before it. True when the run would succeed.
    bool bRehearse(const CTString& csPilotPath);
    /// The file that an option's value names: as it is given, or in the current directory.
    static CTString csFileOfOption(std::wstring_view svValue);
    /// The name of an instance's service or, for "kalmomanager" in any letter case, of the shared manager's.
    static CTString csServiceName(const CTString& csName);
    /// An eOPERATION as programs are told of it; null for one that does nothing.
    static const char* pszOperationWord(int nOperation);
    /// The file that "/PILOT=" named.
    [[nodiscard]] const CTString& csGetPilotPath() const noexcept { return m_csPilotPath; }
    /// The file that "/RECORD=" named, for the interactive run; empty without one.
    [[nodiscard]] const CTString& csGetRecordPath() const noexcept { return m_csRecordPath; }
    /// The trace that "/DEBUG=" asked for, for the interactive run as well.
    [[nodiscard]] CTrace& rclGetTrace() noexcept { return m_clTrace; }

  private:
    /// That service; null when there is none.
    CXPtr_deleteRCV<CService> __pclGetServer(const CTString& csName);
    /// The run between reading its orders and its result; takes the machine unless it is rehearsed.
    int __nRun(CRunLock& rclLock);
    /// Runs the operation that is ordered, one that there is.
    bool __bCarryOut();
    bool __bInstall();
    /// Whether a service can have the instance's name. What speaks against it has been told.
    bool __bNamePossible();
    /// Whether name and directory are free for a new instance. What speaks against it has been told.
    /// Lists the services to find out.
    bool __bPlaceFree(CServiceList& rtabServer);
    /// Files, configuration and the server's own programs of a new instance.
    bool __bInstallInto(CDataExtractor& rclExtractor, const CFSPath& rclDatabaseDir);
    bool __bUpgrade();
    bool __bUpgrade(CService& rclService);
    bool __bUnInstall();
    /// Deletes the files of an instance, or the manager's program alone.
    static bool __bRemoveFiles(const CTString& csProgram, CRemoval& rclRemoval);
    /// A marker speaks of this run: one that an earlier run left is removed before work begins. False, and
    /// told, when it is there and cannot be removed.
    bool __bForgetSuccess(const CTString& csDir);
    /// Notes about uninstallations in the directory are void: something is installed there.
    void __ForgetUninstall(const CTString& csDir);
    /// Writes the marker. False, and told, when it cannot be written.
    bool __LogSuccess(const CTString& csDir);
    /// Runs one of the server's programs in its installer mode. False only when no shell could run it.
    bool __bRunInstallerMode(std::string_view svCommand);
    /// Traces a failure, and tells it in the run's language. Returns false.
    bool __bFail(std::wstring_view svWhat, std::wstring_view svWhy, const CTString& csShown);

    CTString m_csPilotPath;
    CTString m_csDebugPath;
    CTString m_csResultPath;
    CTString m_csRecordPath;
    STOrders m_stOrders;
    CServiceManager m_clServiceManager;
    CTrace m_clTrace;
    CRunResult m_clResult{m_clTrace};
};

}  // namespace kalmo

#endif
