#ifndef KALMO_ARCHIVE_TV_WIN_ZIP_H
#define KALMO_ARCHIVE_TV_WIN_ZIP_H

#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>

#include "archive/tv_zip_base.h"
#include "archive/win_zip.h"

namespace kalmo {

/// A ZIP archive: the record reader CWinZip below, files on disk and the installer's codes above.
///
/// The installation engine derives from it; tools and tests use it as it is.
class CTVWinZip : public CTVZipBase {
  public:
    /// Permission bits of a file that is being extracted: nobody else reads one that is not complete.
    static constexpr mode_t PERMISSION_PENDANT = 0600;

    CTVWinZip() = default;

    eARCHIVE eOuvreArchive(std::wstring_view svPath, unsigned dwFlags, std::int64_t i64Base) override;
    eARCHIVE eOuvreArchiveStream(IXStream* pclStream, unsigned dwFlags, std::int64_t i64Base) override;
    eARCHIVE eExtraitFichier(std::wstring_view svNom, std::wstring_view svDestination, unsigned dwReserve,
                             HWND hFenetre, int nReserve, unsigned dwFlags,
                             STInfoAvancement* pstAvancement) override;
    eARCHIVE eExtraitFichier(std::wstring_view svNom, CTLBIN* ptabOut, unsigned dwReserve, HWND hFenetre,
                             int nReserve, STInfoAvancement* pstAvancement) override;
    /// Reads an entry to its end and writes nothing: the result that an extraction of it would have, as far
    /// as that depends on the archive. Letter case of the name does not count.
    eARCHIVE eVerifieFichier(std::wstring_view svNom);
    eARCHIVE eMotDePasse(const wchar_t* pszMotDePasse) override;
    eARCHIVE eGetMotDePasse(CTString& rcsMotDePasse) override;

    /// Reads the central headers into the directory. Opening does so; after that it brings the directory back
    /// to what the archive says. ARCHIVE_NOT_OPEN, or ARCHIVE_CREATE when the file cannot be reopened.
    eARCHIVE eLitRepertoireMono();

    /// The archive's comment.
    [[nodiscard]] const CTString& csGetCommentaire() const noexcept { return m_clZip.csGetCommentaire(); }
    /// What was wrong with the last thing that the record reader refused, for a trace or a test; empty when
    /// nothing was.
    [[nodiscard]] CTString csGetDefaut() const { return m_clZip.csGetDefaut(); }

  protected:
    /// Tells which permission bits nothing that is extracted gets, files and directories, at no moment;
    /// whatever their entries say. None at first.
    void _SetPermissionsInterdites(mode_t unBits) noexcept { m_unInterdites = unBits; }
    /// The last touch on what was extracted, a file that has all its bytes and its time or a directory,
    /// before it is closed: gives it the permissions, those of its entry without the forbidden ones; until
    /// then a file has 0600. Whoever overrides it may give it an owner or other permissions: no file has to
    /// be opened again for that. False when it failed, which counts for directories alone: not every file
    /// system keeps permissions, and of a file the bytes count.
    virtual bool _bTermine(CDiskFile& rclFile, mode_t unPermission);

  private:
    class CFichierRouvert;

    /// Closes what could not be opened for want of memory.
    eARCHIVE __eAbandonne();
    /// Opens the archive that the stream holds and reads its directory.
    eARCHIVE __eOuvre(unsigned dwFlags, std::int64_t i64Base);
    /// Finds an entry and makes it the record reader's current one.
    eARCHIVE __eTrouve(std::wstring_view svNom, bool bCasse, const CRepEntree** ppclEntree);
    /// What every extraction begins and ends with, around one that is given the entry found.
    template <class CExtraction>
    eARCHIVE __eExtrait(std::wstring_view svNom, bool bCasse, HWND hFenetre, STInfoAvancement* pstAvancement,
                        CExtraction clExtraction);
    /// Reads the current entry's data to its end, to nowhere when there is no destination.
    eARCHIVE __eLitEntree(const CRepEntree& rclEntree, IXStream* pclDestination);
    /// What is left of an extraction for which memory did not suffice.
    eARCHIVE __eAbandonneEntree();
    eARCHIVE __eExtraitVersFichier(const CRepEntree& rclEntree, std::wstring_view svDestination);
    eARCHIVE __eCreeRepertoire(const CRepEntree& rclEntree, std::wstring_view svDestination);
    /// An entry's time as the system counts it. Files of one archive often share theirs: the last is kept.
    std::time_t __nTime(const CRepEntree& rclEntree);
    /// The permissions that an entry's file or directory is given.
    [[nodiscard]] mode_t __unPermission(const CRepEntree& rclEntree) const noexcept {
        return rclEntree.unPermission() & ~m_unInterdites;
    }
    /// Opens the current entry's data.
    eARCHIVE __eOuvreEntree();
    /// Copies the current entry's data, to nowhere when there is no destination, and closes it.
    eARCHIVE __eCopieEntree(const CRepEntree& rclEntree, IXStream* pclDestination);

    CWinZip m_clZip;
    mode_t m_unInterdites = 0;
    STFileTime m_stLastTime;
    std::optional<std::time_t> m_nLastTime;  ///< What m_stLastTime is to the system.
};

}  // namespace kalmo

#endif
