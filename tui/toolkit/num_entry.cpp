#include "tui/toolkit/num_entry.h"

namespace kalmo {

void CNumEntry::_AddChar(wchar_t c) {
    if (c >= L'0' && c <= L'9') {
        CEntry::_AddChar(c);
    }
}

}  // namespace kalmo
