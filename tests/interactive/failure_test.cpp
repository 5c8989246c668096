// What goes wrong is told, and the terminal is left in order. Whoever gives up leaves the machine as it was.

#include <csignal>

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

TEST_F(CStory, NothingBeginsWithoutRightsAndPayload) {
    const struct {
        const char* pszPrepare;
        const char* pszText;
        const char* pszLauncher = "";
    } TAB[] = {
        {"", "{PAS_ROOT}", "setpriv --reuid=65534 --regid=65534 --clear-groups"},
        {"rm kalmoinstall.zip", "{DONNEES}"},
        {"truncate -s -30 kalmoinstall.zip", "{DONNEES}"},
        {"zip -qd kalmoinstall.zip license.txt", "{DONNEES}"},
        // A licence of more than 4 MiB.
        {"yes | head -c 4194305 >license.txt; zip -q kalmoinstall.zip license.txt", "{DONNEES}"},
    };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.pszPrepare);
        SetUp();
        csShell("cd /srv/dist/current; " + std::string(rst.pszPrepare));
        const std::string csBefore = csFiles();
        Run("Attention / " + std::string(rst.pszText) + " / OK", {.csLauncher = rst.pszLauncher});
        EXPECT_TRUE(csFiles() == csBefore);
    }
}

TEST_F(CStory, AnInstallationTellsWhatWentWrong) {
    const std::string csStart = "@directory\n@config\n@account\n@telemetry\n";
    const auto csNoAccount = [](const std::string& rcsName) {
        return "@directory\n@config => Tab*2 Backspace*4 " + rcsName +
               " Tab Enter\nAttention / {COMPTE_INCONNU|" + rcsName +
               "} / Yes No\n@account\n@telemetry\nAttention / {COMPTE_NON_CREE|" + rcsName +
               "} / OK\nAttention / * / no such account: " + rcsName + " / OK";
    };
    const struct {
        const char* pszPrepare;
        std::string csScript;
        const char* pszThen;
        const char* pszLauncher = "";
    } TAB[] = {
        // Of the codes of the server's programs 255 alone is a failure. The log is shown whole.
        {"echo 255 >kalmomanager.fail; seq -f 'line %g é' 40 >>kalmomanager.fail", csStart + R"(
            Attention / kalmomanager was told to end with 255 / line 1 é / line 2 é / * => Tab PageDown*9
            Attention / * / line 39 é / line 40 é / OK => Tab Enter)",
         "unregistered ZDCS-ZDSQL"},
        {"echo 255 >kalmo.fail", csStart + R"(
            Attention / * / systemctl restart KalmoManager: ok / kalmo was told to end with 255 / OK)",
         "active KalmoManager && unregistered ZDCS-ZDSQL"},
        {"echo 254 >kalmo.fail; echo 1 >kalmomanager.fail", csStart + "@installed",
         "unregistered KalmoManager && unregistered ZDCS-ZDSQL"},
        // A server that cannot have its port.
        {"python3 -m http.server 4900 >/dev/null 2>&1 & echo $! >/tmp/web; sleep 1",
         csStart + "Attention / * / ZDCS-ZDSQL has ended; port 4900 is another program's / OK",
         "kill $(cat /tmp/web)"},
        // Accounts that useradd refuses, or would take for an option, and that the server then does not find.
        {"", csNoAccount("a:b"), "grep -q 'DaemonUser = a:b' ZDConf.ini"},
        {"", csNoAccount("-h"), "! grep -q 'useradd.*exit code' /tmp/trace"},
        // A directory that cannot be created, an owner that cannot be set.
        {"", R"(@directory => Backspace*15 proc/zd Enter
            @config
            @account
            @telemetry
            Attention / /proc/zd/: No such file or directory / {REPERTOIRE_NON_CREE} / OK)",
         "absent kalmo"},
        {"", csStart + "Attention / Operation not permitted / OK",
         "test -e kalmomanager && absent ZDConf.ini",
         "env ASAN_OPTIONS=detect_leaks=0 strace -D -qq -o/dev/null "
         "-e inject=chown,lchown,fchown,fchownat:error=EPERM"},
        // What would not fit into the commands of the server's programs is refused where it is chosen, and so
        // is a directory that would be cut when it is read.
        {"", "@directory => Backspace*15 srv/zd/" + std::string(237, 'd') + R"( Enter
            *Attention / The path of the directory / * / OK
            {REPERTOIRE} / * => Backspace*245 srv/zd/a;b Enter
            *Attention / A server in the directory / */srv/zd/a;b/ / could not be found again*OK
            {REPERTOIRE} / /srv/zd/a;b / * => Tab*3 Enter)",
         "absent /srv/zd/a*"},
        {"",
         csStart.substr(0, csStart.find("@account")) + "@account => Enter " + std::string(90, 'a') +
             R"( Enter*2
            {ATTENTION} / {COMPTE_TROP_LONG|3} / OK
            {TITRE_COMPTE} / * => Tab*3 Backspace*2 Enter*2
            @telemetry
            {INSTALLE} / * / OK)",
         "active ZDCS-ZDSQL"},
    };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.csScript);
        SetUp();
        csShell("mkdir -p /usr/local/ZDSQL; cd /usr/local/ZDSQL; " + std::string(rst.pszPrepare));
        Run("@licence\n" + rst.csScript, {.csLauncher = rst.pszLauncher});
        EXPECT_TRUE(bShell("cd /usr/local/ZDSQL; " + std::string(rst.pszThen)));
    }
}

