#include "framework/file_search.h"

#include <exception>

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>

#include "framework/conversion.h"
#include "framework/fs_path.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

// The file-type bits of an entry; 0 when it vanished or dangles.
unsigned dwEntryType(DIR* pclDir, const dirent& rstEntry) {
    if (rstEntry.d_type == DT_REG || rstEntry.d_type == DT_DIR) {
        return static_cast<unsigned>(DTTOIF(rstEntry.d_type));
    }
    struct stat st {};
    return ::fstatat(::dirfd(pclDir), rstEntry.d_name, &st, 0) == 0 ? st.st_mode & S_IFMT : 0;
}

// The pattern for fnmatch, to which "[" would mean more than itself.
std::string csMatcher(std::wstring_view svPattern) {
    CTString cs(svPattern);
    cs.Replace(L'[', L"\\[");
    return std::string(csToUTF8(cs).svGet());
}

}  // namespace

bool CFileSearch::bFirst(std::wstring_view svPattern, unsigned dwMask) try {
    const CMemoryScope clScope;
    Close();
    CFSPath clPattern;
    if (!clPattern.bSet(svPattern)) {
        return false;
    }
    const STPathParts stParts = CFSPath::stSplit(clPattern.svGet());
    const CTString csDirectory =
        stParts.svDirectory.empty() ? CTString(L"./") : CTString(stParts.svDirectory);
    m_csPattern = csMatcher(stParts.svFileName);
    m_dwMask = dwMask;
    m_pclDir.reset(::opendir(csToUTF8(csDirectory).pszGet()));
    return bNext();
} catch (const std::exception&) {
    Close();
    return NoMemory(false);
}

bool CFileSearch::bNext() try {
    const CMemoryScope clScope;
    while (m_pclDir) {
        const dirent* const pstEntry = ::readdir(m_pclDir.get());
        if (pstEntry == nullptr) {
            break;
        }
        const std::string_view svName = pstEntry->d_name;
        if (svName == "." || svName == ".." || ::fnmatch(m_csPattern.c_str(), pstEntry->d_name, 0) != 0) {
            continue;
        }
        m_dwAttributes = dwEntryType(m_pclDir.get(), *pstEntry);
        if (m_dwMask == 0 || m_dwAttributes == m_dwMask) {
            m_csName = csFromUTF8(svName);
            return true;
        }
    }
    Close();
    return false;
} catch (const std::exception&) {
    Close();
    return NoMemory(false);
}

void CFileSearch::Close() {
    m_pclDir.reset();
}

}  // namespace kalmo
