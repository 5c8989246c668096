#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <tuple>

#include "framework/signal_block.h"
#include "framework/x_error.h"
#include "services/child_setup.h"
#include "services/create_process.h"
#include "services/lance_processus.h"

namespace kalmo {
namespace {

using namespace std::chrono_literals;

std::string csRepeated(const char* psz, std::size_t nSize) {
    std::string cs;
    while (cs.size() < nSize) {
        cs += psz;
    }
    return cs;
}

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
        int nLooks = 2000;
        while (!fnDone() && --nLooks > 0) {
            std::this_thread::sleep_for(5ms);
        }
        return nLooks > 0;
    }
    static bool bLaunchShell(CLanceProcessus* pclProcess, const std::wstring& csScript) {
        const wchar_t* tabArgument[] = {L"-c", csScript.c_str()};
        return pclProcess->bLanceProcessus(L"/bin/sh", 2, tabArgument, nullptr);
    }
    // Exit code and output of a child that was launched.
    static std::string csEnd(CLanceProcessus* pclProcess) {
        CXYString<char> csOutput;
        unsigned dwCode = 999;
        EXPECT_TRUE(pclProcess->bLitSortieEtAttendFinExecution(&csOutput, &dwCode));
        return std::to_string(dwCode) + ":" + csOutput.pszGet();
    }
    static unsigned dwAwait(CLanceProcessus* pclProcess) {
        unsigned dwCode = 999;
        EXPECT_TRUE(pclProcess->bAttendFinExecution(&dwCode));
        return dwCode;
    }

    const std::chrono::steady_clock::time_point m_clStart = std::chrono::steady_clock::now();
};

TEST(CommandLine, SplitsAtSpacesAndGroupsByQuotes) {
    using CWords = CArgumentVector;
    EXPECT_EQ(tabSplitArguments("p", "a\tb  x\"a  b\"y z "), (CWords{"p", "a\tb", "xa  by", "z"}));
    EXPECT_EQ(tabSplitArguments("p", "\"a b  \" \"\" \"b c"), (CWords{"p", "a b  ", "", "b c"}));
    EXPECT_EQ(tabSplitCommandLine(" p  \"a b  \" \"\" \"b c"), (CWords{"p", "a b", "", "b c"}));
    EXPECT_EQ(tabSplitArguments("p", csRepeated("w ", 120)).size(), 50U);
    EXPECT_EQ(tabSplitCommandLine(csRepeated("w ", 120)).size(), 60U);
}

TEST_F(ProcessTest, AThousandInARowWithTheirExitCodes) {
    for (unsigned dw = 0; dw < 1000; ++dw) {
        CLanceProcessus clProcess;
        ASSERT_TRUE(bLaunchShell(&clProcess, L"echo $$; exit " + std::to_wstring(dw % 256))) << dw;
        ASSERT_TRUE(dw % 3 != 0 || clProcess.bLitSortieEtAttendFinExecution(nullptr, nullptr));
        ASSERT_TRUE(dw % 3 != 1 || bEventually([&] { return clProcess.bProcessusTermine(); }));
        ASSERT_EQ(dwAwait(&clProcess), dw % 256);
    }
}

TEST_F(ProcessTest, WhatTheChildSeesAndWhatComesBack) {
    const int nOpen = ::fcntl(STDERR_FILENO, F_DUPFD, 100);
    for (const int n : {SIGPIPE, SIGHUP, SIGINT, SIGQUIT}) {  // those ignored from outside stay so
        std::signal(n, n == SIGPIPE || n == SIGHUP ? SIG_IGN : SIG_DFL);
    }
    const CSignalBlock clBlock{SIGTERM};
    for (const auto& [pszScript, csExpected] :
         {std::pair(L"echo \u00E9; echo err >&2; exit 3", std::string("3:\xC3\xA9\nerr\n")),
          {L"exec >&- 2>&-; sleep 0.3; kill -15 $$", "15:"},
          // The fourth descriptor is the directory that ls reads.
          {L"exec ls /proc/self/fd", "0:0\n1\n2\n3\n"},
          {L"exec grep -E '^Sig(Blk|Ign)' /proc/self/status",
           "0:SigBlk:\t0000000000000000\nSigIgn:\t0000000000000001\n"},
          {L"yes 0123456 | head -c 67108864", "0:" + csRepeated("0123456\n", 64U << 20)}}) {
        CLanceProcessus clProcess;
        ASSERT_TRUE(bLaunchShell(&clProcess, pszScript));
        EXPECT_TRUE(csEnd(&clProcess) == csExpected) << pszScript;
    }
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
    ::close(nOpen);
}

