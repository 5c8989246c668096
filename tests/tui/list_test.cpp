#include <gtest/gtest.h>

#include <cwchar>
#include <string>

#include "tests/tui/recorder.h"
#include "tests/tui/scene_terminal.h"
#include "tui/key.h"
#include "tui/scrollable_libel.h"

namespace kalmo {
namespace {

int nDescending(const wchar_t* pszLeft, const wchar_t* pszRight) {
    return std::wcsncmp(pszRight, pszLeft, 1);
}

TEST(List, HoldsCopiesOfItsLines) {
    CRecorder clWindow(0, 0, 40, 20);
    CList* const pcl = clWindow.pclAdd<CList>(1, 1, 20, 7, 0);
    EXPECT_EQ(pcl->pszGetSelectedLine(), nullptr);
    clWindow.Press({KEY_DOWN, KEY_UP, TOUCHE_ESPACE, TOUCHE_ENTREE, KEY_RIGHT});
    EXPECT_EQ(clWindow.csTakeEvents(), "");

    for (int n = 0; n < 5; ++n) {
        wchar_t szLine[] = L"a line";
        szLine[5] = static_cast<wchar_t>(L'0' + n);
        pcl->AddLine(szLine);
    }
    EXPECT_EQ(pcl->nGetNbItem(), 5);
    EXPECT_FALSE(pcl->bScrollable());
    pcl->AddLine(nullptr);
    EXPECT_TRUE(pcl->bScrollable());
    EXPECT_STREQ((*pcl)[4], L"a lin4");
    EXPECT_STREQ((*pcl)[5], L"");
    EXPECT_EQ((*pcl)[6], nullptr);
    EXPECT_EQ((*pcl)[-1], nullptr);

    pcl->Select(4);
    pcl->Select(6);
    pcl->Select(-1);
    EXPECT_EQ(pcl->nGetSelectedLine(), 4);
    EXPECT_STREQ(pcl->pszGetSelectedLine(), L"a lin4");
    pcl->ClearList();
    EXPECT_EQ(pcl->nGetNbItem(), 0);
    EXPECT_EQ(pcl->nGetSelectedLine(), 0);
}

TEST(List, SortsAndKeepsEqualLinesInOrder) {
    CRecorder clWindow(0, 0, 40, 20);
    CList* const pcl = clWindow.pclAdd<CList>(1, 1, 20, 7, 0);
    constexpr int COUNT = 100;
    for (int n = 0; n < COUNT; ++n) {
        pcl->AddLine((std::wstring(1, static_cast<wchar_t>(L'a' + n % 3)) + std::to_wstring(n)).c_str());
    }
    pcl->SortLine(nDescending);
    for (int n = 1; n < COUNT; ++n) {
        const wchar_t* const pszBefore = (*pcl)[n - 1];
        const wchar_t* const psz = (*pcl)[n];
        EXPECT_TRUE(pszBefore[0] > psz[0] ||
                    std::wcstol(pszBefore + 1, nullptr, 10) < std::wcstol(psz + 1, nullptr, 10))
            << n;
    }
}

TEST(List, ReportsKeys) {
    CRecorder clWindow(0, 0, 40, 20);
    CList* const pcl = clWindow.pclAdd<CList>(1, 1, 20, 4, 0);
    for (const wchar_t* const psz : {L"one", L"two", L"three"}) {
        pcl->AddLine(psz);
    }
    clWindow.Press({KEY_UP, KEY_DOWN, KEY_DOWN, KEY_DOWN, TOUCHE_ESPACE});
    EXPECT_EQ(clWindow.csTakeEvents(), " 0:1 0:1 0:2");
    EXPECT_EQ(pcl->nGetSelectedLine(), 2);
    clWindow.Press({KEY_UP, TOUCHE_ENTREE, KEY_ENTER, KEY_LEFT, KEY_RIGHT, KEY_NPAGE, 'x'});
    EXPECT_EQ(clWindow.csTakeEvents(), " 0:1 0:2 0:3 0:2 0:3");
    EXPECT_EQ(pcl->nGetSelectedLine(), 1);
}

TEST(List, ATextIsReadToItsEnd) {
    CRecorder clWindow(0, 0, 40, 20);
    clWindow.pclAdd<CScrollableLibel>(L"1\n2\n3", 1, 1, 20, 5);
    EXPECT_EQ(clWindow.nFocused(), -1);  // It fits: nothing to scroll.
    auto* const pcl = clWindow.pclAdd<CScrollableLibel>(L"1\n2\n3\n4\n5\n6\n7\n8\n9", 1, 1, 20, 5);
    clWindow.Press({TOUCHE_TAB});
    EXPECT_EQ(clWindow.nFocused(), 1);
    EXPECT_EQ(pcl->nGetSelectedLine(), -1);
    EXPECT_EQ(pcl->pszGetSelectedLine(), nullptr);
    const struct {
        int nKey;
        const char* pszEvents;
    } TAB[] = {{KEY_UP, ""},    {KEY_NPAGE, ""},     {KEY_DOWN, ""},     {KEY_NPAGE, " 1:4"}, {KEY_DOWN, ""},
               {KEY_NPAGE, ""}, {KEY_UP, ""},        {KEY_DOWN, " 1:4"}, {KEY_PPAGE, ""},     {KEY_PPAGE, ""},
               {KEY_PPAGE, ""}, {TOUCHE_ENTREE, ""}, {KEY_NPAGE, ""},    {KEY_NPAGE, " 1:4"}};
    int nStep = 0;
    for (const auto& rst : TAB) {
        clWindow.Press({rst.nKey});
        EXPECT_EQ(clWindow.csTakeEvents(), rst.pszEvents) << nStep;
        ++nStep;
    }
}

TEST(ListScreen, SelectsAndScrolls) {
    CSceneTerminal clTerminal("lists", 50, 14);
    const auto csLine = [&](int nRow, int nColumn, int nWidth) {
        return CSceneTerminal::csPart(clTerminal.csText(), nRow, nColumn, nWidth);
    };
    ASSERT_TRUE(clTerminal.bType({"F2"}));  // selects the last of twelve
    EXPECT_EQ(csLine(2, 3, 6), "seven ");
    ASSERT_TRUE(clTerminal.bType({"F3"}));  // and the third
    EXPECT_EQ(csLine(2, 3, 6), "two wo");
    ASSERT_TRUE(clTerminal.bType({"Up"}));
    EXPECT_EQ(csLine(2, 3, 6), "one   ");

    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Down"}));
    EXPECT_EQ(csLine(9, 3, 11), "eleven wide");
    EXPECT_EQ(csLine(10, 3, 11), "longer than");
    EXPECT_EQ(csLine(11, 3, 11), " that      ");
    ASSERT_TRUE(clTerminal.bType({"PageDown"}));
    EXPECT_EQ(csLine(10, 3, 11), " tab       ");
    EXPECT_EQ(csLine(11, 3, 11), "last       ");
    EXPECT_EQ(csLine(3, 17, 9), "|B      |");  // five lines in five rows
    ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Right", "F4"}));
    EXPECT_EQ(csLine(2, 3, 11), "another lon");
    EXPECT_EQ(csLine(3, 17, 9), "|B       ");  // the bar of a list with a shadow is on its frame
    EXPECT_EQ(clTerminal.csEnd(), " 0:1 3:4");
}

}  // namespace
}  // namespace kalmo
