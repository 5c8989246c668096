#ifndef KALMO_ARCHIVE_WIN_ZIP_H
#define KALMO_ARCHIVE_WIN_ZIP_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string_view>

#include "archive/central_header.h"
#include "archive/end_record.h"
#include "archive/entry_cipher.h"
#include "archive/inflater.h"
#include "archive/record_buffer.h"
#include "archive/result.h"
#include "archive/volume_set.h"
#include "framework/hash_table.h"
#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The reader of ZIP records: the central directory as it is stored, a current entry in it, and the data of
/// that entry inflated and deciphered.
///
/// Held by a CTVWinZip, which opens the file, keeps the directory that callers see and turns the codes into
/// those of the installer. Follows the PKWARE APPNOTE with Zip64 and split volumes; methods stored and
/// deflated; the traditional cipher.
///
/// An archive is not to be trusted. Memory grows with what has been read of it, never with what it claims;
/// every claim that is followed ends where the bytes end.
///
/// Its methods lie in win_zip.cpp; those for the data of an entry in win_zip_entry.cpp.
class CWinZip {
  public:
    CWinZip() = default;
    CWinZip(const CWinZip&) = delete;
    CWinZip& operator=(const CWinZip&) = delete;

    /// Tells the stream to read from, which is borrowed, and where in it the archive starts as far as the
    /// caller knows. What was open is forgotten; the password stays.
    void SetStream(IXStream* pclStream, std::int64_t i64Base);
    /// Reads the end records and the central directory. svPath is where the stream's file lies, for the
    /// other volumes of a split set. nFlags is kept for writing and has no meaning here.
    /// ARCHIVE_BAD, or ARCHIVE_READ for an end record that is cut short. Precondition: SetStream was called.
    eARCHIVE OuvreZip(std::wstring_view svPath, int nFlags);
    /// Forgets the archive. The stream stays open: it is the caller's.
    void FermeZip();
    /// True when the file has an end record, as a ZIP archive has.
    static bool bFichierZip(std::wstring_view svPath);

    /// Makes the first entry, or the one behind the current one, the current entry. ARCHIVE_NO_CURRENT when
    /// there is none; there is then no current entry. nReserve has no meaning.
    eARCHIVE FirstFile();
    eARCHIVE NextFile(int nReserve);
    /// Makes the entry of that name the current one. Backslashes and slashes are equal; letter case does not
    /// count unless bCasse is set. The first of several wins. ARCHIVE_NOT_LOCATED leaves the current entry.
    eARCHIVE LocateFile(std::wstring_view svNom, bool bCasse);

    /// Judges the current entry when its size is zero and nothing is read: ARCHIVE_OK, or ARCHIVE_DATA when
    /// its CRC is not that of nothing. Precondition: there is a current entry.
    eARCHIVE eVerifieVide();
    /// Opens the current entry's data; an entry that was open is closed. ARCHIVE_NO_CURRENT without one;
    /// ARCHIVE_CIPHER when the password does not open it; ARCHIVE_BAD when the local header cannot be read
    /// or does not fit the central one, the method is not supported, or a volume is missing.
    eARCHIVE OpenCurrentFileInZip();
    /// Reads up to nSize bytes of the open entry's data. *pnRead is smaller than nSize only at the end, and 0
    /// there is no failure. Never delivers more than the uncompressed size that the directory states; the
    /// CRC is taken over what is delivered. False when reading or inflating fails, or no entry is open.
    bool bReadCurrentFileInZip(void* pBuffer, std::size_t nSize, std::size_t* pnRead);
    /// Ends the reading. When all data was read its CRC is compared, whatever the arguments, which have no
    /// meaning: ARCHIVE_CRC on a mismatch. Of a reading that was broken off nothing is compared.
    eARCHIVE CloseCurrentFileInZip(int nReserve1, int nReserve2);

    /// How many entries there are.
    [[nodiscard]] std::size_t nGetCount() const noexcept { return m_tabHeader.size(); }
    /// The current entry; null when there is none. Valid until the archive is closed.
    [[nodiscard]] const STCentralHeader* pstGetCurrent() const noexcept;
    /// The current entry's name as it is stored; empty when there is none.
    [[nodiscard]] const wchar_t* CurrentFile_szName() const noexcept;
    /// The extension of the volume file that a disk number of this archive stands for, from ".z01" for disk
    /// 0; ".zip" for the last disk and beyond.
    [[nodiscard]] CTString CurrentFile_szExtZip(std::uint32_t dwDisk) const;

