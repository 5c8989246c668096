#include "tui/toolkit/text_columns.h"

#include <wchar.h>

#include <algorithm>
#include <cwctype>

#include "framework/plain_letter.h"

namespace kalmo {
namespace {

bool bSurrogate(wchar_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

struct STRun {
    std::size_t nLength = 0;  // Characters.
    int nWidth = 0;           // Columns.
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

bool bInvisible(wchar_t c) {
    // Terminals do not agree on their width either.
    return c == 0xAD || c == 0x61C || (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0x180E || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) ||
           (c >= 0x1BCA0 && c <= 0x1BCA3) || (c >= 0xE0000 && c <= 0xE007F);
}

wchar_t cDrawable(wchar_t c) {
    if (c >= L' ' && c <= L'~') {
        return c;
    }
    if (c < L' ' || c == 0x7F || bSurrogate(c) || bInvisible(c)) {
        return L'?';
    }
    return ::wcwidth(c) < 0 ? cPlainLetter(c) : c;
}

CCellWalk::STDrawn CCellWalk::stNext(wchar_t c) {
    STDrawn st{cDrawable(c), 1};
    if (st.c < L' ' || st.c > L'~') {
        st.nColumns = ::wcwidth(st.c);
    }
    if (st.nColumns == 0 && m_nRoom == 0) {
        st = {L'?', 1};
    }
    m_nRoom = st.nColumns > 0 ? MAX_MARKS : m_nRoom - 1;
    return st;
}

int nColumns(std::wstring_view sv) {
    CCellWalk clWalk;
    int nTotal = 0;
    for (const wchar_t c : sv) {
        nTotal += clWalk.stNext(c).nColumns;
    }
    return nTotal;
}

std::wstring csVisible(std::wstring_view sv, int nSkip, int nWidth) {
    std::wstring csOut;
    CCellWalk clWalk;
    bool bBaseVisible = false;  // A mark may follow.
    int nColumn = -nSkip;       // Of the next character, in the view.
    for (const wchar_t c : sv) {
        const CCellWalk::STDrawn st = clWalk.stNext(c);
        if (nColumn >= nWidth && (st.nColumns > 0 || !bBaseVisible)) {
            break;
        }
        if (st.nColumns > 0) {
            bBaseVisible = nColumn >= 0 && nColumn + st.nColumns <= nWidth;
            nColumn += st.nColumns;
        }
        if (bBaseVisible) {
            csOut += st.c;
        } else if (st.nColumns > 0 && nColumn > 0) {
            csOut += L' ';
        }
    }
    return csOut;
}

std::size_t nFitting(std::wstring_view sv, int nWidth) {
    CCellWalk clWalk;
    int nTotal = 0;
    for (std::size_t n = 0; n < sv.size(); ++n) {
        nTotal += clWalk.stNext(sv[n]).nColumns;
        if (nTotal > nWidth) {
            return n;
        }
    }
    return sv.size();
}

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

std::wstring csBrokenAtWords(std::wstring_view svText, int nMaxWidth) {
    std::wstring csResult;
    while (!svText.empty()) {
        const std::wstring_view svLine = svText.substr(0, svText.find(L'\n'));
        svText.remove_prefix(std::min(svLine.size() + 1, svText.size()));
        bool bFirst = true;
        for (const std::wstring_view svPart : tabWrapWords(svLine, nMaxWidth)) {
            csResult.append(bFirst ? L"" : L"\n").append(svPart);
            bFirst = false;
        }
        csResult += L'\n';
    }
    return csResult;
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
