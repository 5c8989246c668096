#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <functional>
#include <string>
#include <thread>

#include "framework/conversion.h"
#include "framework/x_error.h"
#include "services/command_line.h"
#include "services/lance_processus.h"
#include "services/process_manager.h"
#include "services/signal_block.h"

namespace kalmo {
namespace {

using namespace std::chrono_literals;
using CClock = std::chrono::steady_clock;

class ProcessTest : public testing::Test {
  protected:
    void SetUp() override { CLanceProcessus::sInit(); }
    void TearDown() override {
        EXPECT_TRUE(bEventually(bNoChild)) << "a child is left";
        CLanceProcessus::sTerm();
    }

    // Looks without collecting: children must be gone by themselves.
    static bool bNoChild() {
        siginfo_t st{};
        return ::waitid(P_ALL, 0, &st, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD;
    }
    static bool bEventually(const std::function<bool()>& fnDone) {
        for (const auto clEnd = CClock::now() + 10s; CClock::now() < clEnd;) {
            if (fnDone()) {
                return true;
            }
            std::this_thread::sleep_for(5ms);
        }
        return false;
    }
    static bool bLaunchShell(CLanceProcessus* pclProcess, const std::wstring& csScript) {
        const wchar_t* tabArgument[] = {L"-c", csScript.c_str()};
        return pclProcess->bLanceProcessus(L"/bin/sh", 2, tabArgument, nullptr);
    }
    // Output and exit code of a shell script; code -1 when it could not be run.
    static std::pair<std::string, int> stRunShell(const std::wstring& csScript) {
        CLanceProcessus clProcess;
        CXYString<char> csOutput;
        unsigned dwCode = 0;
        const bool bRan = bLaunchShell(&clProcess, csScript) &&
                          clProcess.bLitSortieEtAttendFinExecution(&csOutput, &dwCode);
        return {std::string(csOutput.svGet()), bRan ? static_cast<int>(dwCode) : -1};
    }
};

using CResult = std::pair<std::string, int>;

TEST(CommandLine, SplitsAtSpacesAndGroupsByQuotes) {
    struct STCase {
        const char* pszText;
        CArgumentVector tabArguments;
        CArgumentVector tabCommandLine;
    };
    const STCase tabCase[] = {
        {"", {"p"}, {}},
        {"   ", {"p"}, {}},
        {"show  unit ", {"p", "show", "unit"}, {"show", "unit"}},
        {"a\tb c", {"p", "a\tb", "c"}, {"a\tb", "c"}},
        {"\"a b\" c", {"p", "a b", "c"}, {"a b", "c"}},
        {"x\"a  b\"y z", {"p", "xa  by", "z"}, {"xa  by", "z"}},
        {"\"a b  \" \"\" c", {"p", "a b  ", "", "c"}, {"a b", "", "c"}},
        {"a \"b c", {"p", "a", "b c"}, {"a", "b c"}},
    };
    for (const STCase& rst : tabCase) {
        EXPECT_EQ(tabSplitArguments("p", rst.pszText), rst.tabArguments) << rst.pszText;
        EXPECT_EQ(tabSplitCommandLine(rst.pszText), rst.tabCommandLine) << rst.pszText;
    }
    std::string csMany;
    for (int n = 1; n <= 60; ++n) {
        csMany += std::to_string(n) + " ";
    }
    const CArgumentVector tabMany = tabSplitArguments("p", csMany);
    EXPECT_EQ(tabMany.size(), 50U);
    EXPECT_EQ(tabMany.back(), "49");
    EXPECT_EQ(tabSplitCommandLine(csMany).size(), 60U);
}

TEST_F(ProcessTest, AThousandInARowWithTheirExitCodes) {
    CLanceProcessus clProcess;
    for (int n = 0; n < 1000; ++n) {
        const std::wstring csScript = L"echo " + std::to_wstring(n) + L"; exit " + std::to_wstring(n % 256);
        ASSERT_TRUE(bLaunchShell(&clProcess, csScript)) << n;
        unsigned dwCode = 999;
        CXYString<char> csOutput;
        switch (n % 3) {
            case 0: ASSERT_TRUE(clProcess.bLitSortieEtAttendFinExecution(&csOutput, &dwCode)); break;
            case 1: ASSERT_TRUE(clProcess.bAttendFinExecution(&dwCode)); break;
            default:
                ASSERT_TRUE(bEventually([&] { return clProcess.bProcessusTermine(); }));
                ASSERT_TRUE(clProcess.bLitSortieEtAttendFinExecution(&csOutput, &dwCode));
        }
        ASSERT_EQ(dwCode, static_cast<unsigned>(n % 256));
        ASSERT_EQ(std::string(csOutput.svGet()), n % 3 == 1 ? "" : std::to_string(n) + "\n");
        ASSERT_TRUE(clProcess.bAttendFinExecution(&dwCode)) << "asked again";
        clProcess.bLibere();
    }
}

TEST_F(ProcessTest, BothOutputsAreReadToTheEndWhateverTheirSize) {
    EXPECT_EQ(stRunShell(L"echo out; echo err >&2; exit 3"), CResult("out\nerr\n", 3));
    EXPECT_EQ(stRunShell(L"exec >&- 2>&-; sleep 0.3; exit 7"), CResult("", 7));
    const auto [csOutput, nCode] = stRunShell(L"yes 0123456 | head -c 67108864");
    EXPECT_EQ(nCode, 0);
    ASSERT_EQ(csOutput.size(), 64U << 20);
    bool bSame = true;
    for (std::size_t n = 0; n < csOutput.size(); n += 8) {
        bSame = bSame && csOutput.compare(n, 8, "0123456\n") == 0;
    }
    EXPECT_TRUE(bSame);
}

TEST_F(ProcessTest, InputIsWrittenAndEndsWhenTheOutputIsAskedFor) {
    CLanceProcessus clProcess;
    CXYString<char> csOutput;
    unsigned dwCode = 0;
    ASSERT_TRUE(bLaunchShell(&clProcess, L"cat; exit 4"));
    EXPECT_TRUE(clProcess.bEcritEntree("h\xC3\xA9llo", 6));
    EXPECT_TRUE(clProcess.bLitSortieEtAttendFinExecution(&csOutput, &dwCode));
    EXPECT_EQ(csOutput.svGet(), "h\xC3\xA9llo");
    EXPECT_EQ(dwCode, 4U);

    clProcess.bLibere();
    ASSERT_TRUE(bLaunchShell(&clProcess, L"cat >/dev/null; exit 5"));
    EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
    EXPECT_EQ(dwCode, 5U);
}

TEST_F(ProcessTest, AChildThatNeverReadsItsInputIsNoDanger) {
    CLanceProcessus clProcess;
    unsigned dwCode = 0;
    const std::string csMuch(1 << 20, 'x');
    ASSERT_TRUE(bLaunchShell(&clProcess, L"sleep 0.3; exit 3"));
    EXPECT_FALSE(clProcess.bEcritEntree(csMuch.data(), static_cast<unsigned>(csMuch.size())));
    EXPECT_EQ(errno, EPIPE);
    EXPECT_FALSE(clProcess.bEcritEntree("x", 1));
    EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
    EXPECT_EQ(dwCode, 3U);
}

TEST_F(ProcessTest, WaitingWithoutReadingHangsOnNothing) {
    CLanceProcessus clProcess;
    unsigned dwCode = 0;
    ASSERT_TRUE(bLaunchShell(&clProcess, L"head -c 1000000 /dev/zero; exit 5"));
    EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
    EXPECT_EQ(dwCode, 5U);

    // A process that the child leaves behind holds the pipe much longer.
    clProcess.bLibere();
    const auto clStart = CClock::now();
    ASSERT_TRUE(bLaunchShell(&clProcess, L"sleep 8 & exit 6"));
    EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
    EXPECT_EQ(dwCode, 6U);
    EXPECT_LT(CClock::now() - clStart, 4s);
}

TEST_F(ProcessTest, ReadsInPieces) {
    CLanceProcessus clProcess;
    CXYString<char> csOutput;
    EXPECT_FALSE(clProcess.bLitSortie_NonBloquant(&csOutput)) << "no child";
    ASSERT_TRUE(bLaunchShell(&clProcess, L"read x; echo one; read x; echo two"));
    EXPECT_TRUE(clProcess.bLitSortie_NonBloquant(&csOutput));
    EXPECT_TRUE(csOutput.bEmpty());
    EXPECT_FALSE(clProcess.bProcessusTermine());
    clProcess.bEcritEntree("\n", 1);
    EXPECT_TRUE(clProcess.bLitSortieA(&csOutput));
    EXPECT_EQ(csOutput.svGet(), "one\n");
    clProcess.bEcritEntree("\n", 1);
    EXPECT_TRUE(bEventually([&] { return !clProcess.bLitSortie_NonBloquant(&csOutput); }));
    EXPECT_EQ(csOutput.svGet(), "one\ntwo\n");
    EXPECT_FALSE(clProcess.bLitSortieA(&csOutput));
}

TEST_F(ProcessTest, TheChildInheritsOnlyItsThreeDescriptors) {
    const int nOpen = ::fcntl(STDERR_FILENO, F_DUPFD, 100);
    CLanceProcessus clProcess;
    CXYString<char> csOutput;
    // The fourth is the directory that ls reads.
    ASSERT_TRUE(clProcess.bLanceProcessus(L"/bin/ls", L"/proc/self/fd", nullptr));
    EXPECT_TRUE(clProcess.bLitSortieEtAttendFinExecution(&csOutput, nullptr));
    EXPECT_EQ(csOutput.svGet(), "0\n1\n2\n3\n");

    // Without standard descriptors of our own the pipes take their places.
    int tabKept[3];
    for (int n = 0; n < 3; ++n) {
        tabKept[n] = ::fcntl(n, F_DUPFD_CLOEXEC, 100);
        ::close(n);
    }
    const CResult stResult = stRunShell(L"cat; echo out; echo err >&2");
    for (int n = 0; n < 3; ++n) {
        ::dup2(tabKept[n], n);
        ::close(tabKept[n]);
    }
    EXPECT_EQ(stResult, CResult("out\nerr\n", 0));
    ::close(nOpen);
}

TEST_F(ProcessTest, TheChildStartsWithFreshSignals) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
    const CSignalBlock clBlock{SIGTERM};
    EXPECT_EQ(stRunShell(L"exec grep -E '^Sig(Blk|Ign)' /proc/self/status"),
              CResult("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000001\n", 0));
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
}

TEST_F(ProcessTest, AKilledChildYieldsItsSignalWhoeverCollectsIt) {
    EXPECT_EQ(stRunShell(L"kill -15 $$").second, 15);
    CLanceProcessus clProcess;
    unsigned dwCode = 0;
    {
        const CSignalBlock clBlock{SIGCHLD};
        ASSERT_TRUE(bLaunchShell(&clProcess, L"kill -15 $$"));
        EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
        EXPECT_EQ(dwCode, 15U) << "collected by the launcher";
    }
    clProcess.bLibere();
    ASSERT_TRUE(clProcess.bLanceProcessus(L"/bin/sleep", L"60", nullptr));
    clProcess.Kill();
    EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
    EXPECT_EQ(dwCode, 9U);
    clProcess.Kill();
}

TEST_F(ProcessTest, ChildrenThatEndInABurstAreAllCollected) {
    std::deque<CLanceProcessus> tabKept(100);
    {
        // All their signals are merged into one.
        const CSignalBlock clBlock{SIGCHLD};
        for (int n = 0; n < 100; ++n) {
            ASSERT_TRUE(bLaunchShell(&tabKept[static_cast<std::size_t>(n)], L"exit " + std::to_wstring(n)));
            CLanceProcessus clLeftAlone;
            ASSERT_TRUE(bLaunchShell(&clLeftAlone, L"exec sleep 0.01"));
        }
        std::this_thread::sleep_for(500ms);
    }
    EXPECT_TRUE(bEventually(bNoChild)) << "zombies";
    for (unsigned dw = 0; dw < 100; ++dw) {
        unsigned dwCode = 999;
        EXPECT_TRUE(tabKept[dw].bAttendFinExecution(&dwCode));
        EXPECT_EQ(dwCode, dw);
    }
}

TEST_F(ProcessTest, RecordsLiveUntilTheyAreFreed) {
    CProcessManager& rclManager = *CProcessManager::m_gpclManager;
    int nCode = -1;
    const pid_t nPid = rclManager.Fork();
    if (nPid == 0) {
        ::usleep(100000);
        ::_exit(42);
    }
    EXPECT_FALSE(rclManager.bGetCode(nPid, &nCode)) << "still runs";
    EXPECT_TRUE(bEventually([&] { return rclManager.bGetCode(nPid, &nCode); }));
    EXPECT_EQ(nCode, 42);
    rclManager.FreePid(nPid);
    EXPECT_FALSE(rclManager.bGetCode(nPid, &nCode));

    // Somebody else in the program takes the child's end: the signal still tells the code.
    pid_t nTaken = -1;
    {
        const CSignalBlock clBlock{SIGCHLD};
        nTaken = rclManager.Fork();
        if (nTaken == 0) {
            ::_exit(43);
        }
        EXPECT_EQ(::waitpid(nTaken, nullptr, 0), nTaken);
    }
    EXPECT_TRUE(rclManager.bGetCode(nTaken, &nCode));
    EXPECT_EQ(nCode, 43);
    rclManager.FreePid(nTaken);
}

int nForeign = 0;

TEST(ProcessManager, SignalsOfOtherChildrenGoToTheHandlerBefore) {
    struct sigaction stBefore {};
    stBefore.sa_sigaction = [](int, siginfo_t* pst, void*) { nForeign += pst->si_pid > 0 ? 1 : 100; };
    stBefore.sa_flags = SA_SIGINFO;
    ::sigaction(SIGCHLD, &stBefore, nullptr);
    CLanceProcessus::sInit();
    CLanceProcessus::sInit();
    {
        CLanceProcessus clProcess;
        ASSERT_TRUE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr));
        EXPECT_TRUE(clProcess.bAttendFinExecution(nullptr));
    }
    EXPECT_EQ(nForeign, 0);
    const pid_t nPid = ::fork();
    if (nPid == 0) {
        ::_exit(0);
    }
    while (::waitpid(nPid, nullptr, 0) < 0 && errno == EINTR) {
    }
    EXPECT_EQ(nForeign, 1);
    CLanceProcessus::sTerm();

