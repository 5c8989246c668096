#include <sys/stat.h>

#include <cstdlib>

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
    // cron and a plain su leave out the folders with the tools of the boot sequence.
    ::setenv("PATH", "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", 1);

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
