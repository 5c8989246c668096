#ifndef KALMO_FRAMEWORK_MEMORY_SCOPE_H
#define KALMO_FRAMEWORK_MEMORY_SCOPE_H

#include <cerrno>
#include <new>

#include "framework/errno_kept.h"

namespace kalmo {

/// What happens when memory runs out, decided in one place.
///
/// An operation that can tell its caller so opens a scope, a local variable in a function-try-block: inside,
/// running out is std::bad_alloc, which the operation catches itself and answers with NoMemory. Outside every
/// scope nobody could be told: a text that came out empty or cut would be taken for the right one. There the
/// process writes a line to standard error and ends by SIGABRT, whose handler gives the terminal back.
/// Scopes nest, and each thread has its own.
class CMemoryScope {
  public:
    CMemoryScope() noexcept { ++ms_nOpen; }
    CMemoryScope(const CMemoryScope&) = delete;
    CMemoryScope& operator=(const CMemoryScope&) = delete;
    ~CMemoryScope() { --ms_nOpen; }

    /// Makes this the rule of the process (std::set_new_handler). Called by CStringAllocator::sInit; until
    /// then std::bad_alloc is thrown outside scopes too.
    static void sInit() noexcept;

  private:
    static void __OutOfMemory();

    static thread_local int ms_nOpen;
};

/// The answer of an operation for which memory did not suffice: the given failure, with errno ENOMEM.
template <class T>
T NoMemory(T failure) noexcept {
    errno = ENOMEM;
    return failure;
}

/// Runs an operation that answers false inside one that tells want of memory apart from other failures:
/// std::bad_alloc where the operation answered NoMemory, else its answer. errno stays.
template <class F>
bool bThrowingNoMemory(F fOperation) {
    const CErrnoKept clKept;
    errno = 0;
    const bool bDone = fOperation();
    if (!bDone && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return bDone;
}

}  // namespace kalmo

#endif
