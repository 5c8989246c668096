#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include "framework/conversion.h"
#include "testkit/tui_terminal.h"

namespace kalmo {
namespace {

// The screens as text and as looks, on a terminal that can do everything and is as large as needed.
constexpr struct {
    const char* pszScene;
    const char* pszPicture;
    const char* pszReport;
} TAB_PICTURE[] = {
    {" fields", R"(
 +-------------------------------------------------------+   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr..
 | +-------+  +---------+  +-------------+    +------+   |   .rrbbbbbbbbbrrnnnnnnnnnnnrrbbbbbbbbbbbbbbbrrrrbbbbbbbbrrrrn.
 | |  OK   |  |Disabled |  | Made to fit |    |      |   |   .rrbBBBBBBBbnrnnnnnnnnnnnnrbbbbbbbbbbbbbbbnrrrbbbbbbbbnrrrn.
 | +-------+  +---------+  +-------------+    |Much t|   |   .rrbbbbbbbbbnrnnnnnnnnnnnnrbbbbbbbbbbbbbbbnrrrbbbbbbbbnrrrn.
 |                                            +------+   |   .rrrnnnnnnnnnrrnnnnnnnnnnnrrnnnnnnnnnnnnnnnrrrbbbbbbbbnrrrn.
 | +-Server-----+  +-Much longe+                         |   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrnnnnnnnnrrrn.
 | |            |  |           |               +------+  |   .rrrnnnnnnnnnnnnrrrrnnnnnnnnnnnrnrrrrrrrrrrrrrrrrrrrrrrrrrn.
 | |name        |  |text       |   bare        |greyed|  |   .rrrnnnnnnnnnnnnrrrrnnnnnnnnnnnrnrrnnnnrrrrrrrrrddddddrrrrn.
 | +------------+  +-----------+               +------+  |   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrnrrrrrrrrrrrrrrrrrrrrrrrrrn.
 |                                             +-A lon+  |   .rrrrrrrrrrrrrrrrrrrnnnnnnnnnnnnnrrrrrrrrrrrrrrrrrrrrrrrrrn.
 | [ ]keep it        +--------------+  plain   |      |  |   .rrnnnrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrssssssrrrggggggrrrrn.
 |    running today  |A framed text |  text    +------+  |   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrssssrrrrrrrrrrrrrrrn.
 |                   |that is longer|  +-Progress-------+|   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
 | [X]wide           +--------------+  |                ||   .rrnmnrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrggggggnnnnnnnnnnrrn.
 +-------------------------------------+----------------++   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
                                                             ..nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.
)",
     "name| text| bare| greyed| o x"},
    {" lists", R"(
 +---------------------------------------------+   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr..
 |+------------+ +-------+  +---------------+  |   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
 ||zero        | |a      |  |               |  |   .rrrrrrnnnnnnnrrrrnnnnnnnrnrrnnnnnnnnnnnnnnnrnrrn.
 ||one         | |B      |  | Choose an     |  |   .rrnnnnnnnnnnnsrrrnnnnnnnrnrrnnnnnnnnnnnnnnnrnrrn.
 ||two words o | |C      |  | item          |  |   .rrnnnnnnnnnnnsrrrsnnnnnnrnrrnnnnnnnnnnnnnnnrnrrn.
 ||three       | |d      |  |---------------|  |   .rrnnnnnnnnnnnsrrrnnnnnnnrnrrrrrrrrrrrrrrrrrrnrrn.
 || our        | | ight w|  | ( ) upgrade   |  |   .rrrnnnnnnnnnnsrrrrnnnnnnrnrrnnmnnnnnnnnnnnnrnrrn.
 |+------------+ +-------+  | (X) install   |  |   .rrrrrrrrrrrrrrrrrrrrrrrrrnrrnnmnnnnnnnnnnnnrnrrn.
 |+------------+            | ( ) uninstall |  |   .rrrrrrrrrrrrrrrrrnnnnnnnnnrrnnmnnnnnnnnnnnnrnrrn.
 ||one line    | +--------+ +---------------+  |   .rrnnnnnnnnnnnrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrnrrn.
 ||eleven wide | |fits    |                    |   .rrnnnnnnnnnnnsrrrnnnnnnnnrrrnnnnnnnnnnnnnnnnnrrn.
 ||longer than | +--------+                    |   .rrnnnnnnnnnnnsrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
 ++------------+-------------------------------+   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrn.
                                                   ..nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.
)",
     "0 2 -1 -1 1"},
    {" primitives", R"(
 +-A title that is longer than the +   .rrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr..
 | +-------+   +----+  +---+ more  |   .rrrrrrrrrrrrrrbbbbbbrrmmmmmrnnnnnrrn.
 | |       |   |    |  |   | than  |   .rrrnnnnnnnrsrrbggggbrrmrrrmrnnnnnrrn.
 | |       |   |    |  +---+ one   |   .rrrnnnnnnnrsrrbggggbrrmmmmmrnnnnrrrn.
 | +-------+   +----+        row   |   .rrrrrrrrrrrsrrbbbbbbrrrrrrrrnnnrrrrn.
 |                 sixteen columns.|   .rrrsssssssssrrrrrrnnnnnnnnnnnnnnnnrn.
 | wide            are kept        |   .rrnnnnrrrrrrrrrrrrnnnnnnnnrrrrrrrrrn.
 |  +narrow é?     for this        |   .rrrnsssssssssrrrrrnnnnnnnnrrrrrrrrrn.
 |  +7 of nine                     |   .rrrnnnnnnnnnnrrrrrrrrrrrrrrrrrrrrrrn.
 | port=049                            .rrnnnnnnnnrrrrrrrrrrrrrrrrrrrrssssss.
 +---a text that is longer than its w  .rrrrnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.
                                       ..nnnnnnnnnnnnnnnnnnnnnnnnnnnnnssssss.
)",
     "3 0 4"},  // lines of the wrapped text, of none, and of one that is longer than its control
};

