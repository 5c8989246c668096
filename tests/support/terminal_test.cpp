#include "tests/support/terminal.h"

#include <gtest/gtest.h>

namespace kalmo {
namespace {

TEST(Terminal, ShowsWhatAProgramDrawsAndWhere) {
    Terminal clTerminal({"sh", "-c",
                         "tput cup 1 4; tput setaf 1; tput setab 4; printf AB; tput rev; printf C; tput sgr0;"
                         "tput bold; printf 'D\\n\\302\\240e\\314\\201\\344\\270\\255.'; tput civis; read x"},
                        {.csType = "xterm-256color", .nColumns = 12, .nRows = 3});
    ASSERT_TRUE(clTerminal.bSettle());
    EXPECT_EQ(clTerminal.csText(), "\n\n    ABCD\n e\u0301中.\n");
    const STLegend TAB[] = {{'r', {.nForeground = 1, .nBackground = 4}}, {'b', {.bBold = true}}};
    EXPECT_EQ(clTerminal.clScreen().csShow(TAB),
              "\n                         \n"
              "    ABCD         rr?b    \n"
              " e\u0301中.        bbbbb       \n");
    EXPECT_EQ(clTerminal.clScreen().stCursor(), (STCursor{2, 5, false, false}));
}

TEST(Terminal, SendsTheKeysOfItsMode) {
    Terminal clTerminal(
        {"sh", "-c",
         "stty -icanon -echo; tput smkx; while :; do dd bs=64 count=1 2>/dev/null | od -An -c; "
         "done"});
    ASSERT_TRUE(clTerminal.bPress("Up*2 KeypadEnter Backspace F1 é"));
    EXPECT_EQ(clTerminal.csText(), R"(
 033   O   A
 033   O   A
 033   O   M
 177
 033   O   P
 303 251
)");
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

}  // namespace
}  // namespace kalmo
