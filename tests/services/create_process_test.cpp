#include "services/create_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "services/lance_processus.h"

namespace kalmo {
namespace {

int nTicks = 0;

TEST(WaitPid, CountsWholeSeconds) {
    struct STCase {
        unsigned dwTimeoutMs;
        int nTicks;
    };
    int nPid = 0;
    ASSERT_TRUE(CreateProcess(L"/bin/sleep", L"sleep 60", &nPid, 0, nullptr, nullptr));
    InitAlarmHandler([](int) { ++nTicks; });
    DesactiveSIGALRM();
    for (const STCase& rst : {STCase{0, 0}, {1, 1}, {1000, 1}, {1001, 2}}) {
        nTicks = 0;
        const auto clStart = std::chrono::steady_clock::now();
        int nCode = -1;
        EXPECT_EQ(WaitPid(nPid, rst.dwTimeoutMs, &nCode), 0) << rst.dwTimeoutMs;
        EXPECT_EQ(nCode, 0);
        EXPECT_EQ(nTicks, rst.nTicks) << rst.dwTimeoutMs;
        EXPECT_GE(std::chrono::steady_clock::now() - clStart, std::chrono::milliseconds(rst.nTicks * 990));
    }
    ::kill(nPid, SIGKILL);
    EXPECT_EQ(WaitPid(nPid, 5000, nullptr), nPid);
    EXPECT_EQ(WaitPid(nPid, 5000, nullptr), -1);
}

TEST(WaitPid, LivesWithoutAHandlerForTheTick) {
    std::signal(SIGALRM, SIG_DFL);
    int nPid = 0;
    int nCode = 0;
    ASSERT_TRUE(CreateProcess(nullptr, L"sh -c \"sleep 1.2; exit 5\"", &nPid, 0, nullptr, nullptr));
    EXPECT_EQ(WaitPid(nPid, 10000, &nCode), nPid);
    EXPECT_EQ(nCode, 5);
}

TEST(CreateProcess, WaitsAndJudges) {
    struct STCase {
        const wchar_t* pszProgram;
        const wchar_t* pszCommandLine;
        bool bResult;
        int nStillRunning;  // -1: nothing was started
        int nCode;
    };
    const STCase tabCase[] = {
        {L"/bin/sh", L"sh -c \"exit 7\"", true, 0, 7},
        {nullptr, L"  sh -c  \"exit 7  \"  ", true, 0, 7},
        {L"/bin/sh", L"sh -c \"exit 255\"", false, 0, 255},
        {L"/bin/sh", L"sh -c \"kill -9 $$\"", true, 0, 0},
        {L"/bin/sh", L"my-own-name -c \"test $0 = my-own-name\"", true, 0, 0},
        {L"/bin/true", nullptr, true, 0, 0},
        {nullptr, L"no-such-program-anywhere", false, 0, 255},
        {L"/bin/sleep", L"sleep 1.5", true, 1, 0},
        {L"/no/such/program", L"x", false, -1, -1},
        {L"/etc/passwd", L"x", false, -1, -1},
        {nullptr, L"  ", false, -1, -1},
    };
    // With SIGCHLD caught, as in the program; without it each wait takes its second.
    CLanceProcessus::sInit();
    for (const STCase& rst : tabCase) {
        int nPid = -1;
        int nStillRunning = -1;
        int nCode = -1;
        const bool b = CreateProcess(rst.pszProgram, rst.pszCommandLine, &nPid, 1, &nStillRunning, &nCode);
        EXPECT_EQ(b, rst.bResult) << &rst - tabCase;
        EXPECT_EQ(nStillRunning, rst.nStillRunning) << &rst - tabCase;
        EXPECT_EQ(nCode, rst.nCode) << &rst - tabCase;
        if (nStillRunning == 1) {
            EXPECT_EQ(WaitPid(nPid, 5000, nullptr), nPid);
        }
    }
    EXPECT_EQ(::alarm(0), 0U) << "an alarm is left that nobody expects";
    CLanceProcessus::sTerm();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

}  // namespace
}  // namespace kalmo
