#include "tui/word_wrap.h"

#include <algorithm>
#include <cwctype>

#include "tui/text_columns.h"

namespace kalmo {
namespace {

// Characters of the run that a text starts with: a word, or the blanks before the next one. None in front of
// a line end.
std::size_t nRunLength(std::wstring_view sv) {
    const std::size_t nWord = std::min(sv.find_first_of(L" \t\r\n"), sv.size());
    return nWord > 0 ? nWord : std::min(sv.find_first_not_of(L" \t"), sv.size());
}

// Characters that fit into a line, one at least so that a wide character cannot hold up a narrow line.
std::size_t nHardCut(std::wstring_view sv, int nMaxWidth) {
    return std::min(sv.size(), std::max<std::size_t>(nFitting(sv, nMaxWidth), 1));
}

std::size_t nLineLength(std::wstring_view sv, int nMaxWidth) {
    std::size_t nLength = 0;
    int nWidth = 0;
    while (true) {
        const std::wstring_view svRun = sv.substr(nLength, nRunLength(sv.substr(nLength)));
        nWidth += nColumns(svRun);
        if (nWidth > nMaxWidth) {
            return nLength > 0 ? nLength : nHardCut(svRun, nMaxWidth);
        }
        nLength += svRun.size();
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
