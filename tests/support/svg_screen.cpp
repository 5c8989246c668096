#include "tests/support/svg_screen.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace kalmo {
namespace {

// Pixels of a cell, of its letters, and from its top to their base line.
constexpr int CELL_WIDTH = 9;
constexpr int CELL_HEIGHT = 18;
constexpr int LETTER_SIZE = 15;
constexpr int BASE_LINE = 14;
constexpr unsigned PLAIN_FOREGROUND = 0xE5E5E5;
constexpr unsigned PLAIN_BACKGROUND = 0x000000;

struct STPaint {
    unsigned unForeground;
    unsigned unBackground;
    bool bBold;
    bool bUnderline;
    friend bool operator==(const STPaint&, const STPaint&) = default;
};

STPaint stPaint(const CEmulator& rclScreen, const STLook& rst) {
    STPaint st{rst.nForeground < 0 ? PLAIN_FOREGROUND : rclScreen.unPaletteColour(rst.nForeground),
               rst.nBackground < 0 ? PLAIN_BACKGROUND : rclScreen.unPaletteColour(rst.nBackground), rst.bBold,
               rst.bUnderline};
    if (rst.bReverse) {
        std::swap(st.unForeground, st.unBackground);
    }
    return st;
}

// Neighbouring cells of a row that are painted alike.
struct STRun {
    int nColumn = 0;
    int nCells = 0;
    STPaint stPaint{};
    std::string csText;
};

std::string csEscape(const std::string& rcs) {
    std::string csResult;
    for (const char c : rcs) {
        csResult += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return csResult;
}

[[gnu::format(printf, 1, 2)]] std::string csFormat(const char* pszFormat, ...) {
    char szBuffer[256];
    va_list tabArgument;
    va_start(tabArgument, pszFormat);
    std::vsnprintf(szBuffer, sizeof szBuffer, pszFormat, tabArgument);
    va_end(tabArgument);
    return szBuffer;
}

std::string csDrawRun(const STRun& rst, int nRow) {
    const int nLeft = rst.nColumn * CELL_WIDTH;
    const int nTop = nRow * CELL_HEIGHT;
    std::string cs;
    if (rst.stPaint.unBackground != PLAIN_BACKGROUND) {
        cs += csFormat("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"#%06x\"/>\n", nLeft, nTop,
                       rst.nCells * CELL_WIDTH, CELL_HEIGHT, rst.stPaint.unBackground);
    }
    if (rst.csText.find_first_not_of(' ') != std::string::npos) {
        cs += csFormat("<text x=\"%d\" y=\"%d\" textLength=\"%d\" fill=\"#%06x\"%s%s>", nLeft,
                       nTop + BASE_LINE, rst.nCells * CELL_WIDTH, rst.stPaint.unForeground,
                       rst.stPaint.bBold ? " font-weight=\"bold\"" : "",
                       rst.stPaint.bUnderline ? " text-decoration=\"underline\"" : "");
        cs += csEscape(rst.csText) + "</text>\n";
    }
    return cs;
}

std::string csDrawRow(const CEmulator& rclScreen, int nRow) {
    std::string csRow;
    STRun stRun;
    for (int nColumn = 0; nColumn < rclScreen.nColumns(); ++nColumn) {
        STCell stCell = rclScreen.stCell(nRow, nColumn);
        const STPaint stCellPaint = stPaint(rclScreen, stCell.stLook);
        if (stRun.nCells > 0 && stCellPaint != stRun.stPaint) {
            csRow += csDrawRun(stRun, nRow);
            stRun = STRun();
        }
        if (stRun.nCells == 0) {
            stRun.nColumn = nColumn;
            stRun.stPaint = stCellPaint;
        }
        ++stRun.nCells;
        stRun.csText += stCell.csText == "\u00A0" ? " " : stCell.csText;
    }
    return csRow + csDrawRun(stRun, nRow);
}

}  // namespace

std::string csSvgOfScreen(const CEmulator& rclScreen) {
    const int nWidth = rclScreen.nColumns() * CELL_WIDTH;
    const int nHeight = rclScreen.nRows() * CELL_HEIGHT;
    std::string cs = csFormat(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\" "
        "font-family=\"monospace\" font-size=\"%d\" xml:space=\"preserve\">\n"
        "<rect width=\"%d\" height=\"%d\" fill=\"#%06x\"/>\n",
        nWidth, nHeight, nWidth, nHeight, LETTER_SIZE, nWidth, nHeight, PLAIN_BACKGROUND);
    for (int nRow = 0; nRow < rclScreen.nRows(); ++nRow) {
        cs += csDrawRow(rclScreen, nRow);
    }
    if (const STCursor& rst = rclScreen.stCursor(); rst.bVisible) {
        cs += csFormat(
            "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" stroke=\"#ffd700\"/>\n",
            rst.nColumn * CELL_WIDTH, rst.nRow * CELL_HEIGHT, CELL_WIDTH, CELL_HEIGHT);
    }
    return cs + "</svg>\n";
}

}  // namespace kalmo
