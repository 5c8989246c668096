#ifndef KALMO_FRAMEWORK_XY_STRING_H
#define KALMO_FRAMEWORK_XY_STRING_H

#include <compare>
#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>

#include "framework/string_allocator.h"

namespace kalmo {

/// A reference-counted, copy-on-write string over characters of type TCHAR.
///
/// Copies share one buffer until one of them is changed. The buffer lives in the process-wide string
/// allocator (CStringAllocator); a string that never held a character has none. Wide strings are UTF-32,
/// narrow ones hold whatever encoding their user says, UTF-8 unless stated.
///
/// The pointer of pszGet() and the view of svGet() stay valid until this object is changed or destroyed.
template <class TCHAR>
class CXYString {
  public:
    using CView = std::basic_string_view<TCHAR>;
    static constexpr std::size_t npos = CView::npos;

    CXYString() noexcept = default;
    /// A null pointer makes the empty string.
    CXYString(const TCHAR* psz) : CXYString(psz == nullptr ? CView() : CView(psz)) {}
    CXYString(CView sv) {
        if (!sv.empty()) {
            m_pcsBuffer = std::allocate_shared<CBuffer>(__Allocator(), sv);
        }
    }
    CXYString(const std::basic_string<TCHAR>& cs) : CXYString(CView(cs)) {}

    /// Null-terminated, never a null pointer.
    [[nodiscard]] const TCHAR* pszGet() const noexcept {
        static constexpr TCHAR END_OF_STRING = 0;
        return m_pcsBuffer ? m_pcsBuffer->c_str() : &END_OF_STRING;
    }
    [[nodiscard]] CView svGet() const noexcept { return m_pcsBuffer ? CView(*m_pcsBuffer) : CView(); }
    operator CView() const noexcept { return svGet(); }

    [[nodiscard]] std::size_t nGetLength() const noexcept { return svGet().size(); }
    [[nodiscard]] bool bEmpty() const noexcept { return svGet().empty(); }
    /// Precondition: nIndex < nGetLength().
    TCHAR operator[](std::size_t nIndex) const noexcept { return svGet()[nIndex]; }

    void Empty() noexcept { m_pcsBuffer.reset(); }
    CXYString& operator+=(CView sv) {
        if (!sv.empty()) {
            __rcsDetach().append(sv);
        }
        return *this;
    }
    CXYString& operator+=(TCHAR c) { return *this += CView(&c, 1); }
    /// Sets one character. Precondition: nIndex < nGetLength().
    void SetAt(std::size_t nIndex, TCHAR c) { __rcsDetach()[nIndex] = c; }
    /// Inserts before position nIndex. Precondition: nIndex <= nGetLength().
    void Insert(std::size_t nIndex, CView sv) { __rcsDetach().insert(nIndex, sv); }
    /// Removes nCount characters, fewer where the string ends. Precondition: nIndex <= nGetLength().
    void Remove(std::size_t nIndex, std::size_t nCount) { __rcsDetach().erase(nIndex, nCount); }
    /// Cuts to nLength characters; a shorter string stays as it is.
    void Truncate(std::size_t nLength) {
        if (nLength < nGetLength()) {
            __rcsDetach().resize(nLength);
        }
    }
    void TrimRight(TCHAR c) { Truncate(svGet().find_last_not_of(c) + 1); }
    /// Replaces every occurrence of one character by another.
    void Replace(TCHAR cFrom, TCHAR cTo) {
        for (std::size_t n = svGet().find(cFrom); n != npos; n = svGet().find(cFrom, n + 1)) {
            SetAt(n, cTo);
        }
    }
    /// Replaces every occurrence of one character by a text.
    void Replace(TCHAR cFrom, CView svTo) {
        for (std::size_t n = svGet().find(cFrom); n != npos; n = svGet().find(cFrom, n + svTo.size())) {
            __rcsDetach().replace(n, 1, svTo);
        }
    }

    friend CXYString operator+(CXYString csLeft, CView svRight) {
        csLeft += svRight;
        return csLeft;
    }
    friend bool operator==(const CXYString& csLeft, CView svRight) { return csLeft.svGet() == svRight; }
    friend bool operator==(const CXYString& csLeft, const CXYString& csRight) {
        return csLeft.svGet() == csRight.svGet();
    }
    friend bool operator==(const CXYString& csLeft, const TCHAR* psz) { return csLeft.svGet() == CView(psz); }

  private:
    using CBuffer = std::pmr::basic_string<TCHAR>;

    static std::pmr::polymorphic_allocator<CBuffer> __Allocator() { return CStringAllocator::pclGet(); }

    /// The buffer, made this object's own first.
    CBuffer& __rcsDetach() {
        if (!m_pcsBuffer) {
            m_pcsBuffer = std::allocate_shared<CBuffer>(__Allocator());
        } else if (m_pcsBuffer.use_count() > 1) {
            m_pcsBuffer = std::allocate_shared<CBuffer>(__Allocator(), CView(*m_pcsBuffer));
        }
        return *m_pcsBuffer;
    }

    std::shared_ptr<CBuffer> m_pcsBuffer;
};

/// The wide string of the whole system: UTF-32 in a 32-bit wchar_t.
using CTString = CXYString<wchar_t>;
static_assert(sizeof(wchar_t) == 4);

}  // namespace kalmo

#endif
