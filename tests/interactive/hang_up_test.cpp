// The terminal goes away, or another installer works on the machine.

#include <csignal>

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

const std::string QUESTIONS = "@licence\n@directory\n@config\n@account\n@telemetry";

const std::string UNATTENDED = R"(
    printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=/srv/zd/first\nPort=4950\n' >/tmp/orders
    exec >/dev/null 2>&1
    install() { /srv/dist/current/kalmoinstall /PILOT=/tmp/orders /DEBUG=/tmp/trace2; }
    )";
const std::string DONE = "[ $(cat /srv/zd/first/Install.log) = OK ] && greeting 4950 && active ZDCS-first";

TEST_F(CStory, AHangUpAtAQuestionChangesNothing) {
    const auto HangUpEverywhere = [this](const std::string& rcsScript, int nStatus, const STStart& rst = {}) {
        const std::string csBefore = csFiles() + csProcesses("ZDCS-first KalmoManager");
        std::vector<STStep> tab;
        for (const STStep& rstStep : tabSteps(rcsScript)) {
            Start(rst);
            tab.push_back({rstStep.csShown, "", ""});
            Walk(tab);
            rclTerminal().HangUp();
            EXPECT_EQ(rclTerminal().nWaitEnd(), nStatus) << rstStep.csShown;
            EXPECT_TRUE(csFiles() + csProcesses("ZDCS-first KalmoManager") == csBefore) << rstStep.csShown;
            tab.back().csKeys = rstStep.csKeys;
        }
    };
    HangUpEverywhere(QUESTIONS, 128 + SIGHUP);
    HangUpEverywhere(QUESTIONS, 0, {.csLauncher = "env --ignore-signal=HUP"});
    Install("first", 4950);
    HangUpEverywhere("@licence\n@action\n@toupgrade\n@telemetry\nServer: *", 128 + SIGHUP);
    HangUpEverywhere("@licence\n@action => Down*2 Enter*2\n@toremove", 128 + SIGHUP);
}

TEST_F(CStory, AHangUpDoesNotEndWorkThatHasBegun) {
    // Hangs up while a program is waited for, and waits until the run is over.
    const auto HangUp = [this](const std::string& rcsScript, const std::string& rcsShown,
                               const STStart& rst = {}) {
        Start(rst);
        Walk(tabSteps(rcsScript));
        rclTerminal().Send("\r");
        ASSERT_TRUE(rclTerminal().bWaitText(rcsShown));
        rclTerminal().HangUp();
        EXPECT_EQ(rclTerminal().nWaitEnd(), 0);
    };
    const std::string csRunning = " && active ZDCS-ZDSQL && active KalmoManager";
    KeepBusy("/usr/local/ZDSQL", 2);
    HangUp(QUESTIONS + " => Enter", "Installing the server");
    EXPECT_TRUE(bShell("greeting 4900" + csRunning));
    KeepBusy("/usr/local/ZDSQL", 2);
    HangUp("@licence\n@action\n@toupgrade\nServer: * => Tab*2", "Progress", {.csPayload = "next"});
    EXPECT_TRUE(bShell("greeting 4900 | grep 26.0.3" + csRunning));
    // systemd waits for the end of a service that takes its time.
    csShell(
        "mkdir -p /run/systemd/system/ZDCS-ZDSQL.service.d; cd /run/systemd/system/ZDCS-ZDSQL.service.d;"
        "printf '[Service]\nExecStop=/bin/sleep 2\n' >slow.conf; systemctl daemon-reload");
    HangUp("@licence\n@action => Down*2 Enter*2\n@toremove => Enter", "ZDSQL server");
    EXPECT_TRUE(bShell("unregistered ZDCS-ZDSQL && absent /usr/local/ZDSQL/tvzdsrv.so"));
    csShell("rm -r /run/systemd/system/ZDCS-ZDSQL.service.d; systemctl daemon-reload");
    // An unattended run has no questions.
    KeepBusy("/srv/zd/first", 2);
    csShell(UNATTENDED + "install & sleep 1; pkill -HUP -x kalmoinstall; wait");
    EXPECT_TRUE(bShell(DONE));
}

TEST_F(CStory, TwoInstallersDoNotWorkAtOnce) {
    // One works: the operator is told.
    KeepBusy("/srv/zd/first", 4);
    csShell(UNATTENDED + "install & sleep 1");
    Run("Attention / {AUTRE_INSTALLATEUR} / OK");
    EXPECT_TRUE(bShell("while pgrep -x kalmoinstall; do sleep 0.1; done; " + DONE));
    // The operator has the machine: the other one waits.
    Start({});
    Walk(tabSteps("@licence"));
    csShell("rm /srv/zd/first/Install.log /tmp/trace2; " + UNATTENDED + "install &");
    EXPECT_TRUE(bShell("for n in {1..50}; do grep waiting /tmp/trace2 && break; sleep 0.1; done"));
    EXPECT_TRUE(bShell("absent /srv/zd/first/Install.log && ! grep upgrade /tmp/trace2"));
    End(tabSteps("@action => Tab*2 Enter"));
    EXPECT_TRUE(
        bShell("while pgrep -x kalmoinstall; do sleep 0.1; done; grep upgrade /tmp/trace2 && " + DONE));
    // Of two that install the same instance the second upgrades it.
    SetUp();
    csShell(UNATTENDED + "install & install; wait");
    EXPECT_TRUE(bShell(DONE));
    EXPECT_EQ(csShell("grep -c 'unattended run: ok' /tmp/trace2"), "3");
}

}  // namespace
}  // namespace kalmo
