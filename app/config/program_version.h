#ifndef KALMO_APP_CONFIG_PROGRAM_VERSION_H
#define KALMO_APP_CONFIG_PROGRAM_VERSION_H

#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// The version that a program file carries in its version information, "?" without one.
CTString csGetProgramVersion(std::wstring_view svProgram);

/// The same of the running program.
CTString csGetOwnVersion();

}  // namespace kalmo

#endif
