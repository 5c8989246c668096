#ifndef KALMO_FRAMEWORK_JSON_H
#define KALMO_FRAMEWORK_JSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "framework/xy_string.h"

namespace kalmo {

/// What programs are told, in JSON (RFC 8259): docs/schema.json describes each answer. The members of an
/// object keep the order in which they were set. Included by sources alone: it is slow to compile.
using CJson = nlohmann::ordered_json;

/// A text as a value; an empty one is null.
CJson clJsonText(const CTString& cs);

/// The text of a value in UTF-8, indented by two, with a line feed at its end. What is no UTF-8 becomes
/// U+FFFD, control characters are written as escapes: a terminal may be what reads it.
std::string csJsonDump(const CJson& rcl);

}  // namespace kalmo

#endif
