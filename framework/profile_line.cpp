#include "framework/profile_line.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <string>

#include "framework/conversion.h"

namespace kalmo {
namespace {

using namespace std::string_view_literals;

std::wstring_view svFrom(std::wstring_view sv, std::size_t nStart) {
    return sv.substr(std::min(nStart, sv.size()));
}

bool bBeginsWith(std::wstring_view svLine, std::wstring_view svName) {
    return bEgalSansCasse(svLine.substr(0, svName.size()), svName);
}

std::wstring_view svBeforeNull(std::wstring_view sv) {
    return sv.substr(0, sv.find(L'\0'));
}

constexpr std::size_t TAILLE_NOMBRE = 20;  // of a value 19 characters count, and its null

}  // namespace

std::wstring_view svCutBlanks(std::wstring_view svLine) {
    return svFrom(svLine, svLine.find_first_not_of(L' '));
}

bool bHeaderOf(std::wstring_view svLine, std::wstring_view svSection) {
    if (!svLine.starts_with(L'[')) {
        return false;
    }
    svLine.remove_prefix(1);
    return bBeginsWith(svLine, svSection) && svFrom(svLine, svSection.size()).starts_with(L']');
}

bool bComment(std::wstring_view svLine) {
    return svLine.starts_with(L':');
}

bool bLineOfKey(std::wstring_view svLine, std::wstring_view svKey) {
    return svLine.size() > svKey.size() && bBeginsWith(svLine, svKey) &&
           L"= \t"sv.find(svLine[svKey.size()]) != std::wstring_view::npos;
}

std::optional<std::wstring_view> svSectionName(std::wstring_view svLine) {
    const std::size_t nEnd = svLine.find(L']');
    if (!svLine.starts_with(L'[') || nEnd == std::wstring_view::npos) {
        return std::nullopt;
    }
    return svBeforeNull(svLine.substr(1, nEnd - 1));
}

std::optional<std::wstring_view> svKeyName(std::wstring_view svLine) {
    const std::size_t nEqual = svLine.find(L'=');
    if (nEqual == std::wstring_view::npos) {
        return std::nullopt;
    }
    const std::wstring_view svName = svLine.substr(0, nEqual);
    return svBeforeNull(svName.substr(0, svName.find_last_not_of(L' ') + 1));
}

std::optional<std::wstring_view> svValueOf(std::wstring_view svLine, std::wstring_view svKey) {
    if (!bLineOfKey(svLine, svKey)) {
        return std::nullopt;
    }
    const std::size_t nEqual = svLine.find(L'=', svKey.size());
    if (nEqual == std::wstring_view::npos) {
        return std::nullopt;
    }
    const std::wstring_view svRest = svLine.substr(nEqual + 1);
    const std::wstring_view svValue = svFrom(svRest, svRest.find_first_not_of(L" \t"));
    return svValue.substr(0, svValue.find_first_of(L"\r\n\0"sv));
}

int nEntierDeValeur(std::wstring_view svValue) {
    const std::wstring cs(svValue.substr(0, TAILLE_NOMBRE - 1));
    return static_cast<int>(std::clamp<long>(std::wcstol(cs.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

CTString csValeurRelue(std::wstring_view svValue) {
    static constexpr std::wstring_view SV_KEY = L"k";
    const CTString csLine = CTString(SV_KEY) + L" = " + svValue + L"\n";
    return CTString(svValueOf(csLine, SV_KEY).value_or(std::wstring_view()));
}

}  // namespace kalmo
