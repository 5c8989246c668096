#include <gtest/gtest.h>

#include <algorithm>

#include "tests/dialogs/dialog_terminal.h"

namespace kalmo {
namespace {

// Three services of which the second has no display name; programs that are not there.
const std::vector<std::string> TAB_SERVICE = {
    "ZDCS-Zwei",    "Zwei und mehr", "/none/2/kalmo",     "ZDCS-x", "-", "/none/x/kalmo",
    "KALMOmanager", "Manager",       "/none/kalmomanager"};

std::vector<std::string> operator+(std::vector<std::string> tab, const std::vector<std::string>& rtabMore) {
    tab.insert(tab.end(), rtabMore.begin(), rtabMore.end());
    return tab;
}

TEST(Dialogs, LookLikeThis) {
    const struct {
        std::vector<std::string> tabArgument;
        std::vector<std::string_view> tabKey;
        const char* pszScreen;
    } TAB[] = {
        {{"action", "1"}, {"Down", " "}, R"(


    +----+---------------------------------------------------------+-----+
    |    |                                                         |     |
    |    | What do you want to do?                                 |     |
    |    |---------------------------------------------------------|     |
    |    | ( ) Upgrade an installed server                         |     |
    |    | (X) Install a new server                                |     |
    |    | ( ) Uninstall a server                                  |     |
    |    |                                                         |     |
    |    |                                                         |     |
    |    |                                                         |     |
    |    |                                                         |     |
    |    |                                                         |     |
    |    +---------------------------------------------------------+     |
    |                                                                    |
    |                +-------+                  +-------+                |
    |                |  OK   |                  |Cancel |                |
    |                +-------+                  +-------+                |
    |                                                                    |
    +--------------------------------------------------------------------+
)"},
        {std::vector<std::string>{"choose", "0"} + TAB_SERVICE, {}, R"(



        +------------------------------------------------------------+
        |                                                            |
        | Which server do you want to uninstall?                     |
        | +---------------------------------------------------------+|
        | |Zwei und mehr                                            ||
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
        {{"config", "0"}, {}, R"(


     +-------------------------------------------------------------------+
     |                                                                   |
     | +-Server name---------------------------------------------------+ |
     | |ZDSQL                                                          | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     | +-TCP port------------------------------------------------------+ |
     | |4900                                                           | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     | +-System account that runs the server---------------------------+ |
     | |root                                                           | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     |               +-------+                 +-------+                 |
     |               |  OK   |                 |Cancel |                 |
     |               +-------+                 +-------+                 |
     |                                                                   |
     +-------------------------------------------------------------------+
)"},
        {{"account", "0"}, {"Enter", "pw"}, R"(


     +-------------------------------------------------------------------+
     |                                                                   |
     | +---------------------------------------------------------------+ |
     | |Administrator account of the databases                         | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     | +-Account name--------------------------------------------------+ |
     | |Admin                                                          | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     | +-Password (shown as you type it)-------------------------------+ |
     | |pw                                                             | |
     | +---------------------------------------------------------------+ |
     |                                                                   |
     |               +-------+                 +-------+                 |
     |               |  OK   |                 |Cancel |                 |
     |               +-------+                 +-------+                 |
     |                                                                   |
     +-------------------------------------------------------------------+
)"},
        {{"telemetry", "-1"}, {}, R"(


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
)"},
    };
    for (const auto& rst : TAB) {
        CDialogTerminal clTerminal(rst.tabArgument);
        ASSERT_TRUE(clTerminal.bTypeAll(rst.tabKey));
        EXPECT_EQ(clTerminal.csText(), rst.pszScreen);
    }
}

TEST(Dialogs, AnswerWhatWasPressed) {
    const struct {
        std::vector<std::string> tabArgument;
        std::vector<std::string_view> tabKey;
        const char* pszReport;
    } TAB[] = {
        // An action or a server is chosen with Enter, confirmed with another one.
        {{"action", "1"}, {"Enter", "Enter"}, "1 0"},
        {{"action", "1"}, {"Up", "KeypadEnter", "KeypadEnter"}, "1 2"},
        {{"action", "0"}, {"Down", "Down", "Enter", " "}, "1 0"},
        {{"action", "0"}, {"Down", " ", "Tab", "Enter"}, "1 1"},
        {{"action", "1"}, {"Tab", "Tab", "Enter"}, "0 0"},
        // The line's number is the service's, also where a service is left out.
        {std::vector<std::string>{"choose", "1"} + TAB_SERVICE, {"Enter", "Enter"}, "1 ZDCS-Zwei"},
        {std::vector<std::string>{"choose", "1"} + TAB_SERVICE, {"Down", "Enter", "Enter"}, "1 ZDCS-Zwei"},
        {std::vector<std::string>{"choose", "0"} + TAB_SERVICE, {"Down", "Enter", "Enter"}, "1 ZDCS-x"},
        {std::vector<std::string>{"choose", "0"} + TAB_SERVICE, {"Tab", "Tab", " "}, "0 ZDCS-Zwei"},
        {{"choose", "0"}, {"Enter", "Tab", "Enter"}, "1 none"},
        {{"choose", "0", "ZDCS-x", "-", "/none"}, {"Tab", "Enter"}, "1 none"},
        // Enter goes on to the next field.
        {{"config", "0"}, {"2", "Enter", "x1", "Enter", "Enter"}, "1 ZDSQL2|49001|root"},
        {{"config", "0"}, {"Tab", "Tab", "Enter", "Tab", "Enter"}, "1 ZDSQL|4900|root"},
        {{"config", "0"}, {"Tab", "Tab", "Tab", "Tab", "Enter"}, "0 ZDSQL|4900|root"},
        {{"account", "0"}, {"s", "Enter", "a \"b$", "Enter", "Enter"}, "1 Admins|a \"b$"},
        {{"account", "0"},
         {"Tab", "x", "Tab", "Tab", "Tab", "!", "Tab", "Tab", "Tab", "Enter"},
         "0 Admin!|x"},
        // On the box Enter goes on and space toggles; only OK answers.
        {{"telemetry", "-1"}, {"Enter", "Enter"}, "1 1"},
        {{"telemetry", "1"}, {" ", "Enter", "Enter"}, "1 0"},
        {{"telemetry", "0"}, {"Enter", "KeypadEnter"}, "1 0"},
        {{"telemetry", "0"}, {" ", " ", " ", "Tab", " "}, "1 1"},
        {{"telemetry", "-1"}, {" ", "Tab", "Tab", "Enter"}, "0 -1"},
    };
    for (const auto& rst : TAB) {
        CDialogTerminal clTerminal(rst.tabArgument);
        clTerminal.bTypeAll(rst.tabKey);
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << rst.tabArgument[0] << ' ' << rst.tabArgument[1];
    }
}

TEST(Dialogs, ProgressMovesItsGauge) {
    CDialogTerminal clTerminal({"progress", "5"}, {.nColumns = 74, .nRows = 28});
    const auto nBar = [&clTerminal] {
        int nCells = 0;
        for (int nColumn = 0; nColumn < 74; ++nColumn) {
            nCells += clTerminal.clScreen().stCell(7, nColumn).stLook.nBackground == 3 ? 1 : 0;
        }
        return nCells;
    };
    ASSERT_TRUE(clTerminal.bShows("|Installing the server. Please wait..."));
    EXPECT_EQ(nBar(), 0);
    ASSERT_TRUE(clTerminal.bType({"xx"}));
    EXPECT_EQ(nBar(), 26);  // two fifths of 65
    ASSERT_TRUE(clTerminal.bType({"xxx"}));
    EXPECT_EQ(nBar(), 65);
}

// What the operator has to see and reach is there on every terminal, down to one that is far too small.
TEST(Dialogs, WorkOnEveryTerminal) {
    const struct {
        const char* pszType;
        int nColumns, nRows;
    } TAB_TERMINAL[] = {
        {"vt100", 80, 24}, {"xterm", 132, 50}, {"vt220", 60, 16}, {"xterm", 9, 5}, {"xterm", 1, 1}};
    const struct {
        std::vector<std::string> tabArgument;
        std::vector<std::string_view> tabSeen;
        std::size_t nTabs;  // as many as take the focus round to OK again
        const char* pszReport;
    } TAB[] = {
        {{"action", "1"}, {"(X) Mettre", "( ) Installer", "( ) D"}, 4, "1 0"},
        {std::vector<std::string>{"choose", "1"} + TAB_SERVICE,
         {"Quel serveur", "|Zwei und mehr"},
         4,
         "1 ZDCS-Zwei"},
        {{"config", "0"}, {"|ZDSQL", "-Port", "|root"}, 8, "1 ZDSQL|4900|root"},
        {{"account", "0"}, {"|Compte admin", "|Admin"}, 6, "1 Admin|"},
        {{"telemetry", "1"}, {"[X]Envoyer des données techniques"}, 4, "1 1"},
    };
    for (const auto& rstTerminal : TAB_TERMINAL) {
        for (const auto& rst : TAB) {
            CDialogTerminal clTerminal(rst.tabArgument, {.csType = rstTerminal.pszType,
                                                         .nColumns = rstTerminal.nColumns,
                                                         .nRows = rstTerminal.nRows,
                                                         .tabEnvironment = {"LC_ALL=fr_FR.UTF-8"}});
            const auto ExpectSeen = [&](std::string_view sv) {
                EXPECT_TRUE(rstTerminal.nRows < 16 || clTerminal.bShows(sv)) << sv << clTerminal.csText();
            };
            std::for_each(rst.tabSeen.begin(), rst.tabSeen.end(), ExpectSeen);
            clTerminal.bTypeAll(std::vector<std::string_view>(rst.nTabs, "Tab"));
            std::for_each(rst.tabSeen.begin(), rst.tabSeen.end(), ExpectSeen);
            ExpectSeen("|  OK   |");
            clTerminal.Resize(80, 24);  // The answer has room then.
            clTerminal.bType({"Enter"});
            EXPECT_EQ(clTerminal.csReport(), rst.pszReport) << rstTerminal.nColumns;
        }
    }
}

}  // namespace
}  // namespace kalmo