// What other terminals make of the looks.
constexpr struct {
    const char* pszType;
    const char* pszLooks;
    const char* pszShownAs;
} TAB_TERMINAL[] = {
    {"xterm-256color", "", ""},
    {"tmux-256color", "d", "n"},  // cannot change a colour
    {"xterm", "d", "n"},          // has eight
    {"vt220", ".nrsbBgdMm", "  R  R    "},
};

// A picture as it shows on a terminal of another kind and size: clipped, or with the background around it.
std::string csShownOn(const char* pszPicture, const auto& rstTerminal, int nColumns, int nRows) {
    std::istringstream clLines(pszPicture + 1);
    std::string csResult = "\n";
    for (int nRow = 0; nRow < nRows; ++nRow) {
        std::string csLine;
        std::getline(clLines, csLine);
        const std::size_t nBlank = std::min(csLine.rfind(' '), csLine.size());
        std::wstring csText(csFromUTF8(csLine.substr(0, nBlank)).svGet());
        std::string csLooks = csLine.substr(std::min(nBlank + 1, csLine.size()));
        csText.resize(static_cast<std::size_t>(nColumns), L' ');
        csLooks.resize(static_cast<std::size_t>(nColumns), '.');
        for (char& rc : csLooks) {
            const char* const psz = std::strchr(rstTerminal.pszLooks, rc);
            rc = psz == nullptr ? rc : rstTerminal.pszShownAs[psz - rstTerminal.pszLooks];
        }
        csResult += csToUTF8(csText).pszGet() + (' ' + csLooks) + '\n';
    }
    return csResult;
}

TEST(Pictures, AreTheSameOnEveryTerminalAsFarAsItCan) {
    for (const auto& rstTerminal : TAB_TERMINAL) {
        for (const auto& [nColumns, nRows] : {std::pair(60, 16), {80, 24}, {132, 50}, {12, 6}, {2, 2}}) {
            for (const auto& rst : TAB_PICTURE) {
                CTuiTerminal clTerminal(TUI_SCENE + std::string(rst.pszScene),
                                        {rstTerminal.pszType, nColumns, nRows});
                EXPECT_EQ(clTerminal.csShow(), csShownOn(rst.pszPicture, rstTerminal, nColumns, nRows))
                    << rst.pszScene << ' ' << rstTerminal.pszType << ' ' << nColumns;
                const bool bGrey = rstTerminal.pszType == TAB_TERMINAL[0].pszType;
                EXPECT_EQ(clTerminal.clScreen().unPaletteColour(8), bGrey ? 0x262626U : 0x808080U);
                ASSERT_TRUE(clTerminal.bPress("F1"));
                EXPECT_TRUE(nColumns < 60 || clTerminal.csReport() == rst.pszReport);
                EXPECT_TRUE(clTerminal.bGivenBack());
            }
        }
    }
}

TEST(Pictures, WindowsGoAndTheScreenIsWholeAgainAtEverySize) {
    CTuiTerminal clTerminal(TUI_SCENE " controls button radio=ab", {.nColumns = 46, .nRows = 14});
    const std::string csBelow = clTerminal.csShow();
    ASSERT_TRUE(clTerminal.bPress("F2"));
    const std::string csBoth = clTerminal.csShow();
    EXPECT_EQ(clTerminal.csText(), R"(
 +---------------------------------+
 |+-----+   +------+               |
 ||  b  |   |      |               |
 |+-----+   | r    |               |
 |          |------|    +-----------------+
 |          | (X) a|    |                 |
 |          | ( ) b|    |   +--------+    |
 |          |      |    |   |Above   |    |
 |          +------+    |   +--------+    |
 |                      |   [ ]b          |
 +----------------------+-----------------+
)");
    const struct {
        int nColumns, nRows;
    } TAB[] = {{1, 1}, {46, 14}, {9, 3}, {1, 14}, {40, 1}, {132, 50}, {12, 6}, {26, 7}, {20, 8}, {46, 14}};
    for (const auto& [nColumns, nRows] : TAB) {
        clTerminal.Resize(nColumns, nRows);
        ASSERT_TRUE(clTerminal.bPress("Right")) << nColumns << 'x' << nRows;
        if (nColumns == 46) {
            EXPECT_EQ(clTerminal.csShow(), csBoth);
        } else if (nColumns > 9) {
            EXPECT_EQ(clTerminal.csShow(), csShownOn(csBoth.c_str(), TAB_TERMINAL[0], nColumns, nRows));
        }
    }
    ASSERT_TRUE(clTerminal.bPress("F1"));
    EXPECT_EQ(clTerminal.csShow(), csBelow);
}

}  // namespace
}  // namespace kalmo
