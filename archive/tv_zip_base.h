#ifndef KALMO_ARCHIVE_TV_ZIP_BASE_H
#define KALMO_ARCHIVE_TV_ZIP_BASE_H

#include <cstdint>
#include <mutex>
#include <string_view>

#include "archive/repertoire.h"
#include "archive/result.h"
#include "framework/disk_file.h"
#include "framework/memory_stream.h"
#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// A window of whoever calls the archive. The archive hands it back and never looks inside.
using HWND = void*;

/// How far an extraction has come, for a caller's gauge. Extraction fills none of it: callers show their
/// progress between entries.
struct STInfoAvancement {
    HWND hFenetre = nullptr;
    unsigned dwPourcent = 0;        ///< Of the entry, 0 to 100.
    unsigned dwPourcentGlobal = 0;  ///< Of the whole job, 0 to 100.
};

/// An archive as its callers see it: entries by rank, extracted to files or to memory.
///
/// This base holds the archive's file, its directory and the state that every kind of archive has, and
/// answers what the directory alone can answer. The order of the virtual operations is part of its contract.
///
/// Ranks count from 0 in the order of the archive. Operations that return a code store it as the last one.
/// Paths and names may use slashes or backslashes. Not safe across threads by itself: callers that share an
/// object take its critical section.
class CTVZipBase {
  public:
    using STFileTime = CDiskFile::STFileTime;

    /// Flags of eExtraitFichier to a file.
    static constexpr unsigned EXTRAIT_SUPPRIME = 0x40;  ///< Delete an existing destination first.
    static constexpr unsigned EXTRAIT_CASSE = 0x8000;   ///< Letter case of the entry's name counts.
    /// Flag of the opening operations: the archive is meant to be written too.
    static constexpr unsigned OUVRE_ECRITURE = 1;

    CTVZipBase() = default;
    CTVZipBase(const CTVZipBase&) = delete;
    CTVZipBase& operator=(const CTVZipBase&) = delete;
    virtual ~CTVZipBase() = default;

    /// Opens an archive file and reads its directory. i64Base is where the archive starts in the file as far
    /// as the caller knows; what the archive itself says replaces it.
    /// ARCHIVE_NOT_FOUND (errno) when the file cannot be opened, ARCHIVE_BAD when it is no sound archive.
    virtual eARCHIVE eOuvreArchive(std::wstring_view svPath, unsigned dwFlags, std::int64_t i64Base) = 0;
    /// The same from a stream, which is borrowed until another archive is opened or the object destroyed.
    /// Volumes of a split set cannot be found this way.
    virtual eARCHIVE eOuvreArchiveStream(IXStream* pclStream, unsigned dwFlags, std::int64_t i64Base) = 0;

    /// Gives the archive file free for others (0) or takes it again (not 0), in the way of the access flag:
    /// the second of the two below when it is set, else the first. Without effect on a caller's stream.
    /// ARCHIVE_CREATE (errno) when the file cannot be reopened.
    virtual eARCHIVE Lock(int nLock);
    /// 0 closes the archive file; anything else reopens it for reading and clears the access flag.
    virtual eARCHIVE LockEcritureOuvertEnLecture(int nLock);
    /// Not 0 reopens the archive file for reading and writing, or for reading where that is not allowed, and
    /// sets the write lock; 0 closes it if the write lock is set.
    virtual eARCHIVE LockLectureEcritureOuvertEnLectureEcriture(int nLock);

    /// Extracts an entry to a file; its directory must exist (see eCheminEntree). Letter case of the entry's
    /// name does not count unless dwFlags says so. An existing file is overwritten in place.
    ///
    /// The file gets the entry's times and permissions. It is there only when the result is ARCHIVE_OK: a
    /// failure takes away what was written of it. An entry of size zero that says it is a directory makes a
    /// directory; for such a one an empty destination is accepted and does nothing.
    ///
    /// ARCHIVE_NOT_OPEN, ARCHIVE_NOT_FOUND (no such entry), ARCHIVE_NOT_LOCATED (none in that letter case),
    /// ARCHIVE_PASSWORD, ARCHIVE_BAD (its records are wrong, its method is not supported, a volume is
    /// missing, or there is less data than stated), ARCHIVE_DATA, ARCHIVE_CREATE (errno: the destination, or
    /// the archive file after a Lock), ARCHIVE_DISK_FULL, ARCHIVE_WRITE (errno).
    ///
    /// dwReserve and nReserve have no meaning. The window and the progress record are kept as long as the
    /// extraction lasts.
    virtual eARCHIVE eExtraitFichier(std::wstring_view svNom, std::wstring_view svDestination,
                                     unsigned dwReserve, HWND hFenetre, int nReserve, unsigned dwFlags,
                                     STInfoAvancement* pstAvancement) = 0;
    /// Extracts an entry into memory, with the same results. *ptabOut is empty after a failure.
    virtual eARCHIVE eExtraitFichier(std::wstring_view svNom, CTLBIN* ptabOut, unsigned dwReserve,
                                     HWND hFenetre, int nReserve, STInfoAvancement* pstAvancement) = 0;

