#include <gtest/gtest.h>

#include "tests/tui/recorder.h"
#include "tests/tui/scene_terminal.h"
#include "tui/button.h"
#include "tui/check_box.h"
#include "tui/jauge.h"
#include "tui/key.h"
#include "tui/radio_list.h"

namespace kalmo {
namespace {

TEST(Controls, ReportTheirKeys) {
    CRecorder clWindow(0, 0, 40, 20);
    clWindow.pclAdd<CButton>(L"OK", 1, 1, 10, 4);
    auto* const pclBox = clWindow.pclAdd<CCheckBox>(L"label", 1, 6, 20, 1, 0);
    auto* const pclRadio = clWindow.pclAdd<CRadioList>(1, 8, 20, 8, L"title", 0, 1);

    clWindow.Press({TOUCHE_ENTREE, KEY_ENTER, TOUCHE_ESPACE, 'x', KEY_DOWN});
    EXPECT_EQ(clWindow.csTakeEvents(), " 0:0 0:0 0:0");

    clWindow.Press({TOUCHE_TAB, TOUCHE_ENTREE, KEY_ENTER, 'x'});
    EXPECT_TRUE(pclBox->bIsChecked());
    clWindow.Press({TOUCHE_ESPACE});
    EXPECT_FALSE(pclBox->bIsChecked());
    EXPECT_EQ(clWindow.csTakeEvents(), " 1:8 1:8");

    clWindow.Press({TOUCHE_TAB, KEY_UP, TOUCHE_ENTREE});
    EXPECT_EQ(clWindow.csTakeEvents(), "");  // no option yet
    EXPECT_EQ(pclRadio->nGetSelectedItem(), 1);
    for (const wchar_t* const psz : {L"a", L"b", L"c"}) {
        pclRadio->AddOption(psz);
    }
    pclRadio->Select(0);
    pclRadio->Select(3);
    EXPECT_EQ(pclRadio->nGetSelectedItem(), 0);
    clWindow.Press({KEY_UP, TOUCHE_ESPACE});  // round to the last
    EXPECT_EQ(pclRadio->nGetSelectedItem(), 2);
    clWindow.Press({KEY_DOWN, KEY_DOWN, KEY_ENTER, KEY_UP, TOUCHE_ENTREE});  // and round to the first
    EXPECT_EQ(pclRadio->nGetSelectedItem(), 0);
    EXPECT_EQ(clWindow.csTakeEvents(), " 2:2 2:2 2:3 2:2 2:3");
}

TEST(ControlScreen, Fields) {
    CSceneTerminal clTerminal("fields", 60, 16);
    EXPECT_EQ(clTerminal.csShow(), R"(
 +-------------------------------------------------------+
 | +-------+  +---------+  +-------------+    +------+   |
 | |  OK   |  |Disabled |  | Made to fit |    |      |   |
 | +-------+  +---------+  +-------------+    |Much t|   |
 |                                            +------+   |
 |                                                       |
 | +-Server-----+  +-Much longe+               +------+  |
 | |name        |  |text       |   bare        |grey  |  |
 | +------------+  +-----------+               +------+  |
 |                                             +-A lon+  |
 | [ ]keep the       +--------------+  plain   |      |  |
 |    settings today |A framed text |  text    +------+  |
 |                   |that is longer|  +-Progress-------+|
 | [X]wide           +--------------+  |                ||
 +-------------------------------------+----------------++

.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr..
.rrbbbbbbbbbrrnnnnnnnnnnnrrbbbbbbbbbbbbbbbrrrrbbbbbbbbrrrrn.
.rrbBBBBBBBbnrnnnnnnnnnnnnrbbbbbbbbbbbbbbbnrrrbbbbbbbbnrrrn.
.rrbbbbbbbbbnrnnnnnnnnnnnnrbbbbbbbbbbbbbbbnrrrbbbbbbbbnrrrn.
.rrrnnnnnnnnnrrnnnnnnnnnnnrrnnnnnnnnnnnnnnnrrrbbbbbbbbnrrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrnnnnnnnnrrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
.rrrnnnnnnnnnnnnrrrrnnnnnnnnnnnrnrrnnnnrrrrrrrrrddddnnrrrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrnrrrrrrrrrrrrrrrrrrrrrrrrrn.
.rrrrrrrrrrrrrrrrrrrnnnnnnnnnnnnnrrrrrrrrrrrrrrrrrrrrrrrrrn.
.rrnnnrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrssssssrrrggggggrrrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrssssrrrrrrrrrrrrrrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
.rrnmnrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrggggggnnnnnnnnnnrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
..nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.
)");
    EXPECT_FALSE(clTerminal.clScreen().stCursor().bVisible);
    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Tab"}));
    EXPECT_EQ(clTerminal.clScreen().stCursor(), (STCursor{7, 8, true, true}));
    ASSERT_TRUE(clTerminal.bType({"Left", "Left"}));
    EXPECT_EQ(clTerminal.clScreen().stCursor(), (STCursor{7, 6, true, true}));
    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Tab", " "}));
    EXPECT_FALSE(clTerminal.clScreen().stCursor().bVisible);
    EXPECT_EQ(clTerminal.csPart(clTerminal.csText(), 10, 3, 14), "[X]keep the   ");
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 10, 3, 14), "sMssssssssssrr");
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 11, 3, 16), "rrrsssssssssssss");
    ASSERT_TRUE(clTerminal.bType({"Tab", "Enter"}));
    EXPECT_EQ(clTerminal.csPart(clTerminal.csText(), 13, 3, 7), "[ ]wide");
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 13, 3, 7), "sssssss");
    EXPECT_EQ(clTerminal.csEnd(), " 8:8 9:8");
}

