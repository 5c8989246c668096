#ifndef KALMO_FRAMEWORK_TEXT_H
#define KALMO_FRAMEWORK_TEXT_H

#include <string_view>

#include "framework/resource.h"
#include "framework/text_number.h"

/// The texts of this program: TEXTE_ and a key of the catalogues name one.
namespace kalmo {

/// A text in the operator's language; empty when there is none of that number.
CTString csLoadText(unsigned unId);
/// A text that was laid out for a box, as one line.
CTString csInOneLine(std::wstring_view svText);
/// A text with its inserts filled in; empty when there is none or it does not fit these arguments.
template <class... TArg>
CTString csFormatText(unsigned unId, const TArg&... arg) {
    CTString csText;
    DLLRES_bFormatMessage(&gstMyModuleInfo604, unId, &csText, arg...);
    return csText;
}
/// The same for one line, counted from 0, of a text that holds several of a theme.
template <class... TArg>
CTString csFormatLine(unsigned unId, int nLine, const TArg&... arg) {
    CTString csText;
    DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, nLine, unId, &csText, arg...);
    return csText;
}

}  // namespace kalmo

#endif
