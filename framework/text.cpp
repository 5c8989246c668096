#include "framework/text.h"

namespace kalmo {

CTString csLoadText(unsigned unId) {
    CTString csText;
    DLLRES_bLoadString(&gstMyModuleInfo604, unId, &csText);
    return csText;
}

CTString csInOneLine(std::wstring_view svText) {
    CTString cs;
    for (const wchar_t c : svText) {
        if (c != L'\n' && c != L'\r') {
            cs += c;
        } else if (!cs.svGet().ends_with(L' ')) {
            cs += L' ';
        }
    }
    cs.TrimRight(L' ');
    return cs;
}

}  // namespace kalmo
