#ifndef KALMO_ARCHIVE_REP_ENTREE_H
#define KALMO_ARCHIVE_REP_ENTREE_H

#include <cstdint>
#include <string_view>
#include <utility>

#include "framework/disk_file.h"
#include "framework/xy_string.h"

namespace kalmo {

/// One entry of an archive's directory, as the callers of the archive see it. Owned by the CRepertoire.
class CRepEntree {
  public:
    using STFileTime = CDiskFile::STFileTime;

    struct STTimes {
        STFileTime stCreation;
        STFileTime stAcces;
        STFileTime stModif;
    };

    CRepEntree() = default;
    /// The name is the full one: the directory part, each of its levels ending in "/", and the file name.
    /// Backslashes do not separate here: whoever makes the entry has turned them.
    CRepEntree(CTString csNom, std::uint64_t u64TailleOriginale, std::uint64_t u64TailleCompresse,
               const STTimes& rstTimes, std::uint32_t dwAttribut)
        : m_csNom(std::move(csNom)),
          m_u64TailleOriginale(u64TailleOriginale),
          m_u64TailleCompresse(u64TailleCompresse),
          m_stTimes(rstTimes),
          m_dwAttribut(dwAttribut) {}

    [[nodiscard]] const CTString& csGetNom() const noexcept { return m_csNom; }
    void SetNom(CTString csNom) noexcept { m_csNom = std::move(csNom); }
    /// Sizes in bytes; the compressed one without the header of an enciphered entry.
    [[nodiscard]] std::uint64_t u64GetTailleOriginale() const noexcept { return m_u64TailleOriginale; }
    [[nodiscard]] std::uint64_t u64GetTailleCompresse() const noexcept { return m_u64TailleCompresse; }
    [[nodiscard]] const STTimes& rstGetTimes() const noexcept { return m_stTimes; }
    [[nodiscard]] std::uint32_t dwGetAttribut() const noexcept { return m_dwAttribut; }

    /// Marks the entry as enciphered, or not, and keeps the password that is to open it.
    void SetCrypte(bool bCrypte, const CTString& csPassword);
    [[nodiscard]] bool bCrypte() const noexcept { return m_bCrypte; }
    /// True when the entry can be read with this password as far as is known without trying: it is not
    /// enciphered, or the password is the one kept with it.
    [[nodiscard]] bool bMdpOK(std::wstring_view svPassword) const noexcept;
    /// True for a directory marker: a size of zero, and a name that is empty or ends in "/".
    [[nodiscard]] bool bEstUnFichierFactice() const noexcept;
    /// True when the attributes say that the entry is a directory, whatever its name: by the Unix file type
    /// in their upper half when there is one, else by bit 0x4000.
    [[nodiscard]] bool bRepertoire() const noexcept;
    /// The permission bits that an extracted file gets: those of Unix from the upper half of the attributes
    /// when there are any, else the low nine bits. Never a set-id bit: who wants one sets it.
    [[nodiscard]] mode_t unPermission() const noexcept;

  private:
    CTString m_csNom;
    std::uint64_t m_u64TailleOriginale = 0;
    std::uint64_t m_u64TailleCompresse = 0;
    STTimes m_stTimes;
    CTString m_csPassword;
    std::uint32_t m_dwAttribut = 0;
    bool m_bCrypte = false;
};

}  // namespace kalmo

#endif
