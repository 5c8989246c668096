#include <gtest/gtest.h>

#include "tests/gallery/gallery.h"

namespace kalmo {
namespace {

TEST(License, LooksLikeThis) {
    CGallery clGallery({"license"}, {.nColumns = 50, .nRows = 20});
    ASSERT_TRUE(clGallery.bSettle());
    EXPECT_EQ(clGallery.csText(), R"(


  +-------------------------------------------+
  | Licence agreement                         |
  |+-----------------------------------------+|
  ||SAMPLE LICENCE                           ||
  ||                                         ||
  ||1. This licence shows how a long text is ||
  ||read: line by line or page by page, and  ||
  ||how it can be accepted only when its     ||
  |+-----------------------------------------+|
  |                                           |
  |      +---------+        +---------+       |
  |      |I accept |        |I refuse |       |
  |      +---------+        +---------+       |
  |                                           |
  +-------------------------------------------+
)");
    EXPECT_EQ(clGallery.clScreen().csLooks(LEGEND), R"(
..................................................
..................................................
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwww...
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwwwn..
..wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwn..
..wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwn..
..wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwn..
..wwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwwwwnnnnnnnnnnnwwwwwwwwbbbbbbbbbbbwwwwwwwwn..
..wwwwwwwnnnnnnnnnnnnwwwwwwwbbbbbbbbbbbnwwwwwwwn..
..wwwwwwwnnnnnnnnnnnnwwwwwwwbbbbbbbbbbbnwwwwwwwn..
..wwwwwwwwnnnnnnnnnnnwwwwwwwwnnnnnnnnnnnwwwwwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
...nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn..
..................................................
..................................................
)");
}

TEST(License, IsAcceptedOnlyAtItsEnd) {
    const char* const SHORT = "Do what you like.";
    const struct {
        std::vector<std::string> tabArgument;
        std::vector<std::string_view> tabKey;
        std::string csReport;
    } TAB[] = {
        // The text has the focus first; Tab leads past the disabled button.
        {{"license"}, {"Enter", "Tab", "Enter"}, "license: refused"},
        {{"license"}, {"Down", "Tab", "Enter"}, "license: refused"},
        {{"license"},
         {"Down", "PageDown", "PageDown", "PageDown", "Up", "PageUp", "Tab", "Enter"},
         "license: accepted"},
        {{"license"}, {"PageDown", "PageDown", "PageDown", "Tab", "Tab", "Enter"}, "license: refused"},
        {{"license", SHORT}, {"Enter"}, "license: accepted"},
        {{"license", SHORT}, {"Tab", "Enter"}, "license: refused"},
        {{"license", SHORT}, {"Tab", "Tab", "Enter"}, "license: accepted"},
    };
    for (const auto& rst : TAB) {
        CGallery clGallery(rst.tabArgument);
        ASSERT_TRUE(clGallery.bTypeAll(rst.tabKey));
        EXPECT_EQ(clGallery.nWaitEnd(), 0);
        EXPECT_EQ(clGallery.csText(), "\n" + rst.csReport + "\n") << testing::PrintToString(rst.tabKey);
    }
}

TEST(License, CannotBeAcceptedUnseen) {
    for (const auto& [nColumns, nRows] : {std::pair(80, 15), std::pair(10, 24)}) {
        CGallery clGallery({"license"}, {.nColumns = nColumns, .nRows = nRows});
        ASSERT_TRUE(clGallery.bTypeAll({"PageDown", "PageDown", "PageDown", "Tab", "Enter"}));
        EXPECT_EQ(clGallery.nWaitEnd(), 0);
        EXPECT_NE(clGallery.csText().find("license: r"), std::string::npos) << nColumns << "x" << nRows;
    }
}

TEST(License, KeepsLinesAndIndents) {
    CGallery clGallery({"license", "One.\r\n\r\n  two   " + std::string(75, 'x') + "\nthree"});
    ASSERT_TRUE(clGallery.bSettle());
    EXPECT_NE(clGallery.csText().find(R"(
  ||One.                                                                   ||
  ||                                                                       ||
  ||  two                                                                  ||
  ||xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx ||
  ||xxxxx                                                                  ||
  ||three                                                                  ||
)"),
              std::string::npos)
        << clGallery.csText();
}

}  // namespace
}  // namespace kalmo
