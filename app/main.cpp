#include <sys/stat.h>

#include "app/run.h"
#include "framework/language.h"
#include "framework/process_info.h"
#include "framework/resource.h"
#include "framework/string_allocator.h"
#include "services/lance_processus.h"

int main(int nArgc, char** ppszArgv) {
    using namespace kalmo;
    // The server's accounts must be able to read what root installs, whatever root's own umask is.
    ::umask(022);

    DLLRES_bInit(nullptr, 0);
    CStringAllocator::sInit();
    CLanceProcessus::sInit();
    SetLocaleUTF8();
    SetLangueFramework();

    Run(nArgc, ppszArgv);

    CLanceProcessus::sTerm();
    CStringAllocator::sTerm();
    DLLRES_Term();
    return 0;
}
