#ifndef KALMO_FRAMEWORK_CONVERSION_H
#define KALMO_FRAMEWORK_CONVERSION_H

#include <string>
#include <string_view>

#include "framework/xy_string.h"

/// Conversions between the wide strings of the program (UTF-32) and the encodings of the outside.
///
/// They use tables of their own: the C library's conversion modules are not on every machine, and the
/// program must work in the bare C locale too.
namespace kalmo {

/// Code page numbers, in the Windows manner.
enum class eCODEPAGE : unsigned {
    OEM = 1,  ///< The OEM code page of archives: IBM 437.
    Ansi1252 = 1252,
    Utf8 = 65001,
};

/// UTF-8 to wide. A byte that belongs to no valid sequence becomes the lone surrogate U+DC00 + byte, which
/// csToUTF8 turns back into that byte: file names that are not valid UTF-8 survive the way there and back.
CTString csFromUTF8(std::string_view sv);

/// Wide to UTF-8. U+DC80 to U+DCFF become their single byte (see csFromUTF8); any other value that is no
/// Unicode scalar value becomes U+FFFD.
CXYString<char> csToUTF8(std::wstring_view sv);

/// UTF-16 units to wide. A lone surrogate becomes U+FFFD.
CTString csFromUTF16(std::u16string_view sv);

/// Wide to UTF-16 units. A value that is no Unicode scalar value becomes U+FFFD.
std::u16string csToUTF16(std::wstring_view sv);

/// Text of the given code page to wide. The bytes that Windows-1252 leaves undefined become the control
/// characters of the same number.
CTString csFromCodePage(eCODEPAGE eCodePage, std::string_view sv);

/// What cMajuscule gives for a character beyond ASCII.
wchar_t cMajusculeUnicode(wchar_t c);

/// A character in upper case, by Unicode's rules whatever the user's locale is (a Turkish one has its own);
/// ASCII alone where the C library has no C.UTF-8.
inline wchar_t cMajuscule(wchar_t c) {
    // Nearly every character of a name or a key; negative ones count as none.
    return c >= 0x80 ? cMajusculeUnicode(c) : c >= L'a' && c <= L'z' ? c - L'a' + L'A' : c;
}

/// Compares without regard to case, character by character through cMajuscule. Negative, 0 or positive.
int nCompareSansCasse(std::wstring_view svLeft, std::wstring_view svRight);

/// True when the two texts are equal without regard to case.
inline bool bEgalSansCasse(std::wstring_view svLeft, std::wstring_view svRight) {
    return svLeft.size() == svRight.size() && nCompareSansCasse(svLeft, svRight) == 0;
}

}  // namespace kalmo

#endif
