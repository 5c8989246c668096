#ifndef KALMO_APP_INTERACTIVE_UPGRADE_SERVER_H
#define KALMO_APP_INTERACTIVE_UPGRADE_SERVER_H

/// The interactive upgrade of an installed instance.
namespace kalmo {

class CDataExtractor;
class CService;

/// Asks for the telemetry choice where the instance's configuration has none, then upgrades. The payload is
/// open. An operator who cancels leaves everything as it is, and so does an instance that must not be
/// upgraded: what speaks against it is shown.
void UpgradeServer(CDataExtractor* pclExtractor, CService* pclService);

/// Shows the upgrade's window until it is done or given up. nTelemetryOn: 1 or 0.
void DoUpgradeServer(CDataExtractor* pclExtractor, CService* pclService, int nTelemetryOn);

}  // namespace kalmo

#endif
