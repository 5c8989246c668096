#include "framework/profile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <optional>
#include <string>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/errno_kept.h"
#include "framework/memory_scope.h"
#include "framework/process_info.h"
#include "framework/profile_encoding.h"
#include "framework/profile_file.h"
#include "framework/profile_line.h"

namespace kalmo {
namespace {

constexpr std::size_t TAILLE_ENTIER = 20;

// An 8-bit argument as wide text; a null pointer stays one.
class CWideArgument {
  public:
    explicit CWideArgument(const char* psz)
        : m_bNull(psz == nullptr), m_csText(m_bNull ? CTString() : csDecode(eENCODAGE::Octets, psz)) {}

    [[nodiscard]] const wchar_t* pszGet() const noexcept { return m_bNull ? nullptr : m_csText.pszGet(); }

  private:
    bool m_bNull;
    CTString m_csText;
};

template <class TCHAR>
unsigned dwCopyOut(std::basic_string_view<TCHAR> sv, TCHAR* pszBuffer, unsigned dwSize) {
    if (pszBuffer == nullptr || dwSize == 0) {
        return 0;
    }
    const std::size_t nCount = sv.copy(pszBuffer, dwSize - 1);
    pszBuffer[nCount] = TCHAR();
    return static_cast<unsigned>(nCount);
}

// What the read calls answer, before it is cut to the caller's buffer; a listing may stop at nMax characters.
CTString csAnswer(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszDefault,
                  std::size_t nMax, const wchar_t* pszFile) {
    CPathBuffer szPath;
    CDiskFile clFile;
    if (!__PrivateProfilePatchName(pszFile, szPath) || !clFile.bOpen(szPath, CDiskFile::eMODE::Read)) {
        return pszDefault;
    }
    CProfileFile clProfile(clFile);
    CTString csFound;
    const bool bFound = pszSection == nullptr ? clProfile.bListSections(nMax, &csFound)
                        : pszKey == nullptr   ? clProfile.bListKeys(pszSection, nMax, &csFound)
                                              : clProfile.bGetValue(pszSection, pszKey, &csFound);
    return bFound ? csFound : CTString(pszDefault);
}

// A change of a profile file, whose texts are borrowed.
struct STChange {
    const wchar_t* pszSection;
    const wchar_t* pszKey;    // null to remove the section
    const wchar_t* pszValue;  // null to remove the key

