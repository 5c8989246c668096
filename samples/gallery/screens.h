#ifndef KALMO_SAMPLES_GALLERY_SCREENS_H
#define KALMO_SAMPLES_GALLERY_SCREENS_H

#include "framework/xy_string.h"

/// The screens of the gallery. Each shows its dialog until the operator leaves it and returns what the
/// operator did there, as one line of text. The argument is the one of the command line; empty for the
/// screen's own example.
namespace kalmo {

using PFNScreen = CTString (*)(const CTString& rcsArgument);

CTString csShowButtons(const CTString& rcsArgument);
CTString csShowCheckBoxes(const CTString& rcsArgument);
CTString csShowEntries(const CTString& rcsArgument);
CTString csShowGauge(const CTString& rcsArgument);
/// Argument: how many lines the left list has.
CTString csShowLists(const CTString& rcsArgument);
CTString csShowRadioList(const CTString& rcsArgument);
CTString csShowOwnControl(const CTString& rcsArgument);
/// Argument of these four: the text to show.
CTString csShowText(const CTString& rcsArgument);
CTString csShowMessage(const CTString& rcsArgument);
CTString csShowQuestion(const CTString& rcsArgument);
CTString csShowLicense(const CTString& rcsArgument);
/// Argument: the path to start with.
CTString csShowDirectory(const CTString& rcsArgument);

}  // namespace kalmo

#endif
