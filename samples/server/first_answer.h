#ifndef KALMO_SAMPLES_SERVER_FIRST_ANSWER_H
#define KALMO_SAMPLES_SERVER_FIRST_ANSWER_H

#include <string_view>

#include "framework/xy_string.h"
#include "samples/server/install_log.h"

namespace kalmo::sample {

/// Waits until a service that was just started greets whoever connects to its port on this machine. The
/// installer mode of kalmo calls it last: a service that its manager calls started may die a moment later.
///
/// It takes a minute at most, which a service needs on a busy machine only. True, and told in the log,
/// when svGreeting, without the line's end, was the first line that came and the service runs. False, with
/// the reason in the log, when somebody else answers there, when the service has ended for good, which takes
/// ten seconds to tell, or when the time is over. Precondition: CServiceManager::bInit ran.
bool bAwaitGreeting(const CTString& csService, int nPort, std::string_view svGreeting, CInstallLog& rclLog);

}  // namespace kalmo::sample

#endif
