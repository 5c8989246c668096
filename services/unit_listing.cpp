#include "services/unit_listing.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "services/child_setup.h"
#include "services/systemctl.h"
#include "services/systemctl_output.h"

namespace kalmo {
namespace {

using CNameSet = std::set<std::wstring, std::less<>>;

constexpr std::wstring_view SV_LIST_UNITS = L"list-units --all --type=service --full --no-pager --no-legend";
constexpr std::wstring_view SV_LIST_FILES = L"list-unit-files --type=service --full --no-pager --no-legend";
constexpr std::wstring_view SV_ASK_IDS = L"--property=Id show";

// Characters that mean themselves in a pattern.
constexpr std::wstring_view SV_PLAIN = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789:-_.@";

// What remains of a launch's arguments for names.
constexpr std::size_t MAX_NAMES = MAX_ARGUMENT_VECTOR - 3;

// What the words of a command cannot pass on is the name of no unit; "-" begins an option, and a name that
// ends with "@" is a template, which systemctl does not show.
bool bUnitName(std::wstring_view sv) {
    return !sv.empty() && sv.front() != L'-' && sv.back() != L'@' &&
           sv.find_first_of(L" \"") == std::wstring_view::npos;
}

// Drops the aliases from a few names: what they name has another name of its own.
void DropAliases(std::vector<CTString>* ptabName) {
    CTString csArguments(SV_ASK_IDS);
    for (const CTString& rcs : *ptabName) {
        csArguments += L" " + rcs + L".service";
    }
    CXYString<char> csOutput;
    if (!bAskSystemctl(csArguments, &csOutput, nullptr)) {
        return;
    }
    CNameSet tabId;
    for (const CTString& rcs : tabReadUnitIds(csOutput)) {
        tabId.emplace(rcs.svGet());
    }
    // No name at all is no answer.
    std::erase_if(*ptabName,
                  [&](const CTString& rcs) { return !tabId.empty() && !tabId.contains(rcs.svGet()); });
}

}  // namespace

bool bListUnits(std::wstring_view svPrefix, std::vector<CTString>* ptabName) {
    CXYString<char> csOutput;
    if (!bAskSystemctl(SV_LIST_UNITS, &csOutput, nullptr)) {
        return false;
    }
    *ptabName = tabReadUnitNames(csOutput, svPrefix);
    // The status column hides names: all of them, or some where no prefix tells a name from what stands
    // before it. It is left out then.
    if ((ptabName->empty() || svPrefix.empty()) && bHasMarkedNames(csOutput, svPrefix)) {
        csOutput.Empty();
        const bool bAnswered = bAskSystemctl(CTString(SV_LIST_UNITS) + L" --plain", &csOutput, nullptr);
        std::vector<CTString> tabPlain = tabReadUnitNames(csOutput, svPrefix);
        if (bAnswered && !tabPlain.empty()) {
            *ptabName = std::move(tabPlain);
        }
    }
    return true;
}

std::vector<CTString> tabListUnitFiles(std::wstring_view svPrefix, const std::vector<CTString>& rtabListed) {
    CTString csArguments(SV_LIST_FILES);
    if (!svPrefix.empty() && svPrefix.find_first_not_of(SV_PLAIN) == std::wstring_view::npos) {
        csArguments +=
            L" " + CTString(svPrefix) + L"*";  // what systemd finds out of each file takes its time
    }
    std::vector<CTString> tabName;
    CXYString<char> csOutput;
    if (!bAskSystemctl(csArguments, &csOutput, nullptr)) {
        return tabName;
    }
    CNameSet tabKnown;
    for (const CTString& rcs : rtabListed) {
        tabKnown.emplace(rcs.svGet());
    }
    std::vector<CTString> tabFile = tabReadUnitNames(csOutput, svPrefix);
    std::erase_if(tabFile, [&](const CTString& rcs) {
        return !bUnitName(rcs) || !tabKnown.emplace(rcs.svGet()).second;
    });
    for (auto it = tabFile.begin(); it != tabFile.end();) {
        const auto itEnd = it + std::min<std::ptrdiff_t>(MAX_NAMES, tabFile.end() - it);
        std::vector<CTString> tabSome(it, itEnd);
        DropAliases(&tabSome);
        std::move(tabSome.begin(), tabSome.end(), std::back_inserter(tabName));
        it = itEnd;
    }
    return tabName;
}

}  // namespace kalmo
