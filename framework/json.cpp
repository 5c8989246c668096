#include "framework/json.h"

#include "framework/conversion.h"

namespace kalmo {

CJson clJsonText(const CTString& cs) {
    return cs.bEmpty() ? CJson() : CJson(csToUTF8(cs).pszGet());
}

std::string csJsonDump(const CJson& rcl) {
    return rcl.dump(2, ' ', false, CJson::error_handler_t::replace) + "\n";
}

}  // namespace kalmo
