#include "tui/toolkit/screen.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "testkit/tui_terminal.h"

namespace kalmo {
namespace {

TEST(Screen, GivesTheTerminalBackHoweverItEnds) {
    const struct {
        const char* pszKey;  ///< Pressed, then ...
        int nSignal;         ///< ... sent.
        int nStatus;         ///< -1: whatever the sanitizers make of it.
    } TAB[] = {{"F1", 0, 0},
               {"", SIGINT, 128 + SIGINT},
               {"", SIGTERM, 128 + SIGTERM},
               {"\x13", SIGTERM, 128 + SIGTERM},  // ^S stops the output
               {"", SIGHUP, 128 + SIGHUP},
               {"", SIGQUIT, 128 + SIGQUIT},
               {"\x03", 0, 128 + SIGINT},
               {"\x05", 0, 5},
               {"\x01", 0, 128 + SIGABRT},
               {"\x02", 0, -1},
               {"", SIGSEGV, 128 + SIGSEGV},
               {"", SIGABRT, 128 + SIGABRT}};
    for (const char* const pszType : {"xterm-256color", "vt220"}) {
        for (const auto& rst : TAB) {
            SCOPED_TRACE(std::string(pszType) + " " + std::to_string(rst.nSignal) + " " + rst.pszKey);
            // A signal sent from outside is left to us; the sanitizers make a death of their own of it.
            const char* const pszOptions = rst.nSignal == 0 ? "" : "handle_segv=0:handle_abort=0";
            CTuiTerminal clTerminal(
                TUI_SCENE " controls button",
                {.csType = pszType, .tabEnvironment = {std::string("ASAN_OPTIONS=") + pszOptions}});
            EXPECT_FALSE(clTerminal.bCooked());
            clTerminal.bPress(rst.pszKey);
            clTerminal.Signal(rst.nSignal);
            const int nStatus = clTerminal.nWaitEnd();
            EXPECT_TRUE(rst.nStatus == -1 ? nStatus > 0 : nStatus == rst.nStatus) << nStatus;
            EXPECT_TRUE(clTerminal.bGivenBack());
            // The sanitizers' status: their report must be there to be read.
            EXPECT_EQ(nStatus == 1, clTerminal.bShows("ABORTING\n"));
        }
    }
}

TEST(Screen, TheLoopEndsWithItsInput) {
    const struct {
        const char* pszCommand;
        const char* pszReport;
    } TAB[] = {{"$0 lists <&-", "0 2 -1 -1 1"},
               {"printf '  ' | $0 lists", "0 2 -1 -1 1 0:2 0:2"},
               {"printf ' \\377' | $0 lists", "0 2 -1 -1 1 0:2"}};  // no character
    for (const auto& rst : TAB) {
        CTuiTerminal clTerminal({"sh", "-c", rst.pszCommand, TUI_SCENE});
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << rst.pszCommand;
    }
    // An input that does not block has no key at first.
    Terminal clPatient({"sh", "-c", "dd iflag=nonblock count=0 2>&-; exec $0 controls button", TUI_SCENE});
    ASSERT_TRUE(clPatient.bWaitText("|  b  |"));
    clPatient.Send(" \x1bOP");
    EXPECT_EQ(clPatient.nWaitEnd(), 0);
    EXPECT_EQ(clPatient.csText(), "\n0:0\n");
    CTuiTerminal clHungUp({"sh", "-c", "trap '' HUP; exec $0 lists", TUI_SCENE});
    clHungUp.HangUp();
    EXPECT_EQ(clHungUp.nWaitEnd(), 0);
}

TEST(Screen, OutlivesInterruptedReadsAndDyingChildren) {
    CTuiTerminal clTerminal(TUI_SCENE " controls button");
    const std::string csBefore = clTerminal.csShow();
    for (int n = 0; n < 3; ++n) {
        clTerminal.Signal(SIGUSR1);
        ASSERT_TRUE(clTerminal.bPress("\x06"));
    }
    EXPECT_EQ(clTerminal.csShow(), csBefore);
    EXPECT_FALSE(clTerminal.bCooked());
    ASSERT_TRUE(clTerminal.bPress("F1"));
    EXPECT_EQ(clTerminal.csReport(), "");
}

}  // namespace
}  // namespace kalmo
