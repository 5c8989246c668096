#include "archive/inflate_engine.h"

namespace kalmo {

const STInflateLibrary& rstInflateLibrary() noexcept {
#ifdef KALMO_INFLATE_ISAL
    static const bool bIsal = bIsalRunsHere();
    return bIsal ? rstIsal() : rstZlib();
#else
    return rstZlib();
#endif
}

}  // namespace kalmo
