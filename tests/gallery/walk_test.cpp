#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/tui_terminal.h"

namespace kalmo {
namespace {

// Every control is used once. "Next" of the check boxes is behind two boxes, that of the entries behind four
// fields, of which the disabled one is skipped.
constexpr struct {
    const char* pszKeys;
    const char* pszReport;
} TAB_WALK[] = {
    {"Enter Tab Enter Space Tab Enter", "buttons: the other button was pressed 2 times"},
    {"Enter*2 Tab Space Tab Enter", "check-boxes: a verified backup"},
    {"X Enter Backspace 1 Enter Y Enter*3", "entries: ServerX, 4901, rooty, without a frame"},
    {"Enter Space Tab Enter", "gauge: 2 steps"},
    {"Down Right Enter Up Space Tab*2 Enter",
     "lists: 2 chosen: A line that is longer than the list is wide, Line 2"},
    {"Down Enter*2", "radio-list: option 2"},
    {"Left Right*2 Tab Enter", "own-control: 3"},
    {"PageDown Down Tab Enter", "text: not read to the end"},
    {"Enter", "message: result 0"},
    {"Tab Enter", "question: result 2"},
    {"Backspace Enter", "directory: result 1, /usr"},
    {"Tab Enter", "license: refused"},
};

void ExpectWalk(const Terminal::STOptions& rstOptions) {
    SCOPED_TRACE(rstOptions.csType + " " + std::to_string(rstOptions.nColumns));
    const char* const pszWrapper = std::getenv("GALLERY_WRAPPER");  // runs the gallery under this command
    CTuiTerminal clGallery((pszWrapper == nullptr ? "" : pszWrapper + std::string(" ")) + KALMO_GALLERY,
                           rstOptions);
    std::string csReport = "\n";
    for (const auto& rst : TAB_WALK) {
        ASSERT_TRUE(clGallery.bPress(rst.pszKeys));
        csReport += std::string(rst.pszReport) + "\n";
    }
    EXPECT_EQ(clGallery.nWaitEnd(), 0);
    EXPECT_TRUE(clGallery.bGivenBack());
    if (rstOptions.nColumns >= 80) {
        EXPECT_TRUE(clGallery.bShows(csReport)) << clGallery.csText();
    }
}

TEST(Gallery, IsWalkedThrough) {
    ExpectWalk({});
}

// Where hardly anything can be seen the keys still work.
TEST(Gallery, IsWalkedThroughOnEveryTerminal) {
    const Terminal::STOptions TAB[] = {
        {"tmux-256color"},  {"xterm", 132, 50}, {"xterm-color"},   {"vt100"},
        {"vt220", 100, 30}, {"linux", 80, 25},  {"xterm", 40, 12}, {"xterm", 20, 7},
        {"xterm", 8, 4},    {"xterm", 3, 2},    {"xterm", 2, 1},   {"xterm", 1, 1},
    };
    for (const Terminal::STOptions& rst : TAB) {
        ExpectWalk(rst);
    }
}

}  // namespace
}  // namespace kalmo
