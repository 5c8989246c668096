// Upgrading and uninstalling: which services and files are touched, and what is kept.

#include "tests/interactive/story.h"

namespace kalmo {
namespace {

constexpr const char* PSZ_SERVICES = "ZDCS-first ZDCS-second KalmoManager";

class CUpgrade : public CStory {
  protected:
    /// Two servers; the manager runs from the directory of the first.
    void SetUp() override {
        CStory::SetUp();
        Install("first", 4950);
        Install("second", 4951);
    }
};

TEST_F(CUpgrade, ServicesAreStoppedAndStartedAsTheyLie) {
    const std::string csFirst = "\nServer: ZDSQL server first / Port: 4950 / Directory: /srv/zd/first/ / ";
    const std::string csSecond = "\nServer: ZDSQL server second / Port: 4951 / Directory: /srv/zd/second/ / ";
    const std::string csVersions = "Installed version: " KALMO_VERSION " / New version: 26.0.3.0 / ";
    const std::string csStopped = "{MAJ_ARRETS} / ";
    const struct {
        const char* pszPrepare;
        std::string csScript;
        const char* pszFate;  ///< Of first, second and the manager.
        const char* pszActive;
        const char* pszVersions;
    } TAB[] = {
        // Everything runs, the manager here.
        {"",
         "@toupgrade\n@telemetry" + csFirst + csVersions + csStopped +
             "{MAJ_ARRET_SERVEUR|ZDSQL server first} / {MAJ_ARRET_MANAGER} / ",
         "!=!", "first 1", "26.0.3.0 " KALMO_VERSION},
        // The manager lies elsewhere and goes on.
        {"printf '[TELEMETRY]\nACTIVE=0\n' >>second/ZDConf.ini",
         "@toupgrade => Down Enter*2" + csSecond + csVersions + csStopped +
             "{MAJ_ARRET_SERVEUR|ZDSQL server second} / ",
         "=!=", "second 0", KALMO_VERSION " 26.0.3.0"},
        // What was stopped runs afterwards: the server, and the manager wherever it lies.
        {"service_stop ZDCS-second; service_stop KalmoManager; printf '[TELEMETRY]\nACTIVE=2\n' "
         ">>second/ZDConf.ini",
         "@toupgrade => Down Enter*2\n@telemetry => Space Enter*2" + csSecond + csVersions, "=!!", "second 0",
         KALMO_VERSION " 26.0.3.0"},
        // The server is stopped, the manager here runs. Without notes there is no version to show.
        {R"(service_stop ZDCS-first; sed -i /AccessPort/d first/ZDConf.ini
            sed -i 's/version":"2/vorsion":"2/' first/kalmo /srv/dist/next/kalmoinstall)",
         "@toupgrade\n@telemetry\nServer: ZDSQL server first / Port: 4900 / Directory: /srv/zd/first/ / "
         "Installed version: ? / New version: ? / " +
             csStopped + "{MAJ_ARRET_MANAGER} / ",
         "!=!", "first 1", "26.0.3.0 " KALMO_VERSION},
    };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.csScript);
        if (&rst != TAB) {
            SetUp();
        }
        csShell("cd /srv/zd; " + std::string(rst.pszPrepare));
        const std::string csBefore = csProcesses(PSZ_SERVICES);
        const std::string csOthers = "cd /srv/zd; cat */ZDConf.ini | grep -vE 'TELEMETRY|ACTIVE'";
        const std::string csKept = csShell(csOthers);
        Run("@licence\n@action\n" + rst.csScript + "{MAJ_QUESTION} / {OUI} {NON}\n@upgraded",
            {.csPayload = "next"});
        EXPECT_EQ(csFate(PSZ_SERVICES, csBefore), rst.pszFate);
        EXPECT_EQ(csShell("cd /srv/zd; grep -H ACTIVE */ZDConf.ini | sed 's/.ZDConf.*=//'"), rst.pszActive);
        EXPECT_EQ(csShell(csOthers), csKept);
        EXPECT_EQ(
            csShell("cd /srv/zd; echo $(for s in first second; do $s/kalmo --version; done | cut -d' ' -f2)"),
            rst.pszVersions);
    }
}

TEST_F(CUpgrade, AHalfReplacedServerStaysStopped) {
    csShell(
        "cd /srv/dist/next; echo sound >last.txt; zip -q0 kalmoinstall.zip last.txt;"
        "LC_ALL=C sed -i s/sound/SOUND/ kalmoinstall.zip");
    const std::string csBefore = csProcesses(PSZ_SERVICES);
    Run(R"(
        @licence
        @action
        @toupgrade
        @telemetry
        Server: ZDSQL server first / * / Yes No
        Attention / {ILLISIBLE|last.txt} / OK
        {ATTENTION} / {ARRETES| / - ZDSQL server manager / - ZDSQL server first} / OK)",
        {.csPayload = "next"});
    EXPECT_EQ(csFate(PSZ_SERVICES, csBefore), "-=-");
}

TEST_F(CStory, UninstallingDeletesAListOfFiles) {
    const struct {
        const char* pszPrepare;
        const char* pszShown;
        const char* pszLeft;  ///< Of the programs, and whether the service is registered.
    } TAB[] = {
        {"service_stop ZDCS-first; touch tvmore.so tv.so.1 zdlogger64",
         "{RETRAIT|ZDSQL server first} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS}* / OK",
         "kalmomanager tv.so.1 zdlogger64"},
        {R"(cp kalmo kalmo64; cp zdlogger zdlogger64
            sed -i s,first/kalmo,\&64, /etc/systemd/system/ZDCS-first.service
            systemctl daemon-reload; systemctl restart ZDCS-first)",
         "{RETRAIT|ZDSQL server first} / {RETRAIT_ARRET} / {RETRAIT_SERVICE} / {RETRAIT_FICHIERS}* / OK",
         "kalmo kalmomanager zdlogger"},
        {"rm zdlogger", "{ATTENTION} / {RETRAIT_FICHIER_ERREUR|*zdlogger*} / OK",
         "kalmomanager tvsqlsrv.so tvzdsrv.so"},
        {"cd /etc/systemd/system/multi-user.target.wants && mount --bind . . && mount -o remount,bind,ro .",
         "{ATTENTION} / {RETRAIT_SERVICE_ERREUR|Read-only file system} / {ARRETES| / - ZDSQL server first} / "
         "OK",
         "kalmo kalmomanager tvsqlsrv.so tvzdsrv.so zdlogger registered"},
        {"sed -i 's/^ExecStart=.*/ExecStop=true/;s/^Type=.*//' /etc/systemd/system/ZDCS-first.service; "
         "systemctl daemon-reload; systemctl stop ZDCS-first; pkill -x kalmo",
         "{ATTENTION} / {RETRAIT_SANS_FICHIER|ZDSQL server first} / OK",
         "kalmo kalmomanager tvsqlsrv.so tvzdsrv.so zdlogger"},
    };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.pszPrepare);
        SetUp();
        Install("first", 4950);
        csShell("cd /srv/zd/first; " + std::string(rst.pszPrepare));
        Run("@licence\n@action => Down*2 Enter*2\n@toremove\n" + std::string(rst.pszShown));
        EXPECT_EQ(csShell("cd /srv/zd/first; echo $(ls | grep -E '^(kalmo|zdlogger|tv)'; "
                          "! registered ZDCS-first || echo registered)"),
                  rst.pszLeft);
        EXPECT_TRUE(bShell("! active ZDCS-first; cd /srv/zd/first; test -s ZDConf.ini -a -d BDD/__system"));
    }
}

}  // namespace
}  // namespace kalmo
