#ifndef KALMO_APP_CHECK_FINDING_TEXT_H
#define KALMO_APP_CHECK_FINDING_TEXT_H

#include <string_view>
#include <vector>

#include "framework/xy_string.h"

/// How the parts of a check make the texts of what they find: csFormatLine of a text that holds the findings
/// of one theme. What is not ours is given csQuoted.
namespace kalmo {

/// The one of some names that another may have been meant for, whatever their letter case: one that is made
/// of it by one or two slips (a letter too many, missing, wrong, or two of them swapped), in a short name by
/// one. Null when none is that near; of several the nearest, then the first.
const CTString* pcsNearest(std::wstring_view svName, const std::vector<CTString>& rtabKnown);

}  // namespace kalmo

#endif
