#include "framework/memory_scope.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace kalmo {

thread_local int CMemoryScope::ms_nOpen = 0;

void CMemoryScope::sInit() noexcept {
    std::set_new_handler(&CMemoryScope::__OutOfMemory);
}

void CMemoryScope::__OutOfMemory() {
    if (ms_nOpen > 0) {
        throw std::bad_alloc();
    }
    constexpr std::string_view SV_LAST_WORDS = "kalmoinstall: out of memory\n";
    static_cast<void>(::write(STDERR_FILENO, SV_LAST_WORDS.data(), SV_LAST_WORDS.size()) < 0);
    std::abort();
}

}  // namespace kalmo
