#ifndef KALMO_APP_ENGINE_ARCHIVE_PASSWORD_H
#define KALMO_APP_ENGINE_ARCHIVE_PASSWORD_H

#include "framework/xy_string.h"

namespace kalmo {

/// The password of the payload's enciphered entries: 24 letters and digits, derived at run time from a text
/// in the program so that it does not stand there in the clear.
///
/// The installer sets it before it extracts; the build's tool kalmo_archive_password prints it for whoever
/// packs a payload. It keeps entries from being read with an ordinary archiver, it is no secret.
CTString csGetArchivePassword();

}  // namespace kalmo

#endif
