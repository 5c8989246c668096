#include "app/engine/service_state.h"

#include <algorithm>
#include <iterator>

#include "framework/text.h"

namespace kalmo {
namespace {

struct STState {
    eSERVICESTATUS eState;
    const char* pszWord;
    unsigned unText;
};
constexpr STState TAB_STATE[] = {
    {eServiceRunning, "running", TEXTE_ETAT_EN_MARCHE},   {eServiceStopped, "stopped", TEXTE_ETAT_ARRETE},
    {eServiceStarting, "starting", TEXTE_ETAT_DEMARRAGE}, {eServiceStopping, "stopping", TEXTE_ETAT_ARRET},
    {eServiceFailed, "failed", TEXTE_ETAT_ECHEC},         {eServiceUnknown, "unknown", TEXTE_ETAT_INCONNU},
};

const STState& rstStateOf(eSERVICESTATUS eState) noexcept {
    return *std::find_if(std::begin(TAB_STATE), std::end(TAB_STATE) - 1,
                         [&](const STState& rst) { return rst.eState == eState; });
}

}  // namespace

const char* pszStateWord(eSERVICESTATUS eState) noexcept {
    return rstStateOf(eState).pszWord;
}

CTString csStateText(eSERVICESTATUS eState) {
    return csLoadText(rstStateOf(eState).unText);
}

}  // namespace kalmo
