#include "tui/toolkit/dir_entry.h"

#include <cwctype>
#include <string_view>

namespace kalmo {
namespace {

// True when the last "/" lies at the index or behind it.
bool bInDirectory(std::wstring_view svPath, int nIndex) {
    const std::size_t nSlash = svPath.rfind(L'/');
    return nSlash != std::wstring_view::npos && static_cast<int>(nSlash) >= nIndex;
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

}  // namespace kalmo
