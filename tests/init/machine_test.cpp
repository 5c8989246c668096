// Services on a real machine. Runs only inside a throwaway one, see testkit/ and as_family.
#include <thread>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

class Machine : public CServicesTest {
  protected:
    Machine() : CServicesTest("KALMO_MACHINE") {}
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(CServicesTest::SetUp());
        m_clManager.bInit(nullptr, 0);
    }
    static bool bShell(const std::string& csCommand) { return std::system(csCommand.c_str()) == 0; }
    static void Script(const std::string& csName, const std::string& csBody) {
        Write("/etc/init.d/" + csName,
              "#!/bin/sh\n### BEGIN INIT INFO\n# Provides: " + csName +
                  "\n# Required-Start:\n# Required-Stop:\n# Default-Start: 2 3 4 5\n# Default-Stop: 0 1 6\n"
                  "# Short-Description: test\n### END INIT INFO\n" +
                  csBody);
    }
    static void Unit(const std::string& csName, const std::string& csService) {
        Write("/etc/systemd/system/" + csName + ".service", "[Unit]\nDescription=Test of it\n[Service]\n" +
                                                                csService +
                                                                "\n[Install]\nWantedBy=multi-user.target\n");
        ASSERT_TRUE(bShell("systemctl daemon-reload"));
    }
    // A state may take its time to come.
    static void Await(CService& rclService, int nStatus) {
        for (int n = 0; n < 200 && rclService.eGetStatus() != nStatus; ++n) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        EXPECT_EQ(rclService.eGetStatus(), nStatus) << rclService.pszGetName();
    }
};

constexpr const char* PSZ_SCRIPT_BODY =
    "Name=\"Test of it\"\nProgram=\"/bin/sleep 1000\"\nSSD='start-stop-daemon --pidfile /run/life'\n"
    "case $1 in\nstart) $SSD --start --background --make-pidfile --exec /bin/sleep -- 1000;;\n"
    "stop) $SSD --stop --remove-pidfile;;\nrestart) $0 stop; $0 start;;\n"
    "reload) touch /tmp/reloaded;;\nstatus) $SSD --status;;\nesac\n";
// OpenRC runs it itself.
constexpr const char* PSZ_OPENRC_SCRIPT =
    "#!/sbin/openrc-run\nName=\"Test of it\"\nProgram=\"/bin/sleep 1000\"\nextra_started_commands=reload\n"
    "command=/bin/sleep\ncommand_args=1000\ncommand_background=yes\npidfile=/run/life\nretry=TERM/60\n"
    "reload() { touch /tmp/reloaded; }\n";

// From a stopped service to a running one and back; gone, it has left nothing, and another one is as it was.
TEST_F(Machine, TheLifeOfAService) {
    const bool bUnits = CServiceManager::ms_eDistri == eSystemd;
    const bool bOpenRC = CServiceManager::ms_eDistri == eGentoo;
    const auto csTold = [](const char* psz) {
        return std::string(std::getenv(psz) == nullptr ? "" : std::getenv(psz));
    };
    ASSERT_EQ(std::to_string(CServiceManager::ms_eDistri), bUnits ? "7" : csTold("KALMO_DISTRI"));
    const std::string csLink = bUnits ? "/etc/systemd/system/multi-user.target.wants/" : csTold("KALMO_LINK");
    const std::string csEnd = bUnits ? ".service" : "";
    const std::string csFile = (bUnits ? "/etc/systemd/system/ZDCS-life" : "/etc/init.d/ZDCS-life") + csEnd;
    if (bUnits) {
        Unit("ZDCS-life", "ExecStart=/bin/sleep 1000\nExecReload=/bin/touch /tmp/reloaded");
        Unit("ZDCS-other", "ExecStart=/bin/sleep 1000");
    } else {
        Script("ZDCS-life", PSZ_SCRIPT_BODY);
        Script("ZDCS-other", "");
    }
    if (bOpenRC) {
        Write(csFile, PSZ_OPENRC_SCRIPT);
    }
    ASSERT_TRUE(bShell("for n in ZDCS-life ZDCS-other; do " +
                       (bUnits ? "systemctl enable --quiet $n" : csTold("KALMO_ADD")) +
                       " >&2 || exit; done"));
    ASSERT_TRUE(bExists(csLink + "ZDCS-life" + csEnd) && bExists(csLink + "ZDCS-other" + csEnd));
    EXPECT_EQ(tabList(L"ZDCS-"), (CNames{L"ZDCS-life", L"ZDCS-other"}));
    EXPECT_EQ(csFind(L"ZDCS-life"),
              bUnits ? L"ZDCS-life,Test of it,/bin/sleep 1000 " : L"ZDCS-life,Test of it,/bin/sleep 1000");
    CService clService(&m_clManager, L"ZDCS-life");
    EXPECT_EQ(clService.eGetStatus(), eServiceStopped);
    EXPECT_TRUE(clService.bStart(nullptr));
    Await(clService, eServiceRunning);
    // OpenRC has started it before its process has written down its number.
    EXPECT_TRUE(bUnits || bShell("timeout 10 sh -c 'until [ -s /run/life ]; do sleep 0.05; done'"));
    EXPECT_TRUE(clService.bRestart());
    Await(clService, eServiceRunning);
    EXPECT_TRUE(clService.bSendControlCommand(CONTROL_RELOAD));
    EXPECT_TRUE(bExists("/tmp/reloaded"));
    EXPECT_TRUE(clService.bSendControlCommand(CONTROL_STOP));
    Await(clService, eServiceStopped);
    EXPECT_TRUE(clService.bStart(bUnits ? L"arguments do not count" : nullptr));
    Await(clService, eServiceRunning);
    if (bUnits) {
        // systemd has the unit in memory, but there is no file any more that could be disabled.
        ASSERT_TRUE(bShell("systemctl disable --quiet ZDCS-life && mv " + csFile + " /tmp/unit"));
        EXPECT_FALSE(clService.bRemove());
        EXPECT_EQ(clService.eGetStatus(), eServiceRunning);
        ASSERT_TRUE(bShell("mv /tmp/unit " + csFile + " && systemctl enable --quiet ZDCS-life"));
    } else {
        ASSERT_TRUE(bShell("kill -9 $(cat /run/life)"));
        Await(clService, bOpenRC ? eServiceRunning : eServiceFailed);  // OpenRC does not look
    }
    EXPECT_TRUE(clService.bRemove());
    EXPECT_TRUE(!bUnits || clService.eGetStatus() == eServiceStopped);
    EXPECT_FALSE(bExists(csFile));
    EXPECT_FALSE(bShell("ls -d /etc/rc?.d/*ZDCS-life /etc/runlevels/*/ZDCS-life " + csLink +
                        "ZDCS-life* 2>/dev/null | grep ."));
    EXPECT_TRUE(bExists(csLink + "ZDCS-other" + csEnd)) << "another one's";
    EXPECT_EQ(tabList(L"ZDCS-"), CNames{L"ZDCS-other"});
    EXPECT_EQ(csFind(L"ZDCS-life"), L"none");
}

