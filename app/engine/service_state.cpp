#include "app/engine/service_state.h"

#include <algorithm>
#include <iterator>

#include "framework/text.h"

namespace kalmo {
namespace {

struct STState {
    const char* pszWord;
    eSERVICESTATUS eState;
    unsigned unText;
};
constexpr STState TAB_STATE[] = {
    {"running", eServiceRunning, TEXTE_ETAT_EN_MARCHE},   {"stopped", eServiceStopped, TEXTE_ETAT_ARRETE},
    {"starting", eServiceStarting, TEXTE_ETAT_DEMARRAGE}, {"stopping", eServiceStopping, TEXTE_ETAT_ARRET},
    {"failed", eServiceFailed, TEXTE_ETAT_ECHEC},         {"unknown", eServiceUnknown, TEXTE_ETAT_INCONNU},
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
