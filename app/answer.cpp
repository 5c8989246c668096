#include "app/answer.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <vector>

#include "app/check/check_run.h"
#include "app/config/server_config.h"
#include "app/engine/trace.h"
#include "app/listing/listing.h"
#include "app/unattended/pilot.h"
#include "framework/console_message.h"
#include "framework/conversion.h"
#include "framework/text.h"

namespace kalmo {
namespace {

bool bGiven(std::string_view svOption, int nArgc, char** ppszArgv) {
    for (int n = 1; n < nArgc; ++n) {
        if (svOption == ppszArgv[n]) {
            return true;
        }
    }
    return false;
}

// The exit status of an answer that fWrite prints. One that did not arrive, as its reader is gone or a disk
// is full, is none.
template <class F>
int nWritten(F fWrite, int nLost = 1) {
    std::signal(SIGPIPE, SIG_IGN);
    const int nStatus = fWrite();
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? nStatus : nLost;
}

// The first argument behind the nth that is no "--json"; empty without one.
std::string_view svBehind(int n, int nArgc, char** ppszArgv) {
    while (++n < nArgc) {
        if (std::string_view(ppszArgv[n]) != "--json") {
            return ppszArgv[n];
        }
    }
    return {};
}

int nHelp() {
    ConsoleLine(csFormatText(TEXTE_AIDE, csGetOwnVersion()), stdout);
    return 0;
}

int nVersion() {
    std::printf("kalmoinstall %s\n", csToUTF8(csGetOwnVersion()).pszGet());
    return 0;
}

int nList(bool bJson) {
    const std::optional<std::vector<STListed>> tab = tabListInstances();
    if (!tab) {
        ConsoleLine(csFormatText(TEXTE_LISTE_IMPOSSIBLE, csReason(errno)), stderr);
        return 1;
    }
    if (bJson) {
        std::fputs(csListingAsJson(*tab).c_str(), stdout);
    } else {
        ConsoleLine(csListingAsTable(*tab), stdout);
    }
    return 0;
}

// svOrders is empty where no file is named: that is none which could be used.
int nCheckOrders(std::string_view svOrders, bool bJson) {
    const STCheckReport st = stCheckRun(CPilot::csFileOfOption(csFromUTF8(svOrders)));
    if (bJson) {
        std::fputs(csCheckAsJson(st).c_str(), stdout);
    } else {
        ConsoleLine(csCheckAsText(st), stdout);
    }
    return st.nExitStatus();
}

}  // namespace

std::optional<int> nAnswer(int nArgc, char** ppszArgv) {
    for (int n = 1; n < nArgc; ++n) {
        const std::string_view svArgument = ppszArgv[n];
        if (svArgument == "--help") {
            return nWritten(nHelp);
        }
        if (svArgument == "--version") {
            return nWritten(nVersion);
        }
        if (svArgument == "--list") {
            return nWritten([&] { return nList(bGiven("--json", nArgc, ppszArgv)); });
        }
        if (svArgument == "--check") {
            return nWritten(
                [&] { return nCheckOrders(svBehind(n, nArgc, ppszArgv), bGiven("--json", nArgc, ppszArgv)); },
                2);
        }
    }
    return std::nullopt;
}

}  // namespace kalmo
