#include "archive/entry_name.h"

#include "framework/conversion.h"

namespace kalmo {

CTString csDecodeEntryName(std::string_view svStored, std::uint16_t wFlags) {
    return csFromCodePage((wFlags & FLAG_UTF8) != 0 ? eCODEPAGE::Utf8 : eCODEPAGE::OEM, svStored);
}

CTString csWithSlashes(CTString csName) {
    csName.Replace(L'\\', L'/');
    return csName;
}

}  // namespace kalmo
