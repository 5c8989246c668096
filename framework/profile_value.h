#ifndef KALMO_FRAMEWORK_PROFILE_VALUE_H
#define KALMO_FRAMEWORK_PROFILE_VALUE_H

#include <string_view>

#include "framework/xy_string.h"

/// What the values of profile files mean. Pure functions, for the calls of profile.h and for those who must
/// know beforehand what will be read back.
namespace kalmo {

/// The decimal integer, signed or not, at the start of a value's first 19 characters: 0 when there is none,
/// the nearest int when it is out of range.
int nEntierDeValeur(std::wstring_view svValue);

/// What reading gives back once a value has been written: without the blanks and tabs at its start.
CTString csValeurRelue(std::wstring_view svValue);

}  // namespace kalmo

#endif
