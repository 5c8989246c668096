#include "framework/profile_value.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <string>

#include "framework/profile_line.h"

namespace kalmo {
namespace {

constexpr std::size_t nTailleEntier = 20;  // the buffer of the rule, with its null

}  // namespace

int nEntierDeValeur(std::wstring_view svValue) {
    const std::wstring cs(svValue.substr(0, nTailleEntier - 1));
    return static_cast<int>(std::clamp<long>(std::wcstol(cs.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

CTString csValeurRelue(std::wstring_view svValue) {
    static constexpr std::wstring_view svKey = L"k";
    const CTString csLine = CTString(svKey) + L" = " + svValue + L"\n";
    return CTString(svValueOf(csLine, svKey).value_or(std::wstring_view()));
}

}  // namespace kalmo
