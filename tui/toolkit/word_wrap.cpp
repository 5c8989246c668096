#include "tui/toolkit/word_wrap.h"

#include <algorithm>
#include <cwctype>

#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

struct STRun {
    std::size_t nLength = 0;  ///< Characters.
    int nWidth = 0;           ///< Columns.
};

// The run that a text starts with: a word, or the blanks before the next one; none in front of a line end.
// Measures no further than the first character beyond nRoom columns: a word may be as long as the whole text.
STRun stMeasureRun(std::wstring_view sv, int nRoom) {
    constexpr std::wstring_view BLANK = L" \t";
    const bool bWord = !sv.empty() && BLANK.find(sv.front()) == BLANK.npos;
    STRun st;
    CCellWalk clWalk;
    for (const wchar_t c : sv) {
        const bool bEnd = c == L'\r' || c == L'\n' || (BLANK.find(c) == BLANK.npos) != bWord;
        if (bEnd || st.nWidth > nRoom) {
            break;
        }
        ++st.nLength;
        st.nWidth += clWalk.stNext(c).nColumns;
    }
    return st;
}

// Characters that fit into a line, one with its marks at least so that a wide one cannot hold up a narrow
// line.
std::size_t nHardCut(std::wstring_view sv, int nMaxWidth) {
    return nFitting(sv, std::max(nMaxWidth, nColumns(sv.substr(0, 1))));
}

std::size_t nLineLength(std::wstring_view sv, int nMaxWidth) {
    std::size_t nLength = 0;
    int nWidth = 0;
    while (true) {
        const STRun stRun = stMeasureRun(sv.substr(nLength), nMaxWidth - nWidth);
        nWidth += stRun.nWidth;
        if (nWidth > nMaxWidth) {
            return nLength > 0 ? nLength : nHardCut(sv.substr(0, stRun.nLength), nMaxWidth);
        }
        nLength += stRun.nLength;
        if (nWidth == nMaxWidth || nLength == sv.size() || sv[nLength] == L'\r' || sv[nLength] == L'\n') {
            return nLength;
        }
    }
}

}  // namespace

std::vector<std::wstring_view> tabWrapWords(std::wstring_view svText, int nMaxWidth) {
    std::vector<std::wstring_view> tabLine;
    while (nMaxWidth > 0 && !svText.empty()) {
        const std::size_t nLength = nLineLength(svText, nMaxWidth);
        tabLine.push_back(svText.substr(0, nLength));
        svText.remove_prefix(nLength);
        while (!svText.empty() && std::iswspace(static_cast<wint_t>(svText.front())) != 0) {
            svText.remove_prefix(1);
        }
    }
    return tabLine;
}

std::vector<std::wstring_view> tabCutLines(std::wstring_view svText, int nMaxWidth) {
    std::vector<std::wstring_view> tabLine;
    while (nMaxWidth > 0 && !svText.empty()) {
        const std::size_t nEnd = std::min(svText.find(L'\n'), svText.size());
        std::wstring_view svLine = svText.substr(0, nEnd);
        svText.remove_prefix(std::min(nEnd + 1, svText.size()));
        if (svLine.ends_with(L'\r')) {
            svLine.remove_suffix(1);
        }
        do {
            const std::size_t nLength = nHardCut(svLine, nMaxWidth);
            tabLine.push_back(svLine.substr(0, nLength));
            svLine.remove_prefix(nLength);
        } while (!svLine.empty());
    }
    return tabLine;
}

}  // namespace kalmo
