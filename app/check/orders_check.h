#ifndef KALMO_APP_CHECK_ORDERS_CHECK_H
#define KALMO_APP_CHECK_ORDERS_CHECK_H

#include <string_view>

#include "app/check/finding.h"

namespace kalmo {

/// Looks at the bytes of a parameter file by themselves, in the way in which a run reads them, for what keeps
/// the operation from being begun and for what is read otherwise than it looks. Of the machine it only asks
/// which init system it has (CServiceManager::bInit comes first), for that decides which names are possible.
///
/// Adds empty, byte-order-mark, crlf, carriage-return, null-character; unknown-section, repeated-section;
/// unknown-key, misplaced-key, unread-line, duplicate-key, unused-key; blank-at-end, quotes,
/// comment-in-value, number-cut; no-operation, missing-key, too-long, relative-directory, bad-port, bad-name.
void CheckOrders(std::string_view svBytes, CFindings& rclFindings);

}  // namespace kalmo

#endif
