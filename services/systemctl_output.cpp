#include "services/systemctl_output.h"

#include <algorithm>

#include "framework/conversion.h"

namespace kalmo {
namespace {

constexpr std::wstring_view SV_ARGUMENTS = L"argv[]=";
constexpr std::wstring_view SV_SCRIPT_FOLDER = L"/etc/init.d/";
constexpr std::wstring_view SV_UNIT_SUFFIX = L".service";

// Takes the text up to the next line feed off the front, and the line feed.
std::wstring_view svTakeLine(std::wstring_view* psvText) {
    const std::wstring_view svLine = psvText->substr(0, psvText->find(L'\n'));
    psvText->remove_prefix(std::min(svLine.size() + 1, psvText->size()));
    return svLine;
}

// The command line in the value of ExecStart.
std::optional<CTString> csReadProgram(std::wstring_view svValue) {
    const std::size_t nArguments = svValue.find(SV_ARGUMENTS);
    if (nArguments == std::wstring_view::npos || nArguments == 0) {
        return std::nullopt;
    }
    svValue.remove_prefix(nArguments + SV_ARGUMENTS.size());
    const std::size_t nEnd = svValue.find(L';');
    if (nEnd == std::wstring_view::npos || nEnd == 0) {
        return std::nullopt;
    }
    return CTString(svValue.substr(0, nEnd));
}

// The names of all services in a listing, with whatever stands before them on their lines.
std::vector<CTString> tabReadAllNames(std::string_view svOutput) {
    const CTString csText = csFromUTF8(svOutput);
    std::wstring_view svText = csText;
    std::vector<CTString> tabName;
    do {
        const std::wstring_view svLine = svTakeLine(&svText);
        if (const std::size_t nEnd = svLine.find(SV_UNIT_SUFFIX); nEnd != std::wstring_view::npos) {
            tabName.emplace_back(svLine.substr(0, nEnd));
        }
    } while (!svText.empty() && svText.front() != L'\n');
    return tabName;
}

void SkipBlanks(std::wstring_view* psv) {
    psv->remove_prefix(std::min(psv->find_first_not_of(L' '), psv->size()));
}

}  // namespace

STUnitProperties stReadUnitProperties(std::string_view svOutput) {
    STUnitProperties st;
    const CTString csText = csFromUTF8(svOutput);
    for (std::wstring_view svText = csText; !svText.empty();) {
        const std::wstring_view svLine = svTakeLine(&svText);
        const std::size_t nEqual = svLine.find(L'=');
        if (nEqual == std::wstring_view::npos) {
            continue;
        }
        const std::wstring_view svKey = svLine.substr(0, nEqual);
        const std::wstring_view svValue = svLine.substr(nEqual + 1);
        if (bEgalSansCasse(svKey, L"Type")) {
            st.bExists = st.bExists || !svValue.empty();
        } else if (bEgalSansCasse(svKey, L"Description")) {
            st.csDescription = CTString(svValue);
        } else if (bEgalSansCasse(svKey, L"ExecStart")) {
            if (std::optional<CTString> csProgram = csReadProgram(svValue)) {
                st.bInitScript = st.bInitScript || csProgram->svGet().starts_with(SV_SCRIPT_FOLDER);
                st.csProgram = std::move(csProgram);
            }
        }
    }
    return st;
}

CTString csReadProperty(std::string_view svOutput) {
    const std::size_t nEqual = svOutput.find('=');
    if (nEqual == std::string_view::npos) {
        return {};
    }
    const CTString csValue = csFromUTF8(svOutput.substr(nEqual + 1));
    return csValue.svGet().substr(0, std::max<std::size_t>(csValue.nGetLength(), 1) - 1);
}

eSERVICESTATUS eReadActiveState(std::wstring_view svState) {
    struct STState {
        std::wstring_view svName;
        eSERVICESTATUS eStatus;
    };
    static constexpr STState TAB_STATE[] = {
        {L"active", eServiceRunning}, {L"reloading", eServiceRunning},   {L"inactive", eServiceStopped},
        {L"failed", eServiceFailed},  {L"activating", eServiceStarting}, {L"deactivating", eServiceStopping},
    };
    const auto* const pst = std::find_if(std::begin(TAB_STATE), std::end(TAB_STATE), [&](const STState& rst) {
        return bEgalSansCasse(rst.svName, svState);
    });
    return pst == std::end(TAB_STATE) ? eServiceStopped : pst->eStatus;
}

std::vector<CTString> tabReadUnitNames(std::string_view svOutput, std::wstring_view svPrefix) {
    std::vector<CTString> tabName = tabReadAllNames(svOutput);
    std::erase_if(tabName, [&](const CTString& rcs) { return !rcs.svGet().starts_with(svPrefix); });
    return tabName;
}

std::vector<CTString> tabReadValues(std::string_view svOutput, std::wstring_view svProperty) {
    std::vector<CTString> tabValue;
    const CTString csText = csFromUTF8(svOutput);
    for (std::wstring_view svText = csText; !svText.empty();) {
        const std::wstring_view svLine = svTakeLine(&svText);
        if (svLine.starts_with(svProperty) && svLine.substr(svProperty.size()).starts_with(L'=')) {
            tabValue.emplace_back(svLine.substr(svProperty.size() + 1));
        }
    }
    return tabValue;
}

std::vector<CTString> tabReadUnitIds(std::string_view svOutput) {
    std::vector<CTString> tabId = tabReadValues(svOutput, L"Id");
    std::erase_if(tabId, [](const CTString& rcs) { return !rcs.svGet().ends_with(SV_UNIT_SUFFIX); });
    for (CTString& rcs : tabId) {
        rcs.Truncate(rcs.nGetLength() - SV_UNIT_SUFFIX.size());
    }
    return tabId;
}

bool bHasMarkedNames(std::string_view svOutput, std::wstring_view svPrefix) {
    const std::vector<CTString> tabName = tabReadAllNames(svOutput);
    return std::any_of(tabName.begin(), tabName.end(), [&](const CTString& rcsName) {
        std::wstring_view svName = rcsName;
        SkipBlanks(&svName);
        // The mark is one character, such as a dot or a cross, and a blank follows it.
        if (svName.size() > 1 && svName[1] == L' ') {
            svName.remove_prefix(1);
            SkipBlanks(&svName);
        }
        return svName.size() < rcsName.nGetLength() && svName.starts_with(svPrefix);
    });
}

}  // namespace kalmo
