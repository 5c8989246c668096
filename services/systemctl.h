#ifndef KALMO_SERVICES_SYSTEMCTL_H
#define KALMO_SERVICES_SYSTEMCTL_H

#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// The one program through which everything under systemd goes; see systemctl(1).
inline constexpr const wchar_t* PSZ_SYSTEMCTL = L"/bin/systemctl";

/// Runs systemctl to its end and appends what it prints to *pcsOutput, which may be null. False when it
/// could not be launched, read or waited for; its exit code does not matter then. pdwExitCode may be null.
bool bRunSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode);

/// The same for a question that systemctl answers at once or, when it hangs or never stops to write, not at
/// all: it gets half a minute and 16 MiB. One that systemd has not answered in time is asked again.
bool bAskSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode);

/// Gives systemctl a command, which may take as long as the service does. True only when it ran and ended
/// with 0. The witness of commands is told of a failure.
///
/// On failure errno is the system's reason when it could not be run, and 0 when it ran: its words tell the
/// reason then, which *pcsSaid gets (their first MAX_SAID bytes) unless it is null.
bool bCommandSystemctl(std::wstring_view svArguments, CXYString<char>* pcsSaid = nullptr);

/// The error number behind the words with which systemctl refuses a command; they are the only way in which
/// it tells. EPERM when it lacked a right, the one whose text of the system the words hold (in English or in
/// the language that the environment asks for), ECANCELED when they hold none. Pure but for that language.
int nReasonInWords(std::string_view svWords);

}  // namespace kalmo

#endif
