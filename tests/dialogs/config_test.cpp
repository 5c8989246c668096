#include <gtest/gtest.h>

#include "tests/dialogs/dialog_terminal.h"
#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

// An installed server: its service, and what its configuration file holds; null where there is no file.
struct STServer {
    const char* pszService;
    const char* pszDisplayName;
    const char* pszConf = nullptr;
};

std::vector<std::string> tabArgument(const CTempFolder& rclFolder, const std::vector<STServer>& rtabServer) {
    std::vector<std::string> tab = {"config", "0"};
    for (const STServer& rst : rtabServer) {
        const std::string csNumber = std::to_string(tab.size());
        std::filesystem::create_directory(rclFolder.clPath(csNumber));
        if (rst.pszConf != nullptr) {
            rclFolder.Write(csNumber + "/ZDConf.ini", rst.pszConf);
        }
        const std::string csProgram = rclFolder.clPath(csNumber + "/kalmo").string() + " --SERVICE x";
        tab.insert(tab.end(), {rst.pszService, rst.pszDisplayName, csProgram});
    }
    return tab;
}

const char* const PORT_4901 = "[INIT]\nAccessPort=4901\n";

TEST(ConfigWin, RefusesTheNameAndThePortOfAnotherServer) {
    const struct {
        std::vector<STServer> tabServer;
        const char* pszName;
        const char* pszPort;
        const char* pszConflict;  // In the box; null where the settings are taken.
    } TAB[] = {
        {{{"ZDCS-Zdsql", "-", PORT_4901}}, "ZDSQL", "1", "|A server named \"ZDSQL\" "},
        {{{"zdcs-ZDSQL", "-", PORT_4901}}, "zdSQL", "1", "|A server named \"zdSQL\" "},
        {{{"12345Été", "-", PORT_4901}}, "éTÉ", "1", "|A server named \"éTÉ\" "},
        {{{"ZDSQL", "-", PORT_4901}, {"x", "-", PORT_4901}}, "ZDSQL", "1", nullptr},
        {{{"ZDCS-ZDSQL2", "-", PORT_4901}}, "ZDSQL", "4900", nullptr},
        // Where a server's file does not tell a port, it is 4900.
        {{{"ZDCS-A", "-", PORT_4901}, {"ZDCS-B", "The second"}}, "C", "4900", "|\"The second\"."},
        {{{"ZDCS-B", "-", "[INIT]\n"}}, "C", "4900", "|Port 4900 is already used by the server "},
        {{{"ZDCS-B", "-", "[INIT]\nAccessPort=0004901 \xFF\n"}}, "C", "4901", "|\"ZDCS-B\"."},
        {{{"ZDCS-B", "-", PORT_4901}}, "C", "04901", "|Port 4901 "},
        {{{"ZDCS-B", "-", PORT_4901}}, "C", "4900", nullptr},
        // A server's name is looked at before its port, the first server before the second.
        {{{"ZDCS-C", "-"}}, "C", "4900", "|A server named \"C\" "},
        {{{"ZDCS-A", "-"}, {"ZDCS-C", "-"}}, "C", "4900", "|Port 4900 "},
        // What is no port is compared all the same.
        {{{"ZDCS-B", "-", "[INIT]\nAccessPort=x\n"}}, "C", "", "|Port 0 "},
        {{{"ZDCS-B", "-", "[INIT]\nAccessPort=99999999999\n"}}, "C", "99999999999999999999", nullptr},
        // The shared manager has neither.
        {{{"KALMOMANAGER", "-"}}, "MANAGER", "4900", nullptr},
    };
    for (const auto& rst : TAB) {
        const CTempFolder clFolder;
        CDialogTerminal clTerminal(tabArgument(clFolder, rst.tabServer));
        ASSERT_TRUE(clTerminal.bTypeAll(std::vector<std::string_view>(5, "Backspace")));
        ASSERT_TRUE(clTerminal.bType({rst.pszName, "Enter", "Backspace", "Backspace", "Backspace",
                                      "Backspace", rst.pszPort, "Enter", "Enter"}));
        const std::string csValues = std::string(rst.pszName) + "|" + rst.pszPort + "|root";
        if (rst.pszConflict != nullptr) {
            EXPECT_TRUE(clTerminal.bShows("+Attention--") && clTerminal.bShows(rst.pszConflict))
                << rst.pszConflict << clTerminal.csText();
            // The box closed, the dialog is there again, on OK and with what was typed.
            ASSERT_TRUE(clTerminal.bType({"Enter"}));
            EXPECT_TRUE(clTerminal.bShows("-TCP port-") && !clTerminal.bShows("Attention"));
            clTerminal.bType({"Tab", "Enter"});
        }
        EXPECT_EQ(clTerminal.csReport(), (rst.pszConflict == nullptr ? "1 " : "0 ") + csValues);
    }
}

TEST(ConfigWin, AsksWhetherToCreateAnUnknownAccount) {
    const struct {
        std::vector<STServer> tabServer;
        const char* pszAccount;
        std::vector<std::string_view> tabAnswer;
        const char* pszSeen;                     // After the answer; null where the dialog has ended.
        std::vector<std::string_view> tabLeave;  // Then.
        const char* pszReport;
    } TAB[] = {
        {{}, "nobody-here", {"Enter"}, nullptr, {}, "1 ZDSQL|4900|nobody-here"},
        {{}, "Nobody-HERE", {"Tab", "Enter"}, "|nobody-here ", {"Tab", "Enter"}, "0 ZDSQL|4900|nobody-here"},
        {{{"ZDCS-ZDSQL", "-"}},
         "no-body",
         {"Tab", "Enter"},
         "|no-body ",
         {"Tab", "Enter"},
         "0 ZDSQL|4900|no-body"},
        // The next question finds the dialog in its place behind it.
        {{{"ZDCS-ZDSQL", "-"}},
         "no-body",
         {"Enter"},
         "|    |+Attention-",
         {"Enter", "Tab", "Enter"},
         "0 ZDSQL|4900|no-body"},
        {{}, "daemon", {}, nullptr, {}, "1 ZDSQL|4900|daemon"},
        {{}, "ROOT", {}, nullptr, {}, "1 ZDSQL|4900|root"},
    };
    for (const auto& rst : TAB) {
        const CTempFolder clFolder;
        CDialogTerminal clTerminal(tabArgument(clFolder, rst.tabServer));
        ASSERT_TRUE(clTerminal.bType({"Tab", "Tab", "Backspace", "Backspace", "Backspace", "Backspace",
                                      rst.pszAccount, "Tab", "Enter"}));
        EXPECT_EQ(clTerminal.bShows("|Create the account \"no"), !rst.tabAnswer.empty())
            << clTerminal.csText();
        clTerminal.bTypeAll(rst.tabAnswer);
        if (rst.pszSeen != nullptr) {
            EXPECT_TRUE(clTerminal.bShows(rst.pszSeen)) << clTerminal.csText();
        }
        clTerminal.bTypeAll(rst.tabLeave);
        EXPECT_EQ(clTerminal.csReport(), rst.pszReport);
    }
}

}  // namespace
}  // namespace kalmo
