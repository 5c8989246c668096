#include "services/service.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <utility>

#include "framework/conversion.h"
#include "services/command_witness.h"
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

TEST_F(ServiceManagerTest, UnitsThatHaveJustAFile) {
    CServiceManager::ms_eDistri = eSystemd;
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        list-units*plain) printf 'x-a.service a\nx-failed.service a\n';;
        list-units*) printf '  x-a.service a\n* x-failed.service a\n';;
        list-unit-files*) test -e /tmp/refused && exit 1
            for n in a off off alias t@ masked -b; do echo x-$n.service disabled; done;;
        --property=Id*) for n in a off masked -b; do echo Id=x-$n.service; echo; done;;
        *masked) echo Type=;;
        *) echo Type=simple;; esac)");
    const CNames tabAll{L"x-a", L"x-failed", L"x-off", L"x--b"};
    EXPECT_EQ(tabList(L"x-"), tabAll);
    EXPECT_NE(
        csTakeRecord().find("list-unit-files --type=service --full --no-pager --no-legend x-*\n"
                            "systemctl --property=Id show x-off.service x-alias.service x-masked.service "
                            "x--b.service\nsystemctl --property=Description,ExecStart,Type show x-off\n"),
        std::string::npos);
    EXPECT_EQ(tabList(L""), tabAll);
    Write("/tmp/refused", "");
    EXPECT_EQ(tabList(L"x-"), (CNames{L"x-a", L"x-failed"}));
}

struct ServiceTest : CStandInTest, ICommandWitness {
    void SetUp() override {
        CStandInTest::SetUp();
        SetCommandWitness(this);
    }
    void TearDown() override {
        SetCommandWitness(nullptr);
        CStandInTest::TearDown();
    }
    // Command, status and words; "!" while the script is there; what is long only counts.
    void CommandEnded(const STCommandEnd& rst) noexcept override {
        const std::string csSaid(csToUTF8(rst.svSaid).svGet());
        m_csTold += std::string(csToUTF8(rst.svCommand).svGet()) + (bExists(PSZ_SCRIPT) ? "!" : "=") +
                    std::to_string(rst.nStatus == -1 ? -errno : rst.nStatus) + ":" +
                    (csSaid.size() > 99 ? std::to_string(csSaid.size()) : csSaid) + "|";
    }
    std::string csTakeTold() { return std::exchange(m_csTold, ""); }

    CService m_clService{nullptr, L"svc"};
    std::string m_csTold;
};

TEST_F(ServiceTest, TheWitnessIsToldHowCommandsEnd) {
    using CRow = std::tuple<int, const char*, bool, std::string>;  // init system, what the command does...
    for (const auto& [nDistri, pszBody, bWorks, csTold] :
         {CRow(eDebian, "exit 0", true, ""),
          {eDebian, "echo 1 >/dev/stderr; echo 2 >&2; exit 3", false, "768:1\n2\n|"},
          {eDebian, "head -c 100000 /dev/zero | tr '\\0' x >&2; exit 1", false, "256:4096|"},
          {eDebian, "kill -9 $PPID", true, ""},
          {eDebian, "kill -INT $PPID", true, "2:|"},
          {eDebian, "exit 131", false, "33536:|"},
          {eSystemd, "echo x", true, ""},
          {eSystemd, "echo 1; echo 2 >&2; exit 4", false, "1024:1\n2\n|"},
          {eSystemd, "yes | head -c 1000000; exit 1", false, "256:4096|"},
          {eSystemd, "kill -INT $$", false, "2:|"},
          {eSystemd, nullptr, false, "-2:|"}}) {
        CServiceManager::ms_eDistri = nDistri;
        const bool bUnit = nDistri == eSystemd;
        Tool(bUnit ? PSZ_SYSTEMCTL : PSZ_SCRIPT, pszBody == nullptr ? "" : pszBody);
        std::filesystem::remove(bUnit ? PSZ_SCRIPT : PSZ_SYSTEMCTL);
        std::filesystem::remove(pszBody == nullptr ? PSZ_SYSTEMCTL : "");
        testing::internal::CaptureStderr();
        EXPECT_EQ(m_clService.bStart(nullptr), bWorks);
        EXPECT_TRUE(!bUnit || bWorks || errno == (pszBody == nullptr ? ENOENT : 0));
        const std::string csSaid = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(csTold != "256:4096|" || csSaid.size() == (bUnit ? 0 : 100000))
            << "what was said is lost";
        const char* const pszCommand =
            bUnit ? "/bin/systemctl start svc=" : "/etc/init.d/svc start >/dev/null!";
        EXPECT_EQ(csTakeTold(), csTold.empty() ? "" : pszCommand + csTold);
    }
}

