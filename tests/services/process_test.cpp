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
#include <fstream>
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
    // Exit code and output of a shell script.
    static std::string csRunShell(const std::wstring& csScript) {
        CLanceProcessus clProcess;
        CXYString<char> csOutput;
        unsigned dwCode = 0;
        const bool bRan = bLaunchShell(&clProcess, csScript) &&
                          clProcess.bLitSortieEtAttendFinExecution(&csOutput, &dwCode);
        return (bRan ? std::to_string(dwCode) : "failed") + ":" + csOutput.pszGet();
    }
    static unsigned dwAwait(CLanceProcessus* pclProcess) {
        unsigned dwCode = 999;
        EXPECT_TRUE(pclProcess->bAttendFinExecution(&dwCode));
        return dwCode;
    }
};

TEST(CommandLine, SplitsAtSpacesAndGroupsByQuotes) {
    struct STCase {
        const char* pszText;
        CArgumentVector tabArguments;
        CArgumentVector tabCommandLine;
    };
    const STCase tabCase[] = {
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
    EXPECT_EQ(tabSplitArguments("p", csMany).size(), 50U);
    EXPECT_EQ(tabSplitArguments("p", csMany).back(), "49");
    EXPECT_EQ(tabSplitCommandLine(csMany).size(), 60U);
}

TEST_F(ProcessTest, AThousandInARowWithTheirExitCodes) {
    CLanceProcessus clProcess;
    for (unsigned dw = 0; dw < 1000; ++dw) {
        ASSERT_TRUE(bLaunchShell(&clProcess, L"echo $$; exit " + std::to_wstring(dw % 256))) << dw;
        if (dw % 3 == 0) {
            ASSERT_TRUE(clProcess.bLitSortieEtAttendFinExecution(nullptr, nullptr));
        } else if (dw % 3 == 1) {
            ASSERT_TRUE(bEventually([&] { return clProcess.bProcessusTermine(); }));
        }
        ASSERT_EQ(dwAwait(&clProcess), dw % 256);
        ASSERT_EQ(dwAwait(&clProcess), dw % 256) << "asked again";
        clProcess.bLibere();
    }
}

TEST_F(ProcessTest, WhatTheChildSeesAndWhatComesBack) {
    const int nOpen = ::fcntl(STDERR_FILENO, F_DUPFD, 100);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
    const CSignalBlock clBlock{SIGTERM};
    EXPECT_EQ(csRunShell(L"echo \u00E9; echo err >&2; exit 3"), "3:\xC3\xA9\nerr\n");
    EXPECT_EQ(csRunShell(L"exec >&- 2>&-; sleep 0.3; exit 7"), "7:");
    EXPECT_EQ(csRunShell(L"cat; kill -15 $$"), "15:");
    // The fourth descriptor is the directory that ls reads.
    EXPECT_EQ(csRunShell(L"exec ls /proc/self/fd"), "0:0\n1\n2\n3\n");
    EXPECT_EQ(csRunShell(L"exec grep -E '^Sig(Blk|Ign)' /proc/self/status"),
              "0:SigBlk:\t0000000000000000\nSigIgn:\t0000000000000001\n");
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
    ::close(nOpen);

    // Without standard descriptors of our own the pipes take their places.
    int tabKept[3];
    for (int n = 0; n < 3; ++n) {
        tabKept[n] = ::fcntl(n, F_DUPFD_CLOEXEC, 100);
        ::close(n);
    }
    const std::string csResult = csRunShell(L"cat; echo out; echo err >&2");
    for (int n = 0; n < 3; ++n) {
        ::dup2(tabKept[n], n);
        ::close(tabKept[n]);
    }
    EXPECT_EQ(csResult, "0:out\nerr\n");
}

TEST_F(ProcessTest, MuchOutput) {
    const std::string cs = csRunShell(L"yes 0123456 | head -c 67108864");
    ASSERT_EQ(cs.size(), 2 + (64U << 20));
    bool bSame = true;
    for (std::size_t n = 2; n < cs.size(); n += 8) {
        bSame = bSame && cs.compare(n, 8, "0123456\n") == 0;
    }
    EXPECT_TRUE(bSame);
}

TEST_F(ProcessTest, WritesAndReadsInPieces) {
    CLanceProcessus clProcess;
    CXYString<char> csOutput;
    EXPECT_FALSE(clProcess.bLitSortie_NonBloquant(&csOutput)) << "no child";
    ASSERT_TRUE(bLaunchShell(&clProcess, L"read x; echo $x; read x; echo $x"));
    EXPECT_TRUE(clProcess.bLitSortie_NonBloquant(&csOutput));
    EXPECT_TRUE(csOutput.bEmpty());
    EXPECT_FALSE(clProcess.bProcessusTermine());
    EXPECT_TRUE(clProcess.bEcritEntree("one\n", 4));
    EXPECT_TRUE(clProcess.bLitSortieA(&csOutput));
    EXPECT_EQ(csOutput.svGet(), "one\n");
    EXPECT_TRUE(clProcess.bEcritEntree("two\n", 4));
    EXPECT_TRUE(bEventually([&] { return !clProcess.bLitSortie_NonBloquant(&csOutput); }));
    EXPECT_EQ(csOutput.svGet(), "one\ntwo\n");
    EXPECT_FALSE(clProcess.bLitSortieA(&csOutput));

    // A child that never reads: no SIGPIPE, and nothing hangs.
    const std::string csMuch(1 << 20, 'x');
    clProcess.bLibere();
    ASSERT_TRUE(bLaunchShell(&clProcess, L"sleep 0.3; exit 3"));
    EXPECT_FALSE(clProcess.bEcritEntree(csMuch.data(), 1 << 20));
    EXPECT_EQ(errno, EPIPE);
    EXPECT_EQ(dwAwait(&clProcess), 3U);
}

TEST_F(ProcessTest, WaitingWithoutReadingHangsOnNothing) {
    const auto clStart = CClock::now();
    // A full pipe, an input that does not end, a process left behind that holds the pipe much longer.
    for (const wchar_t* const psz :
         {L"head -c 1000000 /dev/zero; exit 6", L"cat >/dev/null; exit 6", L"sleep 8 & exit 6"}) {
        CLanceProcessus clProcess;
        ASSERT_TRUE(bLaunchShell(&clProcess, psz));
        EXPECT_EQ(dwAwait(&clProcess), 6U);
    }
    EXPECT_LT(CClock::now() - clStart, 5s);
    CLanceProcessus clProcess;
    ASSERT_TRUE(clProcess.bLanceProcessus(L"/bin/sleep", L"60", nullptr));
    clProcess.Kill();
    EXPECT_EQ(dwAwait(&clProcess), 9U);
    clProcess.Kill();
}

TEST_F(ProcessTest, ChildrenThatEndInABurstAreAllCollected) {
    std::deque<CLanceProcessus> tabKept(100);
    {
        // All their signals are merged into one.
        const CSignalBlock clBlock{SIGCHLD};
        for (unsigned dw = 0; dw < 100; ++dw) {
            ASSERT_TRUE(bLaunchShell(&tabKept[dw], L"exit " + std::to_wstring(dw)));
            CLanceProcessus clLeftAlone;
            ASSERT_TRUE(bLaunchShell(&clLeftAlone, L"exec sleep 0.01"));
        }
        std::this_thread::sleep_for(500ms);
    }
    EXPECT_TRUE(bEventually(bNoChild)) << "zombies";
    for (unsigned dw = 0; dw < 100; ++dw) {
        EXPECT_EQ(dwAwait(&tabKept[dw]), dw);
    }
}

TEST_F(ProcessTest, RecordsKeepTheCodeWhoeverCollectsTheChild) {
    CProcessManager& rclManager = *CProcessManager::m_gpclManager;
    for (const bool bTaken : {false, true}) {
        int nCode = -1;
        pid_t nPid = -1;
        {
            const CSignalBlock clBlock{SIGCHLD};
            nPid = rclManager.Fork();
            if (nPid == 0) {
                ::_exit(42);
            }
            EXPECT_FALSE(rclManager.bGetCode(nPid, &nCode));
            EXPECT_EQ(bTaken ? ::waitpid(nPid, nullptr, 0) : nPid, nPid);
        }
        EXPECT_TRUE(bEventually([&] { return rclManager.bGetCode(nPid, &nCode); }));
        EXPECT_EQ(nCode, 42);
        rclManager.FreePid(nPid);
        EXPECT_FALSE(rclManager.bGetCode(nPid, &nCode));
    }
    // A launcher that is faster than the handler counts in the same way.
    const CSignalBlock clBlock{SIGCHLD};
    CLanceProcessus clProcess;
    ASSERT_TRUE(bLaunchShell(&clProcess, L"kill -15 $$"));
    EXPECT_EQ(dwAwait(&clProcess), 15U);
}

int nForeign = 0;

TEST(ProcessManager, SignalsOfOtherChildrenGoToTheHandlerBefore) {
    nForeign = 0;
    struct sigaction stBefore {};
    stBefore.sa_sigaction = [](int, siginfo_t* pst, void*) { nForeign += pst->si_pid > 0 ? 1 : 100; };
    stBefore.sa_flags = SA_SIGINFO | SA_RESTART;
    ::sigaction(SIGCHLD, &stBefore, nullptr);
    CLanceProcessus::sInit();
    CLanceProcessus::sInit();
    CLanceProcessus clProcess;
    ASSERT_TRUE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr));
    EXPECT_TRUE(clProcess.bAttendFinExecution(nullptr));
    EXPECT_EQ(nForeign, 0);
    const pid_t nPid = ::fork();
    if (nPid == 0) {
        ::_exit(0);
    }
    EXPECT_EQ(::waitpid(nPid, nullptr, 0), nPid);
    EXPECT_EQ(nForeign, 1);
    CLanceProcessus::sTerm();
    struct sigaction stNow {};
    ::sigaction(SIGCHLD, nullptr, &stNow);
    EXPECT_EQ(stNow.sa_sigaction, stBefore.sa_sigaction);
    std::signal(SIGCHLD, SIG_DFL);
    clProcess.bLibere();
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr)) << "nothing to launch with";
}