    /// Sets the password for the entries opened from now on; null sets the empty one. A password with a
    /// character that is zero or negative as a signed number is refused: the empty one is set and the result
    /// is false.
    bool bSetPassword(const wchar_t* pszPassword);
    bool bSetPassword(std::wstring_view svPassword);
    [[nodiscard]] const wchar_t* pszGetPassword() const noexcept { return m_csPassword.pszGet(); }
    [[nodiscard]] const CTString& csGetPassword() const noexcept { return m_csPassword; }

    [[nodiscard]] const STEndRecord& rstGetEndRecord() const noexcept { return m_stEnd; }
    [[nodiscard]] const CTString& csGetCommentaire() const noexcept { return m_stEnd.csComment; }
    /// How many bytes lie in front of the archive's first record. They are added to every offset read.
    [[nodiscard]] std::uint64_t u64GetPrefixe() const noexcept { return m_u64Prefixe; }
    /// What was wrong when an operation failed last, and where, as a text for people: "central header: wrong
    /// signature, at byte 1234". Empty before the first failure since OuvreZip.
    [[nodiscard]] CTString csGetDefaut() const;

  private:
    static constexpr std::size_t BUCKETS_INITIAL = 43;
    static constexpr std::size_t TAILLE_CACHE = 32768;
    static constexpr std::size_t INPUT_BYTES = 16384;

    /// The reading of one entry's data.
    struct STLecture {
        bool bOuvert = false;
        IXStream* pclSource = nullptr;  ///< The volumes from the one that the entry starts in.
        std::int64_t i64Position = 0;   ///< Of the next compressed byte in them.
        std::uint64_t u64ResteCompresse = 0;
        std::uint64_t u64ResteOriginal = 0;
        std::uint32_t dwCrc = 0;
        std::uint32_t dwCrcAttendu = 0;
        std::uint16_t wMethode = 0;
        bool bCrypte = false;
        std::span<const unsigned char> tabEntree;  ///< What is left of the input buffer.
    };

    eARCHIVE __eFaute(const STZipFault& rst);
    STZipFault __stReadEndRecords(IXStream& rclCache);
    STZipFault __stReadZip64(IXStream& rclCache);
    STZipFault __stFindPrefix();
    STZipFault __stReadDirectory(IXStream& rclCache);
    STZipFault __stReadHeaders(IXStream& rclStream);

    STZipFault __stOpenEntry(const STCentralHeader& rst);
    /// Reads into the input buffer what an entry begins with: its local header and, when they fit, its data.
    /// Without a place (data() is null) when it cannot be read.
    std::span<unsigned char> __tabReadStart(IXStream& rclSource, const STCentralHeader& rst,
                                            std::uint64_t u64Position);
    /// Deciphers the next compressed bytes, which lie in the input buffer, and makes them the input.
    void __Take(std::span<unsigned char> tabNew);
    /// Reads the encipherment header, from the front of what is read already as far as it goes.
    STZipFault __stOpenCipher(const STCentralHeader& rst, std::span<unsigned char>* ptabRead);
    /// Tops the input buffer up. False when the stream gives less than the entry still has.
    bool __bFillInput();
    /// Keeps what is wrong with the open entry's data. Always false.
    bool __bFauteDonnees(const char* pszWhat);
    /// Moves data from the input buffer into the room, which shrinks by as much.
    bool __bProduce(std::span<unsigned char>& rtabRoom, bool* pbEnd);

    IXStream* m_pclStream = nullptr;
    CVolumeSet m_clVolumes;
    CRecordBuffer m_clRecord;
    STEndRecord m_stEnd;
    bool m_bDirectorySplit = false;  ///< The directory starts in an earlier volume than the archive file.
    std::uint64_t m_u64Prefixe = 0;
    std::deque<STCentralHeader> m_tabHeader;
    CTHashTableTi<int> m_clIndex{BUCKETS_INITIAL};  ///< Names with slashes.
    int m_nCurrent = -1;
    STZipFault m_stFault;

    CTString m_csPassword;
    CEntryCipher m_clCipher;
    CInflater m_clInflater;
    STLecture m_stLecture;
    std::array<unsigned char, INPUT_BYTES> m_tabInput;  // filled before it is read
};

}  // namespace kalmo

#endif
