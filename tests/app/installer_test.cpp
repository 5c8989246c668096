// The program itself, run unattended on a copy of the machine's files. The server's programs in the payloads
// are scripts that record how they are called; ZIP files come from an independent archiver.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "app/engine/passwords.h"
#include "framework/conversion.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;

class CInstaller : public testing::Test {
  protected:
    static constexpr const char* PSZ_DIR = "/tmp/zd/";

    void SetUp() override {
        ASSERT_STREQ(std::getenv("KALMO_PRIVATE_ROOT"), "1") << "it would change this machine";
        fs::remove_all("/tmp/run");
        fs::remove_all(PSZ_DIR);
        fs::create_directories("/tmp/run/tree");
        fs::remove("/etc/init.d/ZDCS-first");
        fs::remove("/bin/systemctl");  // in a changed root it succeeds without doing anything
        fs::copy_file(KALMO_INSTALLER, "/tmp/run/kalmoinstall");
        fs::current_path("/tmp/run");
    }

    static void Write(const fs::path& rclPath, const std::string& csText) {
        fs::create_directories(fs::absolute(rclPath).parent_path());
        std::ofstream(rclPath, std::ios::binary) << csText;
    }
    static std::string csRead(const fs::path& rclPath) {
        std::ifstream clFile(rclPath, std::ios::binary);
        return clFile ? std::string{std::istreambuf_iterator<char>(clFile), {}} : "(none)";
    }
    static int nShell(const std::string& cs) { return std::system(cs.c_str()); }
    static unsigned unMode(const fs::path& rclPath) {
        struct stat st {};
        return ::stat(rclPath.c_str(), &st) == 0 ? st.st_mode & 07777U : 0;
    }

    /// Packs /tmp/run/tree, with a server that records how it is called and registers its service.
    static void PackServer() {
        Write("tree/kalmo", R"(#!/bin/sh
echo "kalmo $*" >>/tmp/run/calls
printf '#!/bin/sh\nName="first"\nProgram="%s --service"\necho "$1" >>/tmp/run/calls\n[ "$1" != status ] || exit 0\n' \
    "$0" >/etc/init.d/ZDCS-first
chmod 755 /etc/init.d/ZDCS-first
)");
        Write("tree/KalmoManager", "#!/bin/sh\necho \"kalmomanager $*\" >>/tmp/run/calls\nexit 255\n");
        Write("tree/LICENSE.TXT", "to be accepted");
        Write("tree/lib/a b.txt", "text");
        fs::remove("kalmoinstall.zip");
        ASSERT_EQ(nShell("cd tree && zip -qXDr ../kalmoinstall.zip ."), 0);
    }
    /// Runs the installer with the words as a shell takes them. All output goes to /tmp/run/output.
    static void Run(const std::string& csWords) {
        ASSERT_EQ(nShell("./kalmoinstall " + csWords + " >output 2>&1"), 0);
    }
    static void Pilot(const std::string& csOrders) {
        Write("pilot.ini", csOrders);
        fs::remove("trace");
        Run("/PILOT=pilot.ini /DEBUG=trace");
        EXPECT_EQ(csRead("output"), "");
    }
    static constexpr const char* PSZ_INSTALL =
        "[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=/tmp/zd\nPort=4950\n";
    static constexpr const char* PSZ_UPGRADE = "[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=first\n";
    static constexpr const char* PSZ_REMOVE = "[PILOTAGE]\nMAJ=3\n[SERVEUR]\nServeur=first\n";
    static bool bMarked() { return csRead("/tmp/zd/Install.log") == "OK"; }
    static bool bTraced(const std::string& csText) {
        return csRead("trace").find(csText) != std::string::npos;
    }
};

