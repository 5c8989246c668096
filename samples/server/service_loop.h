#ifndef KALMO_SAMPLES_SERVER_SERVICE_LOOP_H
#define KALMO_SAMPLES_SERVER_SERVICE_LOOP_H

#include <functional>
#include <string>

#include "framework/unique_fd.h"

namespace kalmo::sample {

/// A socket that listens on a TCP port of every address. Not valid when the port cannot be had.
CUniqueFd clListenTcp(int nPort);
/// A socket that listens at a path, which is replaced.
CUniqueFd clListenUnix(const char* pszPath);

/// Everything that the socket at a path answers. False when nobody listens there.
bool bAskUnix(const char* pszPath, std::string* pcsAnswer);

/// Answers every connection with the text that fnAnswer returns, until SIGTERM or SIGINT.
/// fnReload is called on SIGHUP.
void ServeUntilTerminated(const CUniqueFd& clListener, const std::function<std::string()>& fnAnswer,
                          const std::function<void()>& fnReload);

}  // namespace kalmo::sample

#endif
