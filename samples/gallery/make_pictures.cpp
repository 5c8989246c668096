// Draws the pictures of docs/tui.md: the gallery's screens as they stand after a few keys.
//
//   make_pictures DIRECTORY            writes them
//   make_pictures --check DIRECTORY    writes nothing; exit status 1 when one is not as it would be written
#include <cstdio>
#include <string>
#include <vector>

#include "testkit/tui_terminal.h"

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
    {"buttons", "Enter"}, {"check-boxes", "Tab"},     {"entries", ""},
    {"gauge", "Enter*3"}, {"radio-list", "Down"},     {"lists", "Down Enter Down Enter Down"},
    {"text", "PageDown"}, {"own-control", "Right*2"}, {"message", ""},
    {"question", ""},     {"directory", "m"},         {"license", ""},
};

bool bPicture(const STPicture& rst, const std::string& rcsDirectory, bool bCheck) {
    const std::string csPath = rcsDirectory + "/" + rst.csScreen + ".svg";
    CTuiTerminal clTerminal(
        rst.csScreen == "directory"
            ? std::vector<std::string>{"unshare", "--mount", "sh", "-c", PSZ_CHOOSER, KALMO_GALLERY}
            : std::vector<std::string>{KALMO_GALLERY, rst.csScreen});
    const bool bDone = clTerminal.bPress(rst.pszKeys) && clTerminal.clScreen().bAlternateScreen() &&
                       clTerminal.bPicture(csPath, !bCheck);
    if (!bDone) {
        std::fprintf(stderr, "%s is out of date or cannot be drawn: build the target \"pictures\"\n",
                     csPath.c_str());
    }
    return bDone;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    using namespace kalmo;
    const bool bCheck = nArgc == 3;
    bool bAll = true;
    for (const STPicture& rst : TAB_PICTURE) {
        bAll = bPicture(rst, ppszArgv[nArgc - 1], bCheck) && bAll;
    }
    return bAll ? 0 : 1;
}
