#ifndef KALMO_TESTS_HOSTILE_MEMORY_PEAK_H
#define KALMO_TESTS_HOSTILE_MEMORY_PEAK_H

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <limits>
#include <string>

#ifdef __SANITIZE_ADDRESS__
// The runtime of the sanitizer has these; not every compiler brings the header along.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                                         void (*)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void*);
#endif

namespace kalmo {

/// How much memory was in use at most since the start, beyond what was in use then. Exact under the address
/// sanitizer, which is asked about every allocation; elsewhere in whole pages, as the system counts them.
class CMemoryPeak {
  public:
#ifdef __SANITIZE_ADDRESS__
    static void Start() {
        static const int nInstalled = __sanitizer_install_malloc_and_free_hooks(
            [](const volatile void* p, std::size_t nSize) {
                ms_nNow += p != nullptr ? static_cast<std::ptrdiff_t>(nSize) : 0;
                ms_nPeak = std::max(ms_nPeak, ms_nNow);
            },
            [](const volatile void* p) {
                ms_nNow -= static_cast<std::ptrdiff_t>(p != nullptr ? __sanitizer_get_allocated_size(p) : 0);
            });
        (void)nInstalled;
        ms_nNow = ms_nPeak = 0;
    }
    static std::ptrdiff_t nBytes() {
        return ms_nPeak;
    }

  private:
    static inline std::ptrdiff_t ms_nNow = 0;
    static inline std::ptrdiff_t ms_nPeak = 0;
#else
    static void Start() {
        std::ofstream("/proc/self/clear_refs") << "5";
        ms_nStart = __nStatus("VmRSS:");
    }
    static std::ptrdiff_t nBytes() {
        return __nStatus("VmHWM:") - ms_nStart;
    }

  private:
    static std::ptrdiff_t __nStatus(const std::string& csField) {
        std::ifstream clStatus("/proc/self/status");
        for (std::string cs; clStatus >> cs;) {
            if (cs == csField && clStatus >> cs) {
                return std::stol(cs) * 1024;
            }
        }
        return std::numeric_limits<std::ptrdiff_t>::max();  // not to be told: never within a limit
    }
    static inline std::ptrdiff_t ms_nStart = 0;
#endif
};

}  // namespace kalmo

#endif
