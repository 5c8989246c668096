#ifndef KALMO_APP_CHECK_PLACE_CHECK_H
#define KALMO_APP_CHECK_PLACE_CHECK_H

#include "app/check/finding.h"
#include "services/service.h"

namespace kalmo {

struct STOrders;

/// Looks whether name, directory and port of an installation are free, for a new instance. The list is that
/// of ListServer; csService is the name that the new service will have. Nobody is asked but systemd whether a
/// unit is masked.
///
/// Adds name-masked; directory-taken, and what clRefuseDirectory refuses (directory-cut, directory-masked,
/// foreign-program); port-taken by an instance's configuration, port-listened by any process.
/// Of the place for the unit file or script read-only, not-writable, in-the-way.
void CheckPlace(const STOrders& rstOrders, const CTString& csService, CServiceList& rtabServer,
                CFindings& rclFindings);

}  // namespace kalmo

#endif