TEST_F(CInstaller, OptionsSelectTheParameterFile) {
    PackServer();
    Write("right.ini", PSZ_INSTALL);
    Write(".hidden.ini", PSZ_INSTALL);
    Write("wrong.ini", "[PILOTAGE]\nMAJ=4\n");
    for (const char* const psz :
         {"/pilot=right.ini", "/PILOT=wrong.ini x /PILOT=../run/right.ini", "/PILOT=.hidden.ini"}) {
        fs::remove_all(PSZ_DIR);
        fs::remove("/etc/init.d/ZDCS-first");
        Run(psz);
        EXPECT_TRUE(bMarked()) << psz;
    }
    fs::remove_all(PSZ_DIR);
    for (const char* const psz : {"/PILOT=wrong.ini", "/PILOT=right.ini /PILOT=wrong.ini", "/PILOT=none.ini",
                                  "/PILOT=", "/DEBUG=trace", "PILOT=right.ini", ""}) {
        Run(psz);
        EXPECT_FALSE(fs::exists(PSZ_DIR)) << psz;
    }
    Run("--version");
    EXPECT_TRUE(csRead("output").starts_with("kalmoinstall 25."));
}

TEST_F(CInstaller, ItTellsThatATerminalIsNeeded) {
    PackServer();
    // "script" makes a terminal.
    for (const std::string csCommand : {
             "TERM=xterm ./kalmoinstall </dev/null >output 2>errors",
             "script -qec 'TERM=nonesuch ./kalmoinstall 2>errors' /dev/null >output </dev/null",
             "script -qec 'TERM=xterm ./kalmoinstall 2>errors </dev/null' /dev/null >output </dev/null",
         }) {
        SCOPED_TRACE(csCommand);
        EXPECT_EQ(nShell(csCommand), 0);
        EXPECT_EQ(csRead("output"), "");
        EXPECT_NE(csRead("errors").find("kalmoinstall needs a terminal.\n"), std::string::npos);
    }
}

TEST_F(CInstaller, OrdersThatCannotBeCarriedOutDoNothing) {
    PackServer();
    const std::string csLong(100, 'n');
    const std::string csInstall = "[PILOTAGE]\nMAJ=2\n[SERVEUR]\n";
    for (const std::string& cs : std::vector<std::string>{
             "", "[SERVEUR]\nServeur=first\nRepertoire=/tmp/zd\n", "[PILOTAGE]\nMAJ=0\n",
             csInstall + "Serveur=first\n", csInstall + "Repertoire=/tmp/zd\n",
             csInstall + "Serveur=first\nRepertoire=tmp/zd\n",
             csInstall + "Serveur=" + csLong + "n\nRepertoire=/tmp/zd\n",
             csInstall + "Serveur=first\nRepertoire=/tmp/zd/" + std::string(252, 'd') + "\n", PSZ_UPGRADE,
             PSZ_REMOVE}) {
        Pilot(cs);
        EXPECT_FALSE(fs::exists(PSZ_DIR)) << cs;
        EXPECT_NE(csRead("trace"), "(none)") << cs;
    }
    Pilot(csInstall + "Serveur=" + csLong + "\nRepertoire=/tmp/zd\n");
    EXPECT_TRUE(bMarked()) << csRead("trace");
}

TEST_F(CInstaller, NamesThatReachOtherUnitsAreRefused) {
    PackServer();
    Write("/bin/systemctl", "#!/bin/sh\necho \"$*\" >>/tmp/run/units\n");
    fs::permissions("/bin/systemctl", fs::perms(0755));
    for (const char* const psz :
         {"x systemd-journald", "*", "a?b", "a/b", "[a-z]", "\"a\"", "a@", "caf\xC3\xA9"}) {
        Pilot("[PILOTAGE]\nMAJ=2\n[SERVEUR]\nRepertoire=/tmp/zd\nServeur=" + std::string(psz) + "\n");
        EXPECT_FALSE(fs::exists(PSZ_DIR)) << psz;
        EXPECT_TRUE(bTraced("no name that a service can have")) << psz;
    }
    EXPECT_EQ(csRead("units").find("show"), std::string::npos);
}

