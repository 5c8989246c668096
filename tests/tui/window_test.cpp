#include "tui/window.h"

#include <gtest/gtest.h>

#include "tests/tui/recorder.h"
#include "tests/tui/scene_terminal.h"
#include "tui/button.h"
#include "tui/entry.h"
#include "tui/jauge.h"
#include "tui/key.h"
#include "tui/libel.h"

namespace kalmo {
namespace {

TEST(Window, TabGoesRoundTheControlsThatTakeTheFocus) {
    CRecorder clWindow(0, 0, 40, 20);
    clWindow.Press({TOUCHE_TAB, TOUCHE_ENTREE});  // nobody there
    auto* const pclFirst = clWindow.pclAdd<CButton>(L"0", 1, 1, 10, 4);
    clWindow.pclAdd<CLibel>(L"1", 1, 1, 10, 1, 0, A_NORMAL);
    auto* const pclOff = clWindow.pclAdd<CButton>(L"2", 1, 1, 10, 4);
    clWindow.pclAdd<CJauge>(1, 1, 10, 4, 0.0, 1.0, L"3");
    auto* const pclLast = clWindow.pclAdd<CEntry>(L"4", 1, 1, 10, 4, L"", CWidget::eBORDER_FRAME);
    pclOff->SetEnable(0);
    EXPECT_FALSE(pclOff->bEnable());

    EXPECT_EQ(clWindow.nFocused(), 0);
    clWindow.Press({TOUCHE_TAB});
    EXPECT_EQ(clWindow.nFocused(), 4);
    clWindow.Press({TOUCHE_TAB});
    EXPECT_EQ(clWindow.nFocused(), 0);
    pclOff->SetEnable(1);
    clWindow.Press({TOUCHE_TAB});
    EXPECT_EQ(clWindow.nFocused(), 2);

    EXPECT_TRUE(clWindow.bSetFocus(pclLast));
    EXPECT_EQ(clWindow.nFocused(), 4);
    clWindow.Press({TOUCHE_TAB});  // the ring goes on from there
    EXPECT_EQ(clWindow.nFocused(), 0);
    pclLast->SetEnable(0);
    EXPECT_FALSE(clWindow.bSetFocus(pclLast));
    EXPECT_EQ(clWindow.nFocused(), -1);
    EXPECT_FALSE(pclFirst->bHasFocus());
    EXPECT_EQ(clWindow.OnKeyEvent(KEY_F(9)), 1);
}

TEST(Window, WithoutAScreenTheLoopEndsAtOnce) {
    CRecorder clWindow(0, 0, 40, 20);
    clWindow.pclAdd<CButton>(L"OK", 1, 1, 10, 4);
    clWindow.Draw();
    clWindow.MainLoop();
    EXPECT_EQ(clWindow.pGetWindow(), nullptr);
}

TEST(WindowScreen, DrawsInsideItsWindow) {
    CSceneTerminal clTerminal("primitives", 38, 12);
    EXPECT_EQ(clTerminal.csShow(), R"(
 +-A title that is longer than the +
 | +-------+   +----+  +---+       |
 | |       |   |    |  |   |       |
 | |       |   |    |  +---+       |
 | +-------+   +----+              |
 |                 sixteen columns.|
 | wide            are kept        |
 |  +narrow é?     for this        |
 |  +7 of nine                     |
 | port=049
 +---a text that is longer than its w

.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr..
.rrrrrrrrrrrrrrbbbbbbrrmmmmmrrrrrrrrn.
.rrrnnnnnnnrsrrbggggbrrmrrrmrrrrrrrrn.
.rrrnnnnnnnrsrrbggggbrrmmmmmrrrrrrrrn.
.rrrrrrrrrrrsrrbbbbbbrrrrrrrrrrrrrrrn.
.rrrsssssssssrrrrrrnnnnnnnnnnnnnnnnrn.
.rrnnnnrrrrrrrrrrrrnnnnnnnnrrrrrrrrrn.
.rrrnsssssssssrrrrrnnnnnnnnrrrrrrrrrn.
.rrrnnnnnnnnnnrrrrrrrrrrrrrrrrrrrrrrn.
.rrnnnnnnnnrrrrrrrrrrrrrrrrrrrrssssss.
.rrrrnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.
..nnnnnnnnnnnnnnnnnnnnnnnnnnnnnssssss.
)");
    EXPECT_EQ(clTerminal.csEnd(), " 3 0");  // lines of the wrapped text, and of none
}

TEST(WindowScreen, ClosingAWindowPaintsTheBackground) {
    CSceneTerminal clTerminal("nested", 46, 13);
    const std::string csBelow = clTerminal.csShow();
    ASSERT_TRUE(clTerminal.bType({"F2"}));
    EXPECT_EQ(clTerminal.csText(), R"(
 +---------------------------------+
 | +-------+                       |
 | | Below |                       |
 | +-------+                       |
 |                      +-----------------+
 |                      |                 |
 |                      |   +-------+     |
 |                      |   | Above |     |
 |                      |   +-------+     |
 |                      |                 |
 +----------------------+-----------------+
)");
    ASSERT_TRUE(clTerminal.bType({"F1"}));
    EXPECT_EQ(clTerminal.csShow(), csBelow);
}

TEST(WindowScreen, SurvivesEverySizeAndIsWholeAgain) {
    CSceneTerminal clTerminal("nested", 46, 14);
    ASSERT_TRUE(clTerminal.bType({"F2"}));
    const std::string csWhole = clTerminal.csShow();
    const struct {
        int nColumns, nRows;
    } TAB[] = {{1, 1}, {46, 14}, {9, 3}, {1, 14}, {40, 1}, {132, 50}, {12, 6}, {26, 7}, {20, 8}, {46, 14}};
    for (const auto& rst : TAB) {
        clTerminal.Resize(rst.nColumns, rst.nRows);
        ASSERT_TRUE(clTerminal.bType({"Up"})) << rst.nColumns << 'x' << rst.nRows;
        if (rst.nColumns == 46) {
            EXPECT_EQ(clTerminal.csShow(), csWhole);
        }
        if (rst.nColumns == 26) {
            EXPECT_EQ(clTerminal.csText(), R"(
 +------------------------
 | +-------+
 | | Below |
 | +-------+
 |                      +-
 |                      |
 |                      |
)");
        }
    }
    ASSERT_TRUE(clTerminal.bType({"F1"}));
    EXPECT_EQ(clTerminal.csEnd(), "");
}

TEST(WindowScreen, AKeySendsLittle) {
    CSceneTerminal clTerminal("lists", 50, 14);
    for (const char* const pszKey : {"Down", "Up", "Tab", "Tab", "Down"}) {
        const std::uint64_t u64Before = clTerminal.u64Received();
        ASSERT_TRUE(clTerminal.bType({pszKey}));
        EXPECT_LT(clTerminal.u64Received() - u64Before, 200U) << pszKey;
    }
}

}  // namespace
}  // namespace kalmo
