#ifndef KALMO_ARCHIVE_ENTRY_PATH_H
#define KALMO_ARCHIVE_ENTRY_PATH_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "archive/result.h"
#include "framework/fs_path.h"
#include "framework/xy_string.h"

/// From the name that an archive gives an entry to a place below a directory.
///
/// The names of an archive are not to be trusted: whoever wrote it chose them, and the installer writes as
/// root. Every caller that turns an entry's name into a path does it here.
namespace kalmo {

/// How many bytes of an entry's name are used; the rest of a longer one is dropped.
inline constexpr std::size_t TAILLE_MAX_NOM_ENTREE = 260;

/// General purpose flags of an entry (APPNOTE 4.4.4).
inline constexpr std::uint16_t FLAG_CRYPTE = 1U << 0;
inline constexpr std::uint16_t FLAG_DESCRIPTEUR = 1U << 3;  ///< CRC and sizes follow the data.
inline constexpr std::uint16_t FLAG_UTF8 = 1U << 11;        ///< The name is UTF-8, not of the OEM code page.

/// The text of a stored name.
CTString csDecodeEntryName(std::string_view svStored, std::uint16_t wFlags);

/// The name with "/" for every separator: the form that names are listed and looked up in.
CTString csWithSlashes(CTString csName);

/// Joins an entry's name to a directory and makes the directories that the name needs below it.
///
/// Slashes and backslashes separate; empty and "." components fall away. The name must stay below the
/// directory: one that is empty, absolute, begins with a drive letter, holds a ".." component or a null
/// character, or names no file at its end, is refused with ARCHIVE_BAD before anything is touched; one that
/// makes a path of more than 260 characters with ARCHIVE_CREATE and errno ENAMETOOLONG.
///
/// The directory itself must exist; it may be reached through symbolic links, for that is the
/// administrator's choice. Directories below it are created with mode 0755 whatever the umask. A symbolic
/// link, or anything else that is no directory, where one is needed gives ARCHIVE_CREATE with the reason in
/// errno, as does a directory that cannot be created.
///
/// *pclOut is the path to extract to; empty unless the result is ARCHIVE_OK.
eARCHIVE eCheminEntree(std::wstring_view svRoot, std::wstring_view svEntryName, CFSPath* pclOut);

/// The same judgement, which makes nothing: directories that are missing, the given one among them, are no
/// failure, since they can be made. A component whose name the file system does not take gives ARCHIVE_CREATE
/// with the reason in errno, ENAMETOOLONG for one that is too long; the given directory's own are not judged.
eARCHIVE eVerifieChemin(std::wstring_view svRoot, std::wstring_view svEntryName, CFSPath* pclOut);

}  // namespace kalmo

#endif
