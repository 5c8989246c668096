#ifndef KALMO_APP_CHECK_FINDING_TEXT_H
#define KALMO_APP_CHECK_FINDING_TEXT_H

#include <string_view>
#include <vector>

#include "framework/resource.h"
#include "framework/text.h"

/// How the parts of a check make the texts of what they find.
namespace kalmo {

/// A line, counted from 0, of a text of the catalogues with its inserts filled in: each of those texts holds
/// the findings of one theme, a line each. The inserts are texts; what is not ours is given csQuoted.
template <class... TArg>
CTString csFindingText(unsigned unId, int nLine, const TArg&... arg) {
    CTString csText;
    DLLRES_bFormatMessageSingulierPluriel(&gstMyModuleInfo604, nLine, unId, &csText, arg...);
    return csText;
}

/// A text that was laid out for a box, as one line.
CTString csInOneLine(const CTString& csText);

/// The one of some names that another may have been meant for, whatever their letter case: one that is made
/// of it by one or two slips (a letter too many, missing, wrong, or two of them swapped), in a short name by
/// one. Null when none is that near; of several the nearest, then the first.
const CTString* pcsNearest(std::wstring_view svName, const std::vector<CTString>& rtabKnown);

}  // namespace kalmo

#endif
