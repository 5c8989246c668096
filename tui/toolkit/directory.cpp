#include "tui/toolkit/directory.h"

#include <cwchar>
#include <cwctype>
#include <string_view>

#include "framework/disk_file.h"

namespace kalmo {
namespace {

// True when the last "/" lies at the index or behind it.
bool bInDirectory(std::wstring_view svPath, int nIndex) {
    const std::size_t nSlash = svPath.rfind(L'/');
    return nSlash != std::wstring_view::npos && static_cast<int>(nSlash) >= nIndex;
}

constexpr const wchar_t* PSZ_PARENT = L"..";

// The path up to and including its last "/"; "/" when it has none.
CTString csDirectoryPart(std::wstring_view svPath) {
    const std::size_t nSlash = svPath.rfind(L'/');
    return nSlash == std::wstring_view::npos ? CTString(L"/") : CTString(svPath.substr(0, nSlash + 1));
}

// The directory above one that ends in "/"; empty when there is none.
CTString csParent(const CTString& rcsDirectory) {
    const std::wstring_view sv = rcsDirectory.svGet();
    return CTString(sv.substr(0, sv.substr(0, sv.size() - 1).rfind(L'/') + 1));
}

}  // namespace

CDirEntry::CDirEntry(CWindow* pclParent, const wchar_t* pszText, int nX, int nY, int nWidth, int nHeight,
                     const wchar_t* pszLabel, eBORDER_STYLE eStyle, int bAbsolute)
    : CEntry(pclParent, pszText, nX, nY, nWidth, nHeight, pszLabel, eStyle), m_bAbsolute(bAbsolute) {}

bool CDirEntry::__bGuarded(int nIndex) const noexcept {
    return m_bAbsolute != 0 && nIndex == 0 && m_csText.svGet().starts_with(L'/');
}

void CDirEntry::__SendChange(bool bDirectory) {
    _bSendEvent(bDirectory ? eEVENT_DIR_CHANGED : eEVENT_TEXT_CHANGED);
}

bool CDirEntry::_bBackSpace() {
    // Told before the edit, so that removing the last "/" itself counts as a change of the directory.
    const bool bDirectory = bInDirectory(m_csText, m_nCursor - 1);
    if (__bGuarded(m_nCursor - 1) || !CEntry::_bBackSpace()) {
        return false;
    }
    __SendChange(bDirectory);
    _bSendEvent(eEVENT_TEXT_CHANGED);
    return true;
}

void CDirEntry::_DelChar() {
    if (__bGuarded(m_nCursor) || m_nCursor == static_cast<int>(m_csText.nGetLength())) {
        return;
    }
    const bool bDirectory = bInDirectory(m_csText, m_nCursor);
    CEntry::_DelChar();
    __SendChange(bDirectory);
}

void CDirEntry::_AddChar(wchar_t c) {
    const std::size_t nBefore = m_csText.nGetLength();
    CEntry::_AddChar(std::iswspace(static_cast<wint_t>(c)) != 0 ? L'_' : c);
    if (m_csText.nGetLength() != nBefore) {
        __SendChange(c == L'/' || bInDirectory(m_csText, m_nCursor));
    }
}

bool CDirEntry::_bGoLeft() {
    return !__bGuarded(m_nCursor - 1) && CEntry::_bGoLeft();
}

CDirectory::CDirectory(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle,
                       const wchar_t* pszPath)
    : COkCancelWin(nX, nY, nWidth, nHeight),
      m_clPath(this, pszPath, 3, 2, nWidth - 7, 4, L"", eBORDER_SHADOW, 1),
      m_clList(this, 3, 6, nWidth - 7, nHeight - 13, 0),
      m_csTitle(pszTitle) {
    AddChild(&m_clPath);
    AddChild(&m_clList);
    _AddButtons();
    _ListDirectory();
}

bool CDirectory::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (pclSender == &m_clPath) {
        switch (eEvent) {
            case eEVENT_DIR_CHANGED:
                _ListDirectory();
                Draw();
                return true;
            case eEVENT_TEXT_CHANGED:
                __SelectTyped();
                Draw();
                return true;
            case eEVENT_ENTER: _Confirm(); return true;
            default: return false;
        }
    }
    if (pclSender == &m_clList) {
        return eEvent == eEVENT_SELECTED && __bEnterSelected();
    }
    return COkCancelWin::bOnEvent(pclSender, eEvent);
}

void CDirectory::_ListDirectory() {
    m_clList.ClearList();
    m_csCurrent = csDirectoryPart(m_clPath.pszGetText());
    if (m_csCurrent != L"/") {
        m_clList.AddLine(PSZ_PARENT);
    }
    CFileSearch clSearch;
    for (bool b = CDiskFile::bFindFirst(m_csCurrent + L"*", ATTRIBUT_REPERTOIRE, &clSearch); b;
         b = CDiskFile::bFindNext(&clSearch)) {
        m_clList.AddLine(clSearch.csGetName().pszGet());
    }
    CDiskFile::bFindClose(&clSearch);
    m_clList.SortLine(__sortdirectory);
}

int CDirectory::__sortdirectory(const wchar_t* pszLeft, const wchar_t* pszRight) {
    const bool bLeftIsParent = std::wcscmp(pszLeft, PSZ_PARENT) == 0;
    const bool bRightIsParent = std::wcscmp(pszRight, PSZ_PARENT) == 0;
    if (bLeftIsParent || bRightIsParent) {
        return static_cast<int>(bRightIsParent) - static_cast<int>(bLeftIsParent);
    }
    return ::wcscasecmp(pszLeft, pszRight);
}

// Selects the first line that begins with what is typed behind the path's last "/", or else the first line.
void CDirectory::__SelectTyped() {
    const std::wstring_view svPath = m_clPath.pszGetText();
    const std::size_t nSlash = svPath.rfind(L'/');
    int nLine = 0;
    if (nSlash != std::wstring_view::npos) {
        const std::wstring_view svTyped = svPath.substr(nSlash + 1);
        const int nCount = m_clList.nGetNbItem();
        while (nLine < nCount && !std::wstring_view(m_clList[nLine]).starts_with(svTyped)) {
            ++nLine;
        }
        nLine = nLine < nCount ? nLine : 0;
    }
    m_clList.Select(nLine);
}

// Moves into the directory of the selected line. False when there is none.
bool CDirectory::__bEnterSelected() {
    const wchar_t* const pszLine = m_clList.pszGetSelectedLine();
    if (pszLine == nullptr) {
        return false;
    }
    const CTString csTarget = std::wcscmp(pszLine, PSZ_PARENT) == 0
                                  ? csParent(m_csCurrent)
                                  : m_csCurrent + std::wstring_view(pszLine) + L"/";
    if (!csTarget.bEmpty()) {
        m_clPath.SetText(csTarget.pszGet());
    }
    _ListDirectory();
    Draw();
    return true;
}

void CDirectory::_DrawWindow() {
    CWindow::_DrawWindow();
    _DrawTitle(1, 2, m_csTitle.pszGet());
}

}  // namespace kalmo
