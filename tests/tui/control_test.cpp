#include <gtest/gtest.h>

#include <string>

#include "tui/button.h"
#include "tui/entry.h"
#include "tui/list.h"
#include "tui/msg_box.h"
#include "tui/radio_list.h"

namespace kalmo {
namespace {

TEST(Controls, AListHoldsCopiesOfItsLines) {
    CWindow clWindow(0, 0, 40, 20);
    CList clList(&clWindow, 1, 1, 20, 7, 0);
    EXPECT_EQ(clList.pszGetSelectedLine(), nullptr);
    for (wchar_t szLine[] = L"line 0"; szLine[5] < L'5'; ++szLine[5]) {
        clList.AddLine(szLine);
    }
    EXPECT_FALSE(clList.bScrollable());
    clList.AddLine(nullptr);
    EXPECT_TRUE(clList.bScrollable());
    EXPECT_EQ(clList.nGetNbItem(), 6);
    EXPECT_STREQ(clList[5], L"");
    EXPECT_EQ(clList[6], nullptr);
    EXPECT_EQ(clList[-1], nullptr);
    for (const int nLine : {4, 6, -1}) {
        clList.Select(nLine);
        EXPECT_EQ(clList.nGetSelectedLine(), 4);
    }
    EXPECT_STREQ(clList.pszGetSelectedLine(), L"line 4");
    clList.ClearList();
    EXPECT_EQ(clList.nGetNbItem(), 0);
    EXPECT_EQ(clList.nGetSelectedLine(), 0);
}

TEST(Controls, AListKeepsEqualLinesInOrder) {
    CWindow clWindow(0, 0, 40, 20);
    CList clList(&clWindow, 1, 1, 20, 7, 0);
    for (const wchar_t c : std::wstring(L"abcdefghijklmnopqrstuvwxyz")) {
        clList.AddLine(std::wstring{c % 2 == 0 ? L'1' : L'2', c}.c_str());
    }
    clList.SortLine([](const wchar_t* pszLeft, const wchar_t* pszRight) { return *pszRight - *pszLeft; });
    std::wstring csOrder;
    for (int n = 0; n < clList.nGetNbItem(); ++n) {
        csOrder += clList[n][1];
    }
    EXPECT_EQ(csOrder, L"acegikmoqsuwybdfhjlnprtvxz");
}

TEST(Controls, ARadioListChoosesOnlyWhatItHas) {
    CWindow clWindow(0, 0, 40, 20);
    for (const int nChosen : {-7, 0, 2, 3}) {
        CRadioList clRadio(&clWindow, 1, 8, 20, 8, L"title", 0, nChosen);
        EXPECT_EQ(clRadio.nGetSelectedItem(), -1);
        for (const wchar_t* const psz : {L"a", L"b", L"c"}) {
            clRadio.AddOption(psz);
        }
        EXPECT_EQ(clRadio.nGetSelectedItem(), nChosen == 0 || nChosen == 2 ? nChosen : -1);
        clRadio.bOnKeyEvent(' ');
        EXPECT_EQ(clRadio.nGetSelectedItem(), nChosen == 2 ? 2 : 0);
        for (const int nOption : {1, 3, -1}) {
            clRadio.Select(nOption);
            EXPECT_EQ(clRadio.nGetSelectedItem(), 1);
        }
    }
}

TEST(Controls, AnEntryIsGivenAnyText) {
    CWindow clWindow(0, 0, 40, 10);
    CEntry clEntry(&clWindow, nullptr, 1, 1, 20, 3, L"", CWidget::eBORDER_FRAME);
    clEntry.SetMaxLength(4);
    clEntry.SetText(L"beyond");
    clEntry.bOnKeyEvent('x');
    EXPECT_STREQ(clEntry.pszGetText(), L"beyond");
    EXPECT_EQ(clEntry.nGetCursor(), 6);
    clEntry.SetMaxLength(-1);
    clEntry.bOnKeyEvent('x');
    EXPECT_STREQ(clEntry.pszGetText(), L"beyondx");
}

TEST(Controls, TheFocusGoesOnlyWhereItMay) {
    CWindow clWindow(0, 0, 40, 20);
    CButton clFirst(&clWindow, L"0", 1, 1, 10, 4);
    CButton clSecond(&clWindow, L"1", 1, 1, 10, 4);
    clWindow.AddChild(&clFirst);
    clWindow.AddChild(&clSecond);
    EXPECT_TRUE(clFirst.bHasFocus());
    EXPECT_TRUE(clWindow.bSetFocus(&clSecond));
    EXPECT_TRUE(clSecond.bHasFocus());
    EXPECT_EQ(clWindow.OnKeyEvent('x'), 1);
    clFirst.SetEnable(0);
    EXPECT_FALSE(clWindow.bSetFocus(&clFirst));
    EXPECT_FALSE(clFirst.bHasFocus() || clSecond.bHasFocus());
}

TEST(Controls, WithoutAScreenTheLoopEndsAndABoxIsPrinted) {
    CWindow clWindow(0, 0, 40, 20);
    CButton clButton(&clWindow, L"OK", 1, 1, 10, 4);
    clWindow.AddChild(&clButton);
    clWindow.Draw();
    clWindow.MainLoop();
    EXPECT_EQ(clWindow.pGetWindow(), nullptr);

    testing::internal::CaptureStderr();
    CMsgBox(0, 0, 60, 13, L"Ti\x1B[2Jtle", L"one\r\n\ttwo\x07\u009B\xDC9B", CMsgBox::eTYPE::OneButton).Show();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Ti?[2Jtle\none\n\ttwo???\n");
}

}  // namespace
}  // namespace kalmo