TEST_F(CInstaller, WhatIsNotOursIsRefusedAndStaysAsItIs) {
    const auto csInto = [](const std::string& rcsDir, const char* pszName = "second") {
        return "[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=" + std::string(pszName) + "\nRepertoire=" + rcsDir +
               "\n";
    };
    const auto csWrap = [](const std::string& rcs) {
        return "sed -i 's,Program=\",&" + rcs + " ,' /etc/init.d/ZDCS-first";
    };
    const std::string csNice = csWrap("/usr/bin/nice --adjustment=5");
    const std::string csEnv = csWrap("/usr/bin/env LANG=C");
    const char* const pszNice =
        R"(not of this product: "/usr/bin/nice --adjustment=5 /tmp/zd/kalmo --service")";
    const struct {
        std::string csPrepare;
        std::string csOrders;
        const char* pszTraced;
    } TAB[] = {
        {csNice, PSZ_UPGRADE, pszNice},
        {csNice, PSZ_REMOVE, pszNice},
        {csNice, csInto("/tmp/zd"), pszNice},
        {csEnv, PSZ_UPGRADE, "not of this product"},
        {csEnv, PSZ_REMOVE, "not of this product"},
        {csWrap("nice"), PSZ_REMOVE, "not of this product"},
        {csWrap("/usr/bin/missing"), PSZ_REMOVE, "not of this product"},
        // A link is not where the instance lies.
        {"ln -sf /tmp/zd/kalmo /usr/bin/kalmo; sed -i 's,/tmp/zd/,/usr/bin/,' /etc/init.d/ZDCS-first",
         PSZ_UPGRADE, "not of this product"},
        // A command that does not say where it runs: the configuration, or a program that runs, tells.
        {"sed -i 's,Program=.*,Program=\"/bin/sh -c cd...\",' /etc/init.d/ZDCS-first", csInto("/tmp/zd"),
         "ZDCS-first runs a program that is not of this product"},
        {"cp /bin/sleep /tmp/zd/kalmomanager; /tmp/zd/kalmomanager 3 & "
         "sed 's,Program=.*,Program=\"/bin/sh -c cd...\",' /etc/init.d/ZDCS-first >/etc/init.d/KalmoManager",
         PSZ_UPGRADE, "KalmoManager runs a program that is not of this product"},
        // A path that the line's limit cuts names something else.
        {"sed -i 's,Program=\",&/tmp/" + std::string(140, 'd') + ",' /etc/init.d/ZDCS-first", PSZ_REMOVE,
         "not of this product"},
        // Cut short, the manager's name is that of the daemon beside it.
        {"sed 's,kalmo --service\",kalmo,' /etc/init.d/ZDCS-first >/etc/init.d/KalmoManager",
         "[PILOTAGE]\nMAJ=3\n[SERVEUR]\nServeur=kalmomanager\n", "KalmoManager runs a program that is not"},
        {"rm -r /tmp/zd", PSZ_UPGRADE, "its directory /tmp/zd/ is gone"},
        {"", csInto("/tmp//zd/."), "is the directory of the instance ZDCS-first"},
        {"", csInto("/tmp/other --x"), "could not be found again"},
        {"", csInto("/tmp/other\"x"), "could not be found again"},
        {"", csInto("/tmp/" + std::string(114, 'd')), "could not be found again"},
        {"", csInto("/tmp/other", "it's"), "no name that a service can have: \"it's\""},
    };
    const auto csMachine = [] {
        nShell(
            "cd /; { find tmp/zd tmp/other* tmp/d* etc/init.d -type f | xargs md5sum; cat tmp/run/calls; } "
            ">/tmp/machine 2>&1");
        return csRead("/tmp/machine");
    };
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.csPrepare + "\n" + rst.csOrders);
        SetUp();
        fs::remove("/etc/init.d/KalmoManager");
        PackServer();
        Pilot(PSZ_INSTALL);
        Write("/tmp/zd/tvzdsrv.so", "");
        Write("/tmp/zd/tvsqlsrv.so", "");
        ASSERT_EQ(nShell(rst.csPrepare), 0);
        const std::string csBefore = csMachine();
        Pilot(rst.csOrders);
        EXPECT_EQ(csMachine(), csBefore);
        EXPECT_TRUE(bTraced(rst.pszTraced)) << csRead("trace");
    }
    SetUp();
    PackServer();
    // One that just fits is installed, upgraded and marked where it lies.
    const std::string csDir = "/tmp/zd/" + std::string(109, 'd');
    Pilot(csInto(csDir, "first"));
    fs::remove(csDir + "/Install.log");
    Pilot(PSZ_UPGRADE);
    EXPECT_EQ(csRead(csDir + "/Install.log"), "OK") << csRead("trace");
}

