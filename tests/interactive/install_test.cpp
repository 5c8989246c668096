// Installing: every language from start to end, every kind of terminal, a second server, what is run.

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

constexpr const char* PSZ_INSTALL = "@licence\n@directory\n@config\n@account\n@telemetry\n@installed";
constexpr const char* PSZ_UPGRADE = R"(
    @licence
    @action
    @toupgrade
    {MAJ|ZDSQL server ZDSQL|4900|/usr/local/ZDSQL/|)" KALMO_VERSION R"(|26.0.3.0}
        / {MAJ_ARRETS} / {MAJ_ARRET_SERVEUR|ZDSQL server ZDSQL} / {MAJ_ARRET_MANAGER} / {MAJ_QUESTION} / {OUI} {NON}
    @upgraded)";
constexpr const char* PSZ_UNINSTALL = "@licence\n@action => Down*2 Enter*2\n@toremove\n@removed";
constexpr const char* PSZ_UNINSTALL_MANAGER = R"(
    @licence
    @manage => Down Enter*2
    @toremove
    {RETRAIT|ZDSQL server manager} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS} / {OK})";

/// What holds with systemd and without.
class CEverywhere : public CStory {
  protected:
    /// Whether server and manager run; without systemd a start does not wait for them.
    static bool bRunning() {
        return bShell(
            "both() { active ZDCS-ZDSQL && active KalmoManager; }\n"
            "for n in {1..50}; do both && break; sleep 0.1; done; both");
    }
    /// The server of the directory that is proposed runs, with the settings that are proposed.
    static void ExpectServer(const std::string& rcsVersion) {
        EXPECT_TRUE(bRunning() && bShell("registered ZDCS-ZDSQL && registered KalmoManager"));
        EXPECT_EQ(csShell("say_to 4900 'LOGIN Admin '; login 4900 Admin no"),
                  "ZDSQL ZDSQL " + rcsVersion + " ready\nOK\nNO");
        EXPECT_EQ(
            csShell("cd /usr/local/ZDSQL; cat ZDConf.ini; stat -c '%a %U %n' kalmo* zdlogger help/* tv*"),
            R"([INIT]
DBRootPath = %%EXE%%/BDD
AccessPort = 4900
Name = ZDSQL
[TELEMETRY]
ACTIVE = 1
755 root kalmo
4755 root kalmomanager
755 root zdlogger
755 root help/readme.txt
755 root tvsqlsrv.so
755 root tvzdsrv.so)");
    }
};

class CFromStartToEnd : public CEverywhere, public testing::WithParamInterface<STStart> {};

TEST_P(CFromStartToEnd, AServerIsInstalledUpgradedAndUninstalled) {
    STStart stNext = GetParam();
    stNext.csPayload = "next";
    Run(PSZ_INSTALL, GetParam());
    ExpectServer(KALMO_VERSION);
    Run(PSZ_UPGRADE, stNext);
    ExpectServer("26.0.3.0");
    Run(PSZ_UNINSTALL, GetParam());
    EXPECT_TRUE(bShell("unregistered ZDCS-ZDSQL && active KalmoManager && ! TRIES=5 greeting 4900"));
    Run(PSZ_UNINSTALL_MANAGER, GetParam());
    EXPECT_TRUE(bShell("unregistered KalmoManager"));
    EXPECT_EQ(csShell("cd /usr/local/ZDSQL && echo $(find . -type f | sort)"),
              "./BDD/__system/kalmo.log ./INSTALL.LOG ./ZDConf.ini ./help/readme.txt");
}

INSTANTIATE_TEST_SUITE_P(Everywhere, CFromStartToEnd, testing::Values(STStart()));
INSTANTIATE_TEST_SUITE_P(
    LanguagesAndTerminals, CFromStartToEnd,
    testing::Values(STStart{.csLanguage = "fr", .csType = "vt100"},
                    STStart{.csLanguage = "es", .csType = "xterm", .nColumns = 132, .nRows = 50}));

