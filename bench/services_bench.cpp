// The measurement of bench/services.sh: lists the instances of this machine as the installer does when it
// starts, then compares the name and the port of each with those that an operator wants.
//
// It prints how many instances there are, the seconds of the listing, names and ports, and the processor's
// seconds for all of it, those of systemd included.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "app/config/server_config.h"
#include "app/engine/server_services.h"
#include "framework/conversion.h"
#include "services/lance_processus.h"

namespace kalmo {
namespace {

using CClock = std::chrono::steady_clock;

double dSince(CClock::time_point* pst) {
    const CClock::time_point stBefore = *pst;
    *pst = CClock::now();
    return std::chrono::duration<double>(*pst - stBefore).count();
}

// What this program, its children that have ended, and systemd have used of the processors.
double dProcessor() {
    timespec tabTime[2]{};
    clockid_t nSystemd = 0;
    ::clock_getcpuclockid(1, &nSystemd);
    ::clock_gettime(nSystemd, &tabTime[0]);
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &tabTime[1]);
    rusage stChildren{};
    ::getrusage(RUSAGE_CHILDREN, &stChildren);
    double dSum = 0;
    for (const timespec& rst : tabTime) {
        dSum += static_cast<double>(rst.tv_sec) + static_cast<double>(rst.tv_nsec) / 1e9;
    }
    for (const timeval& rst : {stChildren.ru_utime, stChildren.ru_stime}) {
        dSum += static_cast<double>(rst.tv_sec) + static_cast<double>(rst.tv_usec) / 1e6;
    }
    return dSum;
}

int nMain() {
    CLanceProcessus::sInit();
    CServiceManager clManager;
    clManager.bInit(nullptr, 0);
    CServiceList tabServer;
    const double dBefore = dProcessor();
    CClock::time_point stTime = CClock::now();
    ListServer(clManager, tabServer);
    const double dListing = dSince(&stTime);

    const std::size_t nPrefix = std::wstring_view(PSZ_SERVICE_PREFIX).size();
    std::size_t nConflicts = 0;
    for (const auto& rpclService : tabServer) {
        nConflicts += bEgalSansCasse(L"a new one", rpclService->pszGetName() + nPrefix) ? 1 : 0;
    }
    const double dNames = dSince(&stTime);
    for (const auto& rpclService : tabServer) {
        CPathBuffer szConf;
        GetZDConfPath(rpclService.get(), szConf);
        nConflicts += nReadServerPort(szConf) == PORT_DEFAUT ? 1 : 0;  // no instance has that one
    }
    const double dPorts = dSince(&stTime);
    std::printf("%zu %.6f %.6f %.6f %.6f\n", tabServer.nGetCount(), dListing, dNames, dPorts,
                dProcessor() - dBefore);
    CLanceProcessus::sTerm();
    return nConflicts == 0 ? 0 : 1;
}

}  // namespace
}  // namespace kalmo

int main() {
    return kalmo::nMain();
}
