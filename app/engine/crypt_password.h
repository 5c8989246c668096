#ifndef KALMO_APP_ENGINE_CRYPT_PASSWORD_H
#define KALMO_APP_ENGINE_CRYPT_PASSWORD_H

#include <string>

#include "framework/xy_string.h"

namespace kalmo {

/// A password as the server's program takes it behind "--PWDC": upper-case hexadecimal digits of four random
/// bytes and the UTF-8 password, both enciphered with the entry cipher keyed by the UTF-8 account name.
///
/// It keeps the password out of plain sight in a list of processes. It is no secret channel: the key stands
/// beside it. Empty when the system has no random bytes.
std::string csCryptPassword(const CTString& csAccount, const CTString& csPassword);

}  // namespace kalmo

#endif
