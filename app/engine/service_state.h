#ifndef KALMO_APP_ENGINE_SERVICE_STATE_H
#define KALMO_APP_ENGINE_SERVICE_STATE_H

#include "framework/xy_string.h"
#include "services/service.h"

/// What the state of a service is called.
namespace kalmo {

/// For programs: "running", "stopped", "starting", "stopping", "failed" or "unknown".
const char* pszStateWord(eSERVICESTATUS eState) noexcept;

/// For people, in their language.
CTString csStateText(eSERVICESTATUS eState);

}  // namespace kalmo

#endif