    /// How many entries are no directory markers.
    virtual unsigned dwNombreFichier();
    /// The kind of the archive; -1 where no kind was set.
    virtual int nTypeZip();
    /// Moves directory markers behind all other entries.
    virtual void ForceRepVideAlaFin();
    /// The entry's full name, as far as a null-terminated text can hold it: a name with a null character in
    /// it ends there. rclGetRepertoire() has the whole. Null when there is no such rank.
    virtual const wchar_t* pszNomFichier(int nRang);
    /// Sizes in bytes, the low 32 bits of them; 0 when there is no such rank.
    virtual std::uint32_t dwTailleOriginale(int nRang);
    virtual std::uint32_t dwTailleCompresse(int nRang);
    /// Times in local time; all fields 0 when there is no such rank.
    virtual STFileTime stftLitFtCreation(int nRang);
    virtual STFileTime stftLitFtAcces(int nRang);
    virtual STFileTime stftLitFtModif(int nRang);
    /// External attributes; 0 when there is no such rank.
    virtual std::uint32_t dwLitAttribut(int nRang);
    virtual bool bCrypte(int nRang);
    /// The rank of a name; -1 when there is none.
    virtual int lRangFichier(std::wstring_view svNom);

    /// Sets the password of all entries, for the extractions that follow; null means the empty one.
    /// ARCHIVE_PASSWORD, with the empty one set, for a password that cannot be used.
    virtual eARCHIVE eMotDePasse(const wchar_t* pszMotDePasse) = 0;
    /// The password set; empty when there is none.
    virtual eARCHIVE eGetMotDePasse(CTString& rcsMotDePasse) = 0;
    /// The compression level and the two options below are kept for writing and mean nothing for reading.
    virtual eARCHIVE eNiveauCompression(int nNiveau);
    virtual eARCHIVE eGetNiveauCompression(int& rnNiveau);
    /// Whether entries are written with Zip64 headers. Returns what was set before.
    virtual bool bEntete64Bits(int nEntete64Bits);
    /// Whether names are written as UTF-8.
    virtual void vSetNomFicUnicode(int nUnicode);
    /// How far the caller's whole job has come, 0 to 100. Kept for a gauge.
    virtual void SetPourcentGlobal(unsigned dwPourcent);

    /// One line about an entry, its fields separated by tabs: name, uncompressed and compressed size,
    /// creation, modification and last-access time, "H" when the attributes are negative as a signed number,
    /// "+" when it is enciphered and "N" when not. A size of zero gives an empty field.
    /// ARCHIVE_NOT_FOUND for a rank that there is not.
    eARCHIVE eGetInfoFichier(int nRang, CTString& rcsInfo);

    /// The directory. Valid until another archive is opened; empty while none is.
    [[nodiscard]] const CRepertoire& rclGetRepertoire() const noexcept { return m_clRepertoire; }
    /// The code of the last operation that returned one.
    [[nodiscard]] eARCHIVE eGetDerniereErreur() const noexcept { return m_eErreur; }
    /// The path that was opened; empty for a stream.
    [[nodiscard]] const CTString& csGetChemin() const noexcept { return m_csChemin; }
    [[nodiscard]] bool bOuvert() const noexcept { return m_bOuvert; }

    /// Enters and leaves the critical section, which one thread may enter several times. Always true.
    bool bDebutSectionCritique();
    void FinSectionCritique();

  protected:
    /// Stores a result as the last one.
    eARCHIVE _eErreur(eARCHIVE eCode) noexcept { return m_eErreur = eCode; }
    /// The hook of a gauge: does nothing, and true lets the extraction go on. The copy loop does not call it,
    /// since gauges here move between entries.
    bool _bGestionJauge() { return true; }

    /// True when the bytes of the archive can be read now.
    [[nodiscard]] bool _bFichierOuvert() const noexcept {
        return m_pclStream != &m_clFichier || m_clFichier.bIsOpen();
    }
    /// Opens the archive's own file again for reading. False with the reason in errno.
    bool _bRouvre();
    /// Closes the archive's own file.
    void _Ferme() noexcept;

    CTString m_csChemin;
    CDiskFile m_clFichier;
    IXStream* m_pclStream = &m_clFichier;  ///< The own file, or the caller's stream.
    int m_nAcces = 1;                      ///< 0 reading, 1 reading and writing.
    bool m_bOuvert = false;
    CRepertoire m_clRepertoire;
    eARCHIVE m_eErreur = ARCHIVE_OK;
    std::int64_t m_i64Base = 0;
    bool m_bVerrouEcriture = false;
    int m_nTypeZip = -1;
    int m_nNiveauCompression = 0;
    bool m_bEntete64Bits = false;
    bool m_bNomUnicode = false;
    unsigned m_dwPourcentGlobal = 0;
    HWND m_hFenetre = nullptr;
    STInfoAvancement* m_pstAvancement = nullptr;

  private:
    std::recursive_mutex m_clSectionCritique;
};

}  // namespace kalmo

#endif
