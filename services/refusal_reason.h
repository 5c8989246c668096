#ifndef KALMO_SERVICES_REFUSAL_REASON_H
#define KALMO_SERVICES_REFUSAL_REASON_H

#include <string_view>

namespace kalmo {

/// The error number behind the words with which systemctl refuses a command; they are the only way in which
/// it tells. EPERM when it lacked a right, the one whose text of the system the words hold (in English or in
/// the language that the environment asks for), ECANCELED when they hold none. Pure but for that language.
int nReasonInWords(std::string_view svWords);

}  // namespace kalmo

#endif
