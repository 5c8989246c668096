#ifndef KALMO_FRAMEWORK_ARRAY_H
#define KALMO_FRAMEWORK_ARRAY_H

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace kalmo {

/// Releases an object with delete.
template <class T>
struct CTReleaser_DeleteRCV {
    void operator()(T* pclObject) const noexcept { delete pclObject; }
};

/// A pointer that owns its object and deletes it.
template <class T>
using CXPtr_deleteRCV = std::unique_ptr<T, CTReleaser_DeleteRCV<T>>;

/// A growable table of plain elements.
template <class T>
using CTTableau = std::vector<T>;

/// A growable array of elements that may be owners themselves. Indices are 0 to nGetCount() - 1.
template <class T>
class CXArraySingle {
  public:
    [[nodiscard]] std::size_t nGetCount() const noexcept { return m_tabElement.size(); }
    [[nodiscard]] bool bEmpty() const noexcept { return m_tabElement.empty(); }
    void Add(T element) { m_tabElement.push_back(std::move(element)); }
    void DeleteAll() noexcept { m_tabElement.clear(); }
    /// Precondition: nIndex < nGetCount().
    T& operator[](std::size_t nIndex) noexcept { return m_tabElement[nIndex]; }
    const T& operator[](std::size_t nIndex) const noexcept { return m_tabElement[nIndex]; }

    auto begin() noexcept { return m_tabElement.begin(); }
    auto end() noexcept { return m_tabElement.end(); }
    auto begin() const noexcept { return m_tabElement.begin(); }
    auto end() const noexcept { return m_tabElement.end(); }

  private:
    std::vector<T> m_tabElement;
};

/// A table of borrowed pointers whose room grows in fixed steps.
class CTableauDeBuffer {
  public:
    /// Room for nInitial elements at first, nStep more each time it is full.
    CTableauDeBuffer(std::size_t nInitial, std::size_t nStep) : m_nStep(nStep) {
        m_tabElement.reserve(nInitial);
    }

  protected:
    [[nodiscard]] std::size_t _nGetCount() const noexcept { return m_tabElement.size(); }
    /// Precondition: nIndex < _nGetCount().
    void*& _pElement(std::size_t nIndex) noexcept { return m_tabElement[nIndex]; }
    void _Add(void* pElement) {
        if (m_tabElement.size() == m_tabElement.capacity()) {
            m_tabElement.reserve(m_tabElement.size() + m_nStep);
        }
        m_tabElement.push_back(pElement);
    }
    void _Empty() noexcept { m_tabElement.clear(); }

  private:
    std::size_t m_nStep;
    std::vector<void*> m_tabElement;
};

}  // namespace kalmo

#endif
