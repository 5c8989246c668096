#include "services/service.h"

#include <cerrno>
#include <utility>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

using ServiceManagerTest = CStandInTest;

TEST_F(ServiceManagerTest, SysVScripts) {
    CServiceManager::ms_eDistri = eDebian;
    Write("/etc/init.d/ZDCS-a_b__c-d-e", "Name=\"The first\"\nProgram=\"/opt/k/kalmo --service\"\n");
    for (const char* const psz : {"v1.3", "v1.4", "v1-4", "v1-4b"}) {
        Write(std::string("/etc/init.d/") + psz, "");
    }
    EXPECT_EQ(csFind(L"ZDCS-a b\tc/d.e"), L"ZDCS-a_b__c-d-e,The first,/opt/k/kalmo --service");
    EXPECT_EQ(csFind(L"v1.3"), L"v1.3,v1.3,(null)");
    EXPECT_EQ(csFind(L"v1.4"), L"v1-4,v1-4,(null)");
    EXPECT_EQ(csFind(L"V1.4"), L"none");
    EXPECT_EQ(tabList(L"v1.4"), (CNames{L"v1-4", L"v1-4b"}));
    std::filesystem::remove_all("/etc/init.d");
    EXPECT_EQ(tabList(L""), CNames());
}

TEST_F(ServiceManagerTest, SystemdUnits) {
    CServiceManager::ms_eDistri = eSystemd;
    // The second unit is listed, but not loaded. A marked name does not count beside others.
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        list-units*) printf 'x-lost.service a\nx-gone.service a\nssh.service a\n* x-b.service a\n';;
        *" a b c") echo Type=simple; echo Description=Odd; echo 'ExecStart={ argv[]=/opt/k --service ; }';;
        *gone) echo Type=; echo Description=x;;
        *) echo Type=forking; echo 'ExecStart={ argv[]=/etc/init.d/lost start ; }';; esac)");
    EXPECT_EQ(csFind(L"a;b|c"), L"a;b|c,Odd,/opt/k --service ");
    EXPECT_EQ(csFind(L"x-lost"), L"x-lost,(null),(null)");
    EXPECT_EQ(tabList(L"x-"), CNames{L"x-lost"});
    EXPECT_TRUE(csTakeRecord().starts_with(
        "systemctl --property=Description,ExecStart,Type show a b c\n"
        "systemctl --property=Description,ExecStart,Type show x-lost\n"
        "systemctl list-units --all --type=service --full --no-pager --no-legend\nsystemctl --property"));
    unsigned dwCursor = 0;
    EXPECT_NE(m_clManager.pclEnumService(&dwCursor, L"", 0), nullptr);
    m_clManager.AbortEnumService(&dwCursor);
    EXPECT_EQ(dwCursor, 0U);
    EXPECT_STREQ(m_clManager.pclEnumService(&dwCursor, L"", 0)->pszGetName(), L"x-lost");
    std::filesystem::remove(PSZ_SYSTEMCTL);
    EXPECT_EQ(csFind(L"x-lost"), L"none");
    EXPECT_EQ(tabList(L"x-"), CNames());
}

struct ServiceTest : CStandInTest {
    CService m_clService{nullptr, L"svc"};
};

TEST_F(ServiceTest, SysVCommandsAndWhatTheySilence) {
    for (const bool bWorks : {false, true}) {
        Tool(PSZ_SCRIPT, std::string(R"(echo out; echo "err $*" >&2; exit )") + (bWorks ? "0" : "3"));
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(m_clService.bStart(nullptr), bWorks);
        EXPECT_EQ(m_clService.bStart(L"a \u00E9"), bWorks);
        EXPECT_EQ(m_clService.bStop(), bWorks);
        EXPECT_EQ(m_clService.bRestart(), bWorks);
        EXPECT_EQ(m_clService.bSendControlCommand(dwControlStop), bWorks);
        EXPECT_EQ(m_clService.bSendControlCommand(dwControlReload), bWorks);
        EXPECT_FALSE(m_clService.bSendControlCommand(2));
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "err start\nerr start a \xC3\xA9\n");
        EXPECT_EQ(csTakeRecord(),
                  "svc start\nsvc start a \xC3\xA9\nsvc stop\nsvc restart\nsvc stop\nsvc reload\n");
    }
    for (const auto& [pszBody, nStatus] : {std::pair("exit 0", 4), {"exit 1", 8}, {"exit 2", 1}}) {
        Tool(PSZ_SCRIPT, pszBody);
        EXPECT_EQ(m_clService.eGetStatus(), nStatus);
    }
    std::filesystem::permissions(PSZ_SCRIPT, std::filesystem::perms(0644));
    EXPECT_EQ(m_clService.eGetStatus(), -1);
    CServiceManager::ms_eDistri = eSystemd;
    for (const auto& [pszBody, nStatus] : {std::pair("Reloading", 4), {"maintenance", 1}}) {
        Tool(PSZ_SYSTEMCTL, std::string("echo ActiveState=") + pszBody);
        EXPECT_EQ(m_clService.eGetStatus(), nStatus);
    }
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
        Tool(std::string("/tmp/tools/") + psz, "ls /etc/init.d >>/tmp/record; exit 1");
    }
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
