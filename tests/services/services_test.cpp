#include "services/service.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "framework/conversion.h"
#include "services/command_witness.h"
#include "services/service_command.h"
#include "services/service_states.h"
#include "services/systemctl_output.h"
#include "services/told_program.h"
#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

using namespace std::string_literals;

// Description, program and kind, "-" where there is none.
std::wstring csUnit(std::string_view svOutput) {
    const STUnitProperties st = stReadUnitProperties(svOutput);
    const CTString cs = st.csDescription.value_or(L"-") + L"," + st.csProgram.value_or(L"-");
    return std::wstring(cs.svGet()) + (st.bInitScript ? L",script" : st.bExists ? L",unit" : L",-");
}

// The names, each followed by "|", and "marked" when there are names behind a mark.
std::wstring csNames(std::string_view svOutput, std::wstring_view svPrefix) {
    std::wstring cs;
    for (const CTString& rcs : tabReadUnitNames(svOutput, svPrefix)) {
        cs += std::wstring(rcs.svGet()) + L"|";
    }
    return cs + (bHasMarkedNames(svOutput, svPrefix) ? L"marked" : L"");
}

TEST(SystemctlOutput, PropertiesNamesAndIds) {
    for (const auto& [pszOutput, pszUnit] :
         {std::pair("Type=simple\nExecStart={ path=/opt/k ; argv[]=/opt/k --service ; ignore_errors=no }\n"
                    "Description=A = \xC3\xA9\n",
                    L"A = \u00E9,/opt/k --service ,unit"),
          {"TYPE=x\ndescription=\nexecstart={ argv[]=/etc/init.d/k ; }", L",/etc/init.d/k ,script"},
          {"Type=x\nExecStart={ argv[]=/etc/init.d;", L"-,/etc/init.d,unit"},
          {"Type=x\nExecStart=argv[]=/opt/k ; x", L"-,-,unit"},  // at position 0
          {"Type=x\nExecStart={ argv[]=; x", L"-,-,unit"},       // empty
          {"Type=x\nExecStart={ argv[]=/opt/k", L"-,-,unit"},    // without an end
          {"ExecStart\nType=\n=x\n\nTyp=x\n", L"-,-,-"}}) {
        EXPECT_EQ(csUnit(pszOutput), pszUnit) << pszOutput;
    }
    for (const auto& [pszOutput, pszNames] :
         {std::pair("ZDCS-a.service a\nZDCS-\xC3\xA9.service a\nssh.service a\n", L"ZDCS-a|ZDCS-\u00E9|"),
          {"zdcs-a.service x\nZDCS.service x\nZDCS-a.socket x\n", L""},
          {"  ZDCS-a.service x\nssh.service x\n", L"marked"},
          {"\xE2\x97\x8F ZDCS-b.service x\n", L"marked"},
          {"  ssh.service ZDCS-x\n** ZDCS-b.service x\nx y ZDCS-.service\n", L""},
          {"\nZDCS-a.service x\n\nZDCS-b.service x\n", L"ZDCS-a|"}}) {  // an empty line ends
        EXPECT_EQ(csNames(pszOutput, L"ZDCS-"), pszNames) << pszOutput;
    }
    EXPECT_EQ(csNames("a.service.service\n  b.service", L""), L"a|  b|marked");
    EXPECT_EQ(csReadProperty("FragmentPath=/a=b\n").svGet(), L"/a=b");
    EXPECT_TRUE(tabReadUnitIds("Id=a.service\n\nid=b.service\nId=c.socket\nId=.service") ==
                (std::vector<CTString>{L"a", L""}));
}

