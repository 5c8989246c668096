#ifndef KALMO_SAMPLES_SERVER_TVZDSRV_H
#define KALMO_SAMPLES_SERVER_TVZDSRV_H

#include <cstddef>

/// The server's protocol library, "tvzdsrv.so": linked by kalmo, installed beside it.
extern "C" {

/// Writes the line of text that a client is greeted with, null-terminated and cut to nSize bytes.
void tvzdsrv_Greeting(char* pszOut, std::size_t nSize, const char* pszInstance, const char* pszVersion);

/// What "tvsqlsrv.so", loaded at run time, exports: the SQL dialect's name.
const char* tvsqlsrv_Dialect();
using tvsqlsrv_Dialect_t = const char* (*)();
}

#endif