TEST(ControlScreen, Lists) {
    CSceneTerminal clTerminal("lists", 50, 14);
    EXPECT_EQ(clTerminal.csShow(), R"(
 +---------------------------------------------+
 |+------------+ +-------+  +---------------+  |
 ||zero        | |a      |  |               |  |
 ||one         | |B      |  | Choose an     |  |
 ||two words o | |C      |  | item          |  |
 ||three       | |d      |  |---------------|  |
 || our        | |e      |  | ( ) upgrade   |  |
 |+------------+ +-------+  | (X) install   |  |
 |+------------+            | ( ) uninstall |  |
 ||one line    | +--------+ +---------------+  |
 ||eleven wide | |fits    |                    |
 ||longer than | +--------+                    |
 ++------------+-------------------------------+

.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr..
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
.rrrrrrnnnnnnnrrrrnnnnnnnrnrrnnnnnnnnnnnnnnnrnrrn.
.rrnnnnnnnnnnnsrrrnnnnnnnrnrrnnnnnnnnnnnnnnnrnrrn.
.rrnnnnnnnnnnnsrrrsnnnnnnrnrrnnnnnnnnnnnnnnnrnrrn.
.rrnnnnnnnnnnnsrrrnnnnnnnrnrrrrrrrrrrrrrrrrrrnrrn.
.rrrnnnnnnnnnnsrrrnnnnnnnrnrrnnmnnnnnnnnnnnnrnrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrnrrnnmnnnnnnnnnnnnrnrrn.
.rrrrrrrrrrrrrrrrrnnnnnnnnnrrnnmnnnnnnnnnnnnrnrrn.
.rrnnnnnnnnnnnrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrnrrn.
.rrnnnnnnnnnnnsrrrnnnnnnnnrrrnnnnnnnnnnnnnnnnnrrn.
.rrnnnnnnnnnnnsrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
.rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
..nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.
)");
    ASSERT_TRUE(clTerminal.bType({"Right", "Right", "Right", "Right", "Right", "Right", "Right"}));
    EXPECT_EQ(clTerminal.csPart(clTerminal.csText(), 4, 3, 11), "ords of tex");
    ASSERT_TRUE(clTerminal.bType({"Left", "Left", "Left", "Down", "Down", "Down", "Down", "Down"}));
    EXPECT_EQ(clTerminal.csPart(clTerminal.csText(), 2, 3, 12), "e           ");
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 2, 3, 12), "nnnnnnnnnnnr");  // thumb of the scroll bar
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 6, 3, 12), "rrnnnnnnnnns");  // selected; sideways thumb
    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Tab", "Up"}));
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 6, 3, 12), "srnnnnnnnnns");
    EXPECT_EQ(clTerminal.csPart(clTerminal.csLooks(), 6, 30, 13), "sMsssssssssnn");  // the cursor's option
    EXPECT_EQ(clTerminal.csPart(clTerminal.csText(), 7, 30, 13), "(X) install  ");
    EXPECT_EQ(clTerminal.csEnd(), " 0:1 0:1 0:1 0:1 0:1");
}

}  // namespace
}  // namespace kalmo
