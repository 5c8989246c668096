#ifndef KALMO_TESTS_ARCHIVE_CRAFTED_ZIP_H
#define KALMO_TESTS_ARCHIVE_CRAFTED_ZIP_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/tv_win_zip.h"
#include "framework/memory_stream.h"

namespace kalmo {

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
    std::string csExtra;
    std::string csComment;

    std::optional<std::uint16_t> wMethode;
    std::optional<std::uint32_t> dwCrc, dwCompresse, dwOriginale, dwOffset;
    std::optional<std::uint16_t> wNameLength, wExtraLength;
    std::optional<std::uint32_t> dwSignature;

    std::optional<std::string> csLocalName;
    std::optional<std::uint16_t> wLocalMethode, wLocalFlags;
    std::optional<std::uint32_t> dwLocalCrc, dwLocalSignature;
};

/// An archive made byte by byte, for what no archiver would write.
struct STCraftedZip {
    std::vector<STCraftedEntry> tabEntry{1};
    std::string csPrefix;  ///< In front, without the offsets knowing of it.
    std::string csBeforeEnd;
    std::string csComment;
    std::optional<std::uint16_t> wDisk, wDirectoryDisk, wEntries, wCommentLength;
    std::optional<std::uint32_t> dwDirectorySize, dwDirectoryOffset;

    [[nodiscard]] std::string csBytes() const;
    /// Where the central directory starts, without the prefix.
    [[nodiscard]] std::uint32_t dwDirectoryStart() const;
};

/// Little-endian bytes of a number.
std::string csLe(std::uint64_t u64, int nBytes);
/// Raw deflate.
std::string csDeflate(std::string_view sv);

inline CTLBIN tabBytes(std::string_view sv) {
    return {sv.begin(), sv.end()};
}

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
