#include <gtest/gtest.h>

#include <filesystem>

#include "testkit/tui_terminal.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;

const std::string TREE = "/t";

// A tree to walk through.
class Directory : public testing::Test {
  protected:
    void SetUp() override {
        // ".-hidden" would come before ".." if that were a name like the others.
        for (const char* psz : {"alpha/inner", "Beta", "beta2", "Zeta", ".-hidden", "with blank", "日本語",
                                "bad\xff/seen", "locked/unseen", "e\u0301"}) {
            fs::create_directories(TREE + "/" + psz);
        }
        fs::create_directory_symlink("alpha", TREE + "/link");
        fs::create_symlink("nowhere", TREE + "/dangling");
        fs::create_symlink("/etc/passwd", TREE + "/link to file");
        fs::copy("/etc/passwd", TREE + "/file");
        fs::permissions(TREE + "/locked", fs::perms::none);
    }
    void TearDown() override { fs::remove_all(TREE); }
};

// The chooser, run by somebody who may not read everything.
std::vector<std::string> tabCommand(const std::string& rcsPath) {
    return {"setpriv",     "--reuid=65534", "--regid=65534", "--clear-groups",
            KALMO_GALLERY, "directory",     rcsPath};
}

// What stands in the path field of a chooser 64 columns wide on 80 by 24, or on a row of its list.
std::string csLine(const CTuiTerminal& rcl, int nRow) {
    const std::string cs = rcl.csText(nRow, 12, 53);
    return cs.substr(0, cs.find_last_not_of(' ') + 1);
}

// Path and, behind a blank, the selected line.
std::string csChosen(const CTuiTerminal& rcl) {
    for (int nRow = 9; nRow < 14; ++nRow) {
        const std::string csLook = rcl.csLooks(nRow, 12, 1);
        if (csLook == "s" || csLook == "r") {
            return csLine(rcl, 5) + " " + csLine(rcl, nRow);
        }
    }
    return "nothing";
}

TEST_F(Directory, ListsWhatIsThere) {
    CTuiTerminal clTerminal(tabCommand(TREE + "/"));
    ASSERT_TRUE(clTerminal.bPress("Tab"));
    for (const char* psz : {"..", ".-hidden", "alpha", "bad?", "Beta", "beta2", "e\u0301", "link", "locked",
                            "with blank", "Zeta", "日本語", "日本語"}) {
        EXPECT_EQ(csChosen(clTerminal), TREE + "/ " + psz);
        ASSERT_TRUE(clTerminal.bPress("Down"));
    }
}

TEST_F(Directory, IsWalkedWithKeys) {
    const struct {
        const char* pszStart;
        const char* pszKeys;
        const char* pszChosen;
    } TAB[] = {
        // Type-ahead: case-sensitive, the first line that begins so, or else the first line.
        {"/t/", "b e", "/t/be beta2"},
        {"/t/", "z", "/t/z .."},
        {"/t/wix", "Backspace", "/t/wi with blank"},
        {"/t/al", "Delete Left Delete", "/t/a alpha"},
        // Above a path without "/" at its start there is nothing to go to.
        {"usr/lo", "Tab Enter", "usr/lo .."},
        // White space cannot be typed.
        {"/t/with", "Space", "/t/with_ .."},
        // An edit of the directory lists it anew, and so does a "/".
        {"/t/alpha", "/", "/t/alpha/ .."},
        {"/t/alpha/", "Backspace", "/t/alpha alpha"},
        // Into a directory and out again.
        {"/t/", "Tab Down*2 Space", "/t/alpha/ .."},
        {"/t/wi", "h Backspace Tab Enter", "/t/with blank/ .."},
        {"/t/l", "i Tab Enter Down", "/t/link/ inner"},
        {"/t/b", "a Tab Enter Down", "/t/bad?/ seen"},
        {"/t/l", "o Tab Enter Down", "/t/locked/ .."},
        // The top has nothing above it; its "/" stays.
        {"/usr/", "Tab Enter", "/ bin"},
        {"/", "Backspace Left Tab Up", "/ bin"},
        // Without a "/" the top is listed, and typing selects the first line.
        {"x", "Backspace b o", "bo bin"},
        {"x", "Backspace Tab Down Up Enter", "/bin/ .."},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clTerminal(tabCommand(rst.pszStart));
        ASSERT_TRUE(clTerminal.bPress(rst.pszKeys));
        EXPECT_EQ(csChosen(clTerminal), rst.pszChosen) << rst.pszStart << ' ' << rst.pszKeys;
    }
}

TEST_F(Directory, HoldsTenThousandDirectories) {
    for (int n = 0; n < 10'000; ++n) {
        fs::create_directory(TREE + "/Beta/d" + std::to_string(10'000 + n));
    }
    CTuiTerminal clTerminal(tabCommand(TREE + "/Beta/"));
    ASSERT_TRUE(clTerminal.bPress("d 19999"));
    EXPECT_EQ(csChosen(clTerminal), TREE + "/Beta/d19999 d19999");
    EXPECT_EQ(csLine(clTerminal, 9), "d19995");  // the last page
    ASSERT_TRUE(clTerminal.bPress("Tab Up*5"));
    EXPECT_EQ(csChosen(clTerminal), TREE + "/Beta/d19999 d19994");
}

}  // namespace
}  // namespace kalmo