TEST_F(CInstaller, OrdersAreReadOnceAndToldOneByOne) {
    PackServer();
    Pilot(PSZ_INSTALL);
    const std::string csStart = "kalmoinstall 25.0.98.0: unattended run, parameter file \"./pilot.ini\"\n";
    EXPECT_TRUE(bTraced(csStart));
    EXPECT_TRUE(bTraced(R"(orders: MAJ="2" Serveur="first" Repertoire="/tmp/zd" Port="4950")"));
    const std::pair<std::string, const char*> TAB[] = {
        {"", "MAJ: the parameter file is empty"},
        {"\xEF\xBB\xBF" + std::string(PSZ_UPGRADE), "byte-order mark of UTF-8"},
        {"\xFE\xFF\0[", "byte-order mark of UTF-16 big-endian"},
        {"[SERVEUR]\nServeur=first\n", "MAJ: missing in the parameter file"},
        {"[PILOTAGE]\nMAJ=7\n", "MAJ: no operation of that number"},
        {"[PILOTAGE]\nMAJ=3\n[SERVEUR]\nServeur=a\x1B\"\\\x7F\n",
         R"(Serveur="a\x1B\"\\\x7F" Repertoire missing)"},
    };
    for (const auto& [csOrders, pszTraced] : TAB) {
        Pilot(csOrders);
        EXPECT_TRUE(bTraced(pszTraced)) << csRead("trace");
    }
    Run("/PILOT=none.ini /DEBUG=trace");
    EXPECT_TRUE(bTraced("parameter file \"./none.ini\": failed: not found"));
    Run("/PILOT=/tmp /DEBUG=trace");
    EXPECT_TRUE(bTraced("parameter file \"/tmp\": failed: a directory"));
    fs::remove("pilot.ini");
    fs::create_symlink("/proc/self/mem", "pilot.ini");
    Run("/PILOT=pilot.ini /DEBUG=trace");
    EXPECT_TRUE(bTraced("read parameter file \"./pilot.ini\": failed ("));
    fs::remove("pilot.ini");

    // Closed descriptors: the trace is not what the programs write to.
    fs::remove("trace");
    ASSERT_EQ(nShell("./kalmoinstall /PILOT=none.ini /DEBUG=trace <&- >&- 2>&-"), 0);
    EXPECT_TRUE(bTraced("failed: not found"));

    // What the file says while the run waits for another one is not its order.
    Write("pilot.ini", PSZ_UPGRADE);
    Write("other.ini", PSZ_REMOVE);
    fs::remove("trace");
    ASSERT_EQ(nShell(R"(exec 9>/run/kalmoinstall.lock; flock 9
        ./kalmoinstall /PILOT=pilot.ini /DEBUG=trace 9>&- &
        for n in $(seq 200); do grep -q waiting trace && break; sleep 0.05; done
        cp other.ini pilot.ini; exec 9>&-; wait)"),
              0);
    EXPECT_TRUE(bMarked() && fs::exists("/tmp/zd/kalmo")) << csRead("trace");
}