TEST(ProgramAsTold, ByTheRulesOfTheInitSystem) {
    const std::wstring csLong(141, L'x');  // with the marker the longest line
    for (const auto& [csLine, csUnit, csScript] :
         {std::tuple(L"/opt/\u00E9 k/kalmo --s"s, L"/opt/\u00E9 k/kalmo --s "s, L"/opt/\u00E9 k/kalmo --s"s),
          {L"/opt/a;b/k", L"/opt/a", L"/opt/a;b/k"},
          {L"/opt/a\"b/k", L"/opt/a\"b/k ", L"/opt/a"},
          {L"/opt/a\nb/k", L"-", L"/opt/a"},
          {L"/etc/init.d/k", L"-", L"/etc/init.d/k"},
          {csLong + L"y", csLong + L"y ", csLong}}) {
        CServiceManager::ms_eDistri = eSystemd;
        EXPECT_EQ(csProgramAsTold(CTString(csLine)).value_or(L"-").svGet(), csUnit);
        CServiceManager::ms_eDistri = eDebian;
        EXPECT_EQ(csProgramAsTold(CTString(csLine)).value_or(L"-").svGet(), csScript);
    }
}

struct STSign {
    std::string csPath, csText;
    int nDistri;
};

// In the order in which they are looked at. The texts are what some machine says there.
const STSign TAB_SIGN[] = {{"/bin/systemctl", "#!/bin/sh\n[ \"$*\" = '--no-pager --no-legend' ]\n", eSystemd},
                           {"/etc/debian_version", "12.11\n", eDebian},
                           {"/etc/mandrake-release", "Mandrake Linux release 10.1\n", eMandriva},
                           {"/etc/mandriva-release", "Mandriva Linux release 2011.0\n", eMandriva},
                           {"/etc/SuSE-release", "SUSE Linux Enterprise Server 11\n", eSuSE},
                           {"/sbin/SuSEconfig", "", eSuSE},
                           {"/etc/gentoo-release", "Gentoo Base System release 2.7\n", eGentoo},
                           {"/etc/fedora-release", "Fedora release 12\n", eFedora},
                           {"/etc/slackware-release", "", eSlackware},
                           {"/etc/slackware-version", "Slackware 13.37.0\n", eSlackware},
                           {"/etc/redhat-release", "CentOS release 5.11 (Final)\n", eRedHat},
                           {"/etc/version", "fedora\n", eFedora},
                           {"/etc/init.d/function", "", eRedHat}};

struct DetectionTest : CStandInTest {
    void SetUp() override {
        CStandInTest::SetUp();
        for (const STSign& rst : TAB_SIGN) {
            std::filesystem::remove_all(rst.csPath);
        }
    }
    // With another file, which is gone afterwards.
    int nDetect(const std::string& csPath, const std::string& csText) {
        Write(csPath, csText);
        CServiceManager::ms_eDistri = eNotDetected;
        EXPECT_TRUE(m_clManager.bInit(L"neither counts", 0xF003F));
        std::filesystem::remove_all(csPath);
        return CServiceManager::ms_eDistri;
    }
};

TEST_F(DetectionTest, EverySignAloneAndBeforeTheLaterOnes) {
    EXPECT_EQ(nDetect("/etc/init.d/functions", ""), eDebian) << "another file";
    for (const STSign& rst : TAB_SIGN) {
        EXPECT_EQ(nDetect(rst.csPath, rst.csText), rst.nDistri) << rst.csPath;
    }
    for (const STSign& rst : TAB_SIGN) {
        Write(rst.csPath, rst.csText);
    }
    for (const STSign& rst : TAB_SIGN) {
        EXPECT_EQ(nDetect(rst.csPath, rst.csText), rst.nDistri) << rst.csPath << " and all behind it";
    }
    // Once is enough: a manager made later finds what the first one found.
    CServiceManager::ms_eDistri = eSlackware;
    Write("/etc/debian_version", "");
    EXPECT_TRUE(CServiceManager().bInit(nullptr, 0));
    EXPECT_EQ(CServiceManager::ms_eDistri, eSlackware);
}

