// Services on a real machine. Runs only inside a throwaway one, see tests/machine.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "services/lance_processus.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

using namespace std::chrono_literals;

std::wstring csOf(const wchar_t* psz) {
    return psz == nullptr ? L"(null)" : psz;
}

class MachineTest : public testing::Test {
  protected:
    void Enter(const char* pszKind, eDISTRI eDistri) {
        const char* const psz = std::getenv("KALMO_MACHINE");
        ASSERT_STREQ(psz, pszKind) << "it would change this machine";
        CLanceProcessus::sInit();
        m_clManager.bInit(nullptr, 0);
        ASSERT_EQ(CServiceManager::ms_eDistri, eDistri);
    }
    void TearDown() override { CLanceProcessus::sTerm(); }

    static void Write(const std::string& csPath, const std::string& csText, mode_t unMode = 0644) {
        std::ofstream(csPath) << csText;
        ::chmod(csPath.c_str(), unMode);
    }
    static bool bShell(const std::string& csCommand) { return std::system(csCommand.c_str()) == 0; }
    // Waits for a state that takes its time to come.
    static int nAwait(CService& rclService, int nStatus) {
        int nNow = rclService.eGetStatus();
        for (int n = 0; n < 200 && nNow != nStatus; ++n) {
            std::this_thread::sleep_for(50ms);
            nNow = rclService.eGetStatus();
        }
        return nNow;
    }
    std::wstring csList() {
        std::vector<std::wstring> tabName;
        unsigned dwCursor = 0;
        while (const auto pcl = m_clManager.pclEnumService(&dwCursor, L"ZDCS-", 0)) {
            tabName.emplace_back(pcl->pszGetName());
        }
        std::sort(tabName.begin(), tabName.end());
        std::wstring cs;
        for (const std::wstring& rcs : tabName) {
            cs += rcs + L" ";
        }
        return cs;
    }

    CServiceManager m_clManager;
};

class SystemdMachine : public MachineTest {
  protected:
    void SetUp() override { Enter("systemd", eSystemd); }

    static void Unit(const std::string& csName, const std::string& csService) {
        Write("/etc/systemd/system/" + csName + ".service", "[Unit]\nDescription=Test of " + csName +
                                                                "\n[Service]\n" + csService +
                                                                "\n[Install]\nWantedBy=multi-user.target\n");
        ASSERT_TRUE(bShell("systemctl daemon-reload"));
    }
};

TEST_F(SystemdMachine, TheLifeOfAService) {
    Unit("ZDCS-life", "ExecStart=/bin/sleep 1000\nExecReload=/bin/touch /tmp/reloaded");
    ASSERT_TRUE(bShell("systemctl enable --quiet ZDCS-life"));
    const auto pcl = m_clManager.pclGetService(L"ZDCS-life", 0);
    ASSERT_NE(pcl, nullptr);
    EXPECT_EQ(csOf(pcl->pszGetDisplayName()), L"Test of ZDCS-life");
    EXPECT_EQ(csOf(pcl->pszBinaryPathName()), L"/bin/sleep 1000 ");
    EXPECT_EQ(pcl->eGetStatus(), eServiceStopped);
    EXPECT_TRUE(pcl->bStart(L"dropped"));
    EXPECT_EQ(pcl->eGetStatus(), eServiceRunning);
    const CTString csPid = CServiceManager::csGetSystemdProp("MainPID", L"ZDCS-life");
    EXPECT_TRUE(pcl->bRestart());
    EXPECT_NE(CServiceManager::csGetSystemdProp("MainPID", L"ZDCS-life"), csPid);
    EXPECT_TRUE(pcl->bSendControlCommand(dwControlReload));
    EXPECT_TRUE(std::filesystem::exists("/tmp/reloaded"));
    EXPECT_TRUE(pcl->bStop());
    EXPECT_EQ(pcl->eGetStatus(), eServiceStopped);
    EXPECT_FALSE(pcl->bSendControlCommand(dwControlReload)) << "nothing to reload";

    EXPECT_TRUE(pcl->bStart(nullptr));
    EXPECT_TRUE(pcl->bRemove());
    EXPECT_EQ(pcl->eGetStatus(), eServiceStopped);
    EXPECT_FALSE(std::filesystem::exists("/etc/systemd/system/ZDCS-life.service"));
    EXPECT_FALSE(
        std::filesystem::is_symlink("/etc/systemd/system/multi-user.target.wants/ZDCS-life.service"));
    EXPECT_EQ(m_clManager.pclGetService(L"ZDCS-life", 0), nullptr);
}

