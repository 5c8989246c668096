#include "framework/json.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "framework/conversion.h"

namespace kalmo {
namespace {

// The control characters beyond those of ASCII's beginning, which the library leaves as they are. They stand
// in texts alone.
std::string csWithoutControls(std::string_view sv) {
    std::string cs;
    for (std::size_t n = 0; n < sv.size(); ++n) {
        if (sv[n] == '\x7F') {
            cs += "\\u007f";
        } else if (sv[n] == '\xC2' && static_cast<unsigned char>(sv[n + 1]) < 0xA0) {
            std::array<char, 8> szEscape{};
            static_cast<void>(std::snprintf(szEscape.data(), szEscape.size(), "\\u%04x",
                                            static_cast<unsigned>(static_cast<unsigned char>(sv[++n]))));
            cs += szEscape.data();
        } else {
            cs += sv[n];
        }
    }
    return cs;
}

}  // namespace

CJson clJsonText(const CTString& cs) {
    return cs.bEmpty() ? CJson() : CJson(csToUTF8(cs).pszGet());
}

std::string csJsonDump(const CJson& rcl) {
    return csWithoutControls(rcl.dump(2, ' ', false, CJson::error_handler_t::replace)) + "\n";
}

}  // namespace kalmo
