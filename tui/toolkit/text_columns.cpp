#include "tui/toolkit/text_columns.h"

#include <wchar.h>

namespace kalmo {
namespace {

// Characters that are not seen themselves: a name could use them to show as another one. Terminals do not
// agree on their width either.
bool bInvisible(wchar_t c) {
    return c == 0xAD || c == 0x61C || (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0x180E || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) ||
           (c >= 0x1BCA0 && c <= 0x1BCA3) || (c >= 0xE0000 && c <= 0xE007F);
}

bool bSurrogate(wchar_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

}  // namespace

wchar_t cDrawable(wchar_t c) {
    if (c >= L' ' && c <= L'~') {
        return c;
    }
    return c == 0 || bSurrogate(c) || bInvisible(c) || ::wcwidth(c) < 0 ? L'?' : c;
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

}  // namespace kalmo
