#include "framework/account.h"

#include <pwd.h>

namespace kalmo {
namespace {

std::optional<STAccount> stOf(const passwd* pst) {
    return pst != nullptr ? std::optional(STAccount{pst->pw_uid, pst->pw_gid, pst->pw_dir}) : std::nullopt;
}

}  // namespace

std::optional<STAccount> stFindAccount(const std::string& rcsName) {
    return stOf(::getpwnam(rcsName.c_str()));
}

std::optional<STAccount> stFindAccount(uid_t nUser) {
    return stOf(::getpwuid(nUser));
}

}  // namespace kalmo
