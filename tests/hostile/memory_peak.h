#ifndef KALMO_TESTS_HOSTILE_MEMORY_PEAK_H
#define KALMO_TESTS_HOSTILE_MEMORY_PEAK_H

#include <algorithm>
#include <cstddef>

#ifdef __SANITIZE_ADDRESS__
// The runtime of the sanitizer has these; not every compiler brings the header along.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                                         void (*)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void*);
#endif

namespace kalmo {

/// How much memory was in use at most since the start, beyond what was in use then. The address sanitizer
/// tells of every allocation; without it nothing is measured, and the peak is 0.
class CMemoryPeak {
  public:
    static void Start() {
#ifdef __SANITIZE_ADDRESS__
        static const int nInstalled = __sanitizer_install_malloc_and_free_hooks(
            [](const volatile void*, std::size_t nSize) {
                ms_nNow += static_cast<std::ptrdiff_t>(nSize);
                ms_nPeak = std::max(ms_nPeak, ms_nNow);
            },
            [](const volatile void* p) {
                ms_nNow -= static_cast<std::ptrdiff_t>(p != nullptr ? __sanitizer_get_allocated_size(p) : 0);
            });
        (void)nInstalled;
#endif
        ms_nNow = ms_nPeak = 0;
    }
    static std::ptrdiff_t nBytes() {
        return ms_nPeak;
    }

  private:
    static inline std::ptrdiff_t ms_nNow = 0;
    static inline std::ptrdiff_t ms_nPeak = 0;
};

}  // namespace kalmo

#endif
