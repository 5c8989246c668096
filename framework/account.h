#ifndef KALMO_FRAMEWORK_ACCOUNT_H
#define KALMO_FRAMEWORK_ACCOUNT_H

#include <sys/types.h>

#include <optional>
#include <string>

namespace kalmo {

/// One account of the machine, as passwd(5) has it.
struct STAccount {
    uid_t nUser = 0;
    gid_t nGroup = 0;
    std::string csHome;  ///< Home directory, bytes as they stand.
};

/// The account of that name (UTF-8), or none. Whoever needs to know an account asks here: the static program
/// cannot load the modules through which the C library asks a directory service (nsswitch.conf(5)); it reads
/// /etc/passwd, and asks getent(1) for whom it does not find there. May throw std::bad_alloc.
std::optional<STAccount> stFindAccount(const std::string& rcsName);

/// The account of that number, or none. May throw std::bad_alloc.
std::optional<STAccount> stFindAccount(uid_t nUser);

}  // namespace kalmo

#endif
