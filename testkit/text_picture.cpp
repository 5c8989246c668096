// Draws what a command printed as the SVG picture of a terminal:   COMMAND | text_picture COLUMNS >FILE.svg

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>

#include "testkit/emulator.h"

int main(int nArgc, char** ppszArgv) {
    const int nColumns = nArgc == 2 ? std::atoi(ppszArgv[1]) : 0;
    if (nColumns <= 0) {
        std::fputs("usage: COMMAND | text_picture COLUMNS\n", stderr);
        return 2;
    }
    const std::string csPrinted{std::istreambuf_iterator<char>(std::cin), {}};
    std::string csBytes = "\x1B[?25l";  // a picture of output has no cursor
    int nRows = 1;
    for (const char c : csPrinted) {
        csBytes += c == '\n' ? "\r\n" : std::string(1, c);
        nRows += c == '\n' ? 1 : 0;
    }
    kalmo::CEmulator clScreen(nRows, nColumns, [](std::string_view) {});
    clScreen.Feed(csBytes);
    std::cout << clScreen.csSvg();
    return 0;
}
