#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/gallery/gallery.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;

const std::string TREE = "/tmp/kalmo-tree";

// A tree to walk through.
class Directory : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(fs::create_directory(TREE));
        for (const char* psz : {"alpha/inner", "Beta", "beta2", "Zeta", ".hidden", "with blank", "日本語",
                                "bad\xff/seen", "locked/unseen", "e\u0301"}) {
            fs::create_directories(TREE + "/" + psz);
        }
        fs::create_directory_symlink("alpha", TREE + "/link");
        fs::create_symlink("nowhere", TREE + "/dangling");
        fs::create_symlink("file", TREE + "/link to file");
        ::close(::creat((TREE + "/file").c_str(), 0644));
        ASSERT_EQ(::chmod((TREE + "/locked").c_str(), 0), 0);
    }
    void TearDown() override { fs::remove_all(TREE); }

    // The chooser, run by somebody who may not read everything.
    std::vector<std::string> tabCommand(const std::string& rcsPath) const {
        std::vector<std::string> tab = CGallery::tabCommand({"directory", rcsPath});
        if (::geteuid() == 0) {
            tab.insert(tab.begin(), {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
        }
        return tab;
    }
};

// The cells of a row between two columns, without trailing blanks.
std::string csCells(const Terminal& rcl, int nRow, int nFirst, int nLast) {
    std::string cs;
    for (int nColumn = nFirst; nColumn <= nLast; ++nColumn) {
        cs += rcl.clScreen().stCell(nRow, nColumn).csText;
    }
    return cs.substr(0, cs.find_last_not_of(' ') + 1);
}

// What stands in the path field of a chooser 64 columns wide on 80 by 24.
std::string csPath(const Terminal& rcl) {
    return csCells(rcl, 5, 12, 64);
}

// The selected line of its list.
std::string csSelected(const Terminal& rcl) {
    for (int nRow = 9; nRow < 14; ++nRow) {
        const STLook stLook = rcl.clScreen().stCell(nRow, 12).stLook;
        if (stLook.nBackground == 4 || stLook.bReverse) {
            return csCells(rcl, nRow, 12, 65);
        }
    }
    return "nothing";
}

TEST_F(Directory, LooksLikeThis) {
    Terminal clTerminal(tabCommand(TREE + "/"), {.nColumns = 54, .nRows = 24});
    ASSERT_TRUE(clTerminal.bSettle());
    EXPECT_EQ(clTerminal.clScreen().stCursor(), (STCursor{5, 22, true, true}));
    EXPECT_EQ(clTerminal.csText(), R"(


  +-----------------------------------------------+
  | Choose a directory                            |
  |  +----------------------------------------+   |
  |  |/tmp/kalmo-tree/                        |   |
  |  +----------------------------------------+   |
  |                                               |
  |  +-----------------------------------------+  |
  |  |..                                       |  |
  |  |.hidden                                  |  |
  |  |alpha                                    |  |
  |  |bad?                                     |  |
  |  |Beta                                     |  |
  |  +-----------------------------------------+  |
  |                                               |
  |         +-------+           +-------+         |
  |         |  OK   |           |Cancel |         |
  |         +-------+           +-------+         |
  |                                               |
  +-----------------------------------------------+
)");
    EXPECT_EQ(clTerminal.clScreen().csLooks(LEGEND), R"(
......................................................
......................................................
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwww...
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwnwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwnwwwn..
..wwwwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwssnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnwwwwwn..
..wwwwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwwwn..
..wwwwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwwwn..
..wwwwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwwwn..
..wwwwnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnswwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
..wwwwwwwwwwbbbbbbbbbwwwwwwwwwwwbbbbbbbbbwwwwwwwwwwn..
..wwwwwwwwwwbbbbbbbbbnwwwwwwwwwwbbbbbbbbbnwwwwwwwwwn..
..wwwwwwwwwwbbbbbbbbbnwwwwwwwwwwbbbbbbbbbnwwwwwwwwwn..
..wwwwwwwwwwwnnnnnnnnnwwwwwwwwwwwnnnnnnnnnwwwwwwwwwn..
..wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwn..
...nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn..
......................................................
......................................................
)");
}

TEST_F(Directory, ListsWhatIsThere) {
    Terminal clTerminal(tabCommand(TREE + "/"), {});
    ASSERT_TRUE(clTerminal.bType({"Tab"}));
    for (const char* psz : {"..", ".hidden", "alpha", "bad?", "Beta", "beta2", "e\u0301", "link", "locked",
                            "with blank", "Zeta", "日本語", "日本語"}) {
        EXPECT_EQ(csSelected(clTerminal), psz);
        ASSERT_TRUE(clTerminal.bType({"Down"}));
    }
}

TEST_F(Directory, IsWalkedWithKeys) {
    const struct {
        std::string csStart;
        std::vector<std::string_view> tabKey;
        std::string csPath;
        std::string csSelected;
    } TAB[] = {
        // Type-ahead: case-sensitive, the first line that begins so, or else the first line.
        {TREE + "/", {"a"}, TREE + "/a", "alpha"},
        {TREE + "/", {"b", "e"}, TREE + "/be", "beta2"},
        {TREE + "/", {"B"}, TREE + "/B", "Beta"},
        {TREE + "/", {"z"}, TREE + "/z", ".."},
        {TREE + "/", {"w", "i", "x"}, TREE + "/wix", ".."},
        {TREE + "/wix", {"Backspace"}, TREE + "/wi", "with blank"},
        {TREE + "/al", {"Delete", "Left", "Delete"}, TREE + "/a", "alpha"},
        // Above a path without "/" at its start there is nothing to go to.
        {"usr/lo", {"Tab", "Enter"}, "usr/lo", ".."},
        // White space cannot be typed.
        {TREE + "/with", {" "}, TREE + "/with_", ".."},
        // An edit of the directory lists it anew, and so does a "/".
        {TREE + "/alpha", {"/"}, TREE + "/alpha/", ".."},
        {TREE + "/alpha/", {"i"}, TREE + "/alpha/i", "inner"},
        {TREE + "/alpha/", {"Backspace"}, TREE + "/alpha", "alpha"},
        {TREE + "/alpha/inner",
         {"Left", "Left", "Left", "Left", "Left", "Left", "Backspace", "x"},
         TREE + "/alphx/inner",
         ".."},
        // Into a directory and out again.
        {TREE + "/", {"Tab", "Down", "Down", " "}, TREE + "/alpha/", ".."},
        {TREE + "/alpha/", {"Tab", "Enter"}, TREE + "/", ".."},
        {TREE + "/al", {"Tab", "Down", "Down", "Enter", "Down", "Enter"}, TREE + "/alpha/inner/", ".."},
        {TREE + "/wi", {"h", "Backspace", "Tab", "Enter"}, TREE + "/with blank/", ".."},
        {TREE + "/", {"日", "Tab", "Enter"}, TREE + "/日本語/", ".."},
        {TREE + "/l", {"i", "Tab", "Enter", "Down"}, TREE + "/link/", "inner"},
        {TREE + "/b", {"a", "Tab", "Enter", "Down"}, TREE + "/bad?/", "seen"},
        {TREE + "/l", {"o", "Tab", "Enter", "Down"}, TREE + "/locked/", ".."},
        {TREE + "/nowhere/", {"Tab", "Down", "Enter"}, TREE + "/", ".."},
        // The top has nothing above it; its "/" stays.
        {"/usr/", {"Tab", "Enter"}, "/", "bin"},
        {"/", {"Backspace", "Left", "Tab", "Up"}, "/", "bin"},
        {"/", {"Left", "u", "s"}, "/us", "usr"},
        // Without a "/" the top is listed, and typing selects the first line.
        {"x", {"Backspace", "b", "o"}, "bo", "bin"},
        {"x", {"Backspace", "Tab", "Down", "Up", "Enter"}, "/bin/", ".."},
    };
    for (const auto& rst : TAB) {
        Terminal clTerminal(tabCommand(rst.csStart), {});
        for (const std::string_view sv : rst.tabKey) {
            ASSERT_TRUE(clTerminal.bType({sv}));
        }
        EXPECT_EQ(csPath(clTerminal), rst.csPath) << rst.csStart << testing::PrintToString(rst.tabKey);
        EXPECT_EQ(csSelected(clTerminal), rst.csSelected)
            << rst.csStart << testing::PrintToString(rst.tabKey);
    }
}

TEST_F(Directory, ReturnsThePath) {
    const struct {
        std::vector<std::string_view> tabKey;
        std::string csReport;
    } TAB[] = {
        {{"Enter"}, "directory: result 1, " + TREE + "/x"},
        {{"y", "KeypadEnter"}, "directory: result 1, " + TREE + "/xy"},
        {{"Tab", "Tab", "Enter"}, "directory: result 1, " + TREE + "/x"},
        {{"Tab", "Tab", "Tab", " "}, "directory: result 0, " + TREE + "/x"},
        {{"Tab", "Tab", "Tab", "Tab", "Enter"}, "directory: result 1, " + TREE + "/x"},
    };
    for (const auto& rst : TAB) {
        Terminal clTerminal(tabCommand(TREE + "/x"), {});
        for (const std::string_view sv : rst.tabKey) {
            ASSERT_TRUE(clTerminal.bType({sv}));
        }
        EXPECT_EQ(clTerminal.nWaitEnd(), 0);
        EXPECT_EQ(clTerminal.csText(), "\n" + rst.csReport + "\n");
    }
}

TEST_F(Directory, HoldsTenThousandDirectories) {
    for (int n = 0; n < 10'000; ++n) {
        ASSERT_EQ(::mkdir((TREE + "/Beta/d" + std::to_string(10'000 + n)).c_str(), 0755), 0);
    }
    Terminal clTerminal(tabCommand(TREE + "/Beta/"), {});
    ASSERT_TRUE(clTerminal.bType({"d", "19999"}));
    EXPECT_EQ(csSelected(clTerminal), "d19999");
    EXPECT_EQ(csCells(clTerminal, 9, 12, 64), "d19995");  // The last page.
    ASSERT_TRUE(clTerminal.bType({"Tab", "Up", "Up", "Up", "Up", "Up"}));
    EXPECT_EQ(csSelected(clTerminal), "d19994");
    EXPECT_EQ(csCells(clTerminal, 9, 12, 64), "d19994");
}

}  // namespace
}  // namespace kalmo
