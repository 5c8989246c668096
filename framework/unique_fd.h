#ifndef KALMO_FRAMEWORK_UNIQUE_FD_H
#define KALMO_FRAMEWORK_UNIQUE_FD_H

#include <unistd.h>

#include <utility>

namespace kalmo {

/// Owns a file descriptor and closes it. -1 means that it owns none.
class CUniqueFd {
  public:
    CUniqueFd() = default;
    explicit CUniqueFd(int nFd) noexcept : m_nFd(nFd) {}
    CUniqueFd(CUniqueFd&& rclOther) noexcept : m_nFd(rclOther.nRelease()) {}
    CUniqueFd& operator=(CUniqueFd&& rclOther) noexcept {
        Reset(rclOther.nRelease());
        return *this;
    }
    CUniqueFd(const CUniqueFd&) = delete;
    CUniqueFd& operator=(const CUniqueFd&) = delete;
    ~CUniqueFd() { Reset(); }

    [[nodiscard]] int nGet() const noexcept { return m_nFd; }
    [[nodiscard]] bool bValid() const noexcept { return m_nFd >= 0; }
    /// Gives the descriptor to the caller, who closes it.
    [[nodiscard]] int nRelease() noexcept { return std::exchange(m_nFd, -1); }
    void Reset(int nFd = -1) noexcept {
        if (m_nFd >= 0) {
            ::close(m_nFd);
        }
        m_nFd = nFd;
    }

  private:
    int m_nFd = -1;
};

}  // namespace kalmo

#endif
