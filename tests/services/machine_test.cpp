// Services on a real machine. Runs only inside a throwaway one, see tests/machine.

#include <thread>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

class MachineTest : public CServicesTest {
  protected:
    void Start(const char* pszKind, eDISTRI eDistri) {
        Enter("KALMO_MACHINE", pszKind);
        m_clManager.bInit(nullptr, 0);
        ASSERT_EQ(CServiceManager::ms_eDistri, eDistri);
    }
    static bool bShell(const std::string& csCommand) { return std::system(csCommand.c_str()) == 0; }
    static void Script(const std::string& csName, const std::string& csBody) {
        Write("/etc/init.d/" + csName,
              "#!/bin/sh\n### BEGIN INIT INFO\n# Provides: " + csName +
                  "\n# Required-Start:\n# Required-Stop:\n# Default-Start: 2 3 4 5\n# Default-Stop: 0 1 6\n"
                  "# Short-Description: test\n### END INIT INFO\n" +
                  csBody);
    }
    // Waits for a state that takes its time to come.
    static int nAwait(CService& rclService, int nStatus) {
        int nNow = rclService.eGetStatus();
        for (int n = 0; n < 200 && nNow != nStatus; ++n) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            nNow = rclService.eGetStatus();
        }
        return nNow;
    }
    // From a stopped service to a running one and back.
    static void LiveThrough(CService& rclService) {
        EXPECT_EQ(rclService.eGetStatus(), eServiceStopped);
        EXPECT_TRUE(rclService.bStart(nullptr));
        EXPECT_EQ(nAwait(rclService, eServiceRunning), eServiceRunning);
        EXPECT_TRUE(rclService.bRestart());
        EXPECT_EQ(nAwait(rclService, eServiceRunning), eServiceRunning);
        EXPECT_TRUE(rclService.bSendControlCommand(dwControlReload));
        EXPECT_TRUE(bExists("/tmp/reloaded"));
        EXPECT_TRUE(rclService.bSendControlCommand(dwControlStop));
        EXPECT_EQ(nAwait(rclService, eServiceStopped), eServiceStopped);
    }
};

class SystemdMachine : public MachineTest {
  protected:
    void SetUp() override { Start("systemd", eSystemd); }

    static void Unit(const std::string& csName, const std::string& csService) {
        Write("/etc/systemd/system/" + csName + ".service", "[Unit]\nDescription=Test of it\n[Service]\n" +
                                                                csService +
                                                                "\n[Install]\nWantedBy=multi-user.target\n");
        ASSERT_TRUE(bShell("systemctl daemon-reload"));
    }
};

TEST_F(SystemdMachine, TheLifeOfAService) {
    Unit("ZDCS-life", "ExecStart=/bin/sleep 1000\nExecReload=/bin/touch /tmp/reloaded");
    ASSERT_TRUE(bShell("systemctl enable --quiet ZDCS-life"));
    const auto pcl = m_clManager.pclGetService(L"ZDCS-life", 0);
    ASSERT_EQ(csDescribe(pcl), L"ZDCS-life,Test of it,/bin/sleep 1000 ");
    LiveThrough(*pcl);
    EXPECT_FALSE(pcl->bSendControlCommand(dwControlReload)) << "nothing to reload";
    EXPECT_TRUE(pcl->bStart(nullptr));
    EXPECT_TRUE(pcl->bRemove());
    EXPECT_EQ(pcl->eGetStatus(), eServiceStopped);
    EXPECT_FALSE(bExists("/etc/systemd/system/ZDCS-life.service"));
    EXPECT_FALSE(bExists("/etc/systemd/system/multi-user.target.wants/ZDCS-life.service"));
    EXPECT_EQ(m_clManager.pclGetService(L"ZDCS-life", 0), nullptr);
}

