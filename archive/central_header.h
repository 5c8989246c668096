#ifndef KALMO_ARCHIVE_CENTRAL_HEADER_H
#define KALMO_ARCHIVE_CENTRAL_HEADER_H

#include <cstdint>
#include <memory>

#include "archive/dos_date.h"
#include "archive/entry_path.h"
#include "archive/record_buffer.h"
#include "archive/result.h"
#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The methods that entries may be stored with (APPNOTE 4.4.5); every other one is refused.
inline constexpr std::uint16_t METHODE_STOCKE = 0;
inline constexpr std::uint16_t METHODE_DEFLATE = 8;

/// The bytes of an enciphered entry's data that come before the data itself.
inline constexpr std::size_t TAILLE_CRYPT_HEADER = 12;

/// One entry as the central directory states it (PKWARE APPNOTE 4.3.12). An archive may have a million: the
/// fields stand in the order that leaves no gaps.
struct STCentralHeader {
    CTString csNom;  ///< Converted, cut to 260 stored bytes, with the separators as they are stored.
    std::uint64_t u64TailleCompresse = 0;  ///< As stored: with the 12 bytes of an enciphered entry.
    std::uint64_t u64TailleOriginale = 0;
    std::uint64_t u64LocalOffset = 0;           ///< In its volume, without the prefix.
    std::unique_ptr<unsigned char[]> tabExtra;  ///< wExtraLength bytes; null without any, as most have none.
    std::uint32_t dwDosDate = 0;                ///< Date in the high word, time in the low one.
    std::uint32_t dwCrc = 0;                    ///< Of the uncompressed data.
    std::uint32_t dwAttribut = 0;  ///< External attributes; plus 0666 (octal) unless made on Unix.
    std::uint16_t wVersionMadeBy = 0;
    std::uint16_t wVersionNeeded = 0;
    std::uint16_t wFlags = 0;
    std::uint16_t wMethode = 0;
    std::uint16_t wNameLength = 0;  ///< In stored bytes, also of a name that was cut.
    std::uint16_t wExtraLength = 0;
    std::uint16_t wCommentLength = 0;
    std::uint16_t wDiskStart = 0;  ///< Volume of the local header.
    std::uint16_t wAttributInterne = 0;

    [[nodiscard]] bool bCrypte() const noexcept { return (wFlags & FLAG_CRYPTE) != 0; }
    [[nodiscard]] bool bUtf8() const noexcept { return (wFlags & FLAG_UTF8) != 0; }
    [[nodiscard]] CDiskFile::STFileTime stDate() const noexcept { return stFromDosDate(dwDosDate); }
    /// The compressed size without the encipherment header.
    [[nodiscard]] std::uint64_t u64TailleDonnees() const noexcept {
        const std::uint64_t u64Header = bCrypte() ? TAILLE_CRYPT_HEADER : 0;
        return u64TailleCompresse > u64Header ? u64TailleCompresse - u64Header : 0;
    }
};

/// Reads the central header at the stream's position and leaves the position at the next one.
STZipFault stReadCentralHeader(IXStream& rclStream, CRecordBuffer& rclBuffer, STCentralHeader* pstHeader);

}  // namespace kalmo

#endif
