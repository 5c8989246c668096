#include "samples/server/tvzdsrv.h"

#include <cstdio>

extern "C" void tvzdsrv_Greeting(char* pszOut, std::size_t nSize, const char* pszInstance,
                                 const char* pszVersion) {
    static_cast<void>(std::snprintf(pszOut, nSize, "ZDSQL %s %s ready", pszInstance, pszVersion));
}