TEST_F(CStory, TheLicenceMayBeginWithAMarkAndADeathLeavesNothingOfIt) {
    csShell(R"(cd /srv/dist/current
        printf '\xEF\xBB\xBFAgree.' >LICENSE.TXT
        zip -qd kalmoinstall.zip license.txt; zip -q kalmoinstall.zip LICENSE.TXT)");
    Run("{TITRE_LICENCE} / Agree. / {ACCEPTER} {REFUSER}\n@directory => Tab*3 Enter");
    // Each read of the payload takes a while.
    Start({.csLauncher = "env ASAN_OPTIONS=detect_leaks=0 strace -D -qq -o/dev/null "
                         "-P /srv/dist/current/kalmoinstall.zip -e inject=pread64:delay_exit=300000"});
    csShell("for n in {1..300}; do compgen -G '/tmp/kalmoinstall.*' && break; sleep 0.01; done");
    rclTerminal().Signal(SIGTERM);
    EXPECT_EQ(rclTerminal().nWaitEnd(), 128 + SIGTERM);
    EXPECT_EQ(csShell("ls /tmp | grep kalmoinstall"), "");
}

TEST_F(CStory, ABusyProgramIsWaitedFor) {
    // Begins an installation that waits for a program to end.
    const auto Begin = [this](int nSeconds, const STStart& rst = {}) {
        SetUp();
        KeepBusy("/usr/local/ZDSQL", nSeconds);
        Start(rst);
        Walk(tabSteps("@licence\n@directory\n@config\n@account\n@telemetry => Enter"));
        rclTerminal().Send("\r");
        ASSERT_TRUE(rclTerminal().bWaitText("Installing the server"));
    };
    // Keys that are pressed meanwhile do not close the result.
    Begin(4);
    rclTerminal().Send("\r\r\r");
    End(tabSteps("@installed"));
    Begin(60);
    End(tabSteps("Attention / /usr/local/ZDSQL/zdlogger: Text file busy / {FICHIER_NON_CREE|zdlogger} / OK"));

    // The terminal gets another size meanwhile. It has it twice afterwards, which draws everything anew.
    Begin(4, {.nColumns = 100, .nRows = 30});
    rclTerminal().Resize(80, 24);
    Walk(tabSteps("@installed => Tab"));
    const std::string csScreen = rclTerminal().clScreen().csSvg();
    for (const int nRows : {30, 24}) {
        rclTerminal().Resize(80, nRows);
        ASSERT_TRUE(rclTerminal().bSettle());
    }
    EXPECT_TRUE(rclTerminal().clScreen().csSvg() == csScreen) << rclTerminal().csText();
    End(tabSteps("@installed => Tab Enter"));

    // Whoever does not want to wait gets a terminal in order back.
    Begin(60);
    rclTerminal().Send("\x03");
    EXPECT_EQ(rclTerminal().nWaitEnd(), 128 + SIGINT);
    EXPECT_TRUE(rclTerminal().bCooked() && !rclTerminal().clScreen().bAlternateScreen());
}