TEST_F(CEverywhere, ASmallTerminalWillDo) {
    const STStart stSmall{.nColumns = 60, .nRows = 16};
    const STStart stNext{.csPayload = "next", .nColumns = 60, .nRows = 16};
    Run(R"(
        {TITRE_LICENCE} / ZDSQL SAMPLE SERVER - LICENCE AGREEMENT / I accept I refuse => Down*40 Tab Enter
        {REPERTOIRE} / /usr/local/ZDSQL / OK Cancel
        Server name / ZDSQL / TCP port / 4900 OK Cancel / System account that runs the server / root => Enter*3
        {TITRE_COMPTE} / {COMPTE} / Admin / {MOT_DE_PASSE} => Enter*3
        Telemetry sends technical data about the use of
            / [X]Send technical data about the use of this / server / OK Cancel => Enter*2
        {INSTALLE} / Administrator account: Admin / OK)",
        stSmall);
    ExpectServer(KALMO_VERSION);
    Run(R"(
        {TITRE_LICENCE} / * => Down*40 Tab Enter
        {TITRE_ACTION} / (X) {ACTION_MISE_A_JOUR} / * / OK Cancel => Enter*2
        {TITRE_MISE_A_JOUR} / ZDSQL server ZDSQL / OK Cancel => Enter*2
        Server: ZDSQL server ZDSQL / * / {MAJ_QUESTION} / Yes No => Tab*2 Down*9
        - KalmoManager, * / machine / {MAJ_QUESTION} / Yes No => Tab Enter
        {MAJ_FAITE} / OK)",
        stNext);
    ExpectServer("26.0.3.0");
    Run(R"(
        {TITRE_LICENCE} / * => Down*40 Tab Enter
        {TITRE_ACTION} / (X) {ACTION_MISE_A_JOUR} / * / OK Cancel => Down*2 Enter*2
        {TITRE_DESINSTALLATION} / ZDSQL server ZDSQL / OK Cancel => Enter*2
        {RETRAIT|ZDSQL server ZDSQL} / [X] * / OK*)",
        stSmall);
    EXPECT_TRUE(bShell("unregistered ZDCS-ZDSQL"));
}

TEST_F(CEverywhere, TheseCommandsAreRunAndNoOthers) {
    const std::string csInstall = R"(
sh: /usr/local/ZDSQL/kalmomanager --INSTALLER 2>/dev/null
sh: /usr/local/ZDSQL/kalmo --INSTALLER 2>/dev/null)";
    const std::string csList = R"(
/bin/systemctl list-units --all --type=service --full --no-pager --no-legend)";
    const std::string csFiles = R"(
/bin/systemctl list-unit-files --type=service --full --no-pager --no-legend ZDCS-*)";
    const std::string csManager = R"(
/bin/systemctl --property=Description,ExecStart,Type show KalmoManager)";
    const std::string csServer = R"(
/bin/systemctl --property=Description,ExecStart,Type show ZDCS-ZDSQL)";
    const std::string csMasked = R"(
/bin/systemctl --property=LoadState show ZDCS-ZDSQL)";
    const std::string csServers = csList + csList + " --plain" + csServer + csFiles + csManager;
    const struct {
        const char* pszScript;
        const char* pszPayload;
        std::string csSystemd;
        std::string csSysV;
    } TAB[] = {
        {PSZ_INSTALL, "current", csList + csFiles + csManager + csServer + csMasked + csManager + csInstall,
         csInstall},
        {PSZ_UPGRADE, "next", csServers + csManager + csManager + R"(
/bin/systemctl --property=ActiveState show KalmoManager
/bin/systemctl --property=ActiveState show ZDCS-ZDSQL
/bin/systemctl stop KalmoManager
/bin/systemctl --property=ActiveState show ZDCS-ZDSQL
/bin/systemctl stop ZDCS-ZDSQL
/bin/systemctl --property=ActiveState show KalmoManager
/bin/systemctl start KalmoManager
/bin/systemctl start ZDCS-ZDSQL)",
         R"(
/etc/init.d/KalmoManager status
/etc/init.d/ZDCS-ZDSQL status
sh: /etc/init.d/KalmoManager stop >/dev/null 2>/dev/null
/etc/init.d/ZDCS-ZDSQL status
sh: /etc/init.d/ZDCS-ZDSQL stop >/dev/null 2>/dev/null
/etc/init.d/KalmoManager status
sh: /etc/init.d/KalmoManager start >/dev/null
sh: /etc/init.d/ZDCS-ZDSQL start >/dev/null)"},
        {PSZ_UNINSTALL, "current", csServers + R"(
/bin/systemctl stop ZDCS-ZDSQL
/bin/systemctl --property=FragmentPath show ZDCS-ZDSQL
/bin/systemctl --property=SourcePath show ZDCS-ZDSQL
/bin/systemctl disable ZDCS-ZDSQL
/bin/systemctl stop ZDCS-ZDSQL
/bin/systemctl daemon-reload)",
         R"(
