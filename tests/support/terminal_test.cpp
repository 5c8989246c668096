#include "tests/support/terminal.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "tests/support/svg_screen.h"

namespace kalmo {
namespace {

// Shows which bytes a key sends: reads without line editing, echoes them readably, one line a read.
constexpr const char* PSZ_SHOW_KEYS =
    "stty -icanon -echo; tput smkx; while :; do dd bs=64 count=1 2>/dev/null | od -An -c; done";

TEST(Terminal, ShowsWhatAProgramDrawsAndWhere) {
    Terminal clTerminal({"sh", "-c",
                         "tput cup 1 4; tput setaf 1; tput setab 4; printf AB; tput rev; printf C; tput sgr0;"
                         "tput bold; printf 'D\\n\\302\\240e\\314\\201\\344\\270\\255.'; tput civis; read x"},
                        {.csType = "xterm-256color", .nColumns = 20, .nRows = 4});
    ASSERT_TRUE(clTerminal.bSettle());
    EXPECT_EQ(clTerminal.csText(), "\n\n    ABCD\n e\u0301中.\n");
    EXPECT_EQ(clTerminal.clScreen().csLooks(
                  std::vector<STLegend>{{'r', {.nForeground = 1, .nBackground = 4}}, {'b', {.bBold = true}}}),
              "\n\n    rr?b\nbbbbb\n");
    EXPECT_EQ(clTerminal.clScreen().stCursor(), (STCursor{2, 5, false, false}));
}

TEST(Terminal, SendsTheKeysOfItsMode) {
    Terminal clTerminal({"sh", "-c", PSZ_SHOW_KEYS});
    ASSERT_TRUE(
        clTerminal.bType({"Up", "Enter", "KeypadEnter", "Backspace", "Delete", "PageDown", "F1", "é"}));
    EXPECT_EQ(clTerminal.csText(), R"(
 033   O   A
  \n
 033   O   M
 177
 033   [   3   ~
 033   [   6   ~
 033   O   P
 303 251
)");
}

TEST(Terminal, TellsProgramsItsKindAndSize) {
    const struct {
        const char* pszType;
        const char* pszColours;
    } TAB[] = {{"xterm-256color", "256"}, {"tmux-256color", "256"}, {"xterm", "8"},
               {"xterm-color", "8"},      {"vt100", "-1"},          {"vt220", "-1"}};
    for (const auto& rst : TAB) {
        Terminal clTerminal({"sh", "-c", "stty size; tput colors; exit 7"},
                            {.csType = rst.pszType, .nColumns = 132, .nRows = 50});
        EXPECT_EQ(clTerminal.nWaitEnd(), 7);
        EXPECT_EQ(clTerminal.csText(), "\n50 132\n" + std::string(rst.pszColours) + "\n") << rst.pszType;
    }
}

TEST(Terminal, FollowsTheSizeAndTheSecondScreen) {
    Terminal clTerminal({"less", KALMO_SOURCE "/framework/texts/en.txt"}, {.nColumns = 60, .nRows = 5});
    ASSERT_TRUE(clTerminal.bWaitText("en.txt"));
    ASSERT_TRUE(clTerminal.bSettle());  // A signal just before the read would wait for the next key.
    EXPECT_TRUE(clTerminal.clScreen().bAlternateScreen());
    EXPECT_FALSE(clTerminal.bCooked());
    clTerminal.Resize(60, 9);
    EXPECT_TRUE(clTerminal.bWaitText("The lines up to"));
    ASSERT_TRUE(clTerminal.bType({"q"}));
    EXPECT_EQ(clTerminal.nWaitEnd(), 0);
    EXPECT_FALSE(clTerminal.clScreen().bAlternateScreen());
    EXPECT_TRUE(clTerminal.bCooked());
}

TEST(Terminal, ChangesAndRestoresColours) {
    Terminal clTerminal({"sh", "-c", "tput initc 8 150 150 150; read x; tput oc; read x"});
    ASSERT_TRUE(clTerminal.bSettle());
    EXPECT_EQ(clTerminal.clScreen().unPaletteColour(8), 0x262626U);
    ASSERT_TRUE(clTerminal.bType({"Enter"}));
    EXPECT_NE(clTerminal.clScreen().unPaletteColour(8), 0x262626U);
}

TEST(Terminal, EndsProgramsAsAskedFor) {
    const struct {
        const char* pszCommand;
        std::function<void(Terminal&)> End;
        int nStatus;
    } TAB[] = {
        {"trap 'exit 5' HUP; read x", [](Terminal& rcl) { rcl.HangUp(); }, 5},
        {"read x", [](Terminal& rcl) { rcl.Signal(SIGTERM); }, 128 + SIGTERM},
        {"read x; exit $x",
         [](Terminal& rcl) {
             rcl.bType({"3", "Enter"});
         },
         3},
        {"read x", [](Terminal& rcl) { rcl.bType({"\x03"}); }, 128 + SIGINT},
        {"exec /nonexistent", [](Terminal&) {}, 127},
    };
    for (const auto& rst : TAB) {
        Terminal clTerminal({"sh", "-c", rst.pszCommand});
        ASSERT_TRUE(clTerminal.bSettle());
        rst.End(clTerminal);
        EXPECT_EQ(clTerminal.nWaitEnd(), rst.nStatus) << rst.pszCommand;
    }
}

TEST(Terminal, LosesPatience) {
    Terminal clTerminal({"sh", "-c", "printf out; sleep 100"}, {.stPatience = std::chrono::milliseconds(50)});
    EXPECT_FALSE(clTerminal.bSettle());
    EXPECT_FALSE(clTerminal.bWaitText("never"));
    EXPECT_EQ(clTerminal.nWaitEnd(), -1);
    EXPECT_EQ(clTerminal.csText(), "\nout\n");
    EXPECT_EQ(clTerminal.u64Received(), 3U);
}

// Hundreds of keys, each read back at once: a settled screen is never a stale one.
TEST(Terminal, IsSettledOnlyWhenTheKeyWasDealtWith) {
    Terminal clTerminal({"sh", "-c", "stty -echo; while read x; do tput clear; echo $x; done"});
    for (int n = 0; n < 300; ++n) {
        const std::string csNumber = std::to_string(n);
        ASSERT_TRUE(clTerminal.bType({csNumber + "\n"}));
        ASSERT_EQ(clTerminal.csText(), "\n" + csNumber + "\n");
    }
}

TEST(Terminal, ReachesIntoTheMachine) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "the machine needs root";
    }
    Terminal clTerminal({KALMO_SOURCE "/tests/machine/machine", "sysv", "--tty", "--", "sh", "-c",
                         "echo $TERM $(stty size); read x; exit $x"});
    ASSERT_TRUE(clTerminal.bWaitText("xterm-256color 24 80"));
    clTerminal.Send("9\r");
    EXPECT_EQ(clTerminal.nWaitEnd(), 9);
}

TEST(Emulator, TakesSequencesInPieces) {
    for (const std::string csSequence : {"\x1b]4;8;rgb:26/26/26\x1b\\", "\x1b]4;8;rgb:26/26/26\a"}) {
        for (std::size_t nCut = 0; nCut <= csSequence.size(); ++nCut) {
            CEmulator clScreen(1, 4, {});
            clScreen.Feed("a" + csSequence.substr(0, nCut));
            clScreen.Feed(csSequence.substr(nCut) + "b");
            EXPECT_EQ(clScreen.unPaletteColour(8), 0x262626U) << nCut;
            EXPECT_EQ(clScreen.csText(), "\nab\n") << nCut;
        }
    }
}

TEST(SvgScreen, DrawsRunsOfEqualLook) {
    CEmulator clScreen(1, 4, {});
    clScreen.Feed("a\x1b[7m<b\x1b[m\x1b[?25l");
    EXPECT_EQ(
        csSvgOfScreen(clScreen),
        R"svg(<svg xmlns="http://www.w3.org/2000/svg" width="36" height="18" viewBox="0 0 36 18" font-family="monospace" font-size="15" xml:space="preserve">
<rect width="36" height="18" fill="#000000"/>
<text x="0" y="14" textLength="9" fill="#e5e5e5">a</text>
<rect x="9" y="0" width="18" height="18" fill="#e5e5e5"/>
<text x="9" y="14" textLength="18" fill="#000000">&lt;b</text>
</svg>
)svg");
}

}  // namespace
}  // namespace kalmo
