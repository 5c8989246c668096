#ifndef KALMO_SERVICES_INIT_SCRIPT_H
#define KALMO_SERVICES_INIT_SCRIPT_H

#include <string_view>

#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The assignments in a service's init script that tell its display name and its program's command line.
inline constexpr std::string_view SV_DISPLAY_NAME_MARKER = "Name=\"";
inline constexpr std::string_view SV_PROGRAM_MARKER = "Program=\"";

/// The longest lines, in bytes without the line feed, that are searched for the markers. The two differ on
/// purpose; a script's author can count on each.
inline constexpr std::size_t MAX_DISPLAY_NAME_LINE = 250;
inline constexpr std::size_t MAX_PROGRAM_LINE = 150;

/// The path of a service's script.
inline CTString csScriptPath(std::wstring_view svName) {
    return CTString(L"/etc/init.d/") + svName;
}

/// Reads, from the first line that contains the marker, the text behind it up to the next double quote, or
/// up to the line's end when there is none. UTF-8.
///
/// A line longer than nMaxLine bytes (at most MAX_DISPLAY_NAME_LINE) counts as several lines of that length,
/// so no marker is found across such a border, and a text that goes on behind it ends there: whoever acts on
/// a path makes sure that it is a whole one. The script is read from its start. False, with *pcsValue as it
/// was, when no line has the marker.
bool bReadMarkedText(IXStream& rclScript, std::string_view svMarker, std::size_t nMaxLine,
                     CTString* pcsValue);

}  // namespace kalmo

#endif
