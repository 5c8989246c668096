#include "framework/fs_path.h"

#include <exception>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {

bool CFSPath::bSet(std::wstring_view svPath) try {
    const CMemoryScope clScope;
    if (svPath.size() > TAILLE_MAX_PATH || svPath.find(L'\0') != std::wstring_view::npos) {
        return false;
    }
    m_csPath = CTString(svPath);
    m_csPath.Replace(L'\\', L'/');
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CFSPath::bAppend(std::wstring_view svName) try {
    const CMemoryScope clScope;
    CTString csJoined = m_csPath;
    if (!csJoined.bEmpty() && csJoined.svGet().back() != L'/') {
        csJoined += L'/';
    }
    csJoined += svName;
    return bSet(csJoined);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CFSPath::bAppend(std::wstring_view svBaseName, std::wstring_view svExtension) try {
    const CMemoryScope clScope;
    CTString csName(svBaseName);
    if (!svExtension.empty()) {
        csName += L'.';
        csName += svExtension;
    }
    return bAppend(csName);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool CFSPath::bAddTrailingSlash() {
    return bEmpty() || bAppend(L"");
}

void CFSPath::KeepDirectory() {
    m_csPath.Truncate(m_csPath.svGet().rfind(L'/') + 1);
}

CXYString<char> CFSPath::csGetUTF8() const {
    return csToUTF8(m_csPath);
}

void CFSPath::CopyTo(CPathBuffer& rszOut) const noexcept {
    rszOut[m_csPath.svGet().copy(rszOut, TAILLE_MAX_PATH)] = L'\0';
}

STPathParts CFSPath::stSplit(std::wstring_view svPath) noexcept {
    STPathParts st;
    std::size_t nName = svPath.size();
    while (nName > 0 && svPath[nName - 1] != L'/' && svPath[nName - 1] != L'\\') {
        --nName;
    }
    st.svDirectory = svPath.substr(0, nName);
    st.svFileName = svPath.substr(nName);
    const std::size_t nDot = st.svFileName.rfind(L'.');
    st.svBaseName = st.svFileName.substr(0, nDot);
    st.svExtension = nDot == std::wstring_view::npos ? std::wstring_view() : st.svFileName.substr(nDot + 1);
    return st;
}

}  // namespace kalmo
