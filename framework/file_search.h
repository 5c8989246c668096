#ifndef KALMO_FRAMEWORK_FILE_SEARCH_H
#define KALMO_FRAMEWORK_FILE_SEARCH_H

#include <dirent.h>

#include <memory>
#include <string>
#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// Kinds of directory entries that a search can be limited to: file types as st_mode spells them.
inline constexpr unsigned ATTRIBUT_REPERTOIRE = 0x4000;
inline constexpr unsigned ATTRIBUT_FICHIER = 0x8000;

/// A directory being read, closed with its owner.
struct STCloseDir {
    void operator()(DIR* pclDir) const noexcept { ::closedir(pclDir); }
};
using CUniqueDir = std::unique_ptr<DIR, STCloseDir>;

/// One walk through the entries of a directory that match a pattern.
///
/// Owned by whoever searches. The pattern is a directory and, behind the last "/", a name with "*" and "?".
/// The entries "." and ".." are never found; the order is the directory's own. A directory that cannot be
/// read has no entries.
class CFileSearch {
  public:
    /// Begins and moves to the first entry of the kind dwMask (one of ATTRIBUT_..., or 0 for all kinds).
    /// A symbolic link counts as what it points to. False when there is none, and for a pattern of more than
    /// 260 characters.
    bool bFirst(std::wstring_view svPattern, unsigned dwMask);
    bool bNext();
    void Close();

    /// The entry's name without its directory. Valid until the next move.
    [[nodiscard]] const CTString& csGetName() const noexcept { return m_csName; }
    [[nodiscard]] unsigned dwGetAttributes() const noexcept { return m_dwAttributes; }

  private:
    CUniqueDir m_pclDir;
    std::string m_csPattern;
    unsigned m_dwMask = 0;
    CTString m_csName;
    unsigned m_dwAttributes = 0;
};

}  // namespace kalmo

#endif
