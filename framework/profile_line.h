#ifndef KALMO_FRAMEWORK_PROFILE_LINE_H
#define KALMO_FRAMEWORK_PROFILE_LINE_H

#include <optional>
#include <string_view>

#include "framework/xy_string.h"

/// What one line of a profile file says: pure functions over the line's text, which ends with its line feed
/// when it has one. Names are compared without regard to case. A blank is a space; a tab counts only where
/// it is named. Views that come out point into the line.
///
/// Reading and writing look at a line differently, on purpose: a reader cuts the blanks at its start first
/// (svCutBlanks), a writer takes it as it stands.
namespace kalmo {

/// The line without the blanks at its start.
std::wstring_view svCutBlanks(std::wstring_view svLine);

/// True when the line begins with "[", the section's name and "]". "[AB ]" and "[ABC]" are not headers of AB.
bool bHeaderOf(std::wstring_view svLine, std::wstring_view svSection);

/// True when the line begins with ":".
bool bComment(std::wstring_view svLine);

/// True when the line begins with the key and "=", a blank or a tab follow.
bool bLineOfKey(std::wstring_view svLine, std::wstring_view svKey);

/// The name between "[" at the line's start and the next "]"; none when one of them is missing.
std::optional<std::wstring_view> svSectionName(std::wstring_view svLine);

/// The name before the line's first "=", without the blanks at its end; none when there is no "=".
std::optional<std::wstring_view> svKeyName(std::wstring_view svLine);

/// The value that the line gives to the key: behind the first "=" past the key, without the blanks and tabs
/// at its start, up to the carriage return or line feed. A null character ends it too, so that the text is
/// the same to a caller who counts and one who looks for the null. None when the line is not one of the key
/// or holds no "=" there. Quotes, and blanks at its end, are part of it.
std::optional<std::wstring_view> svValueOf(std::wstring_view svLine, std::wstring_view svKey);

/// The decimal integer, signed or not, at the start of a value's first 19 characters: 0 when there is none,
/// the nearest int when it is out of range.
int nEntierDeValeur(std::wstring_view svValue);

/// What reading gives back once a value has been written: without the blanks and tabs at its start.
CTString csValeurRelue(std::wstring_view svValue);

}  // namespace kalmo

#endif
