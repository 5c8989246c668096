#ifndef KALMO_TUI_TOOLKIT_DIALOG_TEXT_H
#define KALMO_TUI_TOOLKIT_DIALOG_TEXT_H

#include "framework/resource.h"

/// The texts that the dialogs of the toolkit show, by their numbers.
namespace kalmo {

constexpr unsigned TEXTE_OK = 4146;
constexpr unsigned TEXTE_ANNULER = 4151;
constexpr unsigned TEXTE_OUI = 4152;
constexpr unsigned TEXTE_NON = 4153;
constexpr unsigned TEXTE_TITRE_LICENCE = 0x103E;
constexpr unsigned TEXTE_ACCEPTER = 0x103F;
constexpr unsigned TEXTE_REFUSER = 0x1040;

/// A text in the operator's language; empty when there is none of that number.
CTString csLoadText(unsigned unId);
/// A text with its inserts filled in; empty when there is none or it does not fit these arguments.
template <class... TArg>
CTString csFormatText(unsigned unId, const TArg&... arg) {
    CTString csText;
    DLLRES_bFormatMessage(&gstMyModuleInfo604, unId, &csText, arg...);
    return csText;
}

}  // namespace kalmo

#endif
