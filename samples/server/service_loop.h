#ifndef KALMO_SAMPLES_SERVER_SERVICE_LOOP_H
#define KALMO_SAMPLES_SERVER_SERVICE_LOOP_H

#include <functional>
#include <string>
#include <string_view>

#include "framework/unique_fd.h"

namespace kalmo::sample {

/// A socket that listens on a TCP port of every address. Not valid when the port cannot be had.
CUniqueFd clListenTcp(int nPort);
/// A socket that listens at a path, which is replaced.
CUniqueFd clListenUnix(const char* pszPath);

/// Everything that the socket at a path answers. False when nobody listens there.
bool bAskUnix(const char* pszPath, std::string* pcsAnswer);

/// What a service says to those who connect.
struct STConversation {
    std::function<std::string()> fnGreeting;  ///< Said at once.
    /// The answer to the first line that a client sends, which is given without its end; then the client is
    /// hung up on. No function: it is hung up on after the greeting.
    std::function<std::string(std::string_view)> fnAnswer = {};
    std::function<void()> fnReload = [] {};  ///< Called on SIGHUP.
};

/// Holds the conversation with every client until SIGTERM or SIGINT. Nobody is waited for: lines may come
/// late, in pieces or never.
void ServeUntilTerminated(const CUniqueFd& clListener, const STConversation& rst);

}  // namespace kalmo::sample

#endif
