#include "tui/screen.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/tui/scene_terminal.h"

namespace kalmo {
namespace {

TEST(Screen, ADisabledFieldIsGreyWhereTheTerminalCan) {
    const struct {
        const char* pszType;
        const char* pszLooks;
        unsigned unColour8;
    } TAB[] = {{"xterm-256color", "rddddnn", 0x262626},
               {"tmux-256color", "rnnnnnn", 0x808080},
               {"xterm", "rnnnnnn", 0x808080},
               {"vt220", "?      ", 0x808080}};
    for (const auto& rst : TAB) {
        CSceneTerminal clTerminal("fields", 60, 16, rst.pszType);
        EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 7, 47, 7), rst.pszLooks) << rst.pszType;
        EXPECT_EQ(clTerminal.clScreen().unPaletteColour(8), rst.unColour8) << rst.pszType;
        clTerminal.csEnd();
        EXPECT_EQ(clTerminal.clScreen().unPaletteColour(8), 0x808080U) << rst.pszType;
    }
}

TEST(Screen, MonochromeShowsTheSameInReverse) {
    CSceneTerminal clTerminal("fields", 60, 16, "vt220");
    const STLegend TAB[] = {{'r', {.bReverse = true}}};
    EXPECT_THAT(clTerminal.clScreen().csLooks(TAB), testing::StartsWith(R"(
 rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr
 rr         rr           rr               rrrr        rrrr
 rr rrrrrrr  r            r                rrr         rrr
 rr          r            r                rrr         rrr
 rrr         rr           rr               rrr         rrr
)"));
}

TEST(Screen, FillsTheWholeScreenOfAnySize) {
    const struct { int nColumns, nRows; } TAB[] = {{80, 24}, {132, 50}, {10, 4}, {2, 2}, {1, 1}};
    for (const auto& rst : TAB) {
        CSceneTerminal clTerminal("fields", rst.nColumns, rst.nRows);
        const std::string csLooks = clTerminal.csLooks();
        EXPECT_EQ(csLooks.find('?'), std::string::npos) << csLooks;
        EXPECT_EQ(csLooks.find(' '), std::string::npos) << csLooks;
        EXPECT_EQ(csLooks.size(), static_cast<std::size_t>(1 + rst.nRows * (rst.nColumns + 1)));
        ASSERT_TRUE(clTerminal.bType({"Tab", "x", "Tab", "F1"}));
        EXPECT_EQ(clTerminal.nWaitEnd(), 0);
    }
}

TEST(Screen, GivesTheTerminalBackHoweverItEnds) {
    const struct {
        int nSignal;         ///< Sent, or else ...
        const char* pszKey;  ///< ... pressed.
        int nStatus;         ///< -1: whatever the sanitizers make of it.
    } TAB[] = {{0, "F1", 0},
               {SIGINT, "", 128 + SIGINT},
               {SIGTERM, "", 128 + SIGTERM},
               {SIGHUP, "", 128 + SIGHUP},
               {SIGQUIT, "", 128 + SIGQUIT},
               {0, "\x03", 128 + SIGINT},
               {0, "e", 5},
               {0, "a", 128 + SIGABRT},
               {0, "s", -1},
               {0, "h", -1}};
    for (const char* const pszType : {"xterm-256color", "vt220"}) {
        for (const auto& rst : TAB) {
            SCOPED_TRACE(std::string(pszType) + " " + std::to_string(rst.nSignal) + " " + rst.pszKey);
            CSceneTerminal clTerminal("crash", 40, 14, pszType);
            EXPECT_FALSE(clTerminal.bCooked());
            if (rst.nSignal != 0) {
                clTerminal.Signal(rst.nSignal);
            } else {
                clTerminal.bType({rst.pszKey});
            }
            const int nStatus = clTerminal.nWaitEnd();
            EXPECT_TRUE(rst.nStatus == -1 ? nStatus > 0 : nStatus == rst.nStatus) << nStatus;
            EXPECT_TRUE(clTerminal.bCooked());
            EXPECT_FALSE(clTerminal.clScreen().bAlternateScreen());
            EXPECT_TRUE(clTerminal.clScreen().stCursor().bVisible);
            EXPECT_EQ(clTerminal.clScreen().unPaletteColour(8), 0x808080U);
        }
    }
}

TEST(Screen, TheLoopEndsWithItsInput) {
    const std::string csScene = std::string(TUI_SCENE) + " lists";
    const struct {
        const char* pszWhat;
        std::string csCommand;
        const char* pszExpected;
    } TAB[] = {
        {"empty", csScene + " </dev/null", "events:\n"},
        {"closed", csScene + " <&-", "events:\n"},
        {"exhausted", "printf '  ' | " + csScene, "events: 0:2 0:2\n"},
        {"broken", "printf ' \\377' | " + csScene, "events: 0:2\n"},
    };
    for (const auto& rst : TAB) {
        Terminal clTerminal({"sh", "-c", rst.csCommand});
        EXPECT_EQ(clTerminal.nWaitEnd(), 0) << rst.pszWhat;
        EXPECT_NE(clTerminal.csText().find(rst.pszExpected), std::string::npos)
            << rst.pszWhat << clTerminal.csText();
    }
    Terminal clHungUp({"sh", "-c", "trap '' HUP; exec " + csScene});
    ASSERT_TRUE(clHungUp.bSettle());
    clHungUp.HangUp();
    EXPECT_EQ(clHungUp.nWaitEnd(), 0);
}

TEST(Screen, OutlivesInterruptedReadsAndDyingChildren) {
    CSceneTerminal clTerminal("crash", 40, 14);
    const std::string csBefore = clTerminal.csShow();
    for (int n = 0; n < 3; ++n) {
        clTerminal.Signal(SIGUSR1);
        ASSERT_TRUE(clTerminal.bType({"f"}));
    }
    EXPECT_EQ(clTerminal.csShow(), csBefore);
    EXPECT_FALSE(clTerminal.bCooked());
    EXPECT_EQ(clTerminal.csEnd(), "");
}

TEST(Screen, WithoutAUsableTerminalItDoesNotOpen) {
    for (const char* const pszType : {"", "dumb", "unknown", "no-such-terminal"}) {
        Terminal clTerminal({TUI_SCENE, "fields"}, {.csType = pszType});
        EXPECT_EQ(clTerminal.nWaitEnd(), 3) << pszType;
        EXPECT_EQ(clTerminal.u64Received(), 0U) << pszType;
        EXPECT_TRUE(clTerminal.bCooked());
    }
    Terminal clNoOutput({"sh", "-c", std::string(TUI_SCENE) + " fields >/dev/null"});
    EXPECT_EQ(clNoOutput.nWaitEnd(), 3);
    Terminal clNoType({TUI_SCENE, "fields"}, {.tabEnvironment = {"TERM"}});
    EXPECT_EQ(clNoType.nWaitEnd(), 3);
}

}  // namespace
}  // namespace kalmo
