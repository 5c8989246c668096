#ifndef KALMO_APP_PILOT_H
#define KALMO_APP_PILOT_H

#include "app/trace.h"
#include "framework/fs_path.h"
#include "framework/xy_string.h"
#include "services/service_manager.h"

namespace kalmo {

class CDataExtractor;
class CUninstallRecord;

/// The unattended run: installs, upgrades or removes one instance as a parameter file says.
///
/// Owned by the program's run. bCheckPilot first; when it is true, Pilot once. Nothing is drawn and no
/// question is asked; a success leaves the marker "Install.log" holding "OK" in the instance's directory,
/// and the trace, when one is asked for, tells every step.
///
/// The parameter file (a profile file):
///   [PILOTAGE]  MAJ         1 upgrade, 2 install, 3 uninstall; anything else (default 4) does nothing
///   [SERVEUR]   Serveur     the instance's name, at most 100 characters; "kalmomanager" for the manager
///               Repertoire  the install directory, absolute, at most 260 characters (install only)
///               Port        the TCP port, default 4900 (install only)
class CPilot {
  public:
    /// Looks for "/PILOT=path" and "/DEBUG=path" among the arguments 1 to nArgc - 1, in any letter case;
    /// the last of each counts. Opens the trace. True when "/PILOT=" was there.
    bool bCheckPilot(int nArgc, char** ppszArgv);
    /// Does the work. Non-zero on success; an unknown "MAJ" is returned as it is.
    int Pilot();
    /// The trace that "/DEBUG=" asked for, for the interactive run as well.
    [[nodiscard]] CTrace& rclGetTrace() noexcept { return m_clTrace; }

  private:
    /// The name of an instance's service or, for "kalmomanager" in any letter case, of the shared manager's.
    static CTString __csServiceName(const CTString& csName);
    /// That service; null when there is none.
    CXPtr_deleteRCV<CService> __pclGetServer(const CTString& csName);
    bool __bInstall();
    /// Files, configuration and the server's own programs of a new instance.
    bool __bInstallInto(CDataExtractor& rclExtractor, const CFSPath& rclInstallDir,
                        const CFSPath& rclDatabaseDir, const CTString& csName);
    bool __bUpgrade();
    bool __bUpgrade(CService& rclService, const CTString& csName);
    bool __bUnInstall();
    /// Takes the service of that name out of the boot sequence and tells its program. When it is gone
    /// already, goes on with what an earlier run noted and did not finish.
    bool __bUnregister(const CTString& csName, CUninstallRecord& rclRecord, CTString* pcsProgram);
    /// Deletes the files of an instance, or the manager's program alone.
    bool __bRemoveFiles(const CTString& csProgram);
    bool __bDelete(const CTString& csPath);
    /// A marker speaks of this run: one that an earlier run left is removed before work begins. False, and
    /// told, when it is there and cannot be removed.
    bool __bForgetSuccess(const CTString& csDir);
    /// Writes the marker. False, and told, when it cannot be written.
    bool __LogSuccess(const CTString& csDir);
    /// Runs one of the server's programs in its installer mode. False only when no shell could run it.
    bool __bRunInstallerMode(const CFSPath& clInstallDir, std::string_view svCommand);
    /// Reads "Serveur". False, and told, when it is empty, too long or cannot be part of a service's name.
    bool __bReadServer(CTString* pcsName);
    /// A text of section "SERVEUR". False, and told, when it is empty or longer than nMax characters.
    bool __bReadText(const wchar_t* pszKey, std::size_t nMax, CTString* pcsValue);
    /// Traces a failure. Returns false.
    bool __bFail(std::wstring_view svWhat, std::wstring_view svWhy);

    CTString m_csPilotPath;
    CTString m_csDebugPath;
    CServiceManager m_clServiceManager;
    bool m_bStays = false;    ///< A unit or script could not be deleted.
    bool m_bGoingOn = false;  ///< An uninstall that an earlier run began: what is gone already is done.
    CTrace m_clTrace;
};

}  // namespace kalmo

#endif
