#include <gtest/gtest.h>
#include <signal.h>

#include "tests/gallery/gallery.h"

namespace kalmo {
namespace {

// Every control is used once. "Next" of the check boxes is behind two boxes, that of the entries behind four
// fields, of which the disabled one is skipped.
const std::vector<std::string_view> WALK{
    "Enter",     "Tab",   "Enter",     " ",     "Tab",   "Enter",                             // buttons
    "Enter",     "Enter", "Tab",       " ",     "Tab",   "Enter",                             // check boxes
    "X",         "Enter", "Backspace", "1",     "Enter", "Y",     "Enter", "Enter", "Enter",  // entries
    "Enter",     " ",     "Tab",       "Enter",                                               // gauge
    "Down",      "Right", "Enter",     "Up",    " ",     "Tab",   "Tab",   "Enter",           // lists
    "Down",      "Enter", "Enter",                                                            // radio list
    "Left",      "Right", "Right",     "Tab",   "Enter",                                      // own control
    "PageDown",  "Down",  "Tab",       "Enter",                                               // text
    "Enter",                                                                                  // message
    "Tab",       "Enter",                                                                     // question
    "Backspace", "Enter",                                                                     // directory
    "Tab",       "Enter",                                                                     // license
};
constexpr const char* PSZ_REPORT = R"(
buttons: the other button was pressed 2 times
check-boxes: a verified backup
entries: ServerX, 4901, rooty, without a frame
gauge: 2 steps
lists: 2 chosen: A line that is longer than the list is wide, Line 2
radio-list: option 2
own-control: 3
text: not read to the end
message: result 0
question: result 2
directory: result 1, /usr
license: refused
)";

void ExpectWalk(const Terminal::STOptions& rstOptions) {
    CGallery clGallery({}, rstOptions);
    ASSERT_TRUE(clGallery.bTypeAll(WALK));
    EXPECT_EQ(clGallery.nWaitEnd(), 0);
    EXPECT_TRUE(clGallery.bRestored());
    EXPECT_NE(clGallery.csText().find(PSZ_REPORT), std::string::npos) << clGallery.csText();
}

TEST(Gallery, IsWalkedThrough) {
    ExpectWalk({});
}

TEST(Gallery, IsWalkedThroughOnEveryTerminal) {
    const struct {
        const char* pszType;
        int nColumns;
        int nRows;
    } TAB[] = {{"tmux-256color", 80, 24}, {"xterm", 132, 50}, {"xterm-color", 80, 24},
               {"vt100", 80, 24},         {"vt220", 100, 30}, {"linux", 80, 25}};
    for (const auto& rst : TAB) {
        SCOPED_TRACE(rst.pszType);
        ExpectWalk({.csType = rst.pszType, .nColumns = rst.nColumns, .nRows = rst.nRows});
    }
}

// Where hardly anything can be seen the keys still work.
TEST(Gallery, SurvivesTheSmallestTerminals) {
    for (const auto& [nColumns, nRows] : {std::pair{40, 12}, {20, 7}, {8, 4}, {3, 2}, {2, 1}, {1, 1}}) {
        SCOPED_TRACE(std::to_string(nColumns) + " by " + std::to_string(nRows));
        CGallery clGallery({}, {.nColumns = nColumns, .nRows = nRows});
        ASSERT_TRUE(clGallery.bTypeAll(WALK));
        EXPECT_EQ(clGallery.nWaitEnd(), 0);
        EXPECT_TRUE(clGallery.bRestored());
    }
}

TEST(Gallery, IsWholeAgainAfterEveryChangeOfSize) {
    for (const char* pszScreen : {"entries", "lists", "question", "directory", "license"}) {
        SCOPED_TRACE(pszScreen);
        CGallery clGallery({pszScreen});
        ASSERT_TRUE(clGallery.bSettle());
        const std::string csText = clGallery.csText();
        const std::string csLooks = clGallery.clScreen().csLooks(LEGEND);
        for (const auto& [nColumns, nRows] :
             {std::pair{1, 1}, {132, 50}, {30, 3}, {2, 40}, {79, 23}, {80, 24}}) {
            clGallery.Resize(nColumns, nRows);
            ASSERT_TRUE(clGallery.bSettle());
        }
        ASSERT_TRUE(clGallery.bType({"Left"}));
        EXPECT_EQ(clGallery.csText(), csText);
        EXPECT_EQ(clGallery.clScreen().csLooks(LEGEND), csLooks);
    }
}

TEST(Gallery, GivesTheTerminalBackWhateverEndsIt) {
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGSEGV, SIGABRT}) {
        SCOPED_TRACE(nSignal);
        CGallery clGallery({"entries"}, {.tabEnvironment = {"ASAN_OPTIONS=handle_segv=0:handle_abort=0"}});
        ASSERT_TRUE(clGallery.bType({"x"}));
        EXPECT_FALSE(clGallery.bRestored());
        clGallery.Signal(nSignal);
        EXPECT_EQ(clGallery.nWaitEnd(), 128 + nSignal);
        EXPECT_TRUE(clGallery.bRestored());
    }
    CGallery clGallery({"question"});
    ASSERT_TRUE(clGallery.bType({"\x03"}));
    EXPECT_EQ(clGallery.nWaitEnd(), 128 + SIGINT);
    EXPECT_TRUE(clGallery.bRestored());
}

// Without input every dialog ends as if it had been cancelled, and the walk with it.
TEST(Gallery, EndsWithItsInput) {
    const struct {
        const char* pszCommand;
        const char* pszReport;
    } TAB[] = {{"$0 question </dev/null", "\nquestion: result 2\n"},
               {"$0 directory /usr/ <&-", "\ndirectory: result 0, /usr/\n"},
               {"$0 license </dev/null", "\nlicense: refused\n"}};
    for (const auto& rst : TAB) {
        Terminal clTerminal({"sh", "-c", rst.pszCommand, KALMO_GALLERY});
        EXPECT_EQ(clTerminal.nWaitEnd(), 0);
        EXPECT_EQ(clTerminal.csText(), rst.pszReport);
    }
    Terminal clTerminal({"sh", "-c", "trap '' HUP; exec $0", KALMO_GALLERY});
    ASSERT_TRUE(clTerminal.bType({"Enter"}));
    clTerminal.HangUp();
    EXPECT_EQ(clTerminal.nWaitEnd(), 0);
}

TEST(Gallery, TellsItsUsage) {
    for (const char* pszCommand : {"$0 nonsense", "$0 message a b"}) {
        Terminal clTerminal({"sh", "-c", pszCommand, KALMO_GALLERY});
        EXPECT_EQ(clTerminal.nWaitEnd(), 2);
        EXPECT_EQ(clTerminal.csText(), "\nusage: gallery [SCREEN [ARGUMENT] | --list]\n");
    }
}

}  // namespace
}  // namespace kalmo
