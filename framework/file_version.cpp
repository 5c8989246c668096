#include "framework/file_version.h"

#include <algorithm>
#include <exception>

#include "framework/disk_file.h"
#include "framework/elf_note.h"
#include "framework/json_text.h"
#include "framework/memory_scope.h"
#include "framework/read_cache.h"

namespace kalmo {
namespace {

constexpr std::wstring_view SV_VERSION_NAME = L"\\StringFileInfo\\000004E4\\VersionVI";
constexpr std::string_view SV_OWNER = "FDO";
constexpr std::uint32_t NT_FDO_PACKAGING_METADATA = 0xcafe1a7e;
constexpr std::size_t WINDOW_BYTES = 4096;

// Versions are shown on terminals, which obey control characters.
bool bControl(wchar_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

}  // namespace

bool CFileVersion::bInit(std::wstring_view svPath) try {
    const CMemoryScope clScope;
    m_csVersion.Empty();
    CDiskFile clFile;
    return clFile.bOpen(svPath, CDiskFile::eMODE::Read) && bInit(clFile);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CFileVersion::bInit(IXStream& rclStream) try {
    const CMemoryScope clScope;
    m_csVersion.Empty();
    CReadCache clCache(rclStream, WINDOW_BYTES);
    const auto csNote = csFindElfNote(clCache, SV_OWNER, NT_FDO_PACKAGING_METADATA);
    if (!csNote) {
        return false;
    }
    // The description ends with a null and may be padded with more.
    const auto csVersion = csJsonString(std::string_view(*csNote).substr(0, csNote->find('\0')), "version");
    if (!csVersion || csVersion->bEmpty() || std::ranges::any_of(csVersion->svGet(), bControl)) {
        return false;
    }
    m_csVersion = *csVersion;
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CFileVersion::bGetString(std::wstring_view svName, CTString* pcsValue) const {
    if (svName != SV_VERSION_NAME || m_csVersion.bEmpty()) {
        return false;
    }
    *pcsValue = m_csVersion;
    return true;
}

}  // namespace kalmo
