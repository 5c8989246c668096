// A walk through the toolkit: every control and every dialog on a screen of its own.
//
//   gallery                      all screens, one after the other
//   gallery SCREEN [ARGUMENT]    one screen; screens.h tells what its argument means
//   gallery --list               the names of the screens
//
// At the end it prints what was done on each screen. Exit status: 0, 1 without a usable terminal, 2 bad
// usage.
#include <cstdio>
#include <string>
#include <string_view>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/process_info.h"
#include "framework/resource.h"
#include "samples/gallery/screens.h"
#include "tui/toolkit/msg_box.h"
#include "tui/toolkit/screen.h"

namespace kalmo {
namespace {

constexpr struct {
    std::string_view svName;
    PFNScreen pfnShow;
} TAB_SCREEN[] = {
    {"buttons", csShowButtons},
    {"check-boxes", csShowCheckBoxes},
    {"entries", csShowEntries},
    {"gauge", csShowGauge},
    {"lists", csShowLists},
    {"radio-list", csShowRadioList},
    {"own-control", csShowOwnControl},
    {"text", csShowText},
    {"message", csShowMessage},
    {"question", csShowQuestion},
    {"directory", csShowDirectory},
    {"license", csShowLicense},
};

int nUsage() {
    std::fputs("usage: gallery [SCREEN [ARGUMENT] | --list]\n", stderr);
    return 2;
}

int nListScreens() {
    for (const auto& rst : TAB_SCREEN) {
        std::printf("%s\n", rst.svName.data());
    }
    return 0;
}

// Shows the screen of that name, or all when it is empty. False when there is none.
bool bShow(std::string_view svName, const CTString& rcsArgument, std::string* pcsReport) {
    bool bFound = false;
    for (const auto& rst : TAB_SCREEN) {
        if (svName.empty() || rst.svName == svName) {
            bFound = true;
            *pcsReport += std::string(rst.svName) + ": " + csToUTF8(rst.pfnShow(rcsArgument)).pszGet() + "\n";
        }
    }
    return bFound;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    using namespace kalmo;
    const std::string_view svName = nArgc > 1 ? ppszArgv[1] : "";
    if (svName == "--list") {
        return nListScreens();
    }
    if (nArgc > 3) {
        return nUsage();
    }

    // What a program of the toolkit does at its start: texts, locale, screen.
    DLLRES_bInit(nullptr, 0);
    SetLocaleUTF8();
    SetLangueFramework();
    if (!init_dialog()) {
        CMsgBox(0, 0, 60, 13, L"Gallery", L"The gallery needs a terminal.", CMsgBox::eTYPE::OneButton).Show();
        return 1;
    }
    std::string csReport;
    const bool bFound = bShow(svName, csFromUTF8(nArgc > 2 ? ppszArgv[2] : ""), &csReport);
    end_dialog();
    DLLRES_Term();
    std::fputs(csReport.c_str(), stdout);
    return bFound ? 0 : nUsage();
}
