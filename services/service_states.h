#ifndef KALMO_SERVICES_SERVICE_STATES_H
#define KALMO_SERVICES_SERVICE_STATES_H

#include <vector>

#include "services/service.h"

namespace kalmo {

/// The state of every service of a list, in its order, as CService::eGetStatus tells it;
/// eServiceUnknown for one that cannot be asked. For whoever wants to know of all: systemd is asked for many
/// at once, scripts one after the other.
std::vector<eSERVICESTATUS> tabGetStatus(const CServiceList& rtabService);

}  // namespace kalmo

#endif