TEST_F(ServiceTest, StandardErrorIsPutBack) {
    CServiceManager::ms_eDistri = eDebian;
    // Whoever is left behind goes on, and may write more than anybody keeps.
    Tool(PSZ_SCRIPT, "{ sleep 0.3; echo late >&2; yes >&2; echo >/tmp/alive; } & echo said >&2; exit 3");
    const int nBefore = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10);
    for (const bool bClosed : {false, true}) {
        std::filesystem::remove("/tmp/alive");
        bClosed ? ::close(STDERR_FILENO) : ::fcntl(STDERR_FILENO, F_SETFD, FD_CLOEXEC);
        EXPECT_FALSE(m_clService.bStart(nullptr));
        EXPECT_EQ(::fcntl(STDERR_FILENO, F_GETFD), bClosed ? -1 : FD_CLOEXEC);
        ::dup2(nBefore, STDERR_FILENO);
        EXPECT_EQ(csTakeTold(), "/etc/init.d/svc start >/dev/null!768:said\n|");
        for (int n = 0; n < 200 && !bExists("/tmp/alive"); ++n) {
            ::usleep(50000);
        }
        EXPECT_TRUE(bExists("/tmp/alive"));
    }
    ::close(nBefore);
}

TEST_F(ServiceTest, WhyARemovalFailsAndWhyAFileStays) {
    CServiceManager::ms_eDistri = eSystemd;
    ::mkfifo("/tmp/fifo", 0600);
    using CRow = std::tuple<const char*, bool, int>;  // what systemctl does, the result, the reason
    for (const auto& [pszBody, bWorks, nError] :
         {CRow("*disable*) echo Failed: Access denied; exit 1;;", false, EPERM),
          {"*disable*) echo Interactive authentication required. >&2; exit 1;;", false, EPERM},
          {"*disable*) echo Failed to disable unit: Read-only file system; exit 1;;", false, EROFS},
          {"*disable*) echo Is not: no space left on device; exit 1;;", false, ENOSPC},
          {"*disable*) echo Unit file svc.service does not exist.; exit 1;;", false, ECANCELED},
          {"*SourcePath*) rm $0;;", false, ENOENT},
          {"*FragmentPath*) echo refused; exit 1;;", true, EIO},
          {"*SourcePath*) echo SourcePath=/tmp/fifo;;", true, EINVAL},
          {"*FragmentPath*) echo FragmentPath=/tmp;;", true, EISDIR},
          {"*SourcePath*) echo SourcePath=/tmp/gone;;", true, 0}}) {
        Tool(PSZ_SYSTEMCTL, "case \"$*\" in " + std::string(pszBody) + " esac");
        int nStays = 0;
        EXPECT_EQ(m_clService.bRemove(&nStays), bWorks) << pszBody;
        EXPECT_EQ(bWorks ? nStays : errno, nError) << pszBody;
    }
    EXPECT_TRUE(bExists("/tmp/fifo"));
}

TEST_F(ServiceTest, SysVCommandsAndWhatTheySilence) {
    for (const bool bWorks : {false, true}) {
        Tool(PSZ_SCRIPT, std::string(R"(echo out; echo "err $*" >&2; exit )") + (bWorks ? "0" : "3"));
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(m_clService.bStart(nullptr), bWorks);
        EXPECT_EQ(m_clService.bStart(L"a \u00E9"), bWorks);
        EXPECT_EQ(m_clService.bStop(), bWorks);
        EXPECT_EQ(m_clService.bRestart(), bWorks);
        EXPECT_EQ(m_clService.bSendControlCommand(CONTROL_STOP), bWorks);
        EXPECT_EQ(m_clService.bSendControlCommand(CONTROL_RELOAD), bWorks);
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
        Tool(std::string("/tmp/tools/") + psz, "ls /etc/init.d >>/tmp/record; echo no >&2; exit 1");
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
        // With the script still there, unless it goes first.
        EXPECT_TRUE(
            csTakeTold().ends_with(eDistri == eDebian ? " >/dev/null=256:no\n|" : " >/dev/null!256:no\n|"));
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
