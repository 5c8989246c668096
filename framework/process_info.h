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

/// Makes the process speak UTF-8: the user's own locale when it is a UTF-8 one, else C.UTF-8. Where neither
/// exists the C locale stays; the conversions of conversion.h do not depend on it. Numbers keep the C form.
void SetLocaleUTF8();

}  // namespace kalmo

#endif
