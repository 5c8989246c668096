#include "framework/x_error_argument.h"

#include "framework/conversion.h"

namespace kalmo {

void CXErrorArguments::Set(CFormatArgList tabArg) {
    m_tabKept.clear();
    for (const CFormatArg& rclArg : tabArg) {
        switch (rclArg.eGetKind()) {
            case CFormatArg::eKIND::WideText: m_tabKept.emplace_back(CTString(rclArg.svGetWide())); break;
            case CFormatArg::eKIND::Utf8Text: m_tabKept.emplace_back(csFromUTF8(rclArg.svGetUtf8())); break;
            case CFormatArg::eKIND::Integer:
            case CFormatArg::eKIND::Pointer: m_tabKept.emplace_back(rclArg); break;
        }
    }
}

std::vector<CFormatArg> CXErrorArguments::tabGet() const {
    std::vector<CFormatArg> tab;
    for (const auto& rKept : m_tabKept) {
        tab.push_back(std::visit([](const auto& rValue) { return CFormatArg(rValue); }, rKept));
    }
    return tab;
}

}  // namespace kalmo