    struct sigaction stNow {};
    ::sigaction(SIGCHLD, nullptr, &stNow);
    EXPECT_EQ(stNow.sa_sigaction, stBefore.sa_sigaction);
    std::signal(SIGCHLD, SIG_DFL);
    CLanceProcessus clProcess;
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr)) << "nothing to launch with";
}

TEST_F(ProcessTest, ARefusedLaunchTellsWhyAndLeavesTheObjectFree) {
    char szFolder[] = "/tmp/kalmo-process-XXXXXX";
    ASSERT_NE(::mkdtemp(szFolder), nullptr);
    const std::string csScript = std::string(szFolder) + "/script";
    const int nFd = ::open(csScript.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_EQ(::write(nFd, "#!/no/such/shell\n", 17), 17);
    ::close(nFd);

    CLanceProcessus clProcess;
    CXError clError;
    EXPECT_FALSE(clProcess.bLanceProcessus(csFromUTF8(csScript).pszGet(), L"x", &clError));
    EXPECT_EQ(clError.dwGetSystemErrorCode(), static_cast<unsigned>(EACCES));
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/no/such", L"x", &clError));
    EXPECT_EQ(clError.dwGetSystemErrorCode(), static_cast<unsigned>(ENOENT));
    EXPECT_FALSE(clProcess.bAttendFinExecution(nullptr));
    EXPECT_TRUE(clProcess.bProcessusTermine());

    unsigned dwCode = 0;
    ::chmod(csScript.c_str(), 0755);
    EXPECT_TRUE(clProcess.bLanceProcessus(csFromUTF8(csScript).pszGet(), nullptr, nullptr));
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/bin/true", nullptr, &clError)) << "one child at a time";
    EXPECT_TRUE(clProcess.bAttendFinExecution(&dwCode));
    EXPECT_EQ(dwCode, 255U) << "executable, but there is nothing to execute it with";
    clProcess.bLibere();
    EXPECT_TRUE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr));
    EXPECT_TRUE(clProcess.bAttendFinExecution(nullptr));
    ::unlink(csScript.c_str());
    ::rmdir(szFolder);
}

}  // namespace
}  // namespace kalmo
