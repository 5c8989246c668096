#include <gtest/gtest.h>

#include <clocale>

#include "framework/conversion.h"
#include "tests/tui/recorder.h"
#include "tests/tui/scene_terminal.h"
#include "tui/dir_entry.h"
#include "tui/entry_lower.h"
#include "tui/key.h"
#include "tui/num_entry.h"

namespace kalmo {
namespace {

constexpr int L = KEY_LEFT;
constexpr int R = KEY_RIGHT;
constexpr int DEL = KEY_DC;
constexpr int BS = TOUCHE_EFFACE;

struct STCase {
    const wchar_t* pszStart;
    std::initializer_list<int> tabKey;
    const char* pszExpected;  ///< The text with "|" in front of the cursor, then the events.
};

class Entry : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }

    template <class TEntry, class... TArg>
    static std::string csAfter(const STCase& rst, TArg... arg) {
        CRecorder clWindow(0, 0, 40, 10);
        auto* const pcl =
            clWindow.pclAdd<TEntry>(rst.pszStart, 1, 1, 20, 3, L"", CWidget::eBORDER_FRAME, arg...);
        clWindow.Press(rst.tabKey);
        CTString csText = pcl->pszGetText();
        csText.Insert(static_cast<std::size_t>(pcl->nGetCursor()), L"|");
        return std::string(csToUTF8(csText).svGet()) + clWindow.csTakeEvents();
    }
};

TEST_F(Entry, EditsAtTheCursor) {
    const STCase TAB[] = {
        {L"", {'a', ' ', '.', '/', 0xE9, 0x65E5}, "a ./é日|"},
        {L"", {'a', L, 'b'}, "a|b"},        // on the last character: appended
        {L"abc", {L, 'x', 'y'}, "abcx|y"},  // ... and the cursor moves on by one
        {L"abc", {L, L, 'x', 'y'}, "axy|bc"},
        {L"abc", {L, L, L, L, 'x'}, "x|abc"},  // stops at the start
        {L"abc", {R, 'x'}, "abcx|"},           // ... and at the end
        {L"abc", {L, L, R, R, R, R}, "abc|"},
        {L"abc", {BS, KEY_BACKSPACE, BS, BS}, "|"},
        {L"abc", {L, BS}, "a|c"},
        {L"abc", {DEL}, "abc|"},
        {L"abc", {L, L, DEL, DEL, DEL}, "a|"},
        {L"abc", {L, L, L, BS}, "|abc"},  // whose code is a letter's: refused all the same
        {L"a", {L, KEY_BACKSPACE}, "|a"},
        {L"", {KEY_NPAGE, KEY_UP}, "Œă|"},  // taken as the characters of these numbers
        {L"a", {KEY_RESIZE, 27, 7, 0x9B, -1, 0xDC80}, "a|"},
        {L"a", {TOUCHE_ENTREE, KEY_ENTER, 'b'}, "ab| 0:7 0:7"},
    };
    for (const STCase& rst : TAB) {
        EXPECT_EQ(csAfter<CEntry>(rst), rst.pszExpected);
    }
}

TEST_F(Entry, VariantsFilterWhatIsTyped) {
    EXPECT_EQ(csAfter<CNumEntry>({L"4", {'9', 'x', ' ', '.', 0x663, '0'}, ""}), "490|");
    EXPECT_EQ(csAfter<CEntryLower>({L"X", {'A', 'b', 0xC9, '7'}, ""}), "Xabé7|");
}

TEST_F(Entry, MaximumLengthStopsTyping) {
    CRecorder clWindow(0, 0, 40, 10);
    auto* const pcl = clWindow.pclAdd<CEntry>(L"abc", 1, 1, 20, 3, L"", CWidget::eBORDER_FRAME);
    pcl->SetMaxLength(4);
    clWindow.Press({'d', 'e'});
    EXPECT_STREQ(pcl->pszGetText(), L"abcd");
    clWindow.Press({BS, 'f'});
    EXPECT_STREQ(pcl->pszGetText(), L"abcf");
    pcl->SetText(L"beyond");
    EXPECT_EQ(pcl->nGetCursor(), 6);
    pcl->SetMaxLength(-1);
    clWindow.Press({'!'});
    EXPECT_STREQ(pcl->pszGetText(), L"beyond!");
}

