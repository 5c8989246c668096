#include "tui/text_columns.h"

#include <wchar.h>

namespace kalmo {
namespace {

// Characters that are not seen themselves: a name could use them to show as another one. Terminals do not
// agree on their width either.
bool bInvisible(wchar_t c) {
    return c == 0xAD || c == 0x61C || (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
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

int nColumns(wchar_t c) {
    return c >= L' ' && c <= L'~' ? 1 : ::wcwidth(cDrawable(c));
}

int nColumns(std::wstring_view sv) {
    int nTotal = 0;
    for (const wchar_t c : sv) {
        nTotal += nColumns(c);
    }
    return nTotal;
}

std::wstring csVisible(std::wstring_view sv, int nSkip, int nWidth) {
    std::wstring csOut;
    bool bBaseVisible = false;  // A combining character may follow.
    int nColumn = -nSkip;       // Of the next character, in the view.
    for (const wchar_t c : sv) {
        const int nTaken = nColumns(c);
        if (nColumn >= nWidth && (nTaken > 0 || !bBaseVisible)) {
            break;
        }
        if (nTaken == 0) {
            if (bBaseVisible) {
                csOut += c;
            }
            continue;
        }
        bBaseVisible = nColumn >= 0 && nColumn + nTaken <= nWidth;
        if (bBaseVisible) {
            csOut += cDrawable(c);
        } else if (nColumn + nTaken > 0) {
            csOut += L' ';
        }
        nColumn += nTaken;
    }
    return csOut;
}

std::size_t nFitting(std::wstring_view sv, int nWidth) {
    int nTotal = 0;
    for (std::size_t n = 0; n < sv.size(); ++n) {
        nTotal += nColumns(sv[n]);
        if (nTotal > nWidth) {
            return n;
        }
    }
    return sv.size();
}

}  // namespace kalmo
