#include <gtest/gtest.h>

#include <cstdlib>

#include "testkit/tui_terminal.h"

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

TEST(Gallery, IsWalkedThrough) {
    const char* const pszWrapper = std::getenv("GALLERY_WRAPPER");  // runs the gallery under this command
    CTuiTerminal clGallery((pszWrapper == nullptr ? "" : pszWrapper + std::string(" ")) + KALMO_GALLERY);
    std::string csReport = "\n";
    for (const auto& rst : TAB_WALK) {
        ASSERT_TRUE(clGallery.bPress(rst.pszKeys));
        csReport += std::string(rst.pszReport) + "\n";
    }
    EXPECT_EQ(clGallery.nWaitEnd(), 0);
    EXPECT_TRUE(clGallery.bGivenBack());
    EXPECT_TRUE(clGallery.bShows(csReport)) << clGallery.csText();
}

std::vector<std::string> tabCommand(std::vector<std::string> tabArgument) {
    tabArgument.insert(tabArgument.begin(), KALMO_GALLERY);
    return tabArgument;
}

TEST(Dialogs, ReturnWhatWasPressed) {
    const std::string csLong = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13";
    const struct {
        std::vector<std::string> tabArgument;
        const char* pszKeys;
        const char* pszReport;
        int nColumns = 80;
        int nRows = 24;
        int nColumnsThen = 0;  ///< What the screen is changed to before the keys, unless 0.
        int nRowsThen = 0;
    } TAB[] = {
        {{"message"}, "x Escape Up Tab*2 Space", "message: result 0"},
        {{"question"}, "Enter", "question: result 1"},
        {{"question"}, "Tab Space", "question: result 2"},
        {{"question", csLong}, "Tab*2 Enter Tab*2 Enter", "question: result 2"},
        // The licence's text has the focus first; Tab leads past the disabled button.
        {{"license"}, "Enter Tab Enter", "license: refused"},
        {{"license"}, "Down PageDown*3 Up PageUp Tab Enter", "license: accepted"},
        {{"license", csLong.substr(0, 17)}, "Enter", "license: accepted"},  // 9 lines, just what fits
        {{"license", csLong.substr(0, 20)}, "Enter Tab Enter", "license: refused"},
        {{"license"}, "Down*30 Tab Enter", "license: refused", 80, 15},  // nothing of it could be seen
        // The last line of the text is or is not on what is left of the screen.
        {{"license"}, "PageDown*3 Tab Enter", "license: refused", 80, 24, 80, 13},
        {{"license"}, "PageDown*3 Tab Enter", "license: accepted", 80, 24, 80, 14},
        {{"license"}, "PageDown*3 Tab Enter", "license: refused", 80, 24, 77, 24},
        {{"license"}, "PageDown*3 Tab Enter", "license: accepted", 80, 24, 78, 24},
        {{"directory", "/no/x"}, "y KeypadEnter", "directory: result 1, /no/xy"},
        {{"directory", "/no/x"}, "Tab*3 Space", "directory: result 0, /no/x"},
        {{"radio-list"}, "Up Space Tab*2 Space", "radio-list: cancelled"},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clGallery(
            tabCommand(rst.tabArgument),
            {.nColumns = rst.nColumns, .nRows = rst.nRows, .tabEnvironment = {"ESCDELAY=10"}});
        if (rst.nColumnsThen != 0) {
            clGallery.Resize(rst.nColumnsThen, rst.nRowsThen);
        }
        EXPECT_TRUE(clGallery.bPress(rst.pszKeys));
        EXPECT_EQ(clGallery.csReport(), rst.pszReport) << rst.pszKeys;
    }
}

TEST(Dialogs, ShowTheirTexts) {
    const struct {
        std::vector<std::string> tabArgument;
        const char* pszKeys;
        const char* pszShown;
        int nRows = 24;
    } TAB[] = {
        {{"message", std::string(60, 'a') + "\nzwei\n日本語\x1b[2J\n4\n5"},
         "Tab Down PageDown Up",
         "||zwei                                                   ||\n"
         "          ||日本語?[2J                                             ||\n"
         "          ||4                                                      ||\n",
         17},
        {{"license", "One.\r\n\r\n  two   " + std::string(75, 'x') + "\nthree"},
         "",
         R"(
  ||One.                                                                   ||
  ||                                                                       ||
  ||  two                                                                  ||
  ||xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx ||
  ||xxxxx                                                                  ||
  ||three                                                                  ||
)"},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clGallery(tabCommand(rst.tabArgument), {.nRows = rst.nRows});
        ASSERT_TRUE(clGallery.bPress(rst.pszKeys));
        EXPECT_TRUE(clGallery.bShows(rst.pszShown)) << clGallery.csText();
    }
}

// Without input every dialog ends as if it had been cancelled. Without a terminal a box goes to standard
// error, with not one control sequence.
TEST(Dialogs, EndWithoutInputAndWithoutATerminal) {
    const char* const NO_TERMINAL = "\nGallery\nThe gallery needs a terminal.\n";
    const struct {
        const char* pszCommand;
        const char* pszType;
        const char* pszShown;
    } TAB[] = {
        {"$0 directory /usr/ <&-", "xterm", "\ndirectory: result 0, /usr/\n"},
        {"$0 license </dev/null", "xterm", "\nlicense: refused\n"},
        {"$0 radio-list </dev/null", "xterm", "\nradio-list: cancelled\n"},
        {"$0 message", "unheard-of", NO_TERMINAL},
        {"unset TERM; $0 message", "xterm", NO_TERMINAL},
        {"$0 message | cat", "xterm", NO_TERMINAL},
        {"$0 nonsense", "xterm", "\nusage: gallery [SCREEN [ARGUMENT] | --list]\n"},
    };
    for (const auto& rst : TAB) {
        Terminal clTerminal({"sh", "-c", rst.pszCommand, KALMO_GALLERY}, {.csType = rst.pszType});
        clTerminal.nWaitEnd();
        EXPECT_EQ(clTerminal.csText(), rst.pszShown) << rst.pszCommand;
        EXPECT_EQ(rst.pszShown == NO_TERMINAL, clTerminal.u64Received() == 40) << rst.pszCommand;
        EXPECT_TRUE(clTerminal.bCooked());
    }
}

}  // namespace
}  // namespace kalmo
