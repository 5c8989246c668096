#include "framework/language.h"

#include <cstdlib>
#include <string_view>

namespace kalmo {

constinit int CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS;
constinit int* CInformationModule::ms_pnLangueFramework = &CInformationModule::ms_nLangueFramework;

int nChoisitLangue(const char* pszLcAll, const char* pszLcMessages, const char* pszLang) {
    for (const char* psz : {pszLcAll, pszLcMessages, pszLang}) {
        if (psz == nullptr || *psz == '\0') {
            continue;
        }
        const std::string_view sv(psz);
        return sv.starts_with("fr")   ? LANGUE_FRANCAIS
               : sv.starts_with("es") ? LANGUE_ESPAGNOL
                                      : LANGUE_ANGLAIS;
    }
    return LANGUE_ANGLAIS;
}

void SetLangueFramework() {
    *CInformationModule::ms_pnLangueFramework =
        nChoisitLangue(std::getenv("LC_ALL"), std::getenv("LC_MESSAGES"), std::getenv("LANG"));
}

}  // namespace kalmo
