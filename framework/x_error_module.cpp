#include "framework/x_error_module.h"

#include <algorithm>

#include "framework/text_number.h"

namespace kalmo {
namespace {

// 1 to 4 and 1000 are the archive's result codes as they come.
constexpr STErrorDef gstErrorDef[] = {
    {1, TEXTE_FICHIER_ABSENT, 0, eERRORLEVEL::Error},     {2, TEXTE_FICHIER_NON_CREE, 0, eERRORLEVEL::Error},
    {3, TEXTE_ARCHIVE_ENDOMMAGEE, 0, eERRORLEVEL::Error}, {4, TEXTE_ILLISIBLE, 0, eERRORLEVEL::Error},
    {9, TEXTE_OPERATION_REFUSEE, 0, eERRORLEVEL::Error},  {105, TEXTE_ERREUR_INTERNE, 0, eERRORLEVEL::Severe},
    {1000, TEXTE_ARCHIVE_FERMEE, 0, eERRORLEVEL::Severe}, {1001, TEXTE_NON_INSTALLE, 0, eERRORLEVEL::Severe},
};

}  // namespace

const STErrorDef* STErrorModule::pstFind(unsigned unCode) const noexcept {
    const auto it = std::find_if(tabDef.begin(), tabDef.end(),
                                 [unCode](const STErrorDef& rst) { return rst.dwCode == unCode; });
    return it == tabDef.end() ? nullptr : &*it;
}

constinit const STErrorModule gstErrorModule604{604, L"kalmoinstall", L"25.0.98.0", gstErrorDef,
                                                &gstMyModuleInfo604};

}  // namespace kalmo
