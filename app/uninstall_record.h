#ifndef KALMO_APP_UNINSTALL_RECORD_H
#define KALMO_APP_UNINSTALL_RECORD_H

#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// What an unattended uninstall is about to delete, noted in a file of its own before the service is
/// unregistered: from then on nothing else on the machine tells where the instance lies, and an uninstall
/// that was killed could not be finished by running it again.
///
/// A local variable of the unattended run. The file is "/var/lib/kalmoinstall/" + service name +
/// ".uninstall": the name and the program's path in UTF-8, a line each. Where it cannot be written the
/// uninstall goes on without it.
class CUninstallRecord {
  public:
    /// The record of a service by the name that it is looked up with.
    explicit CUninstallRecord(std::wstring_view svService);

    /// Notes the service's own name and its program, an absolute path. On the disk when it returns true,
    /// else not there, with errno set.
    bool bWrite(const CTString& csName, const CTString& csProgram);
    /// What an earlier run noted and did not finish. False when there is nothing, or nothing that makes
    /// sense.
    bool bRead(CTString* pcsName, CTString* pcsProgram) const;
    /// Forgets the uninstall, which is finished or does not concern the present instance. Takes the
    /// directory away with the last record.
    /// False, with errno set, when there is one that cannot be deleted.
    bool bDiscard();

  private:
    CTString m_csPath;
};

}  // namespace kalmo

#endif
