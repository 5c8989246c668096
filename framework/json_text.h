#ifndef KALMO_FRAMEWORK_JSON_TEXT_H
#define KALMO_FRAMEWORK_JSON_TEXT_H

#include <optional>
#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// The string that an object in JSON (RFC 8259, in UTF-8) holds under a name; the last one when the name
/// comes more than once. Members of other types and nested values are passed over. None when the text is not
/// one well-formed object, nests deeper than 32 values, has a number that no double holds, or holds no string
/// under that name.
std::optional<CTString> csJsonString(std::string_view svJson, std::string_view svName);

}  // namespace kalmo

#endif