sh: /etc/init.d/ZDCS-ZDSQL stop >/dev/null 2>/dev/null
sh: update-rc.d -f ZDCS-ZDSQL remove >/dev/null)"},
    };
    for (const auto& rst : TAB) {
        EXPECT_TRUE(&rst == TAB || (bRunning() && bShell("greeting 4900")));
        Run(rst.pszScript, {.csPayload = rst.pszPayload, .bRecord = true});
        EXPECT_EQ(csCommands(), "/bin/systemctl --no-pager --no-legend" +
                                    (bShell("[ $init = systemd ]") ? rst.csSystemd : rst.csSysV) +
                                    "\nsh: clear 2>/dev/null");
        // What was installed is on the disk before a program of the server, or the first service, starts.
        EXPECT_EQ(csShell("cat /tmp/record.* | grep -c '^syncfs'"),
                  rst.pszScript == PSZ_UNINSTALL ? "0" : "1");
    }
}

/// What only a machine without systemd can show.
class CInitScripts : public CStory {};

TEST_F(CInitScripts, MayComplainButMustTellTheirProgram) {
    Run(PSZ_INSTALL);
    std::vector<std::string> tabScreen;
    for (const char* const pszStart : {":", "seq 40 >\\&2"}) {
        csShell("sed -i 's/^start() {/&\\n " + std::string(pszStart) +
                "/' /etc/init.d/{ZDCS-ZDSQL,KalmoManager}");
        Start({});
        Walk(tabSteps("@licence\n@action\n@toupgrade\nServer: * / Yes No"));
        tabScreen.push_back(rclTerminal().csText());
        End(tabSteps("@upgraded"));
    }
    EXPECT_EQ(tabScreen[1], tabScreen[0]);
    // A name that is another one's as a script has it.
    csShell("cp /etc/init.d/ZDCS-ZDSQL /etc/init.d/ZDCS-a_b");
    Run(R"(
        @licence
        @action => Down Enter*2
        {REPERTOIRE} / * => Backspace*15 srv/zd/x Enter
        @config => Backspace*5 a Space b Enter Backspace*4 4999 Enter*2
        {ATTENTION} / {CONFLIT_NOM|a b} / OK
        {NOM_SERVEUR} / a b / * => Tab Enter)");
    csShell("rm /etc/init.d/ZDCS-a_b");
    csShell("sed -i \"/^Program=/s/\\\"/'/g\" /etc/init.d/ZDCS-ZDSQL");
    const std::string csBefore = csProcesses("ZDCS-ZDSQL KalmoManager");
    Run("@licence\n@action\n@toupgrade\nAttention / {SANS_PROGRAMME|ZDSQL server ZDSQL} / OK");
    EXPECT_EQ(csFate("ZDCS-ZDSQL KalmoManager", csBefore), "==");
}

TEST_F(CInitScripts, EndTheRunWhenTheKeyboardEndsThem) {
    Install("first", 4950);
    csShell("sed -i 's/^stop() {/&\\n sleep 60/' /etc/init.d/ZDCS-first");
    const std::string csBefore = csFiles() + csProcesses("ZDCS-first KalmoManager");
    Start({});
    Walk(tabSteps("@licence\n@action => Down*2 Enter*2\n@toremove => Enter"));
    rclTerminal().Send("\r");
    ASSERT_TRUE(bShell("for n in {1..600}; do pgrep -x sleep && break; sleep 0.1; done; pgrep -x sleep"));
    rclTerminal().Send("\x03");
    End({});
    EXPECT_TRUE(csFiles() + csProcesses("ZDCS-first KalmoManager") == csBefore);
    EXPECT_TRUE(bShell("grep 'interrupted during: /etc/init.d/ZDCS-first stop' /tmp/trace"));
}