TEST_F(DetectionTest, WhatTheTextsSay) {
    for (const STSign& rst : {STSign{"/etc/redhat-release", "Mandrake, once Fedora", eMandriva},
                              {"/etc/redhat-release", "Fedora, once MANDRIVA", eMandriva},
                              // No release file is as long as that.
                              {"/etc/redhat-release", std::string(70000, ' ') + "Fedora", eDebian},
                              {"/etc/version", "Fedora, formerly Mandrake", eMandriva},
                              {"/etc/version", "Debian, RedHat, fEDORA", eFedora},
                              {"/etc/version", "Debian and RedHat", eRedHat}}) {
        EXPECT_EQ(nDetect(rst.csPath, rst.csText), rst.nDistri) << rst.csPath << " " << rst.csText;
    }
    // "debian" would be found without the word, too, so that here "function" must not be looked at any more.
    Write("/etc/init.d/function", "");
    EXPECT_EQ(nDetect("/etc/version", "A DEBIAN derivative"), eDebian);
    EXPECT_EQ(nDetect("/etc/version", "something else"), eRedHat);
    // What is there but cannot be read tells nothing.
    std::filesystem::create_directory("/etc/redhat-release");
    EXPECT_EQ(nDetect("/etc/version", "Fedora"), eFedora);
    // A systemctl that fails is none.
    Write("/etc/gentoo-release", "");
    for (const auto& [pszProgram, nDistri] : {std::pair{"sh\necho ssh.service; exit 3\n", eGentoo},
                                              {"sh\nkill -9 $$\n", eGentoo},
                                              {"no-such-shell\n", eGentoo},
                                              {"sh\nexec >&- 2>&-; sleep 0.1\n", eSystemd},
                                              {"sh\nhead -c 5000000 /dev/zero\n", eSystemd},
                                              {"sh\ncat; kill -CHLD $PPID\n", eSystemd}}) {
        EXPECT_EQ(nDetect(PSZ_SYSTEMCTL, "#!/bin/"s + pszProgram), nDistri) << pszProgram;
    }
    Write(PSZ_SYSTEMCTL, "#!/bin/sh\n");
    std::filesystem::permissions(PSZ_SYSTEMCTL, std::filesystem::perms(0644));
    EXPECT_EQ(nDetect("/none", ""), eGentoo);
}

struct MarkerTest : CStandInTest {
    // The display name and the program in a script, "-" where it tells none.
    static std::pair<std::wstring, std::wstring> clTexts(const std::string& csScript) {
        CServiceManager::ms_eDistri = eDebian;
        Write("/etc/init.d/-", csScript);
        CService clService(nullptr, L"-");
        const wchar_t* const pszProgram = clService.pszBinaryPathName();
        return {clService.pszGetDisplayName(), pszProgram == nullptr ? L"-" : pszProgram};
    }
};

TEST_F(MarkerTest, InLinesOfAnyKind) {
    for (const auto& [pszScript, pszName, pszProgram] :
         {std::tuple("", L"-", L"-"),
          {"#!/bin/sh\n  MyProgram=\"/opt/k -s\" # x\nProgram=\"other\"\n", L"-", L"/opt/k -s"},
          {"Name=\"\" Program=\"b\"\nName=\"c\"", L"", L"b"},
          {"name=\"x\"\nProgram = \"x\"\nProgram='x'\nName=x\n", L"-", L"-"},
          // Without a closing quote the line is the text, whatever ends it.
          {"Program=\"no end\r\nx\"\nName=\"no end\n\"\n", L"no end", L"no end"},
          {"Name=\"no\rend \t\nProgram=\"", L"no\rend \t", L""},
          // Wide characters, and bytes that are none.
          {"Name=\"\xC3\x89t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\"\nProgram=\"/\xE2\x82\xAC/k\"",
           L"\u00C9t\u00E9 \u20AC \U0001F600", L"/\u20AC/k"},
          {"Program=\"\xFF\"\nName=\"\xC3\n", L"\xDCC3", L"\xDCFF"}}) {
        EXPECT_EQ(clTexts(pszScript), std::pair(std::wstring(pszName), std::wstring(pszProgram)))
            << pszScript;
    }
}

