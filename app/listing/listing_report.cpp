#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "app/config/server_config.h"
#include "app/engine/service_state.h"
#include "app/engine/trace.h"
#include "app/listing/listing.h"
#include "framework/conversion.h"
#include "framework/json.h"
#include "framework/text.h"
#include "services/service_manager.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

const char* pszInitWord() {
    switch (CServiceManager::ms_eDistri) {
        case eSystemd: return "systemd";
        case eNotDetected: return "unknown";
        default: return "scripts";
    }
}

CJson clText(const CTString& cs) {
    return csToUTF8(cs).pszGet();
}

// The cells of a line; nothing stands behind the last one, which may be as long as it is.
constexpr std::size_t COLUMNS = 5;
using CTableLine = std::array<std::wstring, COLUMNS>;

std::wstring csCell(const CTString& cs) {
    std::wstring csShown(cs.bEmpty() ? L"-" : csOneLine(cs).svGet());
    std::replace_if(csShown.begin(), csShown.end(), bInvisible, L'?');
    return csShown;
}

CTableLine tabLineOf(const STListed& rst) {
    return {csCell(rst.csName) + (rst.bOurs ? L"" : L" *"), rst.nPort ? std::to_wstring(*rst.nPort) : L"-",
            csCell(rst.csVersion), csCell(csStateText(rst.eState)), csCell(rst.csDirectory)};
}

}  // namespace

CTString csListingAsTable(const std::vector<STListed>& rtab) {
    if (rtab.empty()) {
        return csLoadText(TEXTE_LISTE_VIDE);
    }
    std::vector<CTableLine> tabLine(1);
    std::size_t nColumn = 0;
    for (const unsigned unText :
         {TEXTE_LISTE_NOM, TEXTE_LISTE_PORT, TEXTE_LISTE_VERSION, TEXTE_LISTE_ETAT, TEXTE_LISTE_REPERTOIRE}) {
        tabLine.front()[nColumn++] = csLoadText(unText).svGet();
    }
    std::transform(rtab.begin(), rtab.end(), std::back_inserter(tabLine), tabLineOf);
    std::array<int, COLUMNS> tabWidth{};
    for (const CTableLine& rtabLine : tabLine) {
        for (std::size_t n = 0; n < COLUMNS; ++n) {
            tabWidth[n] = std::max(tabWidth[n], nColumns(rtabLine[n]));
        }
    }
    std::wstring csTable;
    for (const CTableLine& rtabLine : tabLine) {
        csTable += csTable.empty() ? L"" : L"\n";
        for (std::size_t n = 0; n + 1 < COLUMNS; ++n) {
            const int nGap = tabWidth[n] - nColumns(rtabLine[n]) + 2;
            csTable += rtabLine[n] + std::wstring(static_cast<std::size_t>(nGap), L' ');
        }
        csTable += rtabLine.back();
    }
    if (std::any_of(rtab.begin(), rtab.end(), [](const STListed& rst) { return !rst.bOurs; })) {
        csTable += L"\n* " + std::wstring(csLoadText(TEXTE_LISTE_ETRANGER).svGet());
    }
    return csTable;
}

std::string csListingAsJson(const std::vector<STListed>& rtab) {
    CJson tabInstance = CJson::array();
    for (const STListed& rst : rtab) {
        tabInstance.push_back({{"kind", rst.bManager ? "manager" : "instance"},
                               {"name", clText(rst.csName)},
                               {"service", clText(rst.csService)},
                               {"port", rst.nPort ? CJson(*rst.nPort) : CJson()},
                               {"version", clJsonText(rst.csVersion)},
                               {"directory", clJsonText(rst.csDirectory)},
                               {"state", pszStateWord(rst.eState)},
                               {"ours", rst.bOurs}});
    }
    return csJsonDump({{"schema", 1},
                       {"version", clText(csGetOwnVersion())},
                       {"init", pszInitWord()},
                       {"instances", std::move(tabInstance)}});
}

}  // namespace kalmo
