#include "app/answer.h"

#include <cstdio>
#include <string_view>

#include "app/config/server_config.h"
#include "framework/console_message.h"
#include "framework/conversion.h"
#include "framework/text.h"

namespace kalmo {

std::optional<int> nAnswer(int nArgc, char** ppszArgv) {
    for (int n = 1; n < nArgc; ++n) {
        const std::string_view svArgument = ppszArgv[n];
        if (svArgument == "--help") {
            ConsoleLine(csFormatText(TEXTE_AIDE, csGetOwnVersion()), stdout);
            return 0;
        }
        if (svArgument == "--version") {
            std::printf("kalmoinstall %s\n", csToUTF8(csGetOwnVersion()).pszGet());
            return 0;
        }
    }
    return std::nullopt;
}

}  // namespace kalmo
