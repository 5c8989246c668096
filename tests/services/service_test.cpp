#include "services/service.h"

#include <cerrno>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

class ServiceTest : public CStandInTest {
  protected:
    // Each operation once, as one letter for success; small where it failed.
    std::string csOperateAll() {
        std::string cs;
        const auto Add = [&cs](char c, bool bDone) { cs += bDone ? c : static_cast<char>(c + ('a' - 'A')); };
        Add('S', m_clService.bStart(nullptr));
        Add('A', m_clService.bStart(L"a \u00E9"));
        Add('T', m_clService.bStop());
        Add('R', m_clService.bRestart());
        Add('C', m_clService.bSendControlCommand(1));
        Add('L', m_clService.bSendControlCommand(6));
        Add('N', m_clService.bSendControlCommand(2));
        return cs;
    }

    CService m_clService{nullptr, L"svc"};
};

TEST_F(ServiceTest, SystemdCommands) {
    CServiceManager::ms_eDistri = eSystemd;
    for (const char* const psz : {"exit 1", "kill -9 $$", "exit 0"}) {
        Tool(PSZ_SYSTEMCTL, psz);
        EXPECT_EQ(csOperateAll(), psz == std::string("exit 0") ? "SATRCLn" : "satrcln");
        EXPECT_EQ(csTakeRecord(),
                  "systemctl start svc\nsystemctl start svc\nsystemctl stop svc\nsystemctl restart svc\n"
                  "systemctl stop svc\nsystemctl reload svc\n");
    }
    Tool(PSZ_SYSTEMCTL, "echo ActiveState=Deactivating");
    EXPECT_EQ(m_clService.eGetStatus(), 3);
    EXPECT_EQ(csTakeRecord(), "systemctl --property=ActiveState show svc\n");
    EXPECT_EQ(m_clService.pszGetDisplayName(), nullptr);
    EXPECT_EQ(m_clService.pszBinaryPathName(), nullptr);
}

TEST_F(ServiceTest, SysVCommandsAndWhatTheySilence) {
    for (const char* const psz : {"exit 3", "exit 0"}) {
        Tool(PSZ_SCRIPT, std::string("echo out; echo \"err $*\" >&2; ") + psz);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(csOperateAll(), psz == std::string("exit 0") ? "SATRCLn" : "satrcln");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "err start\nerr start a \xC3\xA9\n");
        EXPECT_EQ(csTakeRecord(),
                  "svc start\nsvc start a \xC3\xA9\nsvc stop\nsvc restart\nsvc stop\nsvc reload\n");
    }
}

TEST_F(ServiceTest, SysVStatus) {
    struct STCase {
        const char* pszBody;
        int nStatus;
    };
    for (const STCase& rst : {STCase{"exit 0", 4},
                              {"exit 1", 8},
                              {"exit 2", 1},
                              {"kill -9 $$", 1},
                              {"cat; head -c 200000 /dev/zero; exit 1", 8}}) {
        Tool(PSZ_SCRIPT, rst.pszBody);
        EXPECT_EQ(m_clService.eGetStatus(), rst.nStatus) << rst.pszBody;
        EXPECT_EQ(csTakeRecord(), "svc status\n");
    }
    std::filesystem::permissions(PSZ_SCRIPT, std::filesystem::perms(0644));
    EXPECT_EQ(m_clService.eGetStatus(), -1);
}

TEST_F(ServiceTest, SysVTextsAreReadOnceFound) {
    EXPECT_STREQ(m_clService.pszGetDisplayName(), L"svc") << "no script";
    EXPECT_EQ(m_clService.pszBinaryPathName(), nullptr);
    Write(PSZ_SCRIPT, "#!/bin/sh\nDisplayName=\"Server \xC3\xA9\"\nProgram=\"/opt/kalmo --service\"\n");
    for (const char* const psz : {"", "Name=\"other\"\nProgram=\"other\"\n"}) {
        EXPECT_STREQ(m_clService.pszGetDisplayName(), L"Server \u00E9");
        EXPECT_STREQ(m_clService.pszBinaryPathName(), L"/opt/kalmo --service");
        Write(PSZ_SCRIPT, psz);
    }
    m_clService.SetBinaryPathFromSysVScript();
    EXPECT_STREQ(m_clService.pszBinaryPathName(), L"other");
}

TEST_F(ServiceTest, SystemdRemovalGoesInOrder) {
    CServiceManager::ms_eDistri = eSystemd;
    std::filesystem::current_path("/");
    Tool(PSZ_SYSTEMCTL, R"(ls /tmp/unit /tmp/source /abc 2>/dev/null | tr '\n' ' ' >>/tmp/record
        case "$*" in
        *FragmentPath*) echo FragmentPath=/tmp/unit;;
        *SourcePath*) echo SourcePath=$(cat /tmp/source-path);;
        disable*) exit $(cat /tmp/exit);;
        stop*) exit 1;; esac)");
    struct STCase {
        const char* pszExit;
        const char* pszSourcePath;
        bool bResult;
        std::string csRecord;
    };
    const std::string csAll = "/abc /tmp/source /tmp/unit ";
    const std::string csRefused = "systemctl --property=FragmentPath show svc\n" + csAll +
                                  "systemctl --property=SourcePath show svc\n" + csAll +
                                  "systemctl disable svc\n" + csAll;
    const std::string csDone = csRefused + "systemctl stop svc\n" + csAll + "systemctl daemon-reload\n/abc ";
    // A path of three characters is none.
    for (const STCase& rst : {STCase{"1", "/tmp/source", false, csRefused},
                              {"0", "/tmp/source", true, csDone},
                              {"0", "abc", true, csDone + "/tmp/source "}}) {
        for (const char* const psz : {"/tmp/unit", "/tmp/source", "/abc"}) {
            Write(psz, "");
        }
        Write("/tmp/exit", rst.pszExit);
        Write("/tmp/source-path", rst.pszSourcePath);
        EXPECT_EQ(m_clService.bRemove(), rst.bResult);
        EXPECT_EQ(csTakeRecord(), rst.csRecord);
    }
}

TEST_F(ServiceTest, SysVRemovalByDistribution) {
    struct STCase {
        int nDistri;
        const char* pszRecord;  // the tool's call, and whether the script was still there
    };
    for (const STCase& rst : {STCase{eDebian, "update-rc.d -f svc remove\ngone\n"},
                              {eRedHat, "chkconfig --del svc\nthere\n"},
                              {eMandriva, "chkconfig --del svc\nthere\n"},
                              {eFedora, "chkconfig --del svc\nthere\n"},
                              {eSuSE, "insserv -r svc\nthere\n"},
                              {eGentoo, "rc-update del svc\nthere\n"}}) {
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
        EXPECT_EQ(m_clService.bRemove(), rst.nDistri == eDebian);
        EXPECT_EQ(errno, EISDIR);
    }
}

TEST_F(ServiceTest, RemovalOnSlackwareAndElsewhere) {
    Write(PSZ_SCRIPT, "");
    Write("/etc/rc.d/rc.svc", "");
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
