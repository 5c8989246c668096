#ifndef KALMO_FRAMEWORK_ERRNO_KEPT_H
#define KALMO_FRAMEWORK_ERRNO_KEPT_H

#include <cerrno>

namespace kalmo {

/// Keeps errno over what is done after a failure: the reason stays that of the failure. A local variable.
class CErrnoKept {
  public:
    CErrnoKept() noexcept : m_nErrno(errno) {}
    CErrnoKept(const CErrnoKept&) = delete;
    CErrnoKept& operator=(const CErrnoKept&) = delete;
    ~CErrnoKept() { errno = m_nErrno; }
    [[nodiscard]] int nGet() const noexcept { return m_nErrno; }

  private:
    int m_nErrno;
};

}  // namespace kalmo

#endif
