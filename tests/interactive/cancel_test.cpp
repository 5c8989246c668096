// Whoever gives up, wherever, leaves the machine as it was.

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

TEST_F(CStory, GivingUpChangesNothing) {
    const std::string csSettings = R"(
        @config => Tab*2 Backspace*4 kdaemon Tab Enter
        {103A} / {1235|kdaemon} / {1038} {1039} => Enter => Tab Enter Tab Enter
        @account
        @telemetry)";
    const auto csMachine = [] { return csFiles() + csProcesses("ZDCS-first KalmoManager"); };
    const auto GiveUpEverywhere = [&](const std::string& rcsScript) {
        const std::string csBefore = csMachine();
        std::vector<STStep> tab;
        for (const STStep& rst : tabSteps(rcsScript)) {
            tab.push_back({rst.csShown, rst.csGiveUp, ""});
            Run(tab);
            EXPECT_TRUE(csMachine() == csBefore) << rst.csShown;
            tab.back().csKeys = rst.csKeys;
        }
    };
    const std::string csSystem = csFiles("usr root");
    GiveUpEverywhere("@licence\n@directory" + csSettings);
    EXPECT_TRUE(csFiles("usr root") == csSystem);
    Install("first", 4950);
    GiveUpEverywhere("@licence\n@action => Down Enter*2\n{1031} / * => Enter => Tab*3 Enter" + csSettings);
    const std::string csUpgrade = "\n@telemetry\nServer: ZDSQL server first / * => Enter => Tab Enter";
    GiveUpEverywhere(
        "@licence\n@action => Down Enter*2\n{1031} / * => Backspace*15 srv/zd/first Enter => Tab*3 Enter" +
        csUpgrade);
    GiveUpEverywhere("@licence\n@action\n@toupgrade" + csUpgrade);
    GiveUpEverywhere("@licence\n@action => Down*2 Enter*2\n@toremove");
    // The manager alone is left.
    csShell("service_stop ZDCS-first; rm /etc/systemd/system/ZDCS-first.service; systemctl daemon-reload");
    GiveUpEverywhere("@licence\n@manage => Down Enter*2\n@toremove");
}

}  // namespace
}  // namespace kalmo
