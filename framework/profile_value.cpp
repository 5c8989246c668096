#include "framework/profile_value.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <string>

#include "framework/profile_line.h"

namespace kalmo {
namespace {

constexpr std::size_t TAILLE_ENTIER = 20;  // the buffer of the rule, with its null

}  // namespace

int nEntierDeValeur(std::wstring_view svValue) {
    const std::wstring cs(svValue.substr(0, TAILLE_ENTIER - 1));
    return static_cast<int>(std::clamp<long>(std::wcstol(cs.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

CTString csValeurRelue(std::wstring_view svValue) {
    static constexpr std::wstring_view SV_KEY = L"k";
    const CTString csLine = CTString(SV_KEY) + L" = " + svValue + L"\n";
    return CTString(svValueOf(csLine, SV_KEY).value_or(std::wstring_view()));
}

}  // namespace kalmo
