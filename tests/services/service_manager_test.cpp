#include <algorithm>
#include <vector>

#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

std::wstring csOf(const wchar_t* psz) {
    return psz == nullptr ? L"(null)" : psz;
}

class ServiceManagerTest : public CStandInTest {
  protected:
    // Name, description and program of a service.
    static std::wstring csDescribe(const CXPtr_deleteRCV<CService>& pcl) {
        return pcl == nullptr ? L"none"
                              : csOf(pcl->pszGetName()) + L"," + csOf(pcl->pszGetDisplayName()) + L"," +
                                    csOf(pcl->pszBinaryPathName());
    }
    // All names of a listing, in order and sorted, each followed by a blank.
    std::wstring csList(const wchar_t* pszPrefix) {
        std::vector<std::wstring> tabName;
        unsigned dwCursor = 0;
        CServiceList clList;
        while (auto pcl = m_clManager.pclEnumService(&dwCursor, pszPrefix, 0)) {
            tabName.emplace_back(pcl->pszGetName());
            clList.Add(std::move(pcl));
        }
        EXPECT_EQ(m_clManager.pclEnumService(&dwCursor, pszPrefix, 0), nullptr) << "over is over";
        if (CServiceManager::ms_eDistri != eSystemd) {
            std::sort(tabName.begin(), tabName.end());
        }
        std::wstring cs;
        for (const std::wstring& rcs : tabName) {
            cs += rcs + L" ";
        }
        return cs;
    }

    CServiceManager m_clManager;
};

TEST_F(ServiceManagerTest, SysVLookUpTriesTheScriptNameFirst) {
    CServiceManager::ms_eDistri = eDebian;
    Write("/etc/init.d/ZDCS-a_b__c-d-e", "Name=\"The first\"\nProgram=\"/opt/k/kalmo --service\"\n");
    Write("/etc/init.d/KalmoManager", "Program='/opt'\n");
    Write("/etc/init.d/dir/x", "");
    Write("/etc/init.d/v1.2", "");
    struct STCase {
        const wchar_t* pszName;
        const wchar_t* pszFound;
    };
    const STCase tabCase[] = {
        {L"ZDCS-a b\tc/d.e", L"ZDCS-a_b__c-d-e,The first,/opt/k/kalmo --service"},
        {L"KalmoManager", L"KalmoManager,KalmoManager,(null)"},
        {L"v1.2", L"v1.2,v1.2,(null)"},
        {L"kalmomanager", L"none"},
        {L"dir", L"none"},
        {L"", L"none"},
        {nullptr, L"none"},
    };
    for (const STCase& rst : tabCase) {
        EXPECT_EQ(csDescribe(m_clManager.pclGetService(rst.pszName, 0)), rst.pszFound) << csOf(rst.pszName);
    }
    Write("/etc/init.d/v1-2", "");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"v1.2", 0)), L"v1-2,v1-2,(null)");
}

TEST_F(ServiceManagerTest, SysVListing) {
    CServiceManager::ms_eDistri = eGentoo;
    for (const char* const psz : {"ZDCS-one", "ZDCS-two", "zdcs-low", "A-B", "A-Bc", "A_B"}) {
        Write(std::string("/etc/init.d/") + psz, "");
    }
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-one ZDCS-two ");
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
        *" wrap") echo Type=forking; echo 'ExecStart={ argv[]=/etc/init.d/wrap start ; }';;
        *" bare") echo Type=dbus; exit 4;;
        *) echo Type=; echo Description=x;; esac)");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"a;b|c", 0)), L"a;b|c,Odd,/opt/k --service ");
    EXPECT_EQ(csTakeRecord(), "systemctl --property=Description,ExecStart,Type show a b c\n");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"wrap", 0)), L"wrap,(null),/opt/wrapped");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"bare", 0)), L"bare,(null),(null)");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"unknown", 0)), L"none");
    std::filesystem::remove("/etc/init.d/wrap");
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"wrap", 0)), L"wrap,(null),(null)");
    std::filesystem::remove(PSZ_SYSTEMCTL);
    EXPECT_EQ(csDescribe(m_clManager.pclGetService(L"bare", 0)), L"none");
    EXPECT_TRUE(CServiceManager::csGetSystemdProp("ActiveState", L"bare").bEmpty());
    EXPECT_EQ(csList(L"ZDCS-"), L"");
}

TEST_F(ServiceManagerTest, SystemdListing) {
    CServiceManager::ms_eDistri = eSystemd;
    constexpr const char* PSZ_LIST =
        "systemctl list-units --all --type=service --full --no-pager --no-legend";
    // The name of the second unit is listed, but the unit is not loaded.
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        list-units*) printf 'ZDCS-b.service loaded\nZDCS-gone.service x\nZDCS-a.service x\nssh.service x\n';;
        *gone) echo Type=;;
        *) echo Type=simple;; esac)");
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-b ZDCS-a ");
    EXPECT_EQ(csTakeRecord(), std::string(PSZ_LIST) +
                                  "\nsystemctl --property=Description,ExecStart,Type show ZDCS-b"
                                  "\nsystemctl --property=Description,ExecStart,Type show ZDCS-gone"
                                  "\nsystemctl --property=Description,ExecStart,Type show ZDCS-a\n");
    // Records that nobody takes go with an ended listing, or with the manager.
    unsigned dwCursor = 0;
    EXPECT_NE(m_clManager.pclEnumService(&dwCursor, L"ZDCS-", 0), nullptr);
    m_clManager.AbortEnumService(&dwCursor);
    EXPECT_EQ(dwCursor, 0U);
    EXPECT_NE(m_clManager.pclEnumService(&dwCursor, L"ZDCS-", 0), nullptr);
    dwCursor = 0;
    EXPECT_STREQ(m_clManager.pclEnumService(&dwCursor, L"ZDCS-", 0)->pszGetName(), L"ZDCS-b");
}

TEST_F(ServiceManagerTest, SystemdListingWithAStatusColumn) {
    CServiceManager::ms_eDistri = eSystemd;
    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        *--plain) printf 'ZDCS-a.service loaded\nZDCS-b.service failed\n';;
        list-units*) printf '  ssh.service x\n  ZDCS-a.service loaded\n* ZDCS-b.service failed\n';;
        *) echo Type=simple;; esac)");
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-a ZDCS-b ");
    csTakeRecord();
    EXPECT_EQ(csList(L"Other"), L"");
    EXPECT_EQ(csTakeRecord().find("--plain"), std::string::npos) << "nothing to look for";

    Tool(PSZ_SYSTEMCTL, R"(case "$*" in
        list-units*) printf '* ZDCS-b.service failed\nZDCS-a.service loaded\n';;
        *) echo Type=simple;; esac)");
    EXPECT_EQ(csList(L"ZDCS-"), L"ZDCS-a ");
    EXPECT_EQ(csTakeRecord().find("--plain"), std::string::npos) << "a name was kept";
}

}  // namespace
}  // namespace kalmo
