#include <gtest/gtest.h>

#include <algorithm>

#include "testkit/tui_terminal.h"

namespace kalmo {
namespace {

// Three services of which the second has no display name; programs that are not there.
#define SERVICES \
    " ZDCS-Zwei Zwei /none/2/kalmo ZDCS-x - /none/x/kalmo KALMOmanager Manager /none/kalmomanager"

TEST(Dialogs, ListWhatHasADisplayName) {
    EXPECT_EQ(CTuiTerminal(DIALOG_SCENE " choose 0" SERVICES).csText(), R"(



        +------------------------------------------------------------+
        |                                                            |
        | Which server do you want to uninstall?                     |
        | +---------------------------------------------------------+|
        | |Zwei                                                     ||
        | |Manager                                                  ||
        | |                                                         ||
        | |                                                         ||
        | |                                                         ||
        | |                                                         ||
        | +---------------------------------------------------------+|
        |                                                            |
        |             +-------+               +-------+              |
        |             |  OK   |               |Cancel |              |
        |             +-------+               +-------+              |
        |                                                            |
        +------------------------------------------------------------+
)");
}

TEST(Dialogs, AnswerWhatWasPressed) {
    const struct {
        const char* pszDialog;
        const char* pszKeys;
        const char* pszReport;
    } TAB[] = {
        // An action or a server is chosen with Enter, confirmed with another one.
        {"action 1", "Up KeypadEnter*2", "1 2"},
        {"action 0", "Down*2 Enter Space", "1 0"},
        {"action 0", "Down Space Tab Enter", "1 1"},
        // The line's number is the service's, also where a service is left out.
        {"choose 1" SERVICES, "Down Enter*2", "1 ZDCS-Zwei"},
        {"choose 0" SERVICES, "Down Enter*2", "1 ZDCS-x"},
        {"choose 0 ZDCS-x - /none", "Tab Enter", "1 none"},
        // Enter goes on to the next field.
        {"config 0", "2 Enter x1 Enter*2", "1 ZDSQL2|49001|root"},
        {"config 0", "Tab*2 Enter Tab Enter", "1 ZDSQL|4900|root"},
        {"account 0", "s Enter a Space \"b$ Enter*2", "1 Admins|a \"b$"},
        // On the box Enter goes on and space toggles; only OK answers.
        {"telemetry -1", "Enter*2", "1 1"},
        {"telemetry 0", "Enter KeypadEnter", "1 0"},
        {"telemetry 0", "Space*3 Tab Space", "1 1"},
        {"telemetry -1", "Space Tab*2 Enter", "0 -1"},
    };
    for (const auto& rst : TAB) {
        CTuiTerminal clTerminal(DIALOG_SCENE " " + std::string(rst.pszDialog));
        clTerminal.bPress(rst.pszKeys);
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << rst.pszDialog << ": " << rst.pszKeys;
    }
}

TEST(Dialogs, ProgressMovesItsGauge) {
    CTuiTerminal clTerminal(DIALOG_SCENE " progress 5", {.nColumns = 74, .nRows = 28});
    EXPECT_TRUE(clTerminal.bShows("|Installing the server. Please wait..."));
    for (const int nCells : {0, 26, 65}) {  // none, two fifths, all of it
        const std::string csLooks = clTerminal.csLooks(7, 0, 74);
        EXPECT_EQ(std::count(csLooks.begin(), csLooks.end(), 'g'), nCells);
        ASSERT_TRUE(clTerminal.bPress(nCells == 0 ? "xx" : "xxx"));
    }
}

// What the operator has to reach can be reached on every terminal, down to one that is far too small.
TEST(Dialogs, WorkOnEveryTerminal) {
    const char* const TAB[][3] = {
        // Keys that lead round to OK again, the answer.
        {"action 1", "Tab*4", "1 0"},
        {"choose 1" SERVICES, "Tab*4", "1 ZDCS-Zwei"},
        {"config 0", "Tab*8", "1 ZDSQL|4900|root"},
        {"account 0", "Tab*6", "1 Admin|"},
        {"telemetry 1", "Tab*4", "1 1"},
    };
    for (const Terminal::STOptions& rstOptions : {Terminal::STOptions{"xterm", 9, 5}, {"vt220", 1, 1}}) {
        for (const auto& [pszDialog, pszKeys, pszReport] : TAB) {
            CTuiTerminal clTerminal(DIALOG_SCENE " " + std::string(pszDialog), rstOptions);
            ASSERT_TRUE(clTerminal.bPress(pszKeys));
            clTerminal.Resize(80, 24);  // The answer has room then.
            clTerminal.bPress("Enter");
            EXPECT_EQ(clTerminal.csReport(), pszReport) << rstOptions.nColumns;
        }
    }
}

}  // namespace
}  // namespace kalmo
