#include "tui/geometry.h"

#include <gtest/gtest.h>

#include <limits>

namespace kalmo {
namespace {

TEST(Geometry, DialogsShrinkWithTheScreenAndAreCentred) {
    const struct {
        int nPreferred, nScreen, nSize, nStart;
    } TAB[] = {{60, 80, 60, 10}, {60, 64, 60, 2}, {60, 63, 59, 2}, {20, 24, 20, 2},
               {20, 23, 19, 2},  {20, 5, 1, 2},   {20, 1, 1, 0},   {7, 12, 7, 2}};
    for (const auto& rst : TAB) {
        const int nSize = nDialogSize(rst.nPreferred, rst.nScreen);
        EXPECT_EQ(nSize, rst.nSize) << rst.nScreen;
        EXPECT_EQ(nCentred(nSize, rst.nScreen), rst.nStart) << rst.nScreen;
    }
    EXPECT_EQ(nCentred(30, 20), 0);
}

TEST(Geometry, AnEntryScrollsOnlyAsFarAsTheCursorNeeds) {
    const struct {
        int nOffset, nCursor, nTotal, nVisible, nExpected;
    } TAB[] = {
        {0, 5, 5, 10, 0},   {0, 9, 9, 10, 0},    // fits, cursor included
        {0, 10, 10, 10, 1}, {0, 15, 15, 10, 6},  // follows the cursor
        {6, 10, 15, 10, 6}, {6, 6, 15, 10, 6},   // stays while the cursor is in view
        {6, 5, 15, 10, 5},  {6, 0, 15, 10, 0},   // goes back with it
        {6, 8, 8, 10, 0},   {6, 11, 12, 10, 3},  // no empty room behind a text that shrank
        {0, 4, 9, 1, 4},    {3, 2, 9, 0, 3},     // next to no room
    };
    for (const auto& rst : TAB) {
        EXPECT_EQ(nEntryOffset(rst.nOffset, rst.nCursor, rst.nTotal, rst.nVisible), rst.nExpected)
            << rst.nOffset << ' ' << rst.nCursor << ' ' << rst.nTotal << ' ' << rst.nVisible;
    }
}

TEST(Geometry, TheGaugeRunsFromZero) {
    const struct {
        double dValue, dMinimum, dMaximum;
        int nExpected;
    } TAB[] = {{0, 0, 40, 0},
               {15, 0, 40, 8},
               {14, 0, 40, 7},
               {40, 0, 40, 20},
               {50, 0, 40, 20},
               {-1, 0, 40, 0},
               {10, 10, 20, 20},
               {5, 10, 20, 10},
               {1, 1, 1, 20},
               {0, 0, 0, 0},
               {std::numeric_limits<double>::quiet_NaN(), 0, 1, 0}};
    for (const auto& rst : TAB) {
        EXPECT_EQ(nGaugeBar(rst.dValue, rst.dMinimum, rst.dMaximum, 20), rst.nExpected) << rst.dValue;
    }
    EXPECT_EQ(nGaugeBar(1, 0, 1, -2), 0);
}

TEST(Geometry, ListsBringTheSelectionIntoView) {
    const struct {
        int nFirst, nSelected, nToSelect, nToFollow;
    } TAB[] = {{0, 0, 0, 0}, {0, 4, 0, 0}, {0, 5, 5, 1}, {0, 11, 7, 7},
               {4, 3, 3, 3}, {4, 8, 4, 4}, {7, 0, 0, 0}};
    for (const auto& rst : TAB) {
        EXPECT_EQ(nFirstToSelect(rst.nFirst, rst.nSelected, 12, 5), rst.nToSelect) << rst.nSelected;
        EXPECT_EQ(nFirstToFollow(rst.nFirst, rst.nSelected, 5), rst.nToFollow) << rst.nSelected;
    }
    EXPECT_EQ(nThumbRow(0, 12, 5), 0);
    EXPECT_EQ(nThumbRow(6, 12, 5), 3);
    EXPECT_EQ(nThumbRow(7, 12, 5), 4);
    EXPECT_EQ(nThumbRow(1'999'999'990, 2'000'000'000, 10), 9);
    EXPECT_EQ(nThumbColumn(7, 17, 12), 4);
}

}  // namespace
}  // namespace kalmo
