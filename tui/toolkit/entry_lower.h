#ifndef KALMO_TUI_TOOLKIT_ENTRY_LOWER_H
#define KALMO_TUI_TOOLKIT_ENTRY_LOWER_H

#include "tui/toolkit/entry.h"

namespace kalmo {

/// A field that makes what is typed lower case.
class CEntryLower : public CEntry {
  public:
    using CEntry::CEntry;

  protected:
    void _AddChar(wchar_t c) override;
};

}  // namespace kalmo

#endif
