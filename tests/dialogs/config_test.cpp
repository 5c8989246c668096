#include <gtest/gtest.h>

#include <regex>

#include "testkit/temp_folder.h"
#include "testkit/tui_terminal.h"

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
        {{{"12345Été", PORT_4901}}, "éTÉ", "1", "|A server named \"éTÉ\" "},
        {{{"ZDSQL", PORT_4901}, {"x", PORT_4901}}, "ZDSQL", "1"},
        // Where a server's file does not tell a port, it is 4900.
        {{{"ZDCS-A", PORT_4901}, {"ZDCS-B", nullptr, "Second"}}, "C", "4900", "|Port 4900 is already used"},
        {{{"ZDCS-B", "[INIT]\nAccessPort=0004901 \xFF\n"}}, "C", "04901", "\"ZDCS-B\"."},
        // A server's name is looked at before its port, the first server before the second.
        {{{"ZDCS-C"}}, "C", "4900", "|A server named \"C\" "},
        // What is no port is compared all the same.
        {{{"ZDCS-B", "[INIT]\nAccessPort=x\n"}}, "C", "", "|Port 0 "},
        // Names count as the server reads them; a unit cannot have just any.
        {{{"ZDCS-A", PORT_4901}}, " a", "4900", "|A server named \"a\" "},
        {{}, "", "4900", "|No server can have the name"},
        {{}, "a b", "4900", "|\"a b\"."},
        {{}, "café", "4900", "|\"café\"."},
        {{}, " A:-_.@1", "4900"},
        // The shared manager has neither.
        {{{"KALMOMANAGER"}}, "MANAGER", "4900"},
    };
    for (const auto& rst : TAB) {
        const CTempFolder clFolder;
        CTuiTerminal clTerminal(csCommand(clFolder, rst.tabServer));
        const std::string csTyped = std::regex_replace(rst.csName, std::regex(" "), " Space ");
        ASSERT_TRUE(
            clTerminal.bPress("Backspace*5 " + csTyped + " Enter Backspace*4 " + rst.csPort + " Enter*2"));
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

}  // namespace
}  // namespace kalmo
