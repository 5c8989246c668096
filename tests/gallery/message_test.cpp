#include <gtest/gtest.h>

#include "tests/gallery/gallery.h"

namespace kalmo {
namespace {

TEST(MessageBox, LooksLikeThis) {
    CGallery clGallery({"question"}, {.nColumns = 66, .nRows = 17});
    ASSERT_TRUE(clGallery.bSettle());
    EXPECT_EQ(clGallery.csText(), R"(


   +---------------------------------------------------------+
   |+Installation-------------------------------------------+|
   ||This directory holds a server already.                 ||
   ||Upgrade it?                                            ||
   ||                                                       ||
   |+-------------------------------------------------------+|
   |                                                         |
   |           +---------+             +---------+           |
   |           |   Yes   |             |   No    |           |
   |           +---------+             +---------+           |
   |                                                         |
   +---------------------------------------------------------+
)");
    EXPECT_EQ(clGallery.clScreen().csLooks(LEGEND), R"(
..................................................................
..................................................................
...wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwww....
...wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn...
...wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwwn...
...wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwwn...
...wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwwn...
...wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn...
...wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn...
...wwwwwwwwwwwwbbbbbbbbbbbwwwwwwwwwwwwwbbbbbbbbbbbwwwwwwwwwwwwn...
...wwwwwwwwwwwwbBBBBBBBBBbnwwwwwwwwwwwwbbbbbbbbbbbnwwwwwwwwwwwn...
...wwwwwwwwwwwwbbbbbbbbbbbnwwwwwwwwwwwwbbbbbbbbbbbnwwwwwwwwwwwn...
...wwwwwwwwwwwwwnnnnnnnnnnnwwwwwwwwwwwwwnnnnnnnnnnnwwwwwwwwwwwn...
...wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn...
....nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...
..................................................................
..................................................................
)");
    EXPECT_FALSE(clGallery.clScreen().stCursor().bVisible);
}

TEST(MessageBox, ReturnsTheButton) {
    const char* const LONG = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13";
    const struct {
        std::vector<std::string> tabArgument;
        std::vector<std::string_view> tabKey;
        std::string csReport;
    } TAB[] = {
        {{"message"}, {"Enter"}, "message: result 0"},
        {{"message"}, {"x", "Escape", "Up", "Tab", "Tab", " "}, "message: result 0"},
        {{"message", LONG}, {"Tab", "Enter", "PageDown", "Tab", "KeypadEnter"}, "message: result 0"},
        {{"question"}, {"Enter"}, "question: result 1"},
        {{"question"}, {"Tab", " "}, "question: result 2"},
        {{"question"}, {"Tab", "Tab", "Enter"}, "question: result 1"},
        {{"question", LONG}, {"Tab", "Tab", "Enter", "Tab", "Tab", "Enter"}, "question: result 2"},
    };
    for (const auto& rst : TAB) {
        CGallery clGallery(rst.tabArgument, {.tabEnvironment = {"ESCDELAY=10"}});
        ASSERT_TRUE(clGallery.bTypeAll(rst.tabKey));
        EXPECT_EQ(clGallery.nWaitEnd(), 0);
        EXPECT_EQ(clGallery.csText(), "\n" + rst.csReport + "\n");
    }
}

TEST(MessageBox, ScrollsATextThatIsTooLong) {
    CGallery clGallery({"message", std::string(60, 'a') + "\nzwei\n日本語\x1b[2J\n4\n5"}, {.nRows = 17});
    ASSERT_TRUE(clGallery.bType({"Tab", "Down", "PageDown", "Up"}));
    const std::string csScreen = clGallery.csText();
    EXPECT_NE(csScreen.find("||zwei                                                   ||\n"
                            "          ||日本語?[2J                                             ||\n"
                            "          ||4                                                      ||\n"),
              std::string::npos)
        << csScreen;
}

TEST(MessageBox, SpeaksTheOperatorsLanguage) {
    const struct {
        const char* pszLanguage;
        const char* pszButtons;
    } TAB[] = {
        {"LC_ALL=fr_FR.UTF-8", "|   Oui   |             |   Non   |"},
        {"LC_ALL=es_ES.UTF-8", "|   Sí    |             |   No    |"},
        {"LC_ALL=de_DE.UTF-8", "|   Yes   |             |   No    |"},
    };
    for (const auto& rst : TAB) {
        CGallery clGallery({"question"}, {.tabEnvironment = {rst.pszLanguage}});
        ASSERT_TRUE(clGallery.bSettle());
        EXPECT_NE(clGallery.csText().find(rst.pszButtons), std::string::npos) << clGallery.csText();
    }
}

TEST(MessageBox, GoesToStandardErrorWithoutATerminal) {
    const struct {
        const char* pszCommand;
        const char* pszType;
    } TAB[] = {{"exec $0 message", "unheard-of"},
               {"exec $0 message", "dumb"},
               {"unset TERM; exec $0 message", "xterm"},
               {"$0 message | cat", "xterm"}};
    for (const auto& rst : TAB) {
        Terminal clTerminal({"sh", "-c", rst.pszCommand, KALMO_GALLERY}, {.csType = rst.pszType});
        clTerminal.nWaitEnd();
        EXPECT_EQ(clTerminal.csText(), "\nGallery\nThe gallery needs a terminal.\n") << rst.pszType;
        EXPECT_EQ(clTerminal.u64Received(), 40U) << rst.pszType;  // Not one control sequence.
    }
}

}  // namespace
}  // namespace kalmo
