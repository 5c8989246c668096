#include "framework/text.h"

namespace kalmo {

CTString csLoadText(unsigned unId) {
    CTString csText;
    DLLRES_bLoadString(&gstMyModuleInfo604, unId, &csText);
    return csText;
}

}  // namespace kalmo
