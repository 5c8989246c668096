#include <cstdarg>
#include <cstdio>
#include <utility>

#include "testkit/emulator.h"

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

// Cells of a row as a rectangle; the look is the rest of its attributes.
std::string csRectangle(int nRow, int nColumn, int nColumns, const std::string& rcsLook) {
    return csFormat("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" %s/>\n", nColumn * CELL_WIDTH,
                    nRow * CELL_HEIGHT, nColumns * CELL_WIDTH, CELL_HEIGHT, rcsLook.c_str());
}

}  // namespace

// Neighbouring cells of one look.
std::string CEmulator::__csSvgOfRun(STLook st, int nRow, int nColumn, int nWidth) const {
    unsigned unInk = st.nForeground < 0 ? PLAIN_FOREGROUND : unPaletteColour(st.nForeground);
    unsigned unPaper = st.nBackground < 0 ? PLAIN_BACKGROUND : unPaletteColour(st.nBackground);
    if (st.bReverse) {
        std::swap(unInk, unPaper);
    }
    std::string cs;
    if (unPaper != PLAIN_BACKGROUND) {
        cs += csRectangle(nRow, nColumn, nWidth, csFormat("fill=\"#%06x\"", unPaper));
    }
    const std::string csRun = csText(nRow, nColumn, nWidth);
    if (csRun.find_first_not_of(' ') == std::string::npos) {
        return cs;
    }
    cs += csFormat("<text x=\"%d\" y=\"%d\" textLength=\"%d\" fill=\"#%06x\"%s%s>", nColumn * CELL_WIDTH,
                   nRow * CELL_HEIGHT + BASE_LINE, nWidth * CELL_WIDTH, unInk,
                   st.bBold ? " font-weight=\"bold\"" : "",
                   st.bUnderline ? " text-decoration=\"underline\"" : "");
    for (const char c : csRun) {
        cs += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return cs + "</text>\n";
}

std::string CEmulator::csSvg() const {
    const int nWidth = m_nColumns * CELL_WIDTH;
    const int nHeight = m_nRows * CELL_HEIGHT;
    std::string cs = csFormat(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\" "
        "font-family=\"monospace\" font-size=\"%d\" shape-rendering=\"crispEdges\" xml:space=\"preserve\">\n"
        "<rect width=\"%d\" height=\"%d\" fill=\"#%06x\"/>\n",
        nWidth, nHeight, nWidth, nHeight, LETTER_SIZE, nWidth, nHeight, PLAIN_BACKGROUND);
    for (int nRow = 0; nRow < m_nRows; ++nRow) {
        for (int nStart = 0, nEnd = 0; nStart < m_nColumns; nStart = nEnd) {
            const STLook stLook = stCell(nRow, nStart).stLook;
            while (nEnd < m_nColumns && stCell(nRow, nEnd).stLook == stLook) {
                ++nEnd;
            }
            cs += __csSvgOfRun(stLook, nRow, nStart, nEnd - nStart);
        }
    }
    if (m_stCursor.bVisible) {
        cs += csRectangle(m_stCursor.nRow, m_stCursor.nColumn, 1, "fill=\"none\" stroke=\"#ffd700\"");
    }
    return cs + "</svg>\n";
}

}  // namespace kalmo