TEST_F(CInstaller, WhatTheKeyboardEndsEndsTheRun) {
    PackServer();
    Write("tree/KalmoManager",
          "#!/bin/sh\nread -r line && echo \"read $line\" >>/tmp/run/calls\nkill -INT $$\n");
    ASSERT_EQ(nShell("cd tree && zip -qXDr ../kalmoinstall.zip ."), 0);
    Write("pilot.ini", PSZ_INSTALL);
    ASSERT_EQ(nShell("echo typed | ./kalmoinstall /PILOT=pilot.ini /DEBUG=trace"), 0);
    EXPECT_TRUE(bTraced("interrupted during: /tmp/zd/kalmomanager --INSTALLER"));
    EXPECT_EQ(csRead("calls"), "(none)") << "nobody's input was read, and nothing ran behind it";
    EXPECT_FALSE(bMarked());

    // A tool of the boot sequence, which cron's path does not lead to.
    PackServer();
    for (const auto& [csTool, pszTraced, bLeft] : std::vector<std::tuple<std::string, const char*, bool>>{
             {"kill -QUIT $$", "interrupted during: update-rc.d -f ZDCS-first remove", true},
             {"echo 'no links' >&2; exit 3",
              "update-rc.d -f ZDCS-first remove >/dev/null: exit code 3: no links", false},
         }) {
        Pilot(PSZ_INSTALL);
        Write("/tmp/zd/tvzdsrv.so", "");
        Write("/tmp/zd/tvsqlsrv.so", "");
        fs::create_directories("/tmp/zd/tvmore.so");
        Write("/usr/sbin/update-rc.d", "#!/bin/sh\n" + csTool + "\n");
        fs::permissions("/usr/sbin/update-rc.d", fs::perms(0755));
        Write("pilot.ini", PSZ_REMOVE);
        fs::remove("trace");
        ASSERT_EQ(nShell("PATH=/bin ./kalmoinstall /PILOT=pilot.ini /DEBUG=trace 2>/dev/null"), 0);
        EXPECT_TRUE(bTraced(pszTraced)) << csRead("trace");
        EXPECT_EQ(fs::exists("/tmp/zd/kalmo"), bLeft);
        EXPECT_EQ(bMarked(), !bLeft);
        EXPECT_FALSE(bTraced("tvmore.so")) << "a directory is no file to delete";
        fs::remove_all("/tmp/zd/tvmore.so");
    }
}

TEST_F(CInstaller, AMarkerNeverSurvivesAFailedRun) {
    PackServer();
    const auto Earlier = [] { Write("/tmp/zd/Install.log", "OK"); };
    Earlier();
    Write("/tmp/zd/BDD", "no directory");
    Pilot(PSZ_INSTALL);
    EXPECT_FALSE(fs::exists("/tmp/zd/Install.log"));
    fs::remove("/tmp/zd/BDD");
    Pilot(PSZ_INSTALL);
    ASSERT_TRUE(bMarked());
    fs::resize_file("kalmoinstall.zip", fs::file_size("kalmoinstall.zip") - 30);
    Pilot(PSZ_UPGRADE);
    EXPECT_FALSE(fs::exists("/tmp/zd/Install.log"));
    EXPECT_TRUE(bTraced("open payload /tmp/run/kalmoinstall.zip: failed"));
    // One that cannot be removed ends the run before it begins.
    PackServer();
    Write("/tmp/zd/Install.log/x", "");
    fs::remove("calls");
    Pilot(PSZ_UPGRADE);
    EXPECT_EQ(csRead("calls"), "(none)");
    EXPECT_TRUE(bTraced("marker of an earlier run"));
}

