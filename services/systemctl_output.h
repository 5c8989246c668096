#ifndef KALMO_SERVICES_SYSTEMCTL_OUTPUT_H
#define KALMO_SERVICES_SYSTEMCTL_OUTPUT_H

#include <optional>
#include <string_view>
#include <vector>

#include "framework/xy_string.h"
#include "services/service.h"

namespace kalmo {

/// Reading of what systemctl(1) prints. Pure functions over its output in UTF-8, which is not trusted: any
/// bytes give some result.

/// What "systemctl show" tells about one unit.
struct STUnitProperties {
    bool bExists = false;  ///< The unit has a type; systemctl answers for unknown units too, without one.
    std::optional<CTString> csDescription;
    std::optional<CTString> csProgram;  ///< The command line behind "argv[]=" of ExecStart.
    bool bInitScript = false;           ///< The program is a script of /etc/init.d/.
};

/// Reads lines of the form key=value, of which the keys Type, Description and ExecStart in any case count.
///
/// ExecStart is printed as { path=... ; argv[]=PROGRAM ARGUMENT... ; ignore_errors=... }: the program is the
/// text from behind "argv[]=" to right before the next ";", so that it may end in a blank. Of several
/// ExecStart lines with a program the last one counts.
STUnitProperties stReadUnitProperties(std::string_view svOutput);

/// The value in the output of "systemctl show" for one property: what stands behind the first "=", without
/// the last character, which is the line feed. Empty without a "=".
CTString csReadProperty(std::string_view svOutput);

/// The status that the property ActiveState means, in any case. An unknown or empty state is stopped.
eSERVICESTATUS eReadActiveState(std::wstring_view svState);

/// The unit names in the output of "systemctl list-units" and "list-unit-files": of each line that contains
/// ".service" the text from the line's very start up to there, when it begins with svPrefix. An empty prefix
/// keeps every name. The list ends at an empty line or at a line without a line feed, which itself still
/// counts.
std::vector<CTString> tabReadUnitNames(std::string_view svOutput, std::wstring_view svPrefix);

/// The values of the lines "svProperty=value", one for each unit that "systemctl show" was asked about.
std::vector<CTString> tabReadValues(std::string_view svOutput, std::wstring_view svProperty);

/// The units' own names in the output of "systemctl show --property=Id" for some names, aliases among them.
std::vector<CTString> tabReadUnitIds(std::string_view svOutput);

/// True when some name of the list begins with svPrefix behind leading blanks or a status mark, which
/// tabReadUnitNames takes for parts of the name. systemctl prints such a column since version 246, unless it
/// is asked for "--plain".
bool bHasMarkedNames(std::string_view svOutput, std::wstring_view svPrefix);

}  // namespace kalmo

#endif
