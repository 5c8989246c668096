#ifndef KALMO_APP_RECORD_RECORDER_H
#define KALMO_APP_RECORD_RECORDER_H

#include <string_view>

#include "app/engine/data_extractor.h"
#include "app/unattended/orders.h"
#include "services/service.h"

namespace kalmo {

class CTrace;

/// What the option "/RECORD=" asks of the interactive run: a parameter file that repeats unattended what was
/// done. Without the option it does nothing.
///
/// A local variable of the run, lent to everything that changes the machine, which tells it what it has done:
/// once, when all of it went well, and while a hang-up is ignored. A file that cannot be written, or not so
/// that the unattended run reads what was done, is shown to the operator, and the file stays as it was.
class CRecorder {
  public:
    /// csPath: the file, empty without the option. The trace is borrowed.
    CRecorder(const CTString& csPath, CTrace& rclTrace) : m_csPath(csPath), m_rclTrace(rclTrace) {}

    /// Whether the file can be written, as far as that is known before anything is done. Otherwise the
    /// operator has been shown why not.
    [[nodiscard]] bool bReady() const;

    void Installed(std::wstring_view svDir, const CDataExtractor::STInstallParam& rstParam) const;
    /// nTelemetryOn: 1 or 0, as it was written into the configuration.
    void Upgraded(const CService& rclService, int nTelemetryOn) const;
    void Uninstalled(const CService& rclService) const;

  private:
    /// Writes the file. csRemark: what stands above the orders, lines for people. bNameKept: the name means
    /// in orders what it means here.
    void __Write(const CTString& csRemark, const STOrders& rst, bool bNameKept) const;
    /// The same for an operation on a service that was installed.
    void __Write(const CTString& csRemark, int nOperation, const CService& rclService) const;

    CTString m_csPath;
    CTrace& m_rclTrace;
};

}  // namespace kalmo

#endif