TEST_F(Machine, EveryStateOfUnitsAndTheirListing) {
    for (const auto& [csNumber, pszService, pszCommand, nStatus] :
         {std::tuple("0", "ExecStart=/bin/sleep 99", "systemctl start ZDCS-0", eServiceRunning),
          {"1", "Type=oneshot\nExecStart=/bin/false", "! systemctl start ZDCS-1 2>/dev/null", eServiceFailed},
          {"2", "Type=oneshot\nExecStart=/bin/sleep 99", "systemctl start --no-block ZDCS-2",
           eServiceStarting},
          {"3", "ExecStart=/bin/sleep 99\nExecStop=/bin/sleep 99",
           "systemctl start ZDCS-3 && systemctl stop --no-block ZDCS-3", eServiceStopping}}) {
        Unit(std::string("ZDCS-") + csNumber, pszService);
        EXPECT_TRUE(bShell(pszCommand)) << csNumber;
        CService clService(&m_clManager, (std::wstring(L"ZDCS-") + static_cast<wchar_t>(*csNumber)).c_str());
        Await(clService, nStatus);
    }
    // Not loaded: neither running nor started at the boot. A template, an alias and a masked unit are no
    // instances.
    Unit("ZDCS-off", "ExecStart=/bin/sleep 99");
    Unit("ZDCS-t@", "ExecStart=/bin/sleep 99");
    ASSERT_TRUE(
        bShell("cd /etc/systemd/system && ln -s ZDCS-off.service ZDCS-alias.service && "
               "ln -s /dev/null ZDCS-masked.service && systemctl daemon-reload"));
    CNames tabOurs = tabList(L"ZDCS-");
    tabOurs.erase(L"ZDCS-other");
    EXPECT_EQ(tabOurs, (CNames{L"ZDCS-0", L"ZDCS-1", L"ZDCS-2", L"ZDCS-3", L"ZDCS-off"}));
    const CNames tabAll = tabList(L"");
    EXPECT_EQ(tabAll.count(L"ZDCS-1") + tabAll.count(L"ZDCS-off") + tabAll.count(L"dbus"), 3U);
    EXPECT_EQ(csFind(L"ZDCS-unknown"), L"none");
    EXPECT_EQ(CService(&m_clManager, L"ZDCS-unknown").eGetStatus(), eServiceStopped);
    // A unit that wraps an init script.
    Script("ZDCS-wrap", "Program=\"/opt/wrapped --service\"\nexit 0\n");
    ASSERT_TRUE(bShell("systemctl daemon-reload && systemctl enable ZDCS-wrap >/dev/null 2>&1"));
    EXPECT_EQ(csFind(L"ZDCS-wrap"), L"ZDCS-wrap,LSB: test,/opt/wrapped --service");
    CService clService(&m_clManager, L"ZDCS-wrap");
    EXPECT_TRUE(clService.bStart(nullptr));
    EXPECT_EQ(clService.eGetStatus(), eServiceRunning);
    EXPECT_TRUE(bExists("/etc/rc2.d/S01ZDCS-wrap") && clService.bRemove());
    EXPECT_FALSE(bExists("/etc/init.d/ZDCS-wrap") || bExists("/etc/rc2.d/S01ZDCS-wrap"));
    EXPECT_EQ(csFind(L"ZDCS-wrap"), L"none");
}

}  // namespace
}  // namespace kalmo
