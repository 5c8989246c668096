#include "tui/toolkit/screen.h"

#include <unistd.h>
#include <wchar.h>

#include <cstdio>
#include <cstdlib>

#include "tui/toolkit/attribute.h"
#include "tui/toolkit/ncurses.h"
#include "tui/toolkit/terminal_description.h"
#include "tui/toolkit/terminal_guard.h"

namespace kalmo {
namespace {

SCREEN* g_pScreen = nullptr;  // Made once and kept: windows may outlive end_dialog.
bool g_bOpen = false;
STTerminal g_stTerminal;

// What most terminals of unknown name send for keys that a VT100 does not have.
void DefineUsualKeys() {
    ::define_key("\033[3~", KEY_DC);
    ::define_key("\033[5~", KEY_PPAGE);
    ::define_key("\033[6~", KEY_NPAGE);
}

// initscr would end the process where it finds no usable terminal.
bool bMakeScreen(const char* pszTerminal) {
    if (g_pScreen != nullptr) {
        return true;
    }
    g_pScreen = ::newterm(pszTerminal, stdout, stdin);
    if (g_pScreen == nullptr) {
        return false;
    }
    if (g_stTerminal.bOurs) {
        DefineUsualKeys();
    }
    ::def_prog_mode();
    std::atexit(end_dialog);
    return true;
}

short nDisabledBackground() {
    const bool bGrey = ::can_change_color() && ::init_color(COLOR_DARK_GREY, 150, 150, 150) != ERR;
    return bGrey ? COLOR_DARK_GREY : short{COLOR_BLACK};
}

}  // namespace

bool init_dialog() {
    if (g_bOpen) {
        return true;
    }
    const CTerminalDescription clDescription(STDOUT_FILENO);
    g_stTerminal = clDescription.rstGet();
    const char* const pszTerminal = g_stTerminal.csShown.c_str();
    if (g_stTerminal.eState != eTERMINAL::Usable || !bArmTerminalGuard(STDOUT_FILENO, pszTerminal)) {
        return false;
    }
    if (!bMakeScreen(pszTerminal)) {
        DisarmTerminalGuard();
        return false;
    }
    g_bOpen = true;
    CheckScreenSize();
    ::keypad(stdscr, TRUE);
    ::cbreak();
    ::noecho();
    color_setup();
    dialog_clear();
    return true;
}

const STTerminal& rstTerminal() {
    return g_stTerminal;
}

bool bDialogOpen() {
    return g_bOpen;
}

void CheckScreenSize() {
    if (COLS < 2) {
        ::resize_term(LINES, 2);
    }
}

void color_setup() {
    if (!::has_colors() || bColoursUnwanted()) {
        return;
    }
    ::start_color();
    ::init_pair(PAIR_SELECTED, COLOR_WHITE, COLOR_BLUE);
    ::init_pair(PAIR_BUTTON, COLOR_WHITE, COLOR_RED);
    ::init_pair(PAIR_NORMAL, COLOR_WHITE, COLOR_BLACK);
    ::init_pair(PAIR_GAUGE, COLOR_WHITE, COLOR_YELLOW);
    ::init_pair(PAIR_BACKGROUND, COLOR_BLUE, COLOR_BLUE);
    ::init_pair(PAIR_MARK_FOCUS, COLOR_RED, COLOR_BLUE);
    ::init_pair(PAIR_MARK, COLOR_RED, COLOR_BLACK);
    ::init_pair(PAIR_DISABLED, COLOR_WHITE, nDisabledBackground());
}

void dialog_clear() {
    if (!g_bOpen) {
        return;
    }
    // A no-break space, or a blank where the locale has none.
    constexpr wchar_t FILL = 0xA0;
    const wchar_t tabFill[] = {::wcwidth(FILL) == 1 ? FILL : L' ', L'\0'};
    cchar_t stFill;
    ::setcchar(&stFill, tabFill, A_NORMAL, PAIR_BACKGROUND, nullptr);
    for (int nRow = 0; nRow < LINES; ++nRow) {
        ::wmove(stdscr, nRow, 0);
        ::whline_set(stdscr, &stFill, COLS);
    }
    ::wtouchln(stdscr, 0, LINES, 1);
    ::wnoutrefresh(stdscr);
}

void RepaintScreen() {
    if (g_bOpen) {
        ::wrefresh(curscr);
    }
}

void end_dialog() {
    if (!g_bOpen) {
        return;
    }
    ::endwin();
    g_bOpen = false;
    DisarmTerminalGuard();
}

}  // namespace kalmo
