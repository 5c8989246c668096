#include <gtest/gtest.h>

#include <string>

#include "services/service_manager.h"
#include "services/systemctl_output.h"
#include "services/told_program.h"

namespace kalmo {
namespace {

// Description, program and kind, "-" where there is none.
std::wstring csUnit(std::string_view svOutput) {
    const STUnitProperties st = stReadUnitProperties(svOutput);
    const CTString cs = st.csDescription.value_or(L"-") + L"," + st.csProgram.value_or(L"-");
    return std::wstring(cs.svGet()) + (st.bInitScript ? L",script" : st.bExists ? L",unit" : L",-");
}

TEST(SystemctlOutput, UnitProperties) {
    EXPECT_EQ(csUnit("Type=simple\nExecStart={ path=/opt/k ; argv[]=/opt/k --service ; ignore_errors=no }\n"
                     "Description=A = \xC3\xA9\n"),
              L"A = \u00E9,/opt/k --service ,unit");
    EXPECT_EQ(csUnit("TYPE=x\ndescription=\nexecstart={ argv[]=/etc/init.d/k ; }"),
              L",/etc/init.d/k ,script");
    EXPECT_EQ(csUnit("Type=x\nExecStart={ argv[]=/etc/init.d;"), L"-,/etc/init.d,unit");
    EXPECT_EQ(csUnit("Type=x\nExecStart=argv[]=/opt/k ; x"), L"-,-,unit") << "at position 0";
    EXPECT_EQ(csUnit("Type=x\nExecStart={ argv[]=; x"), L"-,-,unit") << "empty";
    EXPECT_EQ(csUnit("ExecStart\nType=\n=x\n\nTyp=x\n"), L"-,-,-");
    EXPECT_EQ(csReadProperty("FragmentPath=/a=b\n").svGet(), L"/a=b");
}

// The names, each followed by "|", and "marked" when there are names behind a mark.
std::wstring csNames(std::string_view svOutput, std::wstring_view svPrefix = L"ZDCS-") {
    std::wstring cs;
    for (const CTString& rcs : tabReadUnitNames(svOutput, svPrefix)) {
        cs += std::wstring(rcs.svGet()) + L"|";
    }
    return cs + (bHasMarkedNames(svOutput, svPrefix) ? L"marked" : L"");
}

TEST(SystemctlOutput, UnitNames) {
    EXPECT_EQ(csNames("ZDCS-a.service a\nZDCS-\xC3\xA9.service a\nssh.service a\n"), L"ZDCS-a|ZDCS-\u00E9|");
    EXPECT_EQ(csNames("zdcs-a.service x\nZDCS.service x\nZDCS-a.socket x\n"), L"");
    EXPECT_EQ(csNames("  ZDCS-a.service x\nssh.service x\n"), L"marked");
    EXPECT_EQ(csNames("\xE2\x97\x8F ZDCS-b.service x\n"), L"marked");
    EXPECT_EQ(csNames("  ssh.service ZDCS-x\n** ZDCS-b.service x\nx y ZDCS-.service\n"), L"");
    EXPECT_EQ(csNames("\nZDCS-a.service x\n\nZDCS-b.service x\n"), L"ZDCS-a|") << "an empty line ends";
    EXPECT_EQ(csNames("a.service.service\n  b.service", L""), L"a|  b|marked");
}

TEST(SystemctlOutput, UnitIds) {
    const std::vector<CTString> tabId =
        tabReadUnitIds("Id=a.service\n\nid=b.service\nId=c.socket\nId=.service");
    EXPECT_TRUE(tabId == (std::vector<CTString>{L"a", L""}));
}

TEST(ProgramAsTold, ByTheRulesOfTheInitSystem) {
    const std::wstring csLong(141, L'x');  // with the marker the longest line
    for (const auto& [csLine, csUnit, csScript] :
         {std::tuple(L"/opt/\u00E9 k/kalmo --s", L"/opt/\u00E9 k/kalmo --s ", L"/opt/\u00E9 k/kalmo --s"),
          {L"/opt/a;b/k", L"/opt/a", L"/opt/a;b/k"},
          {L"/opt/a\"b/k", L"/opt/a\"b/k ", L"/opt/a"},
          {L"/opt/a\nb/k", L"-", L"/opt/a"},
          {L"/etc/init.d/k", L"-", L"/etc/init.d/k"}}) {
        CServiceManager::ms_eDistri = eSystemd;
        EXPECT_EQ(csProgramAsTold(csLine).value_or(L"-").svGet(), csUnit);
        CServiceManager::ms_eDistri = eDebian;
        EXPECT_EQ(csProgramAsTold(csLine).value_or(L"-").svGet(), csScript);
    }
    EXPECT_EQ(csProgramAsTold(CTString(csLong + L"y"))->svGet(), csLong);
}

}  // namespace
}  // namespace kalmo
