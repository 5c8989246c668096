// Services on a real machine. Runs only inside a throwaway one, see testkit/.

#include <thread>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

class MachineTest : public CServicesTest {
  protected:
    MachineTest() : CServicesTest("KALMO_MACHINE") {}
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
        const std::string csText = "[Unit]\nDescription=Test of it\n[Service]\n" + csService;
        Write("/etc/systemd/system/" + csName + ".service",
              csText + "\n[Install]\nWantedBy=multi-user.target\n");
        ASSERT_TRUE(bShell("systemctl daemon-reload"));
    }
    // A state may take its time to come.
    static void Await(CService& rclService, int nStatus) {
        for (int n = 0; n < 200 && rclService.eGetStatus() != nStatus; ++n) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        EXPECT_EQ(rclService.eGetStatus(), nStatus) << rclService.pszGetName();
    }
    // From a stopped service to a running one and back.
    static void LiveThrough(CService& rclService) {
        EXPECT_EQ(rclService.eGetStatus(), eServiceStopped);
        EXPECT_TRUE(rclService.bStart(nullptr));
        Await(rclService, eServiceRunning);
        EXPECT_TRUE(rclService.bRestart());
        Await(rclService, eServiceRunning);
        EXPECT_TRUE(rclService.bSendControlCommand(dwControlReload));
        EXPECT_TRUE(bExists("/tmp/reloaded"));
        EXPECT_TRUE(rclService.bSendControlCommand(dwControlStop));
        Await(rclService, eServiceStopped);
    }
};

using SystemdMachine = MachineTest;

TEST_F(SystemdMachine, TheLifeOfAService) {
    ASSERT_EQ(CServiceManager::ms_eDistri, eSystemd);
    const std::string csFile = "/etc/systemd/system/ZDCS-life.service";
    Unit("ZDCS-life", "ExecStart=/bin/sleep 1000\nExecReload=/bin/touch /tmp/reloaded");
    EXPECT_EQ(csFind(L"ZDCS-life"), L"ZDCS-life,Test of it,/bin/sleep 1000 ");
    CService clService(&m_clManager, L"ZDCS-life");
    LiveThrough(clService);
    EXPECT_TRUE(clService.bStart(L"arguments do not count"));
    // systemd has the unit in memory, but there is no file any more that could be disabled.
    ASSERT_TRUE(bShell("mv " + csFile + " /tmp/unit"));
    EXPECT_FALSE(clService.bRemove());
    EXPECT_EQ(clService.eGetStatus(), eServiceRunning);
    ASSERT_TRUE(bShell("mv /tmp/unit " + csFile + " && systemctl enable --quiet ZDCS-life"));
    EXPECT_TRUE(clService.bRemove());
    EXPECT_EQ(clService.eGetStatus(), eServiceStopped);
    EXPECT_FALSE(bExists(csFile));
    EXPECT_FALSE(bExists("/etc/systemd/system/multi-user.target.wants/ZDCS-life.service"));
    EXPECT_EQ(csFind(L"ZDCS-life"), L"none");
}

TEST_F(SystemdMachine, EveryStateAndTheListing) {
    const auto Reach = [this](int n, const char* pszService, const char* pszCommand, int nStatus) {
        Unit("ZDCS-" + std::to_string(n), pszService);
        EXPECT_TRUE(bShell(pszCommand)) << n;
        CService clService(&m_clManager, (L"ZDCS-" + std::to_wstring(n)).c_str());
        Await(clService, nStatus);
    };
    Reach(0, "ExecStart=/bin/sleep 99", "systemctl start ZDCS-0", eServiceRunning);
    Reach(1, "Type=oneshot\nExecStart=/bin/false", "! systemctl start ZDCS-1 2>/dev/null", eServiceFailed);
    Reach(2, "Type=oneshot\nExecStart=/bin/sleep 99", "systemctl start --no-block ZDCS-2", eServiceStarting);
    Reach(3, "ExecStart=/bin/sleep 99\nExecStop=/bin/sleep 99",
          "systemctl start ZDCS-3 && systemctl stop --no-block ZDCS-3", eServiceStopping);
    // Not loaded: neither running nor started at the boot. A template, an alias and a masked unit are no
    // instances.
    Unit("ZDCS-off", "ExecStart=/bin/sleep 99");
    Unit("ZDCS-t@", "ExecStart=/bin/sleep 99");
    ASSERT_TRUE(
        bShell("cd /etc/systemd/system && ln -s ZDCS-off.service ZDCS-alias.service && "
               "ln -s /dev/null ZDCS-masked.service && systemctl daemon-reload"));
    EXPECT_EQ(tabList(L"ZDCS-"), (CNames{L"ZDCS-0", L"ZDCS-1", L"ZDCS-2", L"ZDCS-3", L"ZDCS-off"}));
    const CNames tabAll = tabList(L"");
    EXPECT_EQ(tabAll.count(L"ZDCS-1") + tabAll.count(L"ZDCS-off") + tabAll.count(L"dbus"), 3U);
    EXPECT_EQ(csFind(L"ZDCS-unknown"), L"none");
    EXPECT_EQ(CService(&m_clManager, L"ZDCS-unknown").eGetStatus(), eServiceStopped);
}