// Lines of 250 bytes for the name and of 150 for the program: a longer line counts as several.
TEST_F(MarkerTest, AtAndBeyondTheLongestLine) {
    for (const auto& [csMarker, nMax] : {std::pair{"Name=\""s, 250}, {"Program=\"", 150}}) {
        const int nMarker = static_cast<int>(csMarker.size());
        // Where the marker ends, counted from the limit; what follows; the text.
        for (const auto& [nValue, csRest, pszText] :
             {// The closing quote is the last byte of the line, the one behind it, or behind the line feed.
              std::tuple(-4, "abc\"\n"s, L"abc"),
              {-3, "abc\"\n", L"abc"},
              {-3, "abc\n\"\n", L"abc"},
              {-2, "abc\n", L"ab"},
              {-2, "a\rc\n", L"a\r"},
              {0, "\"\n", L""},
              // A character that the limit splits leaves its first bytes.
              {-3, "\u20AC\n", L"\u20AC"},
              {-2, "\u20AC\"\n", L"\xDCE2\xDC82"},
              {-1, "\u20AC\"\n" + csMarker + "later\"\n", L"\xDCE2"},
              // The marker split by it, then whole behind it.
              {1, "abc\"\n", L"-"},
              {nMarker - 1, "abc\"\n" + csMarker + "x\"\n", L"x"},
              {nMarker, "abc\"\n", L"abc"},
              {9 * nMax + nMarker, "abc\"", L"abc"}}) {
            const auto [csName, csProgram] = clTexts(
                std::string(static_cast<std::size_t>(nMax - nMarker + nValue), '#') + csMarker + csRest);
            EXPECT_EQ(nMax == 250 ? csName : csProgram, pszText) << nValue << csRest;
        }
    }
}

using ServiceManagerTest = CStandInTest;

TEST_F(ServiceManagerTest, SysVScripts) {
    CServiceManager::ms_eDistri = eDebian;
    Write("/etc/init.d/ZDCS-a_b__c-d-e", "Name=\"The first\"\nProgram=\"/opt/k/kalmo --service\"\n");
    for (const char* const psz : {"v1.3", "v1.4", "v1-4", "v1-4b"}) {
        Write("/etc/init.d/"s + psz, "");
    }
    EXPECT_EQ(csFind(L"ZDCS-a b\tc/d.e"), L"ZDCS-a_b__c-d-e,The first,/opt/k/kalmo --service");
    EXPECT_EQ(csFind(L"v1.3"), L"v1.3,v1.3,(null)");
    EXPECT_EQ(csFind(L"v1.4"), L"v1-4,v1-4,(null)");
    EXPECT_EQ(csFind(L"V1.4"), L"none");
    EXPECT_EQ(tabList(L"v1.4"), (CNames{L"v1-4", L"v1-4b"}));
    std::filesystem::remove_all("/etc/init.d");
    EXPECT_EQ(tabList(L""), CNames());
    unsigned dwCursor = 0;
    EXPECT_EQ(m_clManager.pclEnumService(&dwCursor, L"", 0), nullptr);
    EXPECT_EQ(dwCursor, 0U);
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
    // A systemd that is busy is asked again: who is not seen would be taken for none.
    Tool(PSZ_SYSTEMCTL, R"(test -e /tmp/asked.$1 || { touch /tmp/asked.$1
            echo 'Failed to list units: Connection timed out'; exit 1; }
        case "$*" in list-units*) echo 'x-a.service a';; *) echo Type=simple;; esac)");
    EXPECT_EQ(tabList(L"x-"), CNames{L"x-a"});
}

