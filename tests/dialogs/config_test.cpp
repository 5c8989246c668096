#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"
#include "tests/support/tui_terminal.h"

namespace kalmo {
namespace {

/// An installed server: its service, what its configuration file holds (null: there is no file), and the
/// name that the service shows ("-": none).
struct STServer {
    const char* pszService;
    const char* pszConf = nullptr;
    const char* pszDisplayName = "-";
};

std::string csCommand(const CTempFolder& rclFolder, const std::vector<STServer>& rtabServer) {
    std::string cs = DIALOG_SCENE " config 0";
    for (const STServer& rst : rtabServer) {
        std::filesystem::create_directory(rclFolder.clPath(rst.pszService));
        if (rst.pszConf != nullptr) {
            rclFolder.Write(rst.pszService + std::string("/ZDConf.ini"), rst.pszConf);
        }
        cs += std::string(" ") + rst.pszService + " " + rst.pszDisplayName + " " +
              rclFolder.clPath(rst.pszService).string() + "/kalmo";
    }
    return cs;
}

const char* const PORT_4901 = "[INIT]\nAccessPort=4901\n";

TEST(ConfigWin, RefusesTheNameAndThePortOfAnotherServer) {
    const struct {
        std::vector<STServer> tabServer;
        std::string csName;
        std::string csPort;
        const char* pszConflict = nullptr;  ///< In the box; null where the settings are taken.
    } TAB[] = {
        {{{"ZDCS-Zdsql", PORT_4901}}, "ZDSQL", "1", "|A server named \"ZDSQL\" "},
        {{{"12345Été", PORT_4901}}, "éTÉ", "1", "|A server named \"éTÉ\" "},
        {{{"ZDSQL", PORT_4901}, {"x", PORT_4901}}, "ZDSQL", "1"},
        {{{"ZDCS-ZDSQL2", PORT_4901}}, "ZDSQL", "4900"},
        // Where a server's file does not tell a port, it is 4900.
        {{{"ZDCS-A", PORT_4901}, {"ZDCS-B", nullptr, "Second"}}, "C", "4900", "|Port 4900 is already used"},
        {{{"ZDCS-B", "[INIT]\n", "Second"}}, "C", "4900", "\"Second\"."},
        {{{"ZDCS-B", "[INIT]\nAccessPort=0004901 \xFF\n"}}, "C", "04901", "\"ZDCS-B\"."},
        // A server's name is looked at before its port, the first server before the second.
        {{{"ZDCS-C"}}, "C", "4900", "|A server named \"C\" "},
        {{{"ZDCS-A"}, {"ZDCS-C"}}, "C", "4900", "|Port 4900 "},
        // What is no port is compared all the same.
        {{{"ZDCS-B", "[INIT]\nAccessPort=x\n"}}, "C", "", "|Port 0 "},
        {{{"ZDCS-B", "[INIT]\nAccessPort=99999999999\n"}}, "C", "99999999999999999999"},
        // The shared manager has neither.
        {{{"KALMOMANAGER"}}, "MANAGER", "4900"},
    };
    for (const auto& rst : TAB) {
        const CTempFolder clFolder;
        CTuiTerminal clTerminal(csCommand(clFolder, rst.tabServer));
        ASSERT_TRUE(
            clTerminal.bPress("Backspace*5 " + rst.csName + " Enter Backspace*4 " + rst.csPort + " Enter*2"));
        if (rst.pszConflict != nullptr) {
            EXPECT_TRUE(clTerminal.bShows("+Attention--") && clTerminal.bShows(rst.pszConflict))
                << rst.pszConflict << clTerminal.csText();
            // The box closed, the dialog is there again, on OK and with what was typed.
            ASSERT_TRUE(clTerminal.bPress("Enter"));
            EXPECT_TRUE(clTerminal.bShows("-TCP port-") && !clTerminal.bShows("Attention"));
            clTerminal.bPress("Tab Enter");
        }
        EXPECT_EQ(clTerminal.csReport(),
                  (rst.pszConflict == nullptr ? "1 " : "0 ") + rst.csName + "|" + rst.csPort + "|root");
    }
}

TEST(ConfigWin, AsksWhetherToCreateAnUnknownAccount) {
    const struct {
        std::vector<STServer> tabServer;
        std::string csAccount;
        const char* pszAnswer;
        const char* pszSeen;   ///< After the answer.
        const char* pszLeave;  ///< Then; empty where the dialog has ended.
        const char* pszReport;
    } TAB[] = {
        {{}, "nobody-here", "Enter", "", "", "1 ZDSQL|4900|nobody-here"},
        {{{"ZDCS-ZDSQL"}}, "no-BODY", "Tab Enter", "|no-body ", "Tab Enter", "0 ZDSQL|4900|no-body"},
        // The next question finds the dialog in its place behind it.
        {{{"ZDCS-ZDSQL"}},
         "no-body",
         "Enter",
         "|    |+Attention-",
         "Enter Tab Enter",
         "0 ZDSQL|4900|no-body"},
        {{}, "ROOT", "", "", "", "1 ZDSQL|4900|root"},
    };
    for (const auto& rst : TAB) {
        const CTempFolder clFolder;
        CTuiTerminal clTerminal(csCommand(clFolder, rst.tabServer));
        ASSERT_TRUE(clTerminal.bPress("Tab*2 Backspace*4 " + rst.csAccount + " Tab Enter"));
        EXPECT_EQ(clTerminal.bShows("|Create the account \"no"), *rst.pszAnswer != '\0');
        clTerminal.bPress(rst.pszAnswer);
        EXPECT_TRUE(clTerminal.bShows(rst.pszSeen)) << clTerminal.csText();
        clTerminal.bPress(rst.pszLeave);
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport);
    }
}

}  // namespace
}  // namespace kalmo
