// Draws the pictures of docs/tui.md: the gallery's screens as they stand after a few keys.
//
//   make_pictures DIRECTORY            writes them
//   make_pictures --check DIRECTORY    writes nothing; exit status 1 when one is not as it would be written
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/svg_screen.h"
#include "tests/tui/tui_terminal.h"

namespace kalmo {
namespace {

// The chooser shows a directory that only it sees, so that its picture is the same everywhere.
constexpr const char* PSZ_CHOOSER =
    "mount -t tmpfs kalmo /srv && mkdir /srv/backup /srv/Databases /srv/mail /srv/www && "
    "exec \"$0\" directory /srv/";

struct STPicture {
    std::string csScreen;
    const char* pszKeys;
};
const STPicture TAB_PICTURE[] = {
    {"buttons", "Enter"},
    {"check-boxes", "Tab"},
    {"entries", ""},
    {"gauge", "Enter*3"},
    {"lists", "Down Enter Down Enter Down"},
    {"radio-list", "Down"},
    {"own-control", "Right*2"},
    {"text", "PageDown"},
    {"message", ""},
    {"question", ""},
    {"directory", "m"},
    {"license", ""},
};

bool bPicture(const STPicture& rst, const std::string& rcsDirectory, bool bCheck) {
    const std::string csPath = rcsDirectory + "/" + rst.csScreen + ".svg";
    CTuiTerminal clTerminal(
        rst.csScreen == "directory"
            ? std::vector<std::string>{"unshare", "--mount", "sh", "-c", PSZ_CHOOSER, KALMO_GALLERY}
            : std::vector<std::string>{KALMO_GALLERY, rst.csScreen});
    if (!clTerminal.bPress(rst.pszKeys) || !clTerminal.clScreen().bAlternateScreen()) {
        std::fprintf(stderr, "%s: the gallery did not show it\n", rst.csScreen.c_str());
        return false;
    }
    if (!bCheck) {
        return clTerminal.WriteSvg(csPath);
    }
    std::ifstream clFile(csPath, std::ios::binary);
    const bool bFresh =
        std::string(std::istreambuf_iterator<char>(clFile), {}) == csSvgOfScreen(clTerminal.clScreen());
    if (!bFresh) {
        std::fprintf(stderr, "%s is out of date: build the target \"pictures\"\n", csPath.c_str());
    }
    return bFresh;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    using namespace kalmo;
    const bool bCheck = nArgc == 3 && std::string_view(ppszArgv[1]) == "--check";
    if (!bCheck && nArgc != 2) {
        std::fputs("usage: make_pictures [--check] DIRECTORY\n", stderr);
        return 2;
    }
    bool bAll = true;
    for (const STPicture& rst : TAB_PICTURE) {
        bAll = bPicture(rst, ppszArgv[nArgc - 1], bCheck) && bAll;
    }
    return bAll ? 0 : 1;
}
