#include "framework/string_allocator.h"

#include "framework/memory_scope.h"

namespace kalmo {

std::atomic<std::pmr::memory_resource*> CStringAllocator::ms_pclPublished{nullptr};

CStringAllocator& CStringAllocator::__Instance() noexcept {
    // Never destroyed: a string with static storage may be freed after the end of main.
    static auto* const pclInstance = new CStringAllocator;
    return *pclInstance;
}

void CStringAllocator::sInit() noexcept {
    CMemoryScope::sInit();
    ms_pclPublished = &__Instance();
}

std::size_t CStringAllocator::sTerm() noexcept {
    ms_pclPublished = nullptr;
    return __Instance().m_nBlocks;
}

std::pmr::memory_resource* CStringAllocator::pclGet() noexcept {
    std::pmr::memory_resource* const pclPublished = ms_pclPublished;
    return pclPublished != nullptr ? pclPublished : std::pmr::new_delete_resource();
}

void* CStringAllocator::do_allocate(std::size_t nBytes, std::size_t nAlign) {
    void* const pBlock = std::pmr::new_delete_resource()->allocate(nBytes, nAlign);
    ++m_nBlocks;
    return pBlock;
}

void CStringAllocator::do_deallocate(void* pBlock, std::size_t nBytes, std::size_t nAlign) {
    std::pmr::new_delete_resource()->deallocate(pBlock, nBytes, nAlign);
    --m_nBlocks;
}

bool CStringAllocator::do_is_equal(const std::pmr::memory_resource& rclOther) const noexcept {
    return this == &rclOther;
}

}  // namespace kalmo
