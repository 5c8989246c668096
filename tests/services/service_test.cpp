#include "services/service.h"

#include <cerrno>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

class ServiceTest : public CStandInTest {
  protected:
    // The service under test, its texts unknown.
    CService m_clService{nullptr, L"svc"};
};

TEST_F(ServiceTest, SystemdCommands) {
    CServiceManager::ms_eDistri = eSystemd;
    Tool(PSZ_SYSTEMCTL, "exit $(cat /tmp/exit)");
    for (const bool bSuccess : {true, false}) {
        Write("/tmp/exit", bSuccess ? "0" : "1");
        EXPECT_EQ(m_clService.bStart(L"with arguments"), bSuccess);
        EXPECT_EQ(m_clService.bStop(), bSuccess);
        EXPECT_EQ(m_clService.bRestart(), bSuccess);
        EXPECT_EQ(m_clService.bSendControlCommand(1), bSuccess);
        EXPECT_EQ(m_clService.bSendControlCommand(6), bSuccess);
        EXPECT_FALSE(m_clService.bSendControlCommand(2));
        EXPECT_EQ(csTakeRecord(),
                  "systemctl start svc\nsystemctl stop svc\nsystemctl restart svc\nsystemctl stop svc\n"
                  "systemctl reload svc\n");
    }
    Tool(PSZ_SYSTEMCTL, "kill -9 $$");
    EXPECT_FALSE(m_clService.bStop());
    Tool(PSZ_SYSTEMCTL, "echo ActiveState=Deactivating");
    EXPECT_EQ(m_clService.eGetStatus(), 3);
    EXPECT_EQ(m_clService.pszGetDisplayName(), nullptr);
    EXPECT_EQ(m_clService.pszBinaryPathName(), nullptr);
    EXPECT_EQ(csTakeRecord(), "systemctl stop svc\nsystemctl --property=ActiveState show svc\n");
}

TEST_F(ServiceTest, SysVCommandsAndWhatTheySilence) {
    CServiceManager::ms_eDistri = eNotDetected;
    Tool(PSZ_SCRIPT, "echo out; echo \"err $*\" >&2; exit $(cat /tmp/exit)");
    for (const bool bSuccess : {true, false}) {
        Write("/tmp/exit", bSuccess ? "0" : "3");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(m_clService.bStart(nullptr), bSuccess);
        EXPECT_EQ(m_clService.bStart(L""), bSuccess);
        EXPECT_EQ(m_clService.bStart(L"a \u00E9"), bSuccess);
        EXPECT_EQ(m_clService.bStop(), bSuccess);
        EXPECT_EQ(m_clService.bRestart(), bSuccess);
        EXPECT_EQ(m_clService.bSendControlCommand(6), bSuccess);
        EXPECT_FALSE(m_clService.bSendControlCommand(0));
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "err start\nerr start\nerr start a \xC3\xA9\n");
        EXPECT_EQ(csTakeRecord(),
                  "svc start\nsvc start\nsvc start a \xC3\xA9\nsvc stop\nsvc restart\nsvc reload\n");
    }
}

TEST_F(ServiceTest, SysVStatus) {
    CServiceManager::ms_eDistri = eSuSE;
    struct STCase {
        const char* pszBody;
        int nStatus;
    };
    for (const STCase& rst : {STCase{"exit 0", 4},
                              {"exit 1", 8},
                              {"exit 2", 1},
                              {"exit 255", 1},
                              {"head -c 200000 /dev/zero; exit 1", 8},
                              {"cat; exit 0", 4},
                              {"kill -9 $$", 1}}) {
        Tool(PSZ_SCRIPT, rst.pszBody);
        EXPECT_EQ(m_clService.eGetStatus(), rst.nStatus) << rst.pszBody;
        EXPECT_EQ(csTakeRecord(), "svc status\n");
    }
    std::filesystem::permissions(PSZ_SCRIPT, std::filesystem::perms(0644));
    EXPECT_EQ(m_clService.eGetStatus(), -1);
}

TEST_F(ServiceTest, SysVTextsAreReadOnceFound) {
    CServiceManager::ms_eDistri = eRedHat;
    EXPECT_STREQ(m_clService.pszGetDisplayName(), L"svc") << "no script";
    EXPECT_EQ(m_clService.pszBinaryPathName(), nullptr);
    Write(PSZ_SCRIPT, "#!/bin/sh\nDisplayName=\"Server \xC3\xA9\"\nProgram=\"/opt/kalmo --service\"\n");
    EXPECT_STREQ(m_clService.pszGetDisplayName(), L"Server \u00E9");
    EXPECT_STREQ(m_clService.pszBinaryPathName(), L"/opt/kalmo --service");
    Write(PSZ_SCRIPT, "Name=\"other\"\nProgram=\"other\"\n");
    EXPECT_STREQ(m_clService.pszGetDisplayName(), L"Server \u00E9");
    EXPECT_STREQ(m_clService.pszBinaryPathName(), L"/opt/kalmo --service");
    m_clService.SetBinaryPathFromSysVScript();
    EXPECT_STREQ(m_clService.pszBinaryPathName(), L"other");

    CService clKnown(nullptr, L"svc", L"display", L"program");
    EXPECT_STREQ(clKnown.pszGetDisplayName(), L"display");
    EXPECT_STREQ(clKnown.pszBinaryPathName(), L"program");
}

