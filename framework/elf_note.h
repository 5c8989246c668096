#ifndef KALMO_FRAMEWORK_ELF_NOTE_H
#define KALMO_FRAMEWORK_ELF_NOTE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "framework/x_stream.h"

namespace kalmo {

/// Finds a note in an ELF file: the description of the first note of that owner and type whose description
/// has at most 64 KiB. The layout is that of the System V ABI, "Object Files" and "Note Section"; 32- and
/// 64-bit files of both byte orders are read. Notes are looked for in the segments of type PT_NOTE and, when
/// none of these holds it (a relocatable file has no segments), in the sections of type SHT_NOTE.
///
/// The stream may hold anything, cut short or lying about its sizes: nothing is allocated or walked on the
/// word of a size alone, and at most 4096 notes are looked at. None when there is no such note.
std::optional<std::string> csFindElfNote(IXStream& rclStream, std::string_view svOwner, std::uint32_t dwType);

}  // namespace kalmo

#endif
