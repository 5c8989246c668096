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

[[gnu::format(printf, 1, 2)]] std::string csFormat(const char* pszFormat, ...) {
    char szBuffer[512];
    va_list tabArgument;
    va_start(tabArgument, pszFormat);
    std::vsnprintf(szBuffer, sizeof szBuffer, pszFormat, tabArgument);
    va_end(tabArgument);
    return szBuffer;
}

std::string csEscape(const std::string& rcs) {
    std::string csResult;
    for (const char c : rcs) {
        csResult += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return csResult;
}

// Neighbouring cells of one look.
std::string csDrawRun(const CEmulator& rclScreen, STLook st, int nRow, int nColumn, int nWidth) {
    unsigned unInk = st.nForeground < 0 ? PLAIN_FOREGROUND : rclScreen.unPaletteColour(st.nForeground);
    unsigned unPaper = st.nBackground < 0 ? PLAIN_BACKGROUND : rclScreen.unPaletteColour(st.nBackground);
    if (st.bReverse) {
        std::swap(unInk, unPaper);
    }
    const int nLeft = nColumn * CELL_WIDTH;
    const int nTop = nRow * CELL_HEIGHT;
    std::string cs;
    if (unPaper != PLAIN_BACKGROUND) {
        cs += csFormat("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"#%06x\"/>\n", nLeft, nTop,
                       nWidth * CELL_WIDTH, CELL_HEIGHT, unPaper);
    }
    const std::string csText = rclScreen.csText(nRow, nColumn, nWidth);
    if (csText.find_first_not_of(' ') != std::string::npos) {
        cs += csFormat("<text x=\"%d\" y=\"%d\" textLength=\"%d\" fill=\"#%06x\"%s%s>", nLeft,
                       nTop + BASE_LINE, nWidth * CELL_WIDTH, unInk, st.bBold ? " font-weight=\"bold\"" : "",
                       st.bUnderline ? " text-decoration=\"underline\"" : "");
        cs += csEscape(csText) + "</text>\n";
    }
    return cs;
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
        for (int nStart = 0, nEnd = 0; nStart < rclScreen.nColumns(); nStart = nEnd) {
            const STLook stLook = rclScreen.stCell(nRow, nStart).stLook;
            while (nEnd < rclScreen.nColumns() && rclScreen.stCell(nRow, nEnd).stLook == stLook) {
                ++nEnd;
            }
            cs += csDrawRun(rclScreen, stLook, nRow, nStart, nEnd - nStart);
        }
    }
    if (const STCursor& rst = rclScreen.stCursor(); rst.bVisible) {
        cs += csFormat(
            "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" stroke=\"#ffd700\"/>\n",
            rst.nColumn * CELL_WIDTH, rst.nRow * CELL_HEIGHT, CELL_WIDTH, CELL_HEIGHT);
    }
    return cs + "</svg>\n";
}

}  // namespace kalmo
