#ifndef KALMO_FRAMEWORK_STRING_ALLOCATOR_H
#define KALMO_FRAMEWORK_STRING_ALLOCATOR_H

#include <atomic>
#include <cstddef>
#include <memory_resource>

namespace kalmo {

/// The memory that every string of the process lives in, and the count of what is still out.
///
/// One instance, owned by the process itself and never destroyed, so that a string may outlive sTerm.
/// The program's start calls sInit before it makes strings in earnest, its end calls sTerm; strings made
/// outside that span use the standard heap and free correctly either way.
class CStringAllocator final : public std::pmr::memory_resource {
  public:
    /// Publishes the allocator: strings made from now on live in it. What happens when memory runs out is
    /// from now on as CMemoryScope says.
    static void sInit() noexcept;
    /// Withdraws it again. Returns how many blocks are still held by living strings.
    static std::size_t sTerm() noexcept;
    /// The memory that a string made now uses. Never null.
    static std::pmr::memory_resource* pclGet() noexcept;

  private:
    CStringAllocator() = default;
    static CStringAllocator& __Instance() noexcept;

    void* do_allocate(std::size_t nBytes, std::size_t nAlign) override;
    void do_deallocate(void* pBlock, std::size_t nBytes, std::size_t nAlign) override;
    bool do_is_equal(const std::pmr::memory_resource& rclOther) const noexcept override;

    std::atomic<std::size_t> m_nBlocks{0};
    static std::atomic<std::pmr::memory_resource*> ms_pclPublished;
};

}  // namespace kalmo

#endif
