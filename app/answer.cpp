#include "app/answer.h"

#include <csignal>
#include <cstdio>
#include <string_view>
#include <vector>

#include "app/config/server_config.h"
#include "app/listing/listing.h"
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
int nWritten(F fWrite) {
    std::signal(SIGPIPE, SIG_IGN);
    const int nStatus = fWrite();
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? nStatus : 1;
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
    const std::vector<STListed> tab = tabListInstances();
    if (bJson) {
        std::fputs(csListingAsJson(tab).c_str(), stdout);
    } else {
        ConsoleLine(csListingAsTable(tab), stdout);
    }
    return 0;
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
    }
    return std::nullopt;
}

}  // namespace kalmo
