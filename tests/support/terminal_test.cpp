#include "tests/support/terminal.h"

#include <gtest/gtest.h>

namespace kalmo {
namespace {

// Hundreds of keys, each read back at once: a settled screen is never a stale one.
TEST(Terminal, IsSettledOnlyWhenTheKeyWasDealtWith) {
    Terminal clTerminal({"sh", "-c", "stty -echo; while read x; do tput clear; echo $x; done"});
    for (int n = 0; n < 300; ++n) {
        const std::string csNumber = std::to_string(n);
        ASSERT_TRUE(clTerminal.bPress(csNumber + " Enter"));
        ASSERT_EQ(clTerminal.csText(), "\n" + csNumber + "\n");
    }
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
