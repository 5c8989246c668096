// Directories of archives that were written to disk: any bytes are read, and every entry is found by its
// name.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "archive/repertoire.h"
#include "framework/memory_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    using namespace kalmo;
    CMemoryStream clStream(CTLBIN(pbyData, pbyData + nSize));
    CRepertoire cl;
    if (!cl.bLit(clStream) && cl.dwTaille() != 0) {
        std::abort();
    }
    cl.ForceRepVideAlaFin();
    for (int n = 0; n < static_cast<int>(cl.dwTaille()); ++n) {
        const int nRang = cl.lRang(cl.pclGetEntree(n)->csGetNom());
        if (nRang < 0 || nRang > n) {
            std::abort();
        }
    }
    return 0;
}
