#ifndef KALMO_APP_REMOVAL_REMOVAL_H
#define KALMO_APP_REMOVAL_REMOVAL_H

#include <vector>

#include "app/engine/uninstall_record.h"
#include "framework/xy_string.h"
#include "services/service.h"

/// Taking an instance off the machine: the steps that both kinds of run do alike, and the state of a removal
/// that can be finished by another run.
namespace kalmo {

class CServiceManager;
class CTrace;
class CXError;

/// Whether something has that path, a link that leads nowhere included.
bool bThere(const CTString& csPath);

/// Deletes a file and traces it. A failure fills the error object and leaves its reason in errno.
bool bDeleteFile(const CTString& csPath, CTrace& rclTrace, CXError* pclError);

/// The libraries without which no instance is a whole one: a removal fails where one is missing.
inline constexpr const wchar_t* TAB_NEEDED_LIBRARY[] = {L"tvzdsrv.so", L"tvsqlsrv.so"};

/// The libraries "tv*.so" of an instance in a directory that ends in "/", with their paths, in the order of
/// the directory. What is itself a directory is none.
std::vector<CTString> tabServerLibraries(const CTString& csDirectory);

/// Takes a service out of the boot sequence and traces it, with a unit or script that stays. Arguments and
/// result are those of CService::bRemove.
bool bRemoveService(CService& rclService, CTrace& rclTrace, int* pnStays = nullptr);

/// One uninstallation of an unattended run, which goes on where an earlier one was ended.
///
/// A local variable of that run. bFind, then bUnregister, then bDelete for every file, then Finish.
class CRemoval {
  public:
    /// csName is what the orders call the instance, csService the name of its service. Manager and trace are
    /// borrowed.
    CRemoval(CServiceManager& rclManager, const CTString& csName, const CTString& csService,
             CTrace& rclTrace);

    /// Looks for the service or, when it is gone, for what an earlier run noted and did not finish. False,
    /// and told, when there is neither, or the service is not to be removed.
    bool bFind();
    /// The service's program; a path that is not absolute when the service tells none.
    [[nodiscard]] const CTString& csGetProgram() const noexcept { return m_csProgram; }
    /// Its directory, with its trailing "/"; empty when the service tells no program.
    [[nodiscard]] const CTString& csGetDirectory() const noexcept { return m_csDirectory; }

    /// Notes the uninstallation and takes the service out of the boot sequence, unless that is done already.
    /// A failure is told.
    bool bUnregister();
    /// Deletes a file and tells it; one that is gone already counts as deleted where an earlier run began.
    bool bDelete(const CTString& csPath);
    /// An earlier run's directory is gone: there is nothing left to be done, nor a place for a marker.
    [[nodiscard]] bool bDirectoryLost() const;
    /// Forgets the note. It stays while a unit or script does, for there is still something to do.
    void Finish();

  private:
    [[nodiscard]] std::vector<CTString> __tabDefinition() const;
    void __FinishEarlier(const CTString& csService);

    CServiceManager& m_rclManager;
    CTrace& m_rclTrace;
    CTString m_csName;
    CTString m_csService;
    CUninstallRecord m_clRecord;
    CXPtr_deleteRCV<CService> m_pclService;  ///< Null when an earlier run has unregistered it.
    CTString m_csProgram;
    CTString m_csDirectory;
    bool m_bGoingOn = false;  ///< What is gone already is done.
    int m_nStays = 0;         ///< Why a unit or script could not be deleted.
};

}  // namespace kalmo

#endif