TEST_F(CStory, AccountsAreAskedForAndMade) {
    // A useradd that does not know -M, and somebody who is faster.
    csShell(R"(cd /srv/dist; cp /usr/sbin/useradd real
        printf '#!/bin/sh\ncase $2 in -M) exit 2; esac\n/srv/dist/real "$@"\nexit 9\n' >useradd; chmod 755 useradd
        mount --bind useradd /usr/sbin/useradd)");
    Run(R"(
        @licence
        @directory
        @config => Tab*2 Backspace*4 KDaemon Tab Enter
        {ATTENTION} / {COMPTE_INCONNU|kdaemon} / Yes No => Tab Enter
        {NOM_SERVEUR} / ZDSQL / {PORT} / 4900 / {COMPTE_SYSTEME} / kdaemon / OK Cancel
        {ATTENTION} / {COMPTE_INCONNU|kdaemon} / Yes No
        @account => Backspace*5 chef Space "l'été" Space $x Enter pass Space wörd Enter*2
        @telemetry => Space Enter*2
        {INSTALLE} / {ADMIN|chef "l'été" $x|pass wörd} / OK)",
        {.bRecord = true});
    EXPECT_THAT(csCommands(), testing::HasSubstr(R"(
sh: /usr/sbin/useradd -s/bin/false -M kdaemon 2>/dev/null
sh: /usr/sbin/useradd -s/bin/false kdaemon 2>/dev/null
sh: /usr/local/ZDSQL/kalmomanager --INSTALLER 2>/dev/null
sh: /usr/local/ZDSQL/kalmo --INSTALLER --CREATEUSER "chef \"l'été\" \$x" --PWDC HEX 2>/dev/null
)"));
    EXPECT_EQ(csShell(R"X(
        name="chef \"l'été\" \$x"
        login 4900 "$name" "pass wörd"; login 4900 "$name" pass; login 4900 Admin ""
        grep -E "DaemonUser|ACTIVE" /usr/local/ZDSQL/ZDConf.ini
        stat -c %U /proc/$(pid ZDCS-ZDSQL)
        getent passwd kdaemon | cut -d: -f7
        grep -c wörd /tmp/trace)X"),
              "OK\nNO\nNO\nDaemonUser = kdaemon\nACTIVE = 0\nkdaemon\n/bin/false\n0");
}

TEST_F(CStory, ASecondServerGetsItsOwnNamePortAndDirectory) {
    Install("first", 4900);
    const std::string csBefore = csProcesses("ZDCS-first KalmoManager");
    Run(R"(
        @licence
        @action => Down Enter*2
        {REPERTOIRE} / * => Backspace*15 srv/zd/second Enter
        @config => Backspace*5 FIRST Enter*3
        {ATTENTION} / {CONFLIT_NOM|FIRST} / OK
        {NOM_SERVEUR} / FIRST / * => Tab*2 Backspace*5 second Enter*3
        {ATTENTION} / {CONFLIT_PORT|4900|ZDSQL server first} / OK
        {NOM_SERVEUR} / second / {PORT} / 4900 / * => Tab*3 Backspace*4 4951 Enter*2
        @account
        @telemetry
        @installed)");
    EXPECT_EQ(csShell("greeting 4951; greeting 4900"),
              "ZDSQL second " KALMO_VERSION " ready\nZDSQL first " KALMO_VERSION " ready");
    EXPECT_EQ(csFate("ZDCS-first KalmoManager", csBefore), "==");

    // The directory of a server means that server, however it is written.
    Run(R"(
        @licence
        @action => Down Enter*2
        {REPERTOIRE} / * => Backspace*15 srv//zd/first/../second/ Enter
        Server: ZDSQL server second / Port: 4951 / Directory: /srv/zd/second/ / * / Yes No
        @upgraded)",
        {.csPayload = "next"});
    EXPECT_EQ(csShell("greeting 4951"), "ZDSQL second 26.0.3.0 ready");
}

}  // namespace
}  // namespace kalmo
