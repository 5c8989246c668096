#ifndef KALMO_SAMPLES_SERVER_ACCOUNTS_H
#define KALMO_SAMPLES_SERVER_ACCOUNTS_H

#include <optional>
#include <string>
#include <string_view>

#include "framework/fs_path.h"

namespace kalmo::sample {

/// The password that the argument of "--PWDC" holds for an account, both in UTF-8: upper-case hexadecimal
/// digits of four bytes that only vary it and of the password, enciphered with the entry cipher keyed by the
/// account's name. Empty when the digits are no such thing; a wrong account is noticed mostly, for what comes
/// out is seldom UTF-8.
std::optional<std::string> csDecipherPassword(std::string_view svAccount, std::string_view svHex);

/// The accounts of an instance, file "__system/accounts" below its database root: a line an account, the
/// password's hash (crypt(5)), a blank and the name. No file: "Admin" with an empty password is the only one.
class CAccounts {
  public:
    explicit CAccounts(const CFSPath& clDatabaseRoot);

    /// Adds an account or gives it another password. The file, mode 0600, belongs to the owner of its
    /// directory. False when the name is empty or holds control characters, or on errors of the system.
    bool bCreate(std::string_view svName, std::string_view svPassword);
    /// Whether "NAME PASSWORD" is an account with its password; "NAME" alone has an empty one. Names may hold
    /// blanks.
    [[nodiscard]] bool bLogin(std::string_view svNameAndPassword) const;

  private:
    CFSPath m_clFile;  ///< Empty when its path would be too long.
};

}  // namespace kalmo::sample

#endif