TEST_F(ProcessTest, WritesReadsAndWaitsHangingOnNothing) {
    CLanceProcessus clProcess;
    CXYString<char> csOutput;
    CXError clError;
    EXPECT_FALSE(clProcess.bLanceProcessus(L"/etc/passwd", nullptr, &clError)) << "not executable";
    EXPECT_EQ(clError.dwGetSystemErrorCode(), static_cast<unsigned>(EACCES));
    EXPECT_FALSE(clProcess.bLitSortie_NonBloquant(&csOutput)) << "no child";
    ASSERT_TRUE(bLaunchShell(&clProcess, L"read x; echo $x; exec cat >/dev/null"));
    EXPECT_TRUE(clProcess.bLitSortie_NonBloquant(&csOutput));
    EXPECT_TRUE(clProcess.bEcritEntree("one\n", 4) && clProcess.bLitSortieA(&csOutput));
    EXPECT_EQ(csOutput.svGet(), "one\n");
    EXPECT_FALSE(clProcess.bProcessusTermine());
    clProcess.Kill();
    EXPECT_EQ(dwAwait(&clProcess), 9U);
    // A child that never reads: no SIGPIPE.
    const std::string csMuch(1 << 20, 'x');
    ASSERT_TRUE(clProcess.bLibere() && clProcess.bLanceProcessus(L"/bin/sleep", L"0.3", nullptr));
    EXPECT_FALSE(clProcess.bEcritEntree(csMuch.data(), 1 << 20));
    // A full pipe, an input that does not end, a process left behind that holds the pipe much longer.
    for (const auto& [psz, csRead] : {std::pair(L"yes | head -c 1000000; exit 6", csRepeated("y\n", 65536)),
                                      {L"echo a; cat; echo b; exit 6", std::string("a\nb\n")},
                                      {L"sleep 60 & exit 6", std::string()}}) {
        ASSERT_TRUE(clProcess.bLibere() && bLaunchShell(&clProcess, psz));
        EXPECT_EQ(dwAwait(&clProcess), 6U);
        csOutput.Empty();
        for (int n = 0; n < 100; ++n) {
            clProcess.bLitSortie_NonBloquant(&csOutput);
        }
        EXPECT_TRUE(csOutput.svGet() == csRead) << psz << csOutput.nGetLength();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - m_clStart, 55s);
    ASSERT_TRUE(clProcess.bLibere() && bLaunchShell(&clProcess, L"echo kept; sleep 0.2"));
    EXPECT_EQ(dwAwait(&clProcess), 0U);
    EXPECT_EQ(csEnd(&clProcess), "0:kept\n");
}

TEST_F(ProcessTest, WhoGoesBeyondALimitIsEnded) {
    for (const auto& [pszScript, bRead, nErrno] : {std::tuple(L"exec sleep 60", true, ETIMEDOUT),
                                                   {L"exec sleep 60 >&- 2>&-", true, ETIMEDOUT},
                                                   {L"exec sleep 60", false, ETIMEDOUT},
                                                   {L"while :; do echo; sleep 0.05; done", true, ETIMEDOUT},
                                                   {L"exec yes", true, EOVERFLOW},
                                                   {L"head -c 100000 /dev/zero", true, 0}}) {
        CLanceProcessus clProcess;
        clProcess.SetLimits(nErrno == ETIMEDOUT ? 400ms : 30s, 100000);  // on a busy machine, too
        CXYString<char> csOutput;
        ASSERT_TRUE(bLaunchShell(&clProcess, pszScript));
        errno = 0;
        const bool bEnded = bRead ? clProcess.bLitSortieEtAttendFinExecution(&csOutput, nullptr)
                                  : clProcess.bAttendFinExecution(nullptr);
        EXPECT_EQ(bEnded ? 0 : errno, nErrno) << pszScript;
        EXPECT_TRUE(clProcess.bProcessusTermine());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - m_clStart, 55s);
}

