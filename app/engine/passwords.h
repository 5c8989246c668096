#ifndef KALMO_APP_ENGINE_PASSWORDS_H
#define KALMO_APP_ENGINE_PASSWORDS_H

#include <string>

#include "framework/xy_string.h"

namespace kalmo {

/// The password of the payload's enciphered entries: 24 letters and digits, derived at run time from a text
/// in the program so that it does not stand there in the clear.
///
/// The installer sets it before it extracts; the build's tool kalmo_archive_password prints it for whoever
/// packs a payload. It keeps entries from being read with an ordinary archiver, it is no secret.
CTString csGetArchivePassword();

/// A password as the server's program takes it behind "--PWDC": upper-case hexadecimal digits of four random
/// bytes and the UTF-8 password, both enciphered with the entry cipher keyed by the UTF-8 account name.
///
/// It keeps the password out of plain sight in a list of processes. It is no secret channel: the key stands
/// beside it. Empty when the system has no random bytes.
std::string csCryptPassword(const CTString& csAccount, const CTString& csPassword);

}  // namespace kalmo

#endif
