#include "app/uninstall_record.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/errno_kept.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_DIRECTORY = L"/var/lib/kalmoinstall/";
constexpr std::size_t nMaxRecord = 8192;

bool bSyncDirectory(const wchar_t* pszDirectory) {
    CDiskFile clDirectory;
    return clDirectory.bOpen(pszDirectory, CDiskFile::eMODE::ReadDirectory) && clDirectory.bSync();
}

}  // namespace

CUninstallRecord::CUninstallRecord(std::wstring_view svService) : m_csPath(svService) {
    m_csPath.Replace(L'/', L'-');
    m_csPath = PSZ_DIRECTORY + m_csPath + L".uninstall";
}

bool CUninstallRecord::bWrite(const CTString& csName, const CTString& csProgram) {
    const CXYString<char> csText = csToUTF8(csName + L"\n" + csProgram + L"\n");
    CDiskFile clFile;
    const bool bWritten = CDiskFile::bCreateDirectory(PSZ_DIRECTORY) &&
                          clFile.bOpen(m_csPath, CDiskFile::eMODE::Create) &&
                          clFile.bWrite(csText.pszGet(), csText.nGetLength()) && clFile.bSync() &&
                          bSyncDirectory(PSZ_DIRECTORY);
    if (!bWritten) {
        const CErrnoKept clKept;
        bDiscard();
    }
    return bWritten;
}

bool CUninstallRecord::bRead(CTString* pcsName, CTString* pcsProgram) const {
    std::string csText;
    if (!CDiskFile::bLoad(m_csPath, nMaxRecord, &csText)) {
        return false;
    }
    const std::size_t nName = csText.find('\n');
    const std::size_t nEnd = csText.find('\n', nName + 1);
    if (nName == std::string::npos || nEnd == std::string::npos || csText[nName + 1] != '/') {
        return false;
    }
    *pcsName = csFromUTF8(std::string_view(csText).substr(0, nName));
    *pcsProgram = csFromUTF8(std::string_view(csText).substr(nName + 1, nEnd - nName - 1));
    return true;
}

bool CUninstallRecord::bDiscard() {
    if (!CDiskFile::bDelete(m_csPath)) {
        return errno == ENOENT;
    }
    ::rmdir(csToUTF8(PSZ_DIRECTORY).pszGet());  // refused while there are others
    return true;
}

}  // namespace kalmo