TEST_F(ProcessTest, ChildrenThatEndInABurstAreAllCollected) {
    std::deque<CLanceProcessus> tabKept(100);
    {
        const CSignalBlock clBlock{SIGCHLD};  // all their signals are merged into one
        for (unsigned dw = 0; dw < 100; ++dw) {
            ASSERT_TRUE(bLaunchShell(&tabKept[dw], L"exit " + std::to_wstring(dw)));
            CLanceProcessus clLeftAlone;
            ASSERT_TRUE(bLaunchShell(&clLeftAlone, L"exec sleep 0.01"));
        }
        std::this_thread::sleep_for(500ms);
    }
    EXPECT_TRUE(bEventually(bNoChild));
    for (unsigned dw = 0; dw < 100; ++dw) {
        EXPECT_EQ(dwAwait(&tabKept[dw]), dw);
    }
}

int nCalls = 0;  // of a handler

TEST(ProcessManager, SignalsOfOtherChildrenGoToTheHandlerBefore) {
    nCalls = 0;
    struct sigaction stBefore {};
    stBefore.sa_sigaction = [](int, siginfo_t* pst, void*) { nCalls += pst->si_pid > 0 ? 1 : 100; };
    stBefore.sa_flags = SA_SIGINFO | SA_RESTART;
    ::sigaction(SIGCHLD, &stBefore, nullptr);
    CLanceProcessus::sInit();
    CLanceProcessus clProcess;
    ASSERT_TRUE(clProcess.bLanceProcessus(L"/bin/true", nullptr, nullptr));
    EXPECT_TRUE(clProcess.bAttendFinExecution(nullptr) && nCalls == 0);
    int nPid = 0;
    ASSERT_TRUE(CreateProcess(L"/bin/true", nullptr, &nPid, 0, nullptr, nullptr));
    EXPECT_EQ(::waitpid(nPid, nullptr, 0), nPid);
    EXPECT_EQ(nCalls, 1);
    CLanceProcessus::sTerm();
    ::raise(SIGCHLD);
    EXPECT_EQ(nCalls, 2) << "the handler before is not back";
    std::signal(SIGCHLD, SIG_DFL);
}

TEST_F(ProcessTest, CreateProcessWaitsAndJudges) {
    using CResult = std::tuple<bool, int, int>;  // result, still running, exit code; -1: nothing was started
    int nPid = -1;
    for (const auto& [pszProgram, pszCommandLine, clExpected] :
         {std::tuple(L"/bin/sh", L"my-own-name -c \"test $0 = my-own-name && exit 7\"", CResult(true, 0, 7)),
          {nullptr, L"no-such-program-anywhere", CResult(false, 0, 255)},
          {L"/etc/passwd", L"x", CResult(false, -1, -1)},
          {L"/bin/sh", L"sh -c \"sleep 2.5; exit 5\"", CResult(true, 1, 0)}}) {
        int nRunning = -1;
        int nCode = -1;
        const bool b = CreateProcess(pszProgram, pszCommandLine, &nPid, 1, &nRunning, &nCode);
        EXPECT_EQ(CResult(b, nRunning, nCode), clExpected) << pszCommandLine;
    }
    // Waiting counts whole seconds, and leaves no alarm behind.
    InitAlarmHandler([](int) { ++nCalls; });
    DesactiveSIGALRM();
    nCalls = 0;
    EXPECT_EQ(WaitPid(nPid, 1, nullptr), 0);
    EXPECT_EQ(nCalls, 1);
    EXPECT_EQ(::alarm(0), 0U);
    int nCode = -1;
    EXPECT_EQ(WaitPid(nPid, 5000, &nCode), nPid);
    EXPECT_EQ(nCode, 5);
    EXPECT_EQ(WaitPid(nPid, 5000, nullptr), -1);
    std::signal(SIGALRM, SIG_DFL);
}

}  // namespace
}  // namespace kalmo