    [[nodiscard]] bool bRemoves() const noexcept { return pszKey == nullptr || pszValue == nullptr; }
    [[nodiscard]] bool bAllowed() const {
        return pszSection != nullptr && (bRemoves() || CProfileFile::bWritable(pszSection, pszKey, pszValue));
    }
};

// Makes the change in an open file, and closes it.
bool bChange(CDiskFile& rclFile, const STChange& rst) try {
    const CMemoryScope clScope;
    CProfileFile clProfile(rclFile);
    const bool bWritten = rst.pszKey == nullptr ? clProfile.bRemoveSection(rst.pszSection)
                          : rst.pszValue == nullptr
                              ? clProfile.bRemoveKey(rst.pszSection, rst.pszKey)
                              : clProfile.bSetValue(rst.pszSection, rst.pszKey, rst.pszValue);
    return rclFile.bClose() && bWritten;
} catch (const std::exception&) {
    return NoMemory(false);
}

// Makes the change where there is no file yet. The file stays only when there is something in it: nothing is
// created for a removal, which succeeds where the file could be created.
bool bChangeNew(std::wstring_view svPath, const STChange& rst) {
    const CXYString<char> csPath = csToUTF8(svPath);
    CDiskFile clFile;
    if (rst.bRemoves()) {
        const CXYString<char> csDirectory = csToUTF8(CFSPath::stSplit(svPath).svDirectory);
        return ::faccessat(AT_FDCWD, csDirectory.pszGet(), W_OK | X_OK, AT_EACCESS) == 0;
    }
    if (!clFile.bOpen(svPath, CDiskFile::eMODE::Create)) {
        return false;
    }
    const bool bChanged = bChange(clFile, rst);
    if (!bChanged) {
        const CErrnoKept clKept;
        ::unlink(csPath.pszGet());
    }
    return bChanged;
}

// The home directory, a "/" and a name. False, with an empty result, when that cannot be had.
bool bInHomeDirectory(std::wstring_view svName, CPathBuffer& rszOut) try {
    const CMemoryScope clScope;
    rszOut[0] = L'\0';
    CFSPath clHome;
    CFSPath clPath;
    if (!bGetHomeDirectory(&clHome) || !clPath.bSet(clHome.csGet() + L"/" + svName)) {
        return false;
    }
    clPath.CopyTo(rszOut);
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

// The per-user file as the name argument of the other calls; null when there is none.
class CUserFile {
  public:
    CUserFile() : m_bThere(bGetVLNCONFPath(m_szPath)) {}

    [[nodiscard]] const wchar_t* pszGet() const noexcept { return m_bThere ? m_szPath : nullptr; }

  private:
    CPathBuffer m_szPath;
    bool m_bThere;
};

}  // namespace

unsigned GetPrivateProfileStringW(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszDefault,
                                  wchar_t* pszBuffer, unsigned dwSize, const wchar_t* pszFile) try {
    const CMemoryScope clScope;
    const CTString csAnswered = csAnswer(pszSection, pszKey, pszDefault, dwSize, pszFile);
    return dwCopyOut(csAnswered.svGet(), pszBuffer, dwSize);
} catch (const std::exception&) {
    return NoMemory(
        dwCopyOut(std::wstring_view(pszDefault == nullptr ? L"" : pszDefault), pszBuffer, dwSize));
}

unsigned GetPrivateProfileStringA(const char* pszSection, const char* pszKey, const char* pszDefault,
                                  char* pszBuffer, unsigned dwSize, const char* pszFile) try {
    const CMemoryScope clScope;
    const CTString csAnswered =
        csAnswer(CWideArgument(pszSection).pszGet(), CWideArgument(pszKey).pszGet(),
                 CWideArgument(pszDefault).pszGet(), dwSize, CWideArgument(pszFile).pszGet());
    const std::string csNarrow = csEncode(eENCODAGE::Octets, csAnswered);
    return dwCopyOut(std::string_view(csNarrow), pszBuffer, dwSize);
} catch (const std::exception&) {
    return NoMemory(dwCopyOut(std::string_view(pszDefault == nullptr ? "" : pszDefault), pszBuffer, dwSize));
}

int GetPrivateProfileInt(const wchar_t* pszSection, const wchar_t* pszKey, int nDefault,
                         const wchar_t* pszFile) try {
    const CMemoryScope clScope;
    std::array<wchar_t, TAILLE_ENTIER> szValue{};
    GetPrivateProfileStringW(pszSection, pszKey, std::to_wstring(nDefault).c_str(), szValue.data(),
                             static_cast<unsigned>(szValue.size()), pszFile);
    return nEntierDeValeur(szValue.data());
} catch (const std::exception&) {
    return NoMemory(nDefault);
}

bool WritePrivateProfileStringW(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszValue,
                                const wchar_t* pszFile) try {
    const CMemoryScope clScope;
    const STChange st{pszSection, pszKey, pszValue};
    CPathBuffer szPath;
    CDiskFile clFile;
    if (!st.bAllowed() || !__PrivateProfilePatchName(pszFile, szPath)) {
        return false;
    }
    if (clFile.bOpen(szPath, CDiskFile::eMODE::ReadWrite)) {
        return bChange(clFile, st);
    }
    return errno == ENOENT && bChangeNew(szPath, st);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool WritePrivateProfileStringA(const char* pszSection, const char* pszKey, const char* pszValue,
                                const char* pszFile) try {
    const CMemoryScope clScope;
    return WritePrivateProfileStringW(CWideArgument(pszSection).pszGet(), CWideArgument(pszKey).pszGet(),
                                      CWideArgument(pszValue).pszGet(), CWideArgument(pszFile).pszGet());
} catch (const std::exception&) {
    return NoMemory(false);
}

unsigned GetProfileString(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszDefault,
                          wchar_t* pszBuffer, unsigned dwSize) {
    return GetPrivateProfileStringW(pszSection, pszKey, pszDefault, pszBuffer, dwSize, CUserFile().pszGet());
}

int GetProfileInt(const wchar_t* pszSection, const wchar_t* pszKey, int nDefault) {
    return GetPrivateProfileInt(pszSection, pszKey, nDefault, CUserFile().pszGet());
}

bool WriteProfileString(const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszValue) {
    return WritePrivateProfileStringW(pszSection, pszKey, pszValue, CUserFile().pszGet());
}

bool __PrivateProfilePatchName(const wchar_t* pszName, CPathBuffer& rszOut) {
    rszOut[0] = L'\0';
    if (pszName == nullptr) {
        return false;
    }
    const std::wstring_view svName = pszName;
    if (svName.find_first_of(L"\\/") == std::wstring_view::npos) {
        return bInHomeDirectory(svName, rszOut);
    }
    CFSPath clPath;
    if (!clPath.bSet(svName)) {
        return false;
    }
    clPath.CopyTo(rszOut);
    return true;
}

bool bGetVLNCONFPath(CPathBuffer& rszOut) {
    return bInHomeDirectory(L".VLN.conf", rszOut);
}

}  // namespace kalmo
