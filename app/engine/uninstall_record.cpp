#include "app/engine/uninstall_record.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/errno_kept.h"

namespace kalmo {
namespace {

constexpr const wchar_t* PSZ_DIRECTORY = L"/var/lib/kalmoinstall/";
constexpr std::size_t MAX_RECORD = 8192;

bool bSyncDirectory(const wchar_t* pszDirectory) {
    CDiskFile clDirectory;
    return clDirectory.bOpen(pszDirectory, CDiskFile::eMODE::ReadDirectory) && clDirectory.bSync();
}

bool bReadNote(const CTString& csPath, CUninstallRecord::STNote* pst) {
    std::string csText;
    if (!CDiskFile::bLoad(csPath, MAX_RECORD, &csText)) {
        return false;
    }
    std::vector<CTString> tabLine;
    std::size_t nStart = 0;
    for (std::size_t nEnd = 0; (nEnd = csText.find('\n', nStart)) != std::string::npos; nStart = nEnd + 1) {
        tabLine.push_back(csFromUTF8(std::string_view(csText).substr(nStart, nEnd - nStart)));
    }
    const auto bPath = [](const CTString& rcs) { return rcs.svGet().starts_with(L'/'); };
    if (tabLine.size() < 3 || nStart != csText.size() ||
        !std::all_of(tabLine.begin() + 1, tabLine.end(), bPath)) {
        return false;
    }
    *pst = {tabLine[0], tabLine[1], {tabLine.begin() + 2, tabLine.end()}};
    return true;
}

// Deletes a record, and the directory unless there are others.
bool bDeleteNote(const CTString& csPath) {
    if (!CDiskFile::bDelete(csPath) && errno != ENOENT) {
        return false;
    }
    ::rmdir(csToUTF8(PSZ_DIRECTORY).pszGet());
    return true;
}

}  // namespace

bool CUninstallRecord::STNote::bDefined() const {
    return std::ranges::any_of(tabDefinition,
                               [](const CTString& rcsPath) { return CDiskFile::bFileExists(rcsPath); });
}

CUninstallRecord::CUninstallRecord(std::wstring_view svService) : m_csPath(svService) {
    m_csPath.Replace(L'/', L'-');
    m_csPath = PSZ_DIRECTORY + m_csPath + L".uninstall";
}

bool CUninstallRecord::bWrite(const STNote& rst) {
    if (rst.tabDefinition.empty()) {
        errno = ENODATA;
        return false;
    }
    CTString csNote = rst.csService + L"\n" + rst.csProgram + L"\n";
    for (const CTString& rcsDefinition : rst.tabDefinition) {
        csNote += rcsDefinition + L"\n";
    }
    const CXYString<char> csText = csToUTF8(csNote);
    CDiskFile clFile;
    const bool bWritten = CDiskFile::bCreateDirectory(PSZ_DIRECTORY) &&
                          clFile.bOpen(m_csPath, CDiskFile::eMODE::Create) &&
                          clFile.bWrite(csText.pszGet(), csText.nGetLength()) && clFile.bSync() &&
                          bSyncDirectory(PSZ_DIRECTORY) && bSyncDirectory(L"/var/lib/");
    if (!bWritten) {
        const CErrnoKept clKept;
        bDiscard();
    }
    return bWritten;
}

bool CUninstallRecord::bRead(STNote* pst) const {
    return bReadNote(m_csPath, pst);
}

bool CUninstallRecord::bDiscard() {
    return bDeleteNote(m_csPath);
}

bool CUninstallRecord::bForgetDirectory(std::wstring_view svDirectory) {
    bool bForgotten = false;
    CFileSearch clSearch;
    for (bool bFound = CDiskFile::bFindFirst(CTString(PSZ_DIRECTORY) + L"*.uninstall", 0, &clSearch); bFound;
         bFound = CDiskFile::bFindNext(&clSearch)) {
        const CTString csPath = PSZ_DIRECTORY + clSearch.csGetName();
        STNote st;
        if (bReadNote(csPath, &st) &&
            CDiskFile::bSameDirectoryName(CFSPath::stSplit(st.csProgram).svDirectory, svDirectory)) {
            bForgotten |= bDeleteNote(csPath);
        }
    }
    return bForgotten;
}

}  // namespace kalmo
