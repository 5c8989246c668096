#include "tui/toolkit/entry_lower.h"

#include <cwctype>

namespace kalmo {

void CEntryLower::_AddChar(wchar_t c) {
    CEntry::_AddChar(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))));
}

}  // namespace kalmo