TEST_F(ServiceManagerTest, StatesOfManyAreAskedTogether) {
    CServiceManager::ms_eDistri = eSystemd;
    CServiceList tabService;
    for (int n = 1; n <= 48; ++n) {
        tabService.Add(CXPtr_deleteRCV<CService>(new CService(nullptr, std::to_wstring(n).c_str())));
    }
    // The first of them has failed. Asked for all, the second systemctl leaves some out; the third is gone.
    for (const auto& [pszBody, nCalls, nFirst, nLast] :
         {std::tuple("for n; do case $n in 1|1.*) echo ActiveState=failed;; [0-9]*) echo "
                     "ActiveState=active;; esac; done",
                     2, 8, 4),
          {"case $* in *.service) ;; *' 1') echo ActiveState=failed;; *) echo ActiveState=active;; esac", 49,
           8, 4},
          {"", 0, -1, -1}}) {
        Tool(PSZ_SYSTEMCTL, pszBody);
        std::filesystem::remove(nCalls == 0 ? PSZ_SYSTEMCTL : "");
        const std::vector<eSERVICESTATUS> tabStatus = tabGetStatus(tabService);
        ASSERT_EQ(tabStatus.size(), 48U);
        EXPECT_EQ(tabStatus.front(), nFirst);
        EXPECT_EQ(std::count(tabStatus.begin() + 1, tabStatus.end(), nLast), 47) << pszBody;
        const std::string csRecord = csTakeRecord();
        EXPECT_EQ(std::count(csRecord.begin(), csRecord.end(), '\n'), nCalls) << pszBody;
    }
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
          {eSystemd, "rm", false, "-2:|"}}) {
        CServiceManager::ms_eDistri = nDistri;
        const bool bUnit = nDistri == eSystemd;
        Tool(bUnit ? PSZ_SYSTEMCTL : PSZ_SCRIPT, pszBody);
        std::filesystem::remove(bUnit ? PSZ_SCRIPT : PSZ_SYSTEMCTL);
        std::filesystem::remove(pszBody == "rm"s ? PSZ_SYSTEMCTL : "");
        testing::internal::CaptureStderr();
        EXPECT_EQ(m_clService.bStart(nullptr), bWorks);
        EXPECT_TRUE(!bUnit || bWorks || errno == (pszBody == "rm"s ? ENOENT : 0));
        const std::string csSaid = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(csTold != "256:4096|" || csSaid.size() == (bUnit ? 0 : 100000)) << "words are lost";
        EXPECT_EQ(csTakeTold(), csTold.empty() ? ""
                                : bUnit        ? "/bin/systemctl start svc=" + csTold
                                               : "/etc/init.d/svc start >/dev/null!" + csTold);
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

TEST_F(ServiceTest, SysVCommandsAndWhatTheySilence) {
    for (const bool bWorks : {false, true}) {
        Tool(PSZ_SCRIPT, R"(echo out; echo "err $*" >&2; exit )"s + (bWorks ? "0" : "3"));
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        for (const bool b :
             {m_clService.bStart(nullptr), m_clService.bStart(L"\u00E9 2"), m_clService.bStop(),
              m_clService.bRestart(), m_clService.bSendControlCommand(CONTROL_STOP),
              m_clService.bSendControlCommand(CONTROL_RELOAD)}) {
            EXPECT_EQ(b, bWorks);
        }
        EXPECT_FALSE(m_clService.bSendControlCommand(2));
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "err start\nerr start \xC3\xA9 2\n");
        EXPECT_EQ(csTakeRecord(),
                  "svc start\nsvc start \xC3\xA9 2\nsvc stop\nsvc restart\nsvc stop\nsvc reload\n");
    }
    for (const auto& [eDistri, pszTool, pszBody, nStatus] :
         {std::tuple(eDebian, PSZ_SCRIPT, "exit 0", 4),
          {eDebian, PSZ_SCRIPT, "exit 1", 8},
          {eDebian, PSZ_SCRIPT, "exit 2", 1},
          {eSystemd, PSZ_SYSTEMCTL, "echo ActiveState=Reloading", 4},
          {eSystemd, PSZ_SYSTEMCTL, "echo ActiveState=maintenance", 1}}) {
        CServiceManager::ms_eDistri = eDistri;
        Tool(pszTool, pszBody);
        EXPECT_EQ(m_clService.eGetStatus(), nStatus);
    }
    CServiceManager::ms_eDistri = eDebian;
    std::filesystem::permissions(PSZ_SCRIPT, std::filesystem::perms(0644));
    EXPECT_EQ(m_clService.eGetStatus(), -1);
    CServiceManager::ms_eDistri = eSystemd;
    Tool(PSZ_SYSTEMCTL, "");
    csTakeRecord();
    EXPECT_TRUE(m_clService.bRestart() && m_clService.bSendControlCommand(CONTROL_RELOAD));
    EXPECT_EQ(csTakeRecord(), "systemctl restart svc\nsystemctl reload svc\n");
    std::filesystem::rename("/bin/sh", "/bin/sh.away");
    EXPECT_EQ(nShellCommand("exit 127"), -1) << "nothing could be run";
    std::filesystem::rename("/bin/sh.away", "/bin/sh");
    EXPECT_EQ(nShellCommand("exit 127"), 127 << 8);
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
        "systemctl --property=SourcePath show svc\n/abc /tmp/unit\nsystemctl disable svc\n/abc /tmp/unit\n";
    EXPECT_FALSE(m_clService.bRemove());
    EXPECT_EQ(csTakeRecord(), csRefused);
    Write("/tmp/allowed", "");
    EXPECT_TRUE(m_clService.bRemove());
    EXPECT_EQ(csTakeRecord(),
              csRefused + "systemctl stop svc\n/abc /tmp/unit\nsystemctl daemon-reload\n/abc\n");
    // Why it fails, and why a file stays.
    ::mkfifo("/tmp/fifo", 0600);
    for (const auto& [pszBody, bWorks, nError] :
         {std::tuple("*disable*) echo Failed: Access denied; exit 1;;", false, EPERM),
          {"*disable*) echo Interactive authentication required. >&2; exit 1;;", false, EPERM},
          {"*disable*) echo Failed to disable unit: Read-only file system; exit 1;;", false, EROFS},
          {"*disable*) echo Is not: no space left on device; exit 1;;", false, ENOSPC},
          {"*disable*) echo Unit file svc.service does not exist.; exit 1;;", false, ECANCELED},
          {"*SourcePath*) rm $0;;", false, ENOENT},
          {"*FragmentPath*) echo refused; exit 1;;", true, EIO},
          {"*SourcePath*) echo SourcePath=/tmp/fifo;;", true, EINVAL},
          {"*FragmentPath*) echo FragmentPath=/tmp;;", true, EISDIR},
          {"*SourcePath*) echo SourcePath=/tmp/gone;;", true, 0}}) {
        Tool(PSZ_SYSTEMCTL, "case \"$*\" in "s + pszBody + " esac");
        int nStays = 0;
        EXPECT_EQ(m_clService.bRemove(&nStays), bWorks) << pszBody;
        EXPECT_EQ(bWorks ? nStays : errno, nError) << pszBody;
    }
    EXPECT_TRUE(bExists("/tmp/fifo"));
}

TEST_F(ServiceTest, SysVRemovalByDistribution) {
    ::setenv("PATH", "/tmp/tools:/usr/bin:/bin", 1);
    for (const char* const psz : {"update-rc.d", "chkconfig", "insserv", "rc-update"}) {
        Tool("/tmp/tools/"s + psz, "ls /etc/init.d >>/tmp/record; echo no >&2; exit 1");
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
        EXPECT_TRUE(csTakeTold().ends_with(eDistri == eDebian ? "=256:no\n|" : "!256:no\n|"));
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
    for (const int nError : {EACCES, ENOENT}) {
        errno = nError;
        EXPECT_EQ(m_clService.bRemove(), nError == ENOENT);
    }
    EXPECT_TRUE(bExists(PSZ_SCRIPT));
}

}  // namespace
}  // namespace kalmo
