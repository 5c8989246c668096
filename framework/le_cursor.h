#ifndef KALMO_FRAMEWORK_LE_CURSOR_H
#define KALMO_FRAMEWORK_LE_CURSOR_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kalmo {

/// Reads little-endian fields one after the other from a run of bytes.
///
/// How little-endian bytes in memory become numbers, wherever they come from. A read past the end gives zeros
/// and makes every later read fail too, so a parser reads straight down and asks bOk() once. Borrows the
/// bytes.
class CLeCursor {
  public:
    explicit CLeCursor(std::span<const unsigned char> tabByte) noexcept : m_tabLeft(tabByte) {}

    [[nodiscard]] bool bOk() const noexcept { return m_bOk; }
    [[nodiscard]] std::size_t nLeft() const noexcept { return m_tabLeft.size(); }

    std::uint8_t byNext() noexcept { return static_cast<std::uint8_t>(__u64Next(1)); }
    std::uint16_t wNext() noexcept { return static_cast<std::uint16_t>(__u64Next(2)); }
    std::uint32_t dwNext() noexcept { return static_cast<std::uint32_t>(__u64Next(4)); }
    std::uint64_t u64Next() noexcept { return __u64Next(8); }
    void Skip(std::size_t nCount) noexcept { (void)tabNext(nCount); }

    /// The next nCount bytes; none when fewer are left.
    std::span<const unsigned char> tabNext(std::size_t nCount) noexcept {
        if (!m_bOk || nCount > m_tabLeft.size()) {
            m_bOk = false;
            m_tabLeft = {};
            return {};
        }
        const auto tab = m_tabLeft.first(nCount);
        m_tabLeft = m_tabLeft.subspan(nCount);
        return tab;
    }
    /// The same as text.
    std::string_view svNext(std::size_t nCount) noexcept {
        const auto tab = tabNext(nCount);
        return {reinterpret_cast<const char*>(tab.data()), tab.size()};
    }

  private:
    std::uint64_t __u64Next(std::size_t nCount) noexcept {
        std::uint64_t u64 = 0;
        unsigned unShift = 0;
        for (const unsigned char by : tabNext(nCount)) {
            u64 |= std::uint64_t{by} << unShift;
            unShift += 8;
        }
        return u64;
    }

    std::span<const unsigned char> m_tabLeft;
    bool m_bOk = true;
};

}  // namespace kalmo

#endif
