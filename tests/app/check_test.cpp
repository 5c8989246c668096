#include <gtest/gtest.h>

#include <string>

#include "app/check/orders_check.h"
#include "framework/conversion.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

// What was found: the first letter of the severity, the code and, behind a slash, the key.
std::string csFound(const CFindings& rclFindings) {
    std::string cs;
    for (const STFinding& rst : rclFindings.tabGet()) {
        EXPECT_FALSE(rst.csText.bEmpty()) << rst.pszCode;
        EXPECT_EQ(rst.csText.svGet().find_first_of(L"\r\n\x1B"), CTString::npos) << rst.pszCode;
        cs += std::string(cs.empty() ? "" : " ") + "nwe"[static_cast<int>(rst.eSeverity)] + ":" + rst.pszCode;
        cs += rst.pszKey == nullptr ? "" : "/" + std::string(csToUTF8(rst.pszKey).svGet());
    }
    return cs;
}

TEST(Check, OrdersAreJudgedAsTheyAreRead) {
    using namespace std::string_literals;
    const std::string csOk = "[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=/zd\n";
    const std::string csUpgrade = "[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=first\n";
    const std::string csNoServer = "e:missing-key/Serveur e:missing-key/Repertoire";
    const std::string csLong(101, 'n');
    const std::string csDeep = "/" + std::string(260, 'd');
    const struct {
        std::string csOrders, csFound;
    } TAB[] = {
        {csOk + "Port=4950\n", ""},
        {": x\n# Port=1\n ; y\n[pilotage]\n maj = "
         "2\n[Serveur]\nSERVEUR=first\nRepertoire=/zd\n\nPort\t=\t65535",
         ""},
        {"", "e:empty"},
        {" \r\n", "e:empty"},
        {"\xFF\xFE\0\0"s, "e:byte-order-mark"},
        {"\xEF\xBB\xBF: comment\n" + csOk, "w:byte-order-mark"},
        {"\xEF\xBB\xBF" + csUpgrade, "e:byte-order-mark e:no-operation/MAJ"},
        {"[PILOTAGE]\r\nMAJ=2\r\n[SERVEUR]\r\nServeur=first\r\nRepertoire=/zd\r\n", "n:crlf"},
        {"[PILOTAGE]\rMAJ=2\r", "w:carriage-return e:no-operation/MAJ"},
        {csOk + "Port=4\0009"s, "w:null-character"},
        // Names that are not quite right.
        {csOk + "Prot=4950\n", "e:unknown-key/Port"},
        {csOk + "Prot=4950\nPort=4950\n", "w:unknown-key/Port"},
        {csUpgrade + "Prot=4950\n", "w:unknown-key/Port"},
        {csOk + "\tPort=4950\n", "e:unknown-key/Port"},
        {csOk + "Colour=4950\x1B\n", "w:unknown-key"},
        {csOk + "Port: 4950\n", "e:unread-line/Port"},
        {csOk + "some text\n", "w:unread-line"},
        {"[PILOTAGE]\nMAJ=2\n[SERVER]\nServeur=first\nRepertoire=/zd\n", "e:unknown-section " + csNoServer},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR\nServeur=first\nRepertoire=/zd\n",
         "e:unknown-section e:misplaced-key/Serveur e:misplaced-key/Repertoire " + csNoServer},
        {csOk + "[OTHER]\nPort=1\n[SERVER]\n", "w:unknown-section w:unknown-section"},
        {csOk + "[SERVEUR]\nPort=4950\nServeur=x\n",
         "w:repeated-section e:misplaced-key/Port w:misplaced-key/Serveur"},
        {"Port=1\n" + csUpgrade + "MAJ=1\n", "w:misplaced-key/Port w:misplaced-key/MAJ"},
        {csOk + "Serveur=first\nServeur=other\n", "n:duplicate-key/Serveur w:duplicate-key/Serveur"},
        {csUpgrade + "Repertoire=zd\nPort=x\n", "n:unused-key/Repertoire n:unused-key/Port"},
        // Values that are not quite right.
        {"[PILOTAGE]\nMAJ=\n", "e:no-operation/MAJ"},
        {"[PILOTAGE]\nMAJ=4\n", "e:no-operation/MAJ"},
        {"[PILOTAGE]\nMAJ=\"2\"\n", "e:no-operation/MAJ"},
        {"[PILOTAGE]\nMAJ=2 ; install\n", "w:comment-in-value/MAJ " + csNoServer},
        {"[PILOTAGE]\nMAJ=2x\n", "w:number-cut/MAJ " + csNoServer},
        {csOk + "Port=0\n", "e:bad-port/Port"},
        {csOk + "Port=65536\n", "e:bad-port/Port"},
        {csOk + "Port=00000000000000000004950\n", "e:bad-port/Port"},
        {csOk + "Port=4950x\n", "e:bad-port/Port"},
        {csOk + "Port=\n", "e:bad-port/Port"},
        {csOk + "Port=4950 \n", ""},
        {csOk + "Port=4950 # x\n", "w:comment-in-value/Port"},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first \nRepertoire='/zd'\n",
         "w:blank-at-end/Serveur w:quotes/Repertoire e:relative-directory/Repertoire e:bad-name/Serveur"},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=a;b\nRepertoire=/zd ; x\n",
         "w:comment-in-value/Repertoire e:bad-name/Serveur"},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=" + csLong + "\nRepertoire=" + csDeep + "\n",
         "e:too-long/Serveur e:too-long/Repertoire"},
    };
    CServiceManager::ms_eDistri = eSystemd;
    for (const auto& rst : TAB) {
        CFindings clFindings;
        CheckOrders(rst.csOrders, clFindings);
        EXPECT_EQ(csFound(clFindings), rst.csFound) << rst.csOrders;
    }
}

}  // namespace
}  // namespace kalmo
