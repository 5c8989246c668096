#ifndef KALMO_APP_CHECK_MACHINE_CHECK_H
#define KALMO_APP_CHECK_MACHINE_CHECK_H

#include "app/check/finding.h"

namespace kalmo {

/// Looks whether the machine lets a run work that does this operation (an eOPERATION; of an installation
/// under the name of an instance it is OP_UPGRADE). CServiceManager::bInit comes first, and PATH is set.
/// Takes nothing and asks no service; the payload is looked at with its entries (CheckPayload).
///
/// Adds not-root, locked, init-unknown, init-no-answer, missing-command.
void CheckMachine(int nOperation, CFindings& rclFindings);

}  // namespace kalmo

#endif
