#include "services/service.h"

#include <cerrno>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

struct ServiceTest : CStandInTest {
    CService m_clService{nullptr, L"svc"};
};

TEST_F(ServiceTest, SysVCommandsAndWhatTheySilence) {
    for (const bool bWorks : {false, true}) {
        Tool(PSZ_SCRIPT, std::string("echo out; echo \"err $*\" >&2; exit ") + (bWorks ? "0" : "3"));
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        for (const bool bDone :
             {m_clService.bStart(nullptr), m_clService.bStart(L"a \u00E9"), m_clService.bStop(),
              m_clService.bRestart(), m_clService.bSendControlCommand(dwControlStop),
              m_clService.bSendControlCommand(dwControlReload)}) {
            EXPECT_EQ(bDone, bWorks);
        }
        EXPECT_FALSE(m_clService.bSendControlCommand(2));
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "err start\nerr start a \xC3\xA9\n");
        EXPECT_EQ(csTakeRecord(),
                  "svc start\nsvc start a \xC3\xA9\nsvc stop\nsvc restart\nsvc stop\nsvc reload\n");
    }
}

TEST_F(ServiceTest, Status) {
    const auto nStatus = [this](const char* pszTool, const char* pszBody) {
        Tool(pszTool, pszBody);
        return static_cast<int>(m_clService.eGetStatus());
    };
    EXPECT_EQ(nStatus(PSZ_SCRIPT, "exit 0"), 4);
    EXPECT_EQ(nStatus(PSZ_SCRIPT, "exit 1"), 8);
    EXPECT_EQ(nStatus(PSZ_SCRIPT, "exit 2"), 1);
    std::filesystem::permissions(PSZ_SCRIPT, std::filesystem::perms(0644));
    EXPECT_EQ(m_clService.eGetStatus(), -1);
    CServiceManager::ms_eDistri = eSystemd;
    EXPECT_EQ(nStatus(PSZ_SYSTEMCTL, "echo ActiveState=Reloading"), 4);
    EXPECT_EQ(nStatus(PSZ_SYSTEMCTL, "echo ActiveState=maintenance"), 1);
}

TEST_F(ServiceTest, SystemdRemovalGoesInOrder) {
    CServiceManager::ms_eDistri = eSystemd;
    std::filesystem::current_path("/");
    // Each call notes the files that are still there. A path of three characters is none.
    Tool(PSZ_SYSTEMCTL, R"(echo $(ls /tmp/unit /abc 2>/dev/null) >>/tmp/record
        case "$*" in
        *FragmentPath*) echo FragmentPath=/tmp/unit;;
        *SourcePath*) echo SourcePath=abc;;
        disable*) test -e /tmp/allowed;;
        stop*) exit 1;; esac)");
    Write("/tmp/unit", "");
    Write("/abc", "");
    const std::string csRefused =
        "systemctl --property=FragmentPath show svc\n/abc /tmp/unit\n"
        "systemctl --property=SourcePath show svc\n/abc /tmp/unit\n"
        "systemctl disable svc\n/abc /tmp/unit\n";
    EXPECT_FALSE(m_clService.bRemove());
    EXPECT_EQ(csTakeRecord(), csRefused);
    Write("/tmp/allowed", "");
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_EQ(csTakeRecord(),
              csRefused + "systemctl stop svc\n/abc /tmp/unit\nsystemctl daemon-reload\n/abc\n");
}

TEST_F(ServiceTest, SysVRemovalByDistribution) {
    ::setenv("PATH", "/tmp/tools:/usr/bin:/bin", 1);
    for (const char* const psz : {"update-rc.d", "chkconfig", "insserv", "rc-update"}) {
        Tool(std::string("/tmp/tools/") + psz, "ls /etc/init.d >>/tmp/record; echo loud; exit 1");
    }
    testing::internal::CaptureStdout();
    // The tool's call, and the script where it was still there.
    for (const auto& [eDistri, pszRecord] : {std::pair{eDebian, "update-rc.d -f svc remove\n"},
                                             {eRedHat, "chkconfig --del svc\nsvc\n"},
                                             {eMandriva, "chkconfig --del svc\nsvc\n"},
                                             {eFedora, "chkconfig --del svc\nsvc\n"},
                                             {eSuSE, "insserv -r svc\nsvc\n"},
                                             {eGentoo, "rc-update del svc\nsvc\n"}}) {
        CServiceManager::ms_eDistri = eDistri;
        Write(PSZ_SCRIPT, "");
        EXPECT_TRUE(m_clService.bRemove()) << "the tool's failure does not count";
        EXPECT_EQ(csTakeRecord(), pszRecord);
        EXPECT_FALSE(bExists(PSZ_SCRIPT));
        EXPECT_TRUE(m_clService.bRemove()) << "gone already";

        // What cannot be deleted makes a failure where deleting is the last step.
        Write("/etc/init.d/svc/file", "");
        EXPECT_EQ(m_clService.bRemove(), eDistri == eDebian);
        std::filesystem::remove_all(PSZ_SCRIPT);
        csTakeRecord();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    CServiceManager::ms_eDistri = eSlackware;
    Write(PSZ_SCRIPT, "");
    Write("/etc/rc.d/rc.svc", "");
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_FALSE(bExists("/etc/rc.d/rc.svc"));
    CServiceManager::ms_eDistri = eNotDetected;
    errno = EACCES;
    EXPECT_FALSE(m_clService.bRemove());
    errno = ENOENT;
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_TRUE(bExists(PSZ_SCRIPT));
}

}  // namespace
}  // namespace kalmo
