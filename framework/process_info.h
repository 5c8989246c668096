#ifndef KALMO_FRAMEWORK_PROCESS_INFO_H
#define KALMO_FRAMEWORK_PROCESS_INFO_H

#include "framework/fs_path.h"

namespace kalmo {

/// The path of the running program's executable file. False, with an empty result, when it has more than
/// 260 characters or cannot be told.
bool GetModuleFileNameW(CPathBuffer& rszOut);

/// The home directory of the real user id, from the account database rather than the environment. False
/// when the user has no entry there.
bool bGetHomeDirectory(CFSPath* pclOut);

/// Sets the locale of the process, for the system's messages and for curses: the user's own when that is a
/// UTF-8 one, else C.UTF-8, else the characters of any UTF-8 one that is installed. Where there is none, and
/// where the environment asks for another set of characters, whose terminals would show UTF-8 as rubbish,
/// they are those of the C locale; letters beyond ASCII then show as plain_letter.h says. Numbers are always
/// written as in the C locale. The conversions of conversion.h do not depend on any of it: text that is kept
/// or handed on is UTF-8. PATH must be set, for locale(1).
void SetLocaleUTF8();

}  // namespace kalmo

#endif
