#ifndef KALMO_FRAMEWORK_PROFILE_H
#define KALMO_FRAMEWORK_PROFILE_H

#include "framework/fs_path.h"

/// Profile files: lines of text with "[section]" headers and "key = value" lines, read and written with calls
/// of the Windows shape. The server's configuration and the unattended run's orders are such files.
///
/// Each call opens the file, does its work and closes it; nothing is kept between calls. How lines are read
/// and edited stands in profile_line.h and profile_file.h, the encodings in profile_encoding.h. Section and
/// key names are compared without regard to case. Names ending in A take and give UTF-8, the others wide
/// text.
///
/// Reading never fails: without the file, the section or the key the caller's default comes out. A result is
/// cut to the buffer: at most dwSize - 1 characters (wide characters, or bytes for the A calls, which may cut
/// inside a character) and always a null behind them. The result counts the characters placed, without that
/// null. A null buffer or a size of 0 gives 0 and touches nothing; a null default counts as the empty text.
///
/// The file name goes through __PrivateProfilePatchName.
namespace kalmo {

/// Reads a value. One that is found but empty gives 0 and an empty buffer, not the default. A null pszKey
/// lists the section's keys instead, a null pszSection the file's sections, each name followed by "\r\n"; a
/// listing without a name gives the default.
unsigned GetPrivateProfileStringW(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszDefault,
                                  wchar_t* pszBuffer, unsigned dwSize, const wchar_t* pszFile);
unsigned GetPrivateProfileStringA(const char* pszSection, const char* pszKey, const char* pszDefault,
                                  char* pszBuffer, unsigned dwSize, const char* pszFile);

/// Reads the decimal integer, signed or not, at the start of a value's first 19 characters: 0 when there is
/// none, the nearest int when it is out of range.
int GetPrivateProfileInt(const wchar_t* pszSection, const wchar_t* pszKey, int nDefault,
                         const wchar_t* pszFile);

/// Writes a value, changing the file in place. A null pszValue removes the key, a null pszKey the section
/// with all its lines. A file that is not there is created, 8-bit and with mode 0644 less the umask; a write
/// that is refused or fails leaves no new file, nor does a removal.
/// False when pszSection is null, when a text to be written holds a line break, and when the file cannot be
/// opened, created or written.
bool WritePrivateProfileStringW(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszValue,
                                const wchar_t* pszFile);
bool WritePrivateProfileStringA(const char* pszSection, const char* pszKey, const char* pszValue,
                                const char* pszFile);

inline unsigned GetPrivateProfileString(const wchar_t* pszSection, const wchar_t* pszKey,
                                        const wchar_t* pszDefault, wchar_t* pszBuffer, unsigned dwSize,
                                        const wchar_t* pszFile) {
    return GetPrivateProfileStringW(pszSection, pszKey, pszDefault, pszBuffer, dwSize, pszFile);
}
inline bool WritePrivateProfileString(const wchar_t* pszSection, const wchar_t* pszKey,
                                      const wchar_t* pszValue, const wchar_t* pszFile) {
    return WritePrivateProfileStringW(pszSection, pszKey, pszValue, pszFile);
}

/// The same calls on the per-user file (bGetVLNCONFPath). For a user without an account entry reading gives
/// the default and writing fails.
unsigned GetProfileString(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszDefault,
                          wchar_t* pszBuffer, unsigned dwSize);
int GetProfileInt(const wchar_t* pszSection, const wchar_t* pszKey, int nDefault);
bool WriteProfileString(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszValue);

/// The path that a profile file's name stands for: a bare name lies in the home directory of the real user
/// id, a name with "/" or "\" is a path already; backslashes become slashes. False, with an empty result,
/// when the name is null, the path would have more than 260 characters or the user has no account entry.
bool __PrivateProfilePatchName(const wchar_t* pszName, CPathBuffer& rszOut);

/// The path of the per-user file: ".VLN.conf" in the home directory of the real user id. False, with an empty
/// result, when it would have more than 260 characters or the user has no account entry.
bool bGetVLNCONFPath(CPathBuffer& rszOut);

}  // namespace kalmo

#endif