TEST_F(CInstaller, InstallsWithTheModesAndCallsOfTheServer) {
    PackServer();
    ::umask(077);
    Pilot(PSZ_INSTALL);
    ::umask(022);
    EXPECT_TRUE(bMarked());
    EXPECT_EQ(unMode("/tmp/zd/kalmomanager"), 04755U) << "its stored name has other letters";
    EXPECT_EQ(unMode("/tmp/zd/kalmo"), 0755U);
    EXPECT_EQ(unMode("/tmp/zd/lib/a b.txt"), 0755U);
    EXPECT_EQ(unMode("/tmp/zd/lib"), 0755U);
    EXPECT_EQ(unMode("/tmp/zd/BDD"), 0755U);
    EXPECT_FALSE(fs::exists("/tmp/zd/LICENSE.TXT"));
    EXPECT_EQ(csRead("/tmp/zd/ZDConf.ini"),
              "[INIT]\nDBRootPath = /tmp/zd/BDD/\nAccessPort = 4950\nName = first\n");
    // The manager's failure does not count in an unattended run.
    EXPECT_EQ(csRead("calls"), "kalmomanager --INSTALLER\nkalmo --INSTALLER\n");
    EXPECT_EQ(unMode("trace"), 0600U);
    EXPECT_FALSE(bTraced(csToUTF8(csGetArchivePassword()).pszGet()));
    // At no moment may others write what the payload brings.
    fs::remove_all(PSZ_DIR);
    fs::remove("/etc/init.d/ZDCS-first");
    ASSERT_EQ(nShell("chmod -R a+rwX tree && cd tree && zip -qXr ../kalmoinstall.zip . && cd .. && "
                     "ASAN_OPTIONS=detect_leaks=0 strace -qq -o modes -e trace=fchmod,openat,mkdir,mkdirat "
                     "./kalmoinstall /PILOT=pilot.ini"),
              0);
    EXPECT_EQ(nShell("grep -E 'fchmod.*, 0755\\)' modes >/dev/null && ! grep -E "
                     "'(CREAT|fchmod|mkdir).*, 0[0-7]*([2367][0-7]|[0-7][2367])\\)' modes >output"),
              0)
        << csRead("output");
    // A directory that means something to the shell.
    fs::remove("calls");
    Pilot("[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=second\nRepertoire=/tmp/zd/it's; touch pwned #\n");
    EXPECT_FALSE(fs::exists("pwned"));
    EXPECT_EQ(csRead("calls"), "kalmomanager --INSTALLER\nkalmo --INSTALLER\n");
}

TEST_F(CInstaller, NamesThatLeaveTheDirectoryAreRefused) {
    for (const char* const psz : {"a/../../outside", "/tmp/outside", "..\\\\outside", "C:/outside"}) {
        fs::remove_all(PSZ_DIR);
        fs::remove("kalmoinstall.zip");
        ASSERT_EQ(nShell(std::string("python3 -c \"import zipfile; "
                                     "zipfile.ZipFile('kalmoinstall.zip','w').writestr('") +
                         psz + "', 'x')\""),
                  0);
        Pilot(PSZ_INSTALL);
        EXPECT_FALSE(fs::exists("/tmp/outside")) << psz;
        EXPECT_TRUE(bTraced("extract: failed")) << psz;
        EXPECT_FALSE(fs::exists("/tmp/zd/C:")) << psz;
    }
}

TEST_F(CInstaller, LinksInTheWayAreReplacedAndBusyProgramsWaitedFor) {
    PackServer();
    Write("/tmp/outside", "untouched");
    fs::create_directories(PSZ_DIR);
    fs::create_symlink("/tmp/outside", "/tmp/zd/kalmomanager");
    fs::create_hard_link("/tmp/outside", "/tmp/zd/ZDConf.bak");
    fs::copy_file("/bin/sleep", "/tmp/zd/kalmo");
    ASSERT_EQ(nShell("/tmp/zd/kalmo 1 &"), 0);
    Pilot(PSZ_INSTALL);
    EXPECT_TRUE(bMarked());
    EXPECT_EQ(csRead("/tmp/outside"), "untouched");
    EXPECT_FALSE(fs::is_symlink("/tmp/zd/kalmomanager"));
    EXPECT_TRUE(csRead("/tmp/zd/kalmo").starts_with("#!/bin/sh")) << csRead("trace");
    fs::remove("/tmp/outside");
}

TEST_F(CInstaller, TraceGoesNeitherThroughALinkNorOverAnEarlierOne) {
    Write("pilot.ini", "[PILOTAGE]\nMAJ=4\n");
    Write("trace", "earlier\n");
    Write("secret", "secret\n");
    fs::create_symlink("secret", "link");
    Run("/PILOT=pilot.ini /DEBUG=link /DEBUG=trace");
    EXPECT_TRUE(csRead("trace").starts_with("earlier\n20"));
    Run("/PILOT=pilot.ini /DEBUG=link");
    EXPECT_EQ(csRead("secret"), "secret\n");
    ASSERT_EQ(nShell("mkfifo pipe"), 0);
    Run("/PILOT=pilot.ini /DEBUG=pipe");
}

}  // namespace
}  // namespace kalmo
