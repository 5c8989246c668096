#ifndef KALMO_APP_ENGINE_UNINSTALL_RECORD_H
#define KALMO_APP_ENGINE_UNINSTALL_RECORD_H

#include <string_view>
#include <vector>

#include "framework/xy_string.h"

namespace kalmo {

/// What an unattended uninstall is about to delete, noted in a file of its own before the service is
/// unregistered: from then on nothing else on the machine tells where the instance lies, and an uninstall
/// that was killed could not be finished by running it again.
///
/// A local variable of the unattended run. The file is "/var/lib/kalmoinstall/" + service name +
/// ".uninstall": paths in UTF-8, a line each. Where it cannot be written the uninstall goes on without it.
class CUninstallRecord {
  public:
    struct STNote {
        CTString csService;  ///< The name that the service has.
        CTString csProgram;  ///< Its program, an absolute path.
        std::vector<CTString>
            tabDefinition;  ///< At least one file, without which the machine does not know it.

        /// Whether one of those is still there: a service that cannot be asked about, for whatever reason, is
        /// not gone yet.
        [[nodiscard]] bool bDefined() const;
    };

    /// The record of a service by the name that it is looked up with.
    explicit CUninstallRecord(std::wstring_view svService);

    /// The file of the record, whether it is there or not.
    [[nodiscard]] const CTString& csGetPath() const noexcept { return m_csPath; }
    /// Writes the note. On the disk when it returns true, else not there, with errno set.
    bool bWrite(const STNote& rst);
    /// What an earlier run noted and did not finish. False when there is nothing, or nothing that makes
    /// sense.
    bool bRead(STNote* pst) const;
    /// Forgets the uninstall, which is finished. Takes the directory away with the last record. False, with
    /// errno set, when there is one that cannot be deleted.
    bool bDiscard();

    /// Forgets what was to be deleted in a directory, for an instance is installed there now. Called by
    /// whatever puts files there. True when there was something.
    static bool bForgetDirectory(std::wstring_view svDirectory);

  private:
    CTString m_csPath;
};

}  // namespace kalmo

#endif
