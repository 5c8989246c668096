#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/tui_terminal.h"

namespace kalmo {
namespace {

// Three services of which the second has no display name; programs that are not there.
#define SERVICES \
    " ZDCS-Zwei Zwei /none/2/kalmo ZDCS-x - /none/x/kalmo KALMOmanager Manager /none/kalmomanager"

TEST(Dialogs, LookLikeThis) {
    const struct {
        const char* pszCommand;
        const char* pszScreen;
    } TAB[] = {{DIALOG_SCENE " choose 0" SERVICES, R"(



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
)"},
               {DIALOG_SCENE " telemetry -1", R"(


     +-------------------------------------------------------------------+
     | +---------------------------------------------------------------+ |
     | |Telemetry sends technical data about the use of this server to | |
     | |its publisher. You are free to refuse.                         | |
     | |To change your choice later, set ACTIVE to 0 or 1 in section   | |
     | |TELEMETRY of the file ZDConf.ini in the server's directory.    | |
     | |                                                               | |
     | |                                                               | |
     | |                                                               | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     |                                                                   |
     | [X]Send technical data about the use of this server               |
     |                                                                   |
     |               +-------+                 +-------+                 |
     |               |  OK   |                 |Cancel |                 |
     |               +-------+                 +-------+                 |
     |                                                                   |
     +-------------------------------------------------------------------+
)"}};
    for (const auto& rst : TAB) {
        EXPECT_EQ(CTuiTerminal(rst.pszCommand).csText(), rst.pszScreen);
    }
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
        {"action 1", "Tab*2 Enter", "0 0"},
        // The line's number is the service's, also where a service is left out.
        {"choose 1" SERVICES, "Down Enter*2", "1 ZDCS-Zwei"},
        {"choose 0" SERVICES, "Down Enter*2", "1 ZDCS-x"},
        {"choose 0" SERVICES, "Tab*2 Space", "0 ZDCS-Zwei"},
        {"choose 0", "Enter Tab Enter", "1 none"},
        {"choose 0 ZDCS-x - /none", "Tab Enter", "1 none"},
        // Enter goes on to the next field.
        {"config 0", "2 Enter x1 Enter*2", "1 ZDSQL2|49001|root"},
        {"config 0", "Tab*2 Enter Tab Enter", "1 ZDSQL|4900|root"},
        {"config 0", "Tab*4 Enter", "0 ZDSQL|4900|root"},
        {"account 0", "s Enter a Space \"b$ Enter*2", "1 Admins|a \"b$"},
        {"account 0", "Tab x Tab*3 ! Tab*3 Enter", "0 Admin!|x"},
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

// What the operator has to see and reach is there on every terminal, down to one that is far too small.
TEST(Dialogs, WorkOnEveryTerminal) {
    const Terminal::STOptions TAB_TERMINAL[] = {
        {"vt100"}, {"xterm", 132, 50}, {"vt220", 60, 16}, {"xterm", 9, 5}, {"xterm", 1, 1}};
    const struct {
        const char* pszDialog;
        std::vector<std::string_view> tabSeen;
        const char* pszKeys;  ///< Take the focus round to OK again.
        const char* pszReport;
    } TAB[] = {
        {"action 1", {"(X) Mettre", "( ) Installer", "( ) D"}, "Tab*4", "1 0"},
        {"choose 1" SERVICES, {"Quel serveur", "|Zwei"}, "Tab*4", "1 ZDCS-Zwei"},
        {"config 0", {"|ZDSQL", "-Port", "|root"}, "Tab*8", "1 ZDSQL|4900|root"},
        {"account 0", {"|Compte admin", "|Admin"}, "Tab*6", "1 Admin|"},
        {"telemetry 1", {"[X]Envoyer des données techniques"}, "Tab*4", "1 1"},
    };
    for (Terminal::STOptions stOptions : TAB_TERMINAL) {
        stOptions.tabEnvironment = {"LC_ALL=fr_FR.UTF-8"};
        for (const auto& rst : TAB) {
            CTuiTerminal clTerminal(DIALOG_SCENE " " + std::string(rst.pszDialog), stOptions);
            for (const char* const pszKeys : {"", rst.pszKeys}) {
                ASSERT_TRUE(clTerminal.bPress(pszKeys));
                for (const std::string_view sv : rst.tabSeen) {
                    EXPECT_TRUE(stOptions.nRows < 16 || clTerminal.bShows(sv)) << sv << clTerminal.csText();
                }
            }
            clTerminal.Resize(80, 24);  // The answer has room then.
            clTerminal.bPress("Enter");
            EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << stOptions.nColumns;
        }
    }
}

}  // namespace
}  // namespace kalmo