TEST_F(ServiceTest, SystemdRemovalGoesInOrder) {
    CServiceManager::ms_eDistri = eSystemd;
    Tool(PSZ_SYSTEMCTL, R"(ls /tmp/unit /tmp/source /abc 2>/dev/null | tr '\n' ' ' >>/tmp/record
        case "$*" in
        *FragmentPath*) echo FragmentPath=/tmp/unit;;
        *SourcePath*) echo SourcePath=$(cat /tmp/source-path);;
        disable*) exit $(cat /tmp/exit);;
        stop*) exit 1;; esac)");
    Write("/tmp/source-path", "/tmp/source");
    const std::string csAsk =
        "systemctl --property=FragmentPath show svc\n/tmp/source /tmp/unit "
        "systemctl --property=SourcePath show svc\n/tmp/source /tmp/unit systemctl disable svc\n"
        "/tmp/source /tmp/unit ";
    Write("/tmp/unit", "");
    Write("/tmp/source", "");
    Write("/tmp/exit", "1");
    EXPECT_FALSE(m_clService.bRemove());
    EXPECT_EQ(csTakeRecord(), csAsk);

    Write("/tmp/exit", "0");
    EXPECT_TRUE(m_clService.bRemove()) << "stop fails, which does not count";
    EXPECT_EQ(csTakeRecord(), csAsk + "systemctl stop svc\n/tmp/source /tmp/unit systemctl daemon-reload\n");

    // A path of three characters is none.
    std::filesystem::current_path("/");
    Write("/tmp/source-path", "abc");
    Write("/abc", "");
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_TRUE(bExists("/abc"));
}

TEST_F(ServiceTest, SysVRemovalByDistribution) {
    struct STCase {
        int nDistri;
        const char* pszRecord;  // the tool's call, and whether the script was still there
    };
    const STCase tabCase[] = {
        {eDebian, "update-rc.d -f svc remove\ngone\n"},
        {eRedHat, "chkconfig --del svc\nthere\n"},
        {eMandriva, "chkconfig --del svc\nthere\n"},
        {eFedora, "chkconfig --del svc\nthere\n"},
        {eSuSE, "insserv -r svc\nthere\n"},
        {eGentoo, "rc-update del svc\nthere\n"},
    };
    for (const STCase& rst : tabCase) {
        Clear();
        CServiceManager::ms_eDistri = rst.nDistri;
        for (const char* const psz : {"update-rc.d", "chkconfig", "insserv", "rc-update"}) {
            Tool(std::string("/tmp/tools/") + psz,
                 "[ -e /etc/init.d/svc ] && echo there >>/tmp/record || echo gone >>/tmp/record\n"
                 "echo loud; exit 1");
        }
        Write(PSZ_SCRIPT, "");
        testing::internal::CaptureStdout();
        EXPECT_TRUE(m_clService.bRemove()) << "the tool's failure does not count";
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(csTakeRecord(), rst.pszRecord);
        EXPECT_FALSE(bExists(PSZ_SCRIPT));
        EXPECT_TRUE(m_clService.bRemove()) << "gone already";

        // What cannot be deleted makes a failure where deleting is the last step.
        Write("/etc/init.d/svc/file", "");
        errno = 0;
        EXPECT_EQ(m_clService.bRemove(), rst.nDistri == eDebian);
        EXPECT_EQ(errno, EISDIR);
    }
}

TEST_F(ServiceTest, RemovalOnSlackwareAndElsewhere) {
    Write(PSZ_SCRIPT, "");
    Write("/etc/rc.d/rc.svc", "");
    CServiceManager::ms_eDistri = eNotDetected;
    errno = EACCES;
    EXPECT_FALSE(m_clService.bRemove());
    errno = ENOENT;
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_TRUE(bExists("/etc/rc.d/rc.svc"));

    CServiceManager::ms_eDistri = eSlackware;
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_FALSE(bExists("/etc/rc.d/rc.svc"));
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_TRUE(bExists(PSZ_SCRIPT));
}

}  // namespace
}  // namespace kalmo