TEST_F(Entry, APathTellsWhatChanged) {
    const STCase TAB[] = {
        {L"/usr/", {'l'}, "/usr/l| 0:6"},
        {L"/usr", {'/'}, "/usr/| 0:5"},
        {L"/usr/lib", {L, L, L, L, L, 'x'}, "/usx|r/lib 0:5"},
        {L"/usr/lib", {L, L, L, L, 'x'}, "/usrx|/lib 0:5"},
        {L"/usr/lib", {L, L, L, 'x'}, "/usr/x|lib 0:6"},
        {L"/usr/lib", {' ', '\t'}, "/usr/lib_| 0:6"},
        {L"/usr/l", {BS}, "/usr/| 0:6 0:6"},
        {L"/usr/", {BS}, "/usr| 0:5 0:6"},  // the directory went with its "/"
        {L"/usr/lib", {L, L, L, L, BS}, "/us|/lib 0:5 0:6"},
        {L"/usr/lib", {L, L, L, DEL}, "/usr/|ib 0:6"},
        {L"/usr/lib", {L, L, L, L, DEL}, "/usr|lib 0:5"},
        {L"/a", {DEL}, "/a|"},
        {L"/", {BS, L, BS}, "/|"},  // the guard
        {L"/ab", {L, L, L, L, BS}, "/|ab"},
        {L"ab", {L, L, BS, DEL}, "|b 0:6"},  // nothing to guard
    };
    for (const STCase& rst : TAB) {
        EXPECT_EQ(csAfter<CDirEntry>(rst, 1), rst.pszExpected);
    }
    EXPECT_EQ(csAfter<CDirEntry>({L"/a", {L, L, DEL}, ""}, 0), "|a 0:5");
}

TEST(EntryScreen, ScrollsInsideTheField) {
    CSceneTerminal clTerminal("fields", 60, 16);
    const auto csField = [&](int nRow, int nColumn) {
        return CSceneTerminal::csPart(clTerminal.csText(), nRow, nColumn, 14);
    };
    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Tab", "56789ab"}));
    EXPECT_EQ(csField(7, 3), "|name56789ab |");
    EXPECT_EQ(clTerminal.clScreen().stCursor().nColumn, 15);
    ASSERT_TRUE(clTerminal.bType({"cdef"}));
    EXPECT_EQ(csField(7, 3), "|56789abcdef |");
    EXPECT_EQ(clTerminal.clScreen().stCursor().nColumn, 15);
    for (int n = 0; n < 14; ++n) {
        ASSERT_TRUE(clTerminal.bType({"Left"}));
    }
    EXPECT_EQ(csField(7, 3), "|ame56789abcd|");
    EXPECT_EQ(clTerminal.clScreen().stCursor().nColumn, 4);

    // The one without a frame takes twelve characters at most and has no fill of its own.
    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", " and so on"}));
    EXPECT_EQ(csField(7, 35), "e and so    |g");
    for (int n = 0; n < 6; ++n) {
        ASSERT_TRUE(clTerminal.bType({"Backspace"}));
    }
    EXPECT_EQ(csField(7, 35), "bare a      |g");
    EXPECT_EQ(CSceneTerminal::csPart(clTerminal.csLooks(), 7, 35, 14), "nnnnnnrrrrrrrd");
}

TEST(EntryScreen, NothingBreaksTheScreen) {
    CSceneTerminal clTerminal("strange", 38, 12);
    ASSERT_TRUE(clTerminal.bType({"Tab", "日"}));
    EXPECT_EQ(clTerminal.csText(), R"(
 +---------------------------------+
 |+----------+ +-日本+ +-----+     |
 ||bell? esc?| |語日 | |日本 |     |
 ||raw??     | +-----+ +-----+     |
 ||tab?here  |                     |
 ||日本語日本|                     |
 ||été       | +-----+             |
 ||start     | |日本 |             |
 ||?dlrow    | |語   |             |
 || 31m      | +-----+             |
 ++----------+---------------------+
)");
}

}  // namespace
}  // namespace kalmo