TEST_F(SystemdMachine, EveryStateAndTheListing) {
    Unit("ZDCS-active", "ExecStart=/bin/sleep 1000");
    Unit("ZDCS-failed", "Type=oneshot\nExecStart=/bin/false");
    Unit("ZDCS-starting", "Type=oneshot\nExecStart=/bin/sleep 1000");
    Unit("ZDCS-stopping", "ExecStart=/bin/sleep 1000\nExecStop=/bin/sleep 1000");
    CService clActive(&m_clManager, L"ZDCS-active");
    CService clFailed(&m_clManager, L"ZDCS-failed");
    CService clStarting(&m_clManager, L"ZDCS-starting");
    CService clStopping(&m_clManager, L"ZDCS-stopping");
    CService clUnknown(&m_clManager, L"ZDCS-unknown");

    EXPECT_TRUE(clActive.bStart(nullptr));
    EXPECT_FALSE(clFailed.bStart(nullptr));
    EXPECT_TRUE(bShell("systemctl start --no-block ZDCS-starting"));
    EXPECT_TRUE(clStopping.bStart(nullptr));
    EXPECT_TRUE(bShell("systemctl stop --no-block ZDCS-stopping"));
    EXPECT_FALSE(clUnknown.bStart(nullptr));

    EXPECT_EQ(nAwait(clActive, eServiceRunning), eServiceRunning);
    EXPECT_EQ(nAwait(clFailed, eServiceFailed), eServiceFailed);
    EXPECT_EQ(nAwait(clStarting, eServiceStarting), eServiceStarting);
    EXPECT_EQ(nAwait(clStopping, eServiceStopping), eServiceStopping);
    EXPECT_EQ(clUnknown.eGetStatus(), eServiceStopped);
    EXPECT_EQ(m_clManager.pclGetService(L"ZDCS-unknown", 0), nullptr);
    EXPECT_EQ(csList(), L"ZDCS-active ZDCS-failed ZDCS-starting ZDCS-stopping ");
    EXPECT_TRUE(bShell("systemctl kill --signal=KILL ZDCS-stopping ZDCS-starting"));
}

TEST_F(SystemdMachine, AUnitThatWrapsAnInitScript) {
    Write("/etc/init.d/ZDCS-wrap",
          "#!/bin/sh\n### BEGIN INIT INFO\n# Provides: ZDCS-wrap\n# Required-Start:\n# Required-Stop:\n"
          "# Default-Start: 2 3 4 5\n# Default-Stop: 0 1 6\n# Short-Description: wrapped\n### END INIT INFO\n"
          "Program=\"/opt/wrapped --service\"\nexit 0\n",
          0755);
    ASSERT_TRUE(bShell("systemctl daemon-reload && systemctl enable ZDCS-wrap >/dev/null 2>&1"));
    const auto pcl = m_clManager.pclGetService(L"ZDCS-wrap", 0);
    ASSERT_NE(pcl, nullptr);
    EXPECT_EQ(csOf(pcl->pszBinaryPathName()), L"/opt/wrapped --service");
    EXPECT_TRUE(pcl->bStart(nullptr));
    EXPECT_EQ(pcl->eGetStatus(), eServiceRunning);
    EXPECT_TRUE(pcl->bRemove());
    EXPECT_FALSE(std::filesystem::exists("/etc/init.d/ZDCS-wrap"));
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
    EXPECT_TRUE(clService.bStop());
}

class SysVMachine : public MachineTest {
  protected:
    void SetUp() override { Enter("sysv", eDebian); }
};

TEST_F(SysVMachine, TheLifeOfAService) {
    const std::string csScript =
        "#!/bin/sh\n### BEGIN INIT INFO\n# Provides: ZDCS-life\n# Required-Start:\n# Required-Stop:\n"
        "# Default-Start: 2 3 4 5\n# Default-Stop: 0 1 6\n# Short-Description: test\n### END INIT INFO\n"
        "Name=\"Test of life\"\nProgram=\"/bin/sleep 1000\"\nSSD='start-stop-daemon --pidfile /run/life'\n"
        "case $1 in\nstart) $SSD --start --background --make-pidfile --exec /bin/sleep -- 1000;;\n"
        "stop) $SSD --stop --remove-pidfile;;\nrestart) $0 stop; $0 start;;\nreload) touch /tmp/reloaded;;\n"
        "status) $SSD --status;;\nesac\n";
    Write("/etc/init.d/ZDCS-life", csScript, 0755);
    Write("/etc/init.d/ZDCS-broken", "#!/bin/sh\nexit 1\n", 0755);
    Write("/etc/init.d/zdcs-other", csScript, 0755);
    ASSERT_TRUE(bShell("update-rc.d ZDCS-life defaults"));
    ASSERT_TRUE(std::filesystem::is_symlink("/etc/rc2.d/S01ZDCS-life"));

    EXPECT_EQ(csList(), L"ZDCS-broken ZDCS-life ");
    const auto pclBroken = m_clManager.pclGetService(L"ZDCS-broken", 0);
    EXPECT_EQ(pclBroken->eGetStatus(), eServiceFailed);
    const auto pcl = m_clManager.pclGetService(L"ZDCS-life", 0);
    ASSERT_NE(pcl, nullptr);
    EXPECT_EQ(csOf(pcl->pszGetDisplayName()), L"Test of life");
    EXPECT_EQ(csOf(pcl->pszBinaryPathName()), L"/bin/sleep 1000");
    EXPECT_EQ(pcl->eGetStatus(), eServiceStopped);
    EXPECT_TRUE(pcl->bStart(nullptr));
    EXPECT_EQ(nAwait(*pcl, eServiceRunning), eServiceRunning);
    EXPECT_TRUE(pcl->bRestart());
    EXPECT_EQ(nAwait(*pcl, eServiceRunning), eServiceRunning);
    EXPECT_TRUE(pcl->bSendControlCommand(dwControlReload));
    EXPECT_TRUE(std::filesystem::exists("/tmp/reloaded"));
    EXPECT_TRUE(pcl->bStop());
    EXPECT_EQ(nAwait(*pcl, eServiceStopped), eServiceStopped);

    EXPECT_TRUE(pcl->bRemove());
    EXPECT_FALSE(std::filesystem::exists("/etc/init.d/ZDCS-life"));
    EXPECT_FALSE(std::filesystem::is_symlink("/etc/rc2.d/S01ZDCS-life"));
    EXPECT_TRUE(pcl->bRemove()) << "gone already";
    EXPECT_EQ(csList(), L"ZDCS-broken ");
}

}  // namespace
}  // namespace kalmo