TEST_F(SystemdMachine, AUnitThatWrapsAnInitScript) {
    Script("ZDCS-wrap", "Program=\"/opt/wrapped --service\"\nexit 0\n");
    ASSERT_TRUE(bShell("systemctl daemon-reload && systemctl enable ZDCS-wrap >/dev/null 2>&1"));
    EXPECT_EQ(csFind(L"ZDCS-wrap"), L"ZDCS-wrap,LSB: test,/opt/wrapped --service");
    ASSERT_TRUE(bExists("/etc/rc2.d/S01ZDCS-wrap"));
    CService clService(&m_clManager, L"ZDCS-wrap");
    EXPECT_TRUE(clService.bStart(nullptr));
    EXPECT_EQ(clService.eGetStatus(), eServiceRunning);
    EXPECT_TRUE(clService.bRemove());
    EXPECT_FALSE(bExists("/etc/init.d/ZDCS-wrap"));
    EXPECT_FALSE(bExists("/etc/rc2.d/S01ZDCS-wrap"));
    EXPECT_EQ(csFind(L"ZDCS-wrap"), L"none");
}

using SysVMachine = MachineTest;

constexpr const char* PSZ_SCRIPT_BODY =
    "Name=\"Test of it\"\nProgram=\"/bin/sleep 1000\"\nSSD='start-stop-daemon --pidfile /run/life'\n"
    "case $1 in\nstart) $SSD --start --background --make-pidfile --exec /bin/sleep -- 1000;;\n"
    "stop) $SSD --stop --remove-pidfile;;\nrestart) $0 stop; $0 start;;\n"
    "reload) touch /tmp/reloaded;;\nstatus) $SSD --status;;\nesac\n";
// OpenRC runs it itself.
constexpr const char* PSZ_OPENRC_SCRIPT =
    "#!/sbin/openrc-run\nName=\"Test of it\"\nProgram=\"/bin/sleep 1000\"\nextra_started_commands=reload\n"
    "command=/bin/sleep\ncommand_args=1000\ncommand_background=yes\npidfile=/run/life\n"
    "reload() { touch /tmp/reloaded; }\n";

TEST_F(SysVMachine, TheLifeOfAService) {
    // What as_family tells of the distribution: what links a script into the boot, and one of the links.
    const char* const pszAdd = std::getenv("KALMO_ADD");
    ASSERT_NE(pszAdd, nullptr);
    const std::string csLink = std::getenv("KALMO_LINK");
    ASSERT_EQ(std::to_string(CServiceManager::ms_eDistri), std::getenv("KALMO_DISTRI"));
    const bool bOpenRC = CServiceManager::ms_eDistri == eGentoo;
    Script("ZDCS-life", PSZ_SCRIPT_BODY);
    Script("ZDCS-other", "");
    if (bOpenRC) {
        Write("/etc/init.d/ZDCS-life", PSZ_OPENRC_SCRIPT);
    }
    ASSERT_TRUE(bShell(std::string("for n in ZDCS-life ZDCS-other; do ") + pszAdd + " >&2 || exit; done"));
    ASSERT_TRUE(bExists(csLink + "ZDCS-life") && bExists(csLink + "ZDCS-other"));
    EXPECT_EQ(tabList(L"ZDCS-"), (CNames{L"ZDCS-life", L"ZDCS-other"}));
    EXPECT_EQ(csFind(L"ZDCS-life"), L"ZDCS-life,Test of it,/bin/sleep 1000");
    CService clService(&m_clManager, L"ZDCS-life");
    LiveThrough(clService);
    EXPECT_TRUE(clService.bStart(nullptr));
    Await(clService, eServiceRunning);
    ASSERT_TRUE(bShell("kill -9 $(cat /run/life)"));
    Await(clService, bOpenRC ? eServiceRunning : eServiceFailed);  // OpenRC does not look
    EXPECT_TRUE(clService.bRemove());
    EXPECT_FALSE(bExists("/etc/init.d/ZDCS-life"));
    EXPECT_FALSE(bShell("ls -d /etc/rc?.d/*ZDCS-life /etc/runlevels/*/ZDCS-life 2>/dev/null | grep ."));
    EXPECT_TRUE(bExists(csLink + "ZDCS-other")) << "another one's";
    EXPECT_EQ(tabList(L"ZDCS-"), CNames{L"ZDCS-other"});
}

}  // namespace
}  // namespace kalmo
