#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

using ServiceManagerTest = CStandInTest;

TEST_F(ServiceManagerTest, SysVLookUpTriesTheScriptNameFirst) {
    CServiceManager::ms_eDistri = eDebian;
    Write("/etc/init.d/ZDCS-a_b__c-d-e", "Name=\"The first\"\nProgram=\"/opt/k/kalmo --service\"\n");
    Write("/etc/init.d/KalmoManager", "Program='/opt'\n");
    Write("/etc/init.d/v1.2/x", "");
    Write("/etc/init.d/v1.3", "");
    Write("/etc/init.d/v1.4", "");
    Write("/etc/init.d/v1-4", "");
    struct STCase {
        const wchar_t* pszName;
        const wchar_t* pszFound;
    };
    for (const STCase& rst : {
             STCase{L"ZDCS-a b\tc/d.e", L"ZDCS-a_b__c-d-e,The first,/opt/k/kalmo --service"},
             {L"KalmoManager", L"KalmoManager,KalmoManager,(null)"},
             {L"kalmomanager", L"none"},
             {L"v1.2", L"none"},
             {L"v1.3", L"v1.3,v1.3,(null)"},
             {L"v1.4", L"v1-4,v1-4,(null)"},
             {L"", L"none"},
         }) {
        EXPECT_EQ(csDescribe(m_clManager.pclGetService(rst.pszName, 0)), rst.pszFound) << rst.pszName;
    }
    EXPECT_EQ(m_clManager.pclGetService(nullptr, 0), nullptr);
}

TEST_F(ServiceManagerTest, SysVListing) {
    CServiceManager::ms_eDistri = eGentoo;
    for (const char* const psz : {"ZDCS-one", "ZDCS-two", "zdcs-low", "A-B", "A-Bc", "A_B"}) {
        Write(std::string("/etc/init.d/") + psz, "");
    }
    EXPECT_EQ(csList(L"A.B"), L"A-B A-Bc ");
    EXPECT_EQ(csList(nullptr), L"A-B A-Bc A_B ZDCS-one ZDCS-two zdcs-low ");
    unsigned dwCursor = 0;
    EXPECT_NE(m_clManager.pclEnumService(&dwCursor, L"ZDCS-", 0), nullptr);
    EXPECT_NE(dwCursor, 0U);
    m_clManager.AbortEnumService(&dwCursor);
    EXPECT_EQ(dwCursor, 0U);
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-one ZDCS-two ");
    std::filesystem::remove_all("/etc/init.d");
    EXPECT_EQ(csList(L""), L"");
}

TEST_F(ServiceManagerTest, SystemdLookUp) {
    CServiceManager::ms_eDistri = eSystemd;
    Write("/etc/init.d/wrap", "Program=\"/opt/wrapped\"\n");
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        *" a b c") echo Type=simple; echo Description=Odd; echo 'ExecStart={ argv[]=/opt/k --service ; }';;
        *" wrap" | *" lost") echo Type=forking; echo 'ExecStart={ argv[]=/etc/init.d/wrap start ; }';;
        *" bare") echo Type=dbus; exit 4;;
        *) echo Type=; echo Description=x;; esac)");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"a;b|c", 0)), L"a;b|c,Odd,/opt/k --service ");
    EXPECT_EQ(csTakeRecord(), "systemctl --property=Description,ExecStart,Type show a b c\n");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"wrap", 0)), L"wrap,(null),/opt/wrapped");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"lost", 0)), L"lost,(null),(null)");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"bare", 0)), L"bare,(null),(null)");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"unknown", 0)), L"none");
    std::filesystem::remove(PSZ_SYSTEMCTL);
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"bare", 0)), L"none");
    EXPECT_TRUE(CServiceManager::csGetSystemdProp("ActiveState", L"bare").bEmpty());
    EXPECT_EQ(csList(L"ZDCS-"), L"");
}

TEST_F(ServiceManagerTest, SystemdListing) {
    CServiceManager::ms_eDistri = eSystemd;
    // The name of the second unit is listed, but the unit is not loaded. A marked name does not count.
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        list-units*) printf 'ZDCS-b.service loaded\nZDCS-gone.service x\nssh.service x\n* ZDCS-a.service x\n';;
        *gone) echo Type=;;
        *) echo Type=simple;; esac)");
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-b ");
    EXPECT_EQ(csTakeRecord(),
              "systemctl list-units --all --type=service --full --no-pager --no-legend\n"
              "systemctl --property=Description,ExecStart,Type show ZDCS-b\n"
              "systemctl --property=Description,ExecStart,Type show ZDCS-gone\n");
    // Records that nobody takes go with an ended listing, or with the manager.
    unsigned dwCursor = 0;
    EXPECT_NE(m_clManager.pclEnumService(&dwCursor, L"", 0), nullptr);
    m_clManager.AbortEnumService(&dwCursor);
    EXPECT_EQ(dwCursor, 0U);
    EXPECT_NE(m_clManager.pclEnumService(&dwCursor, L"", 0), nullptr);
    dwCursor = 0;
    EXPECT_STREQ(m_clManager.pclEnumService(&dwCursor, L"", 0)->pszGetName(), L"ZDCS-b");

    // With a status column no name passes, so the list is asked for without it.
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        *--plain) printf 'ZDCS-a.service loaded\nZDCS-b.service failed\n';;
        list-units*) printf '  ssh.service x\n  ZDCS-a.service loaded\n* ZDCS-b.service failed\n';;
        *) echo Type=simple;; esac)");
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-a ZDCS-b ");
    csTakeRecord();
    EXPECT_EQ(csList(L"Other"), L"");
    EXPECT_EQ(csTakeRecord().find("--plain"), std::string::npos) << "nothing to look for";
}

}  // namespace
}  // namespace kalmo
