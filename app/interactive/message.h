#ifndef KALMO_APP_INTERACTIVE_MESSAGE_H
#define KALMO_APP_INTERACTIVE_MESSAGE_H

#include "framework/xy_string.h"

/// The boxes in which the interactive run tells what happened. Keys that were pressed before a box appears do
/// not close it. Where no screen is open they do nothing: an unattended run tells everything in its trace.
namespace kalmo {

/// A failure.
void ShowErrorBox(const CTString& csText);
/// The payload is missing or cannot be read.
void ShowDataError();
/// A success. The box has no title.
void ShowResultBox(const CTString& csText);

}  // namespace kalmo

#endif
