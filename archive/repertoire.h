#ifndef KALMO_ARCHIVE_REPERTOIRE_H
#define KALMO_ARCHIVE_REPERTOIRE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "archive/result.h"
#include "framework/disk_file.h"
#include "framework/hash_table.h"
#include "framework/x_stream.h"
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
    /// Backslashes do not separate here: whoever makes the entry has turned them. Of the times' fields the
    /// lowest eight bits are kept, of the year sixteen.
    CRepEntree(CTString csNom, std::uint64_t u64TailleOriginale, std::uint64_t u64TailleCompresse,
               const STTimes& rstTimes, std::uint32_t dwAttribut)
        : m_csNom(std::move(csNom)),
          m_u64TailleOriginale(u64TailleOriginale),
          m_u64TailleCompresse(u64TailleCompresse),
          m_clCreation(rstTimes.stCreation),
          m_clAcces(rstTimes.stAcces),
          m_clModif(rstTimes.stModif),
          m_dwAttribut(dwAttribut) {}

    [[nodiscard]] const CTString& csGetNom() const noexcept { return m_csNom; }
    void SetNom(CTString csNom) noexcept { m_csNom = std::move(csNom); }
    /// Sizes in bytes; the compressed one without the header of an enciphered entry.
    [[nodiscard]] std::uint64_t u64GetTailleOriginale() const noexcept { return m_u64TailleOriginale; }
    [[nodiscard]] std::uint64_t u64GetTailleCompresse() const noexcept { return m_u64TailleCompresse; }
    [[nodiscard]] STTimes stGetTimes() const noexcept {
        return {m_clCreation.stGet(), m_clAcces.stGet(), m_clModif.stGet()};
    }
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
    /// A time in as few bytes as it needs: an archive may have a million entries.
    class CMoment {
      public:
        CMoment() = default;
        explicit CMoment(const STFileTime& rst)
            : m_wAnnee(static_cast<std::uint16_t>(rst.nAnnee)),
              m_tabReste{__by(rst.nMois), __by(rst.nJour), __by(rst.nHeure), __by(rst.nMinute),
                         __by(rst.nSeconde)} {}
        [[nodiscard]] STFileTime stGet() const noexcept {
            return {m_wAnnee, m_tabReste[0], m_tabReste[1], m_tabReste[2], m_tabReste[3], m_tabReste[4]};
        }

      private:
        static unsigned char __by(int n) noexcept { return static_cast<unsigned char>(n); }

        std::uint16_t m_wAnnee = 0;
        std::array<unsigned char, 5> m_tabReste{};  ///< Month, day, hour, minute, second.
    };

    CTString m_csNom;
    std::uint64_t m_u64TailleOriginale = 0;
    std::uint64_t m_u64TailleCompresse = 0;
    CTString m_csPassword;
    CMoment m_clCreation;
    CMoment m_clAcces;
    CMoment m_clModif;
    std::uint32_t m_dwAttribut = 0;
    bool m_bCrypte = false;
};

/// The directory of an archive: its entries by rank, from 0, and the rank by name.
///
/// Owned by the archive object, which fills it when an archive is opened. Names are compared without regard
/// to case, and backslashes in a name that is looked up count as slashes. When several entries have one name
/// the first of them is found.
///
/// Its methods lie in repertoire.cpp; those for the directory as a file in repertoire_file.cpp.
class CRepertoire {
  public:
    CRepertoire() : m_clIndex(BUCKETS_INITIAL) {}

    /// Makes room in the index for that many entries.
    void Reserve(std::size_t nCount) { m_clIndex.Reserve(nCount); }
    /// Adds an entry behind the last one. False when no more ranks are left.
    bool bAjouteEntree(CRepEntree clEntree);
    /// The rank of a name; -1 when it is absent.
    [[nodiscard]] int lRang(std::wstring_view svNom) const;
    /// The rank of the first entry whose name is equal in letter case too; -1 when there is none.
    [[nodiscard]] int lRangCasse(std::wstring_view svNom) const;
    [[nodiscard]] bool bTrouve(std::wstring_view svNom) const { return lRang(svNom) >= 0; }
    /// How many entries there are.
    [[nodiscard]] unsigned dwTaille() const noexcept { return static_cast<unsigned>(m_nCount); }
    /// How many of them are no directory markers.
    [[nodiscard]] unsigned dwNombreFichier() const noexcept { return static_cast<unsigned>(m_nFichier); }
    /// The entry of a rank; null when there is none. Valid until the directory is changed.
    [[nodiscard]] const CRepEntree* pclGetEntree(int nRang) const noexcept;
    void Vide();

    /// Removes an entry; the ranks behind it move down. Nothing happens when there is no such rank.
    void SupprimeElement(int nRang);
    /// Gives an entry another directory part ("a/b", with or without a separator at its end; empty for none)
    /// and keeps its file name. False when there is no such rank.
    bool bChangeChemin(int nRang, std::wstring_view svRepertoire);
    /// Moves the directory markers behind all other entries; both kinds keep their order.
    void ForceRepVideAlaFin();

    /// Replaces the directory by one that eEcrit wrote, at the stream's position. False when the bytes are
    /// not such a directory; it is empty then.
    bool bLit(IXStream& rclStream);
    /// Writes the directory at the file's position: ARCHIVE_OK, ARCHIVE_DISK_FULL or ARCHIVE_WRITE. The
    /// layout stands in repertoire_file.cpp. Passwords are not written.
    eARCHIVE eEcrit(CDiskFile& rclFile) const;

  protected:
    /// Counts anew and makes the index anew.
    void _RecalculeHash();

  private:
    static constexpr std::size_t BUCKETS_INITIAL = 43;
    static constexpr std::size_t PAS_CROISSANCE = 1024;
    /// Grows by whole blocks, so that adding an entry never moves the others.
    using CBloc = std::array<CRepEntree, PAS_CROISSANCE>;

    [[nodiscard]] CRepEntree& __rclEntree(std::size_t nRang) const noexcept {
        return (*m_tabBloc[nRang / PAS_CROISSANCE])[nRang % PAS_CROISSANCE];
    }
    [[nodiscard]] bool __bRang(int nRang) const noexcept {
        return nRang >= 0 && static_cast<std::size_t>(nRang) < m_nCount;
    }

    std::vector<std::unique_ptr<CBloc>> m_tabBloc;
    std::size_t m_nCount = 0;
    std::size_t m_nFichier = 0;
    CTHashTableTi<int> m_clIndex;
};

}  // namespace kalmo

#endif
