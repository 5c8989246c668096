#ifndef KALMO_APP_INTERACTIVE_INTERACTIVE_RUN_H
#define KALMO_APP_INTERACTIVE_INTERACTIVE_RUN_H

#include "services/service.h"

/// The interactive run: from the first screen to the last. Every dialog of it is modal; one that the operator
/// cancels ends the run without further messages.
namespace kalmo {

class CDataExtractor;
class CRecorder;
class CTrace;

/// What the operator wants to do.
enum class eACTION : int { Upgrade = 0, Install = 1, Uninstall = 2 };

/// Opens the screen, leads through one action and leaves a clean terminal. Where no screen can be opened,
/// tells so on standard error. csRecordPath: the file that "/RECORD=" names; empty without the option.
void RunInteractive(CTrace& rclTrace, const CTString& csRecordPath);

/// True for root; anybody else has been shown that only root may go on.
bool bRoot();
/// Opens the payload; when that fails, shows it.
bool bDataExtractorInitialize(CDataExtractor* pclExtractor);
/// Asks what to do. False when cancelled.
bool bChooseAction(eACTION* peAction, int bOfferUpgrade);
/// Asks for an installed service and upgrades it (bUpgrade not 0) or uninstalls it.
void ChooseServer(int bUpgrade, CDataExtractor* pclExtractor, CServiceList* ptabServer,
                  const CRecorder& rclRecorder);

/// Shows the payload's licence agreement. True when the operator accepted it. A payload without a licence
/// text, or with one that cannot be read, is a payload error, which has been shown.
bool bLicense(CDataExtractor* pclExtractor);

}  // namespace kalmo

#endif
