#include "framework/random_bytes.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include "framework/unique_fd.h"

namespace kalmo {

bool bRandomBytes(void* pBuffer, std::size_t nSize) noexcept {
    if (::getrandom(pBuffer, nSize, GRND_NONBLOCK) == static_cast<ssize_t>(nSize)) {
        return true;
    }
    const CUniqueFd clFile(::open("/dev/urandom", O_RDONLY | O_CLOEXEC | O_NOCTTY));
    return clFile.bValid() && ::read(clFile.nGet(), pBuffer, nSize) == static_cast<ssize_t>(nSize);
}

}  // namespace kalmo
