// The pictures of README.md: screens of a real installation, upgrade and uninstallation. The build target
// "pictures_install" draws them anew.

#include <cstdlib>

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

class CPictures : public CStory {
  protected:
    /// Goes through the screens of the script and looks whether the picture shows what comes then; with
    /// KALMO_PICTURES set, draws it into that folder.
    void Picture(const std::string& rcsName, const std::string& rcsScript) {
        Walk(tabSteps(rcsScript));
        const char* const pszFolder = std::getenv("KALMO_PICTURES");
        const std::string csFolder = pszFolder != nullptr ? pszFolder : KALMO_SOURCE "/docs/pictures";
        EXPECT_TRUE(rclTerminal().bPicture(csFolder + "/" + rcsName, pszFolder != nullptr))
            << rcsName << " is out of date: build the target \"pictures_install\"";
    }
};

TEST_F(CPictures, AreFresh) {
    // The same folders beside the proposed one everywhere.
    ASSERT_TRUE(bShell("mount -t tmpfs kalmo /usr/local && mkdir /usr/local/{bin,lib,share}"));
    Start({});
    Picture("install-licence.svg", "");
    Picture("install-directory.svg", "@licence");
    Picture("install-settings.svg", "@directory");
    Picture("install-result.svg", "@config\n@account\n@telemetry");
    Walk(tabSteps("@installed"));
    Start({.csPayload = "next"});
    Picture("upgrade.svg", "@licence\n@action\n@toupgrade");
    Run("@licence\n@action => Tab*2 Enter");
    Start({});
    Picture("uninstall.svg", "@licence\n@action => Down*2 Enter*2\n@toremove");
    Walk(tabSteps("@removed"));
    csShell("systemctl disable --now KalmoManager; umount -l /usr/local");
}

}  // namespace
}  // namespace kalmo
