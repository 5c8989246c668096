#ifndef KALMO_FRAMEWORK_FS_PATH_H
#define KALMO_FRAMEWORK_FS_PATH_H

#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// The longest path, in wide characters, without the terminating null.
inline constexpr std::size_t TAILLE_MAX_PATH = 260;

/// A buffer that takes any path: the characters and the terminating null.
using CPathBuffer = wchar_t[TAILLE_MAX_PATH + 1];

/// The parts of a path, all views into the path that was split. "/" and "\" separate alike.
struct STPathParts {
    std::wstring_view svDirectory;  ///< Up to and including the last separator; empty without one.
    std::wstring_view svFileName;   ///< Behind the last separator.
    std::wstring_view svBaseName;   ///< The file name without its extension.
    std::wstring_view svExtension;  ///< Behind the last "." of the file name, without it; may be empty.
};

/// A path of at most 260 characters with "/" as separator.
///
/// A path that would be longer, or hold a null character, is refused: the operation returns false and the
/// path stays as it was, so that a cut path is never used by accident.
class CFSPath {
  public:
    CFSPath() = default;

    /// Takes a whole path; backslashes become slashes.
    [[nodiscard]] bool bSet(std::wstring_view svPath);
    /// Joins a name to this path, with a "/" between them unless the path ends in one.
    [[nodiscard]] bool bAppend(std::wstring_view svName);
    /// Joins a name and an extension: bAppend(name + "." + extension), the name alone for an empty extension.
    [[nodiscard]] bool bAppend(std::wstring_view svBaseName, std::wstring_view svExtension);
    /// Ensures that a non-empty path ends in "/".
    [[nodiscard]] bool bAddTrailingSlash();
    /// Cuts the path behind its last "/"; a path without one becomes empty.
    void KeepDirectory();

    [[nodiscard]] const wchar_t* pszGet() const noexcept { return m_csPath.pszGet(); }
    [[nodiscard]] std::wstring_view svGet() const noexcept { return m_csPath.svGet(); }
    [[nodiscard]] const CTString& csGet() const noexcept { return m_csPath; }
    [[nodiscard]] bool bEmpty() const noexcept { return m_csPath.bEmpty(); }
    /// The path in the encoding of the file system.
    [[nodiscard]] CXYString<char> csGetUTF8() const;
    /// Copies the path, which always fits.
    void CopyTo(CPathBuffer& rszOut) const noexcept;

    [[nodiscard]] static STPathParts stSplit(std::wstring_view svPath) noexcept;

  private:
    CTString m_csPath;
};

}  // namespace kalmo

#endif