TEST_F(ProcessTest, ARefusedLaunchTellsWhyAndLeavesTheObjectFree) {
    char szFolder[] = "/tmp/kalmo-process-XXXXXX";
    ASSERT_NE(::mkdtemp(szFolder), nullptr);
    const std::string csScript = std::string(szFolder) + "/script";
    std::ofstream(csScript) << "#!/no/such/shell\n";
    const CTString csProgram = csFromUTF8(csScript);

    CLanceProcessus clProcess;
    CXError clError;
    EXPECT_FALSE(clProcess.bLanceProcessus(csProgram.pszGet(), L"x", &clError));
    EXPECT_EQ(clError.dwGetSystemErrorCode(), static_cast<unsigned>(EACCES));
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/no/such", L"x", &clError));
    EXPECT_EQ(clError.dwGetSystemErrorCode(), static_cast<unsigned>(ENOENT));
    EXPECT_FALSE(clProcess.bAttendFinExecution(nullptr));
    EXPECT_TRUE(clProcess.bProcessusTermine());

    ::chmod(csScript.c_str(), 0755);
    EXPECT_TRUE(clProcess.bLanceProcessus(csProgram.pszGet(), nullptr, nullptr));
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr)) << "one child at a time";
    EXPECT_EQ(dwAwait(&clProcess), 255U) << "executable, but there is nothing to execute it with";
    ::unlink(csScript.c_str());
    ::rmdir(szFolder);
}

}  // namespace
}  // namespace kalmo
