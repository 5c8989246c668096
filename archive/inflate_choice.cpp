#include "archive/inflate_engine.h"

namespace kalmo {

const STInflateLibrary& rstInflateLibrary() noexcept {
#ifdef KALMO_INFLATE_ISAL
    static const STInflateLibrary& ST_LIBRARY = bIsalRunsHere() ? rstIsal() : rstZlib();
    return ST_LIBRARY;
#else
    return rstZlib();
#endif
}

}  // namespace kalmo
