// Draws the pictures of docs/tui.md: the gallery's screens as they stand after a few keys.
//
//   make_pictures DIRECTORY            writes them
//   make_pictures --check DIRECTORY    writes nothing; exit status 1 when one is not as it would be written
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/gallery/gallery.h"
#include "tests/support/svg_screen.h"

namespace kalmo {
namespace {

struct STPicture {
    const char* pszScreen;
    std::vector<std::string_view> tabKey;
};

// The chooser shows a directory that only it sees, so that its picture is the same everywhere.
constexpr const char* PSZ_CHOOSER =
    "mount -t tmpfs kalmo /srv && mkdir /srv/backup /srv/Databases /srv/mail /srv/www && "
    "exec \"$0\" directory /srv/";

std::vector<std::string> tabCommand(const std::string& rcsScreen) {
    if (rcsScreen == "directory") {
        return {"unshare", "--mount", "sh", "-c", PSZ_CHOOSER, KALMO_GALLERY};
    }
    return CGallery::tabCommand({rcsScreen});
}

bool bDraw(const STPicture& rst, std::string* pcsPicture) {
    Terminal clTerminal(tabCommand(rst.pszScreen), {.tabEnvironment = {"LC_ALL=C.UTF-8"}});
    bool bShown = clTerminal.bSettle();
    for (const std::string_view sv : rst.tabKey) {
        bShown = bShown && clTerminal.bType({sv});
    }
    *pcsPicture = csSvgOfScreen(clTerminal.clScreen());
    return bShown && clTerminal.clScreen().bAlternateScreen();
}

std::string csRead(const std::string& rcsPath) {
    std::ostringstream clContent;
    clContent << std::ifstream(rcsPath, std::ios::binary).rdbuf();
    return clContent.str();
}

bool bPicture(const STPicture& rst, const std::string& rcsDirectory, bool bCheck) {
    const std::string csPath = rcsDirectory + "/" + rst.pszScreen + ".svg";
    std::string csPicture;
    if (!bDraw(rst, &csPicture)) {
        std::fprintf(stderr, "%s: the gallery did not show it\n", rst.pszScreen);
        return false;
    }
    if (bCheck) {
        if (csRead(csPath) == csPicture) {
            return true;
        }
        std::fprintf(stderr, "%s is out of date: build the target \"pictures\"\n", csPath.c_str());
        return false;
    }
    std::ofstream clFile(csPath, std::ios::binary);
    clFile << csPicture;
    clFile.close();
    return clFile.good();
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
    const std::vector<STPicture> TAB_PICTURE{
        {"buttons", {"Enter"}},
        {"check-boxes", {"Tab"}},
        {"entries", {}},
        {"gauge", {"Enter", "Enter", "Enter"}},
        {"lists", {"Down", "Enter", "Down", "Enter", "Down"}},
        {"radio-list", {"Down"}},
        {"own-control", {"Right", "Right"}},
        {"text", {"PageDown"}},
        {"message", {}},
        {"question", {}},
        {"directory", {"m"}},
        {"license", {}},
    };
    bool bAll = true;
    for (const STPicture& rst : TAB_PICTURE) {
        bAll = bPicture(rst, ppszArgv[nArgc - 1], bCheck) && bAll;
    }
    return bAll ? 0 : 1;
}
