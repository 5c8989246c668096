#ifndef KALMO_TESTS_ARCHIVE_CRAFTED_ZIP_H
#define KALMO_TESTS_ARCHIVE_CRAFTED_ZIP_H

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/tv_win_zip.h"
#include "framework/memory_stream.h"

namespace kalmo {

/// Little-endian bytes of a number.
inline std::string csLe(std::uint64_t u64, int nBytes) {
    std::string cs;
    for (; nBytes > 0; --nBytes, u64 >>= 8) {
        cs += static_cast<char>(u64 & 0xFF);
    }
    return cs;
}

inline CTLBIN tabBytes(std::string_view sv) {
    return {sv.begin(), sv.end()};
}

/// One entry of a crafted archive, stored unless bDeflate is set. What is optional says the truth unless set.
struct STCraftedEntry {
    std::string csName = "a.txt";
    std::string csData = "hello, archive";
    bool bDeflate = false;
    std::uint16_t wMadeBy = 0x031E;  // Unix
    std::uint16_t wFlags = 0;
    std::uint32_t dwDate = 0x58216AEF;  // 2024-01-01 13:23:30
    std::uint32_t dwAttribut = 0x81A40000;
    std::uint16_t wDisk = 0;
    std::string csExtra, csComment;

    std::optional<std::uint32_t> dwSignature, wMethode, dwCrc, dwCompresse, dwOriginale, dwOffset;
    std::optional<std::uint32_t> wNameLength, wExtraLength;
    std::optional<std::uint32_t> dwLocalSignature, wLocalMethode, wLocalFlags, dwLocalCrc;
    std::optional<std::string> csLocalName;

    [[nodiscard]] std::string csStored() const {
        if (!bDeflate) {
            return csData;
        }
        std::string cs(compressBound(csData.size()), '\0');
        uLongf nSize = cs.size();
        compress(reinterpret_cast<Bytef*>(cs.data()), &nSize, tabBytes(csData).data(), csData.size());
        return cs.substr(2, nSize - 6);  // without the frame around the raw stream
    }
    [[nodiscard]] std::size_t dwRealCrc() const {
        return crc32(0, tabBytes(csData).data(), static_cast<uInt>(csData.size()));
    }
    [[nodiscard]] std::string csLocal() const {
        const std::string cs = csLocalName.value_or(csName);
        return csLe(dwLocalSignature.value_or(0x04034B50), 4) + csLe(20, 2) +
               csLe(wLocalFlags.value_or(wFlags), 2) + csLe(wLocalMethode.value_or(bDeflate ? 8 : 0), 2) +
               csLe(dwDate, 4) + csLe(dwLocalCrc ? *dwLocalCrc : dwRealCrc(), 4) +
               csLe(csStored().size(), 4) + csLe(csData.size(), 4) + csLe(cs.size(), 2) + csLe(0, 2) + cs +
               csStored();
    }
    [[nodiscard]] std::string csCentral(std::size_t nOffset) const {
        return csLe(dwSignature.value_or(0x02014B50), 4) + csLe(wMadeBy, 2) + csLe(20, 2) + csLe(wFlags, 2) +
               csLe(wMethode.value_or(bDeflate ? 8 : 0), 2) + csLe(dwDate, 4) +
               csLe(dwCrc ? *dwCrc : dwRealCrc(), 4) +
               csLe(dwCompresse ? *dwCompresse : csStored().size(), 4) +
               csLe(dwOriginale ? *dwOriginale : csData.size(), 4) +
               csLe(wNameLength ? *wNameLength : csName.size(), 2) +
               csLe(wExtraLength ? *wExtraLength : csExtra.size(), 2) + csLe(csComment.size(), 2) +
               csLe(wDisk, 2) + csLe(0, 2) + csLe(dwAttribut, 4) + csLe(dwOffset ? *dwOffset : nOffset, 4) +
               csName + csExtra + csComment;
    }
};

/// An archive made byte by byte, for what no archiver would write.
struct STCraftedZip {
    std::vector<STCraftedEntry> tabEntry{1};
    std::string csPrefix;  ///< In front, without the offsets knowing of it.
    std::string csBeforeEnd, csComment;
    std::uint16_t wDisk = 0, wDirectoryDisk = 0;
    std::optional<std::uint32_t> wEntries, dwDirectorySize, dwDirectoryOffset;

    [[nodiscard]] std::string csBytes() const {
        std::string csLocals, csDirectory;
        for (const STCraftedEntry& rst : tabEntry) {
            csDirectory += rst.csCentral(csLocals.size());
            csLocals += rst.csLocal();
        }
        const std::string csCount = csLe(wEntries ? *wEntries : tabEntry.size(), 2);
        return csPrefix + csLocals + csDirectory + csBeforeEnd + csLe(0x06054B50, 4) + csLe(wDisk, 2) +
               csLe(wDirectoryDisk, 2) + csCount + csCount +
               csLe(dwDirectorySize ? *dwDirectorySize : csDirectory.size(), 4) +
               csLe(dwDirectoryOffset ? *dwDirectoryOffset : csLocals.size(), 4) + csLe(csComment.size(), 2) +
               csComment;
    }
};

/// A crafted archive opened from memory.
class CCraftedArchive {
  public:
    explicit CCraftedArchive(std::string_view svBytes) : m_clStream(tabBytes(svBytes)) {
        m_eOpened = m_clZip.eOuvreArchiveStream(&m_clStream, 0, 0);
    }
    [[nodiscard]] eARCHIVE eOpened() const { return m_eOpened; }
    CTVWinZip& rclZip() { return m_clZip; }
    /// Extracts into memory: the text, or "!" and the code.
    std::string csExtract(std::wstring_view svName = L"a.txt") {
        CTLBIN tab;
        const eARCHIVE e = m_clZip.eExtraitFichier(svName, &tab, 0, nullptr, 0, nullptr);
        return e == ARCHIVE_OK ? std::string(tab.begin(), tab.end()) : "!" + std::to_string(e);
    }

  private:
    CMemoryStream m_clStream;
    CTVWinZip m_clZip;
    eARCHIVE m_eOpened;
};

}  // namespace kalmo

#endif
