#ifndef KALMO_ARCHIVE_LOCAL_HEADER_H
#define KALMO_ARCHIVE_LOCAL_HEADER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "archive/central_header.h"
#include "archive/record_buffer.h"
#include "archive/result.h"
#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The bytes of a local header without its name and its extra field, and with as much of a name as is used.
inline constexpr std::size_t TAILLE_ENTETE_LOCAL = 30;
inline constexpr std::size_t TAILLE_MAX_ENTETE_LOCAL = TAILLE_ENTETE_LOCAL + TAILLE_MAX_NOM_ENTREE;

/// The header right before an entry's data (PKWARE APPNOTE 4.3.7).
struct STLocalHeader {
    std::uint16_t wVersionNeeded = 0;
    std::uint16_t wFlags = 0;
    std::uint16_t wMethode = 0;
    std::uint32_t dwDosDate = 0;
    std::uint32_t dwCrc = 0;
    std::uint64_t u64TailleCompresse = 0;
    std::uint64_t u64TailleOriginale = 0;
    std::uint16_t wNameLength = 0;  ///< In stored bytes.
    std::uint16_t wExtraLength = 0;
    CTString csNom;
    std::uint64_t u64DataPosition = 0;  ///< Where the entry's data starts in its volume.

    /// How many bytes the header takes.
    [[nodiscard]] std::size_t nTaille() const noexcept {
        return TAILLE_ENTETE_LOCAL + wNameLength + std::size_t{wExtraLength};
    }
};

/// Decodes the local header that the bytes read at a position begin with; TAILLE_MAX_ENTETE_LOCAL of them
/// hold any. What a Zip64 header has beyond them is read from the stream.
STZipFault stReadLocalHeader(IXStream& rclStream, std::span<const unsigned char> tabRead,
                             std::uint64_t u64Position, STLocalHeader* pstHeader);

/// Compares it with what the central directory says of the entry. The directory is believed; a local header
/// that tells another story means that the archive was damaged or made to deceive. Sizes are not compared:
/// streamed entries have none here.
STZipFault stCompareHeaders(const STLocalHeader& rstLocal, const STCentralHeader& rstCentral,
                            std::uint64_t u64Position);

}  // namespace kalmo

#endif
