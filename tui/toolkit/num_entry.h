#ifndef KALMO_TUI_TOOLKIT_NUM_ENTRY_H
#define KALMO_TUI_TOOLKIT_NUM_ENTRY_H

#include "tui/toolkit/entry.h"

namespace kalmo {

/// A field that takes only the digits 0 to 9.
class CNumEntry : public CEntry {
  public:
    using CEntry::CEntry;

  protected:
    void _AddChar(wchar_t c) override;
};

}  // namespace kalmo

#endif