TEST_F(CStory, WhatIsNotOursIsRefusedAndStaysAsItIs) {
    const std::string csName = "ZDSQL server first";
    const char* const pszWrap = R"(mkdir /etc/systemd/system/ZDCS-first.service.d
        printf '[Service]\nExecStart=\nExecStart=/usr/bin/nice --adjustment=5 /srv/zd/first/kalmo --service\n' \
            >/etc/systemd/system/ZDCS-first.service.d/x.conf
        systemctl daemon-reload)";
    const std::string csForeign =
        "{ATTENTION} / The service / \"" + csName + "\" / * / /usr/bin/nice *=5 /srv/zd/first/kalmo * / OK";
    const struct {
        const char* pszPrepare;
        std::string csScript;
        const char* pszLauncher = "";
    } TAB[] = {
        {pszWrap, "@licence\n@action\n@toupgrade\n" + csForeign},
        {pszWrap, "@licence\n@action => Down*2 Enter*2\n@toremove\n" + csForeign},
        {pszWrap,
         "@licence\n@action => Down Enter*2\n{REPERTOIRE} / * => Backspace*15 srv/zd/first Enter\n*" +
             csForeign + "\n{REPERTOIRE} / * => Tab*3 Enter"},
        {"rm -r /srv/zd/first", "@licence\n@action\n@toupgrade\n{ATTENTION} / {REPERTOIRE_PERDU|" + csName +
                                    "|/srv/zd/first/} / OK"},
        // Nobody has loaded it, and still it has its name, in whatever way that is written.
        {"systemctl disable --now ZDCS-first", R"(@licence
            @action => Down Enter*2
            {REPERTOIRE} / * => Backspace*15 srv/zd/x Enter
            @config => Backspace*5 Space FIRST Enter*3
            {ATTENTION} / {CONFLIT_NOM|FIRST} / OK
            {NOM_SERVEUR} / * => Tab Enter)"},
        {"", "{ATTENTION} / {DOSSIER_TEMPORAIRE|/none|No such file or directory} / OK", "env TMPDIR=/none"},
    };
    const auto csMachine = [] { return csFiles() + csProcesses("ZDCS-first KalmoManager"); };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.csScript);
        SetUp();
        Install("first", 4950);
        csShell(rst.pszPrepare);
        const std::string csBefore = csMachine();
        Run(rst.csScript, {.csLauncher = rst.pszLauncher});
        EXPECT_TRUE(csMachine() == csBefore);
        csShell("rm -rf /etc/systemd/system/ZDCS-first.service.d; systemctl daemon-reload");
    }
}

TEST_F(CStory, GivingUpChangesNothing) {
    const std::string csSettings = R"(
        @config => Tab*2 Backspace*4 kdaemon Tab Enter
        {ATTENTION} / {COMPTE_INCONNU|kdaemon} / {OUI} {NON} => Enter => Tab Enter Tab Enter
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
    GiveUpEverywhere("@licence\n@action => Down Enter*2\n{REPERTOIRE} / * => Enter => Tab*3 Enter" +
                     csSettings);
    const std::string csUpgrade = "\n@telemetry\nServer: ZDSQL server first / * => Enter => Tab Enter";
    GiveUpEverywhere(
        "@licence\n@action => Down Enter*2\n{REPERTOIRE} / * => Backspace*15 srv/zd/first Enter => Tab*3 "
        "Enter" +
        csUpgrade);
    GiveUpEverywhere("@licence\n@action\n@toupgrade" + csUpgrade);
    GiveUpEverywhere("@licence\n@action => Down*2 Enter*2\n@toremove");
    // The manager alone is left.
    csShell("service_stop ZDCS-first; rm /etc/systemd/system/ZDCS-first.service; systemctl daemon-reload");
    GiveUpEverywhere("@licence\n@manage => Down Enter*2\n@toremove");
}

}  // namespace
}  // namespace kalmo
