#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "app/answer.h"
#include "app/run.h"
#include "framework/language.h"
#include "framework/process_info.h"
#include "framework/resource.h"
#include "framework/string_allocator.h"
#include "services/lance_processus.h"

namespace {

// Whoever starts the installer with a standard descriptor closed would find the next file that it opens
// there: what a program prints would go into the trace or into a file of the server.
void OpenStandardDescriptors() {
    int nFd = -1;
    do {
        nFd = ::open("/dev/null", O_RDWR);
    } while (nFd >= 0 && nFd <= STDERR_FILENO);
    ::close(nFd);
}

}  // namespace

int main(int nArgc, char** ppszArgv) {
    using namespace kalmo;
    OpenStandardDescriptors();
    // The server's accounts must be able to read what root installs, whatever root's own umask is.
    ::umask(022);
    // cron and a plain su leave out the folders with the tools of the boot sequence.
    ::setenv("PATH", "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", 1);

    DLLRES_bInit(nullptr, 0);
    CStringAllocator::sInit();
    CLanceProcessus::sInit();
    SetLocaleUTF8();
    SetLangueFramework();

    const std::optional<int> nStatus = nAnswer(nArgc, ppszArgv);
    if (!nStatus) {
        Run(nArgc, ppszArgv);
    }

    CLanceProcessus::sTerm();
    CStringAllocator::sTerm();
    DLLRES_Term();
    // A run tells what came of it in other ways: whatever it did, its status is 0.
    return nStatus.value_or(0);
}