TEST_F(SystemdMachine, EveryStateAndTheListing) {
    struct STCase {
        const char* pszUnit;
        const char* pszCommands;
        eSERVICESTATUS eStatus;
    };
    const STCase tabCase[] = {
        {"ExecStart=/bin/sleep 1000", "systemctl start ZDCS-0", eServiceRunning},
        {"Type=oneshot\nExecStart=/bin/false", "! systemctl start ZDCS-1 2>/dev/null", eServiceFailed},
        {"Type=oneshot\nExecStart=/bin/sleep 1000", "systemctl start --no-block ZDCS-2", eServiceStarting},
        {"ExecStart=/bin/sleep 1000\nExecStop=/bin/sleep 1000",
         "systemctl start ZDCS-3 && systemctl stop --no-block ZDCS-3", eServiceStopping},
    };
    for (int n = 0; n < 4; ++n) {
        const STCase& rst = tabCase[n];
        Unit("ZDCS-" + std::to_string(n), rst.pszUnit);
        EXPECT_TRUE(bShell(rst.pszCommands)) << n;
        CService clService(&m_clManager, (L"ZDCS-" + std::to_wstring(n)).c_str());
        EXPECT_EQ(nAwait(clService, rst.eStatus), rst.eStatus) << n;
    }
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-0 ZDCS-1 ZDCS-2 ZDCS-3 ");
    EXPECT_EQ(m_clManager.pclGetService(L"ZDCS-unknown", 0), nullptr);
    CService clUnknown(&m_clManager, L"ZDCS-unknown");
    EXPECT_FALSE(clUnknown.bStart(nullptr));
    EXPECT_EQ(clUnknown.eGetStatus(), eServiceStopped);
}

TEST_F(SystemdMachine, AUnitThatWrapsAnInitScript) {
    Script("ZDCS-wrap", "Program=\"/opt/wrapped --service\"\nexit 0\n");
    ASSERT_TRUE(bShell("systemctl daemon-reload && systemctl enable ZDCS-wrap >/dev/null 2>&1"));
    const auto pcl = m_clManager.pclGetService(L"ZDCS-wrap", 0);
    ASSERT_EQ(csDescribe(pcl), L"ZDCS-wrap,LSB: test,/opt/wrapped --service");
    EXPECT_TRUE(pcl->bStart(nullptr));
    EXPECT_EQ(pcl->eGetStatus(), eServiceRunning);
    EXPECT_TRUE(pcl->bRemove());
    EXPECT_FALSE(bExists("/etc/init.d/ZDCS-wrap"));
    EXPECT_EQ(m_clManager.pclGetService(L"ZDCS-wrap", 0), nullptr);
}

TEST_F(SystemdMachine, ARefusedDisableLeavesTheServiceAlone) {
    Unit("ZDCS-refused", "ExecStart=/bin/sleep 1000");
    CService clService(&m_clManager, L"ZDCS-refused");
    ASSERT_TRUE(clService.bStart(nullptr));
    // systemd has the unit in memory, but there is no file any more that could be disabled.
    std::filesystem::remove("/etc/systemd/system/ZDCS-refused.service");
    EXPECT_FALSE(clService.bRemove());
    EXPECT_EQ(clService.eGetStatus(), eServiceRunning);
}

class SysVMachine : public MachineTest {
  protected:
    void SetUp() override { Start("sysv", eDebian); }
};

TEST_F(SysVMachine, TheLifeOfAService) {
    Script("ZDCS-life",
           "Name=\"Test of it\"\nProgram=\"/bin/sleep 1000\"\nSSD='start-stop-daemon --pidfile /run/life'\n"
           "case $1 in\nstart) $SSD --start --background --make-pidfile --exec /bin/sleep -- 1000;;\n"
           "stop) $SSD --stop --remove-pidfile;;\nrestart) $0 stop; $0 start;;\n"
           "reload) touch /tmp/reloaded;;\nstatus) $SSD --status;;\nesac\n");
    Script("ZDCS-broken", "exit 1\n");
    ASSERT_TRUE(bShell("update-rc.d ZDCS-life defaults"));
    ASSERT_TRUE(bExists("/etc/rc2.d/S01ZDCS-life"));
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-broken ZDCS-life ");
    EXPECT_EQ(m_clManager.pclGetService(L"ZDCS-broken", 0)->eGetStatus(), eServiceFailed);
    const auto pcl = m_clManager.pclGetService(L"ZDCS-life", 0);
    ASSERT_EQ(csDescribe(pcl), L"ZDCS-life,Test of it,/bin/sleep 1000");
    LiveThrough(*pcl);
    EXPECT_TRUE(pcl->bRemove());
    EXPECT_FALSE(bExists("/etc/rc2.d/S01ZDCS-life"));
    EXPECT_TRUE(pcl->bRemove()) << "gone already";
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-broken ");
}

}  // namespace
}  // namespace kalmo
