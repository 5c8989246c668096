#ifndef KALMO_FRAMEWORK_XY_STRING_H
#define KALMO_FRAMEWORK_XY_STRING_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <new>
#include <string>
#include <string_view>
#include <utility>

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
            m_pstBuffer = __pstMake(sv.size(), sv, {});
        }
    }
    CXYString(const std::basic_string<TCHAR>& cs) : CXYString(CView(cs)) {}
    CXYString(const CXYString& cs) noexcept : m_pstBuffer(cs.m_pstBuffer) {
        if (m_pstBuffer != nullptr) {
            m_pstBuffer->unUsers.fetch_add(1, std::memory_order_relaxed);
        }
    }
    CXYString(CXYString&& cs) noexcept : m_pstBuffer(std::exchange(cs.m_pstBuffer, nullptr)) {}
    CXYString& operator=(const CXYString& cs) noexcept {
        if (this != &cs) {
            CXYString(cs).Swap(*this);
        }
        return *this;
    }
    CXYString& operator=(CXYString&& cs) noexcept {
        CXYString(std::move(cs)).Swap(*this);
        return *this;
    }
    ~CXYString() { Empty(); }

    void Swap(CXYString& rcs) noexcept { std::swap(m_pstBuffer, rcs.m_pstBuffer); }

    /// Null-terminated, never a null pointer.
    [[nodiscard]] const TCHAR* pszGet() const noexcept {
        static constexpr TCHAR END_OF_STRING = 0;
        return m_pstBuffer != nullptr ? m_pstBuffer->pcGet() : &END_OF_STRING;
    }
    [[nodiscard]] CView svGet() const noexcept {
        return m_pstBuffer != nullptr ? CView(m_pstBuffer->pcGet(), m_pstBuffer->nLength) : CView();
    }
    operator CView() const noexcept { return svGet(); }

    [[nodiscard]] std::size_t nGetLength() const noexcept {
        return m_pstBuffer != nullptr ? m_pstBuffer->nLength : 0;
    }
    [[nodiscard]] bool bEmpty() const noexcept { return nGetLength() == 0; }
    /// Precondition: nIndex < nGetLength().
    TCHAR operator[](std::size_t nIndex) const noexcept { return svGet()[nIndex]; }

    void Empty() noexcept {
        STBuffer* const pst = std::exchange(m_pstBuffer, nullptr);
        if (pst != nullptr && pst->unUsers.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            pst->pclMemory->deallocate(pst, __nBytes(pst->nRoom), alignof(STBuffer));
        }
    }
    CXYString& operator+=(CView sv) {
        const std::size_t nBefore = nGetLength();
        if (sv.empty()) {
            return *this;
        }
        if (m_pstBuffer != nullptr && __bOwn() && sv.size() <= m_pstBuffer->nRoom - nBefore) {
            sv.copy(m_pstBuffer->pcGet() + nBefore, sv.size());
            m_pstBuffer->End(nBefore + sv.size());
        } else {
            // What is appended may be a part of this string: the former buffer goes last. One that grows
            // once is likely to grow again.
            const std::size_t nRoom = std::max(nBefore + sv.size(), 2 * nBefore);
            __Take(__pstMake(nRoom, svGet(), sv));
        }
        return *this;
    }
    CXYString& operator+=(TCHAR c) { return *this += CView(&c, 1); }
    /// Sets one character. Precondition: nIndex < nGetLength().
    void SetAt(std::size_t nIndex, TCHAR c) {
        if (!__bOwn()) {
            CXYString(svGet()).Swap(*this);
        }
        m_pstBuffer->pcGet()[nIndex] = c;
    }
    /// Inserts before position nIndex. Precondition: nIndex <= nGetLength().
    void Insert(std::size_t nIndex, CView sv) { __Replace(nIndex, 0, sv); }
    /// Removes nCount characters, fewer where the string ends. Precondition: nIndex <= nGetLength().
    void Remove(std::size_t nIndex, std::size_t nCount) { __Replace(nIndex, nCount, {}); }
    /// Cuts to nLength characters; a shorter string stays as it is.
    void Truncate(std::size_t nLength) {
        if (nLength >= nGetLength()) {
            return;
        }
        if (__bOwn()) {
            m_pstBuffer->End(nLength);
        } else {
            CXYString(svGet().substr(0, nLength)).Swap(*this);
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
        CXYString cs;
        CView svRest = svGet();
        for (std::size_t n = svRest.find(cFrom); n != npos; n = svRest.find(cFrom)) {
            cs += svRest.substr(0, n);
            cs += svTo;
            svRest.remove_prefix(n + 1);
        }
        cs += svRest;
        cs.Swap(*this);
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
    /// What lies in memory in front of the characters and the null behind them.
    struct STBuffer {
        std::pmr::memory_resource* pclMemory;
        std::size_t nLength = 0;
        std::size_t nRoom;  ///< How many characters fit, without the null.
        std::atomic<std::uint32_t> unUsers{1};

        TCHAR* pcGet() noexcept { return reinterpret_cast<TCHAR*>(this + 1); }
        void End(std::size_t nNewLength) noexcept {
            nLength = nNewLength;
            pcGet()[nNewLength] = TCHAR();
        }
    };
    static_assert(alignof(STBuffer) >= alignof(TCHAR));

    static std::size_t __nBytes(std::size_t nRoom) noexcept {
        return sizeof(STBuffer) + (nRoom + 1) * sizeof(TCHAR);
    }
    /// A buffer with two texts in it, one behind the other. Precondition: they fit.
    static STBuffer* __pstMake(std::size_t nRoom, CView svFirst, CView svSecond) {
        std::pmr::memory_resource* const pclMemory = CStringAllocator::pclGet();
        void* const pBlock = pclMemory->allocate(__nBytes(nRoom), alignof(STBuffer));
        auto* const pst = new (pBlock) STBuffer{.pclMemory = pclMemory, .nRoom = nRoom};
        svFirst.copy(pst->pcGet(), svFirst.size());
        svSecond.copy(pst->pcGet() + svFirst.size(), svSecond.size());
        pst->End(svFirst.size() + svSecond.size());
        return pst;
    }
    /// True when the buffer is this object's alone.
    [[nodiscard]] bool __bOwn() const noexcept {
        return m_pstBuffer != nullptr && m_pstBuffer->unUsers.load(std::memory_order_acquire) == 1;
    }
    void __Take(STBuffer* pst) noexcept {
        Empty();
        m_pstBuffer = pst;
    }
    void __Replace(std::size_t nIndex, std::size_t nCount, CView svNew) {
        const CView sv = svGet();
        const CView svBehind = sv.substr(nIndex + std::min(nCount, sv.size() - nIndex));
        STBuffer* const pst = __pstMake(nIndex + svNew.size() + svBehind.size(), sv.substr(0, nIndex), svNew);
        svBehind.copy(pst->pcGet() + pst->nLength, svBehind.size());
        pst->End(pst->nRoom);
        __Take(pst);
    }

    STBuffer* m_pstBuffer = nullptr;
};

/// The wide string of the whole system: UTF-32 in a 32-bit wchar_t.
using CTString = CXYString<wchar_t>;
static_assert(sizeof(wchar_t) == 4);

}  // namespace kalmo

#endif
