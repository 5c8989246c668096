#ifndef KALMO_FRAMEWORK_PROFILE_ENCODING_H
#define KALMO_FRAMEWORK_PROFILE_ENCODING_H

#include <string>
#include <string_view>

#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// How a profile file stores its text.
enum class eENCODAGE {
    Octets,  ///< 8-bit: UTF-8, where bytes that are not valid UTF-8 survive reading and writing.
    Large,   ///< UTF-16 little-endian behind the mark FF FE.
};

/// True when the stream begins with the mark FF FE. The stream stays where it was, except that one that was
/// at the start of a marked file is left just behind the mark.
bool bFichierUnicode(IXStream& rclStream);

/// The bytes of one unit of text: 1 or 2.
std::size_t nTailleUnite(eENCODAGE eEncodage);

/// The length in bytes of the line at the start of svBytes, its line feed included; 0 when no line feed is
/// there. The first nSeen bytes, whole units, are known to hold none.
std::size_t nTailleLigne(eENCODAGE eEncodage, std::string_view svBytes, std::size_t nSeen);

/// Bytes of a file to wide text. In a wide file each unit becomes one wide character, half a surrogate pair
/// too: a character beyond U+FFFF is read as two.
CTString csDecode(eENCODAGE eEncodage, std::string_view svBytes);

/// Wide text to the bytes of a file. A character beyond U+FFFF takes two units of a wide file; two characters
/// that are such a pair become the one they stand for in an 8-bit file.
std::string csEncode(eENCODAGE eEncodage, std::wstring_view sv);

}  // namespace kalmo

#endif
