#ifndef KALMO_ARCHIVE_REPERTOIRE_H
#define KALMO_ARCHIVE_REPERTOIRE_H

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "archive/rep_entree.h"
#include "archive/result.h"
#include "framework/hash_table.h"
#include "framework/x_stream.h"

namespace kalmo {

/// The directory of an archive: its entries by rank, from 0, and the rank by name.
///
/// Owned by the archive object, which fills it when an archive is opened. Names are compared without regard
/// to case, and backslashes in a name that is looked up count as slashes. When several entries have one name
/// the first of them is found.
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
