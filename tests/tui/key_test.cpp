#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "testkit/tui_terminal.h"

namespace kalmo {
namespace {

TEST(Keys, DoWhatTheControlsSay) {
    const struct {
        const char* pszControls;
        const char* pszKeys;
        const char* pszReport;
        const char* pszType = "xterm-256color";
    } TAB[] = {
        {"button", "Enter KeypadEnter Space x Down", "0:0 0:0 0:0"},
        {"box", "Enter Space Enter x", "x 0:8 0:8 0:8"},
        {"box", "KeypadEnter", "o"},  // not one of its keys

        {"entry=", "a Space . / é 日", "a ./é日|"},
        {"entry=", "a Left b", "a|b"},        // on the last character: appended behind it
        {"entry=abc", "Left x y", "abcx|y"},  // ... and the cursor moves on by one
        {"entry=abc", "Left*2 Right*4", "abc|"},
        {"entry=abc", "Backspace*4", "|"},
        {"entry=abc", "Backspace*2", "a|", "vt220"},     // whose Backspace is the character 127
        {"entry=abc", "Left*3 Backspace Left", "|abc"},  // refused, though the codes are those of letters
        {"entry=", "PageDown Up", "Œă|"},                // taken as the letters of these codes
        {"entry=a", "Escape \x07 \u009B", "a|"},
        {"entry=a", "Enter KeypadEnter", "a| 0:7 0:7"},
        {"number=4", "9 x Space . \u0663 0", "490|"},
        {"lower=X", "A b É 7", "Xabé7|"},

        {"path=/usr/", "l", "/usr/l| 0:6"},
        {"path=/usr/lib", "Left*5 x", "/usx|r/lib 0:5"},
        {"path=/usr/lib", "Left*3 x", "/usr/x|lib 0:6"},
        {"path=/usr/l", "Backspace", "/usr/| 0:6 0:6"},
        {"path=/usr/", "Backspace", "/usr| 0:5 0:6"},  // the directory went with its "/"
        {"path=/usr/lib", "Left*4 Delete", "/usr|lib 0:5"},
        {"path=/", "Backspace Left Backspace", "/|"},
        {"path=ab", "Left*2 Backspace Delete", "|b 0:6"},  // nothing to guard
        {"unguarded=/a", "Left*2 Delete", "|a 0:5"},

        {"list=abc", "Up Down*3 Space", "2 0:1 0:1 0:2"},
        {"list=abc", "Down Enter KeypadEnter Left Right PageDown x Up", "0 0:1 0:2 0:3 0:2 0:3 0:1"},
        {"radio=abc", "Down KeypadEnter", "1 0:2 0:3"},
        {"radio=abc", "Up Space x", "2 0:2"},         // round to the last
        {"radio=abc", "Up Down Enter", "0 0:2 0:3"},  // and round to the first
        {"list=", "Down Up Space Right", "0"},
        {"radio=", "Up Down Space", "-1"},
        {"text=123456789", "Up PageDown Down*2 Up Enter Space", "-1"},
        {"text=123456789", "PageDown Down*3 Up Down", "-1 0:4 0:4"},
        {"text=123456789", "PageDown*2 PageUp*3 PageDown Down*2", "-1 0:4"},

        {"", "Tab x", ""},
        {"button button", "Tab Enter Tab Tab Space", "1:0 1:0"},
        {"button label -button gauge text=123 -entry=q entry=", "Tab x Tab Space Tab y", "-1 q| xy| 0:0"},
        {"text=123 box", "Tab Space Tab Space", "-1 o 1:8 1:8"},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clTerminal(TUI_SCENE " controls " + std::string(rst.pszControls),
                                {.csType = rst.pszType, .tabEnvironment = {"ESCDELAY=10"}});
        EXPECT_TRUE(clTerminal.bPress(rst.pszKeys + std::string(" F1")));
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << rst.pszControls << ": " << rst.pszKeys;
    }
}

// A mark behind a wide character, a Hangul syllable in letters: one cell, edited letter by letter. No kana
// here, whose marks the emulator gives columns.
TEST(Keys, WhatAFieldShowsIsItsText) {
    const struct {
        const char *pszControl, *pszKeys, *pszShown, *pszReport;
        int nCursor;
    } TAB[] = {
        {"entry=", "日 \u0301 x", "日\u0301x     ", "日\u0301x|", 6},
        {"entry=日\u0301", "Backspace", "日      ", "日|", 5},
        {"entry=ᄒ\u1161\u11AB", "", "ᄒ\u1161\u11AB      ", "ᄒ\u1161\u11AB|", 5},
        {"entry=ᄒ\u1161\u11AB", "Left Backspace", "ᄒ\u11AB      ", "ᄒ|\u11AB", 5},
        {"entry=日\u0301x", "Left*3 Delete", "?x      ", "|\u0301x", 3},
        {"entry=a\u0301\u0301\u0301\u0301\u0301", "Backspace", "a\u0301\u0301\u0301\u0301       ",
         "a\u0301\u0301\u0301\u0301|", 4},
        {"list=日\u0301", "Down", "日    ", "1 0:1", 0},
        {"list=\u0301", "", "?     ", "0", 0},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clTerminal(TUI_SCENE " controls " + std::string(rst.pszControl));
        EXPECT_TRUE(clTerminal.bPress(rst.pszKeys));
        const std::size_t nWidth = *rst.pszControl == 'e' ? 8 : 6;
        EXPECT_EQ(clTerminal.csText(2, 3, static_cast<int>(nWidth)), rst.pszShown) << rst.pszControl;
        EXPECT_TRUE(rst.nCursor == 0 || clTerminal.clScreen().stCursor().nColumn == rst.nCursor);
        EXPECT_TRUE(clTerminal.bPress("F1"));
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << rst.pszControl;
    }
}

TEST(Keys, TheCursorShowsWhereOneTypes) {
    const struct {
        const char* pszType;
        const char* pszKeys;
        STCursor stCursor;
    } TAB[] = {
        {"xterm-256color", "Tab", {2, 13, false, true}},
        {"vt220", "Tab*2 Left", {2, 5, true, false}},  // has one kind of visible only
        {"xterm-256color", "Tab*2", {2, 6, true, true}},
        {"tmux-256color", "Tab*2", {2, 6, true, false}},
        // A dialog on top showed it, then one hid it.
        {"xterm-256color", "Tab F2 F1", {2, 13, false, true}},
        {"xterm-256color", "F2 Tab F1", {2, 6, true, true}},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clTerminal(TUI_SCENE " controls entry=abc button", {.csType = rst.pszType});
        EXPECT_TRUE(clTerminal.bPress(rst.pszKeys));
        const STCursor& rstCursor = clTerminal.clScreen().stCursor();
        EXPECT_TRUE(rst.stCursor.bVisible ? rstCursor == rst.stCursor : !rstCursor.bVisible)
            << rst.pszType << ' ' << rst.pszKeys;
    }
}

TEST(Keys, AreSeenOnTheScreen) {
    const struct {
        const char* pszScene;  ///< Empty: the row above goes on.
        const char* pszKeys;
        int nRow, nColumn;
        const char* pszText;
        const char* pszLooks = "";
        int nCursor = 0;  ///< Its column, where it matters.
    } TAB[] = {
        {" fields", "Tab*3 56789ab", 7, 3, "|name56789ab |", "", 15},  // scrolls inside its frame
        {"", "c", 7, 3, "|ame56789abc |", "", 15},
        {"", "Tab*6", 7, 3, "|name56789abc|"},  // without the focus all of it
        {"", "Tab*2 d e f", 7, 3, "|56789abcdef |", "", 15},
        {"", "Backspace*2", 7, 3, "|me56789abcd |", "", 15},  // no empty room behind the text
        {"", "Left*12", 7, 3, "|ame56789abcd|", "", 4},
        {"", "Tab*2 and Space so Space on", 7, 35, "eand so o   |g", "", 44},
        {"", "Backspace*6", 7, 35, "barean      |g", "nnnnnnrrrrrrrd", 41},  // no fill of its own
        {"", "Tab*2", 13, 3, "[X]wide", "sMsssss"},
        {"", "F5", 7, 20, "text", "dddd"},

        {" lists", "Right*7", 4, 3, "ords of tex ", "nnnnnnnnnnns"},  // as far as the longest line
        {"", "Left*3 Down*5", 2, 3, "e           ", "nnnnnnnnnnnr"},  // the thumb of the scroll bar
        {"", "", 6, 3, "v           ", "rrnnnnnnnnns"},               // selected; the sideways thumb
        {"", "F3", 2, 3, "ven         ", "nnnnnnnnnnns"},             // the last of twelve
        {"", "F3 Up", 2, 3, "e           ", "rnnnnnnnnnnr"},          // the third, then the second
        {"", "Left*4", 2, 3, "one         ", "rrrnnnnnnnnr"},
        {"", "Tab", 2, 3, "one         ", "sssnnnnnnnnr"},
        {"", "Tab Down", 9, 3, "eleven wide ", "nnnnnnnnnnnr"},  // the text, cut hard
        {"", "", 11, 3, " that       ", "nnnnnnnnnnns"},
        {"", "PageDown", 11, 3, "last        ", "nnnnnnnnnnnr"},
        {"", "Tab Up", 6, 30, "( ) upgrade  ", "sMsssssssssnn"},     // the cursor's option
        {"", "", 7, 30, "(X) install  ", "nmnnnnnnnnnnn"},           // the chosen one
        {"", "Tab Right F4", 2, 3, "another long", "rrrrrrrrrrrr"},  // cleared and filled again
        {"", "", 3, 17, "|B       ", "rnnnnnnns"},                   // six lines in five rows
    };
    std::optional<CTuiTerminal> oclTerminal;
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.pszKeys);
        if (*rst.pszScene != '\0') {
            oclTerminal.emplace(TUI_SCENE + std::string(rst.pszScene));
        }
        ASSERT_TRUE(oclTerminal->bPress(rst.pszKeys));
        const auto nWidth = [](const char* psz) { return static_cast<int>(std::strlen(psz)); };
        EXPECT_EQ(oclTerminal->csText(rst.nRow, rst.nColumn, nWidth(rst.pszText)), rst.pszText);
        EXPECT_EQ(oclTerminal->csLooks(rst.nRow, rst.nColumn, nWidth(rst.pszLooks)), rst.pszLooks);
        if (rst.nCursor > 0) {
            EXPECT_EQ(oclTerminal->clScreen().stCursor().nColumn, rst.nCursor);
        }
    }
}

}  // namespace
}  // namespace kalmo
