#include <gtest/gtest.h>

#include <string>

#include "framework/memory_stream.h"
#include "services/init_script.h"
#include "services/systemctl_output.h"

namespace kalmo {
namespace {

std::wstring csOr(const std::optional<CTString>& rcs) {
    return rcs ? std::wstring(rcs->svGet()) : L"(none)";
}

TEST(SystemctlOutput, UnitProperties) {
    struct STCase {
        const char* pszOutput;
        bool bExists;
        const wchar_t* pszDescription;
        const wchar_t* pszProgram;
        bool bInitScript;
    };
    const STCase tabCase[] = {
        {"Type=simple\nExecStart={ path=/opt/k ; argv[]=/opt/k --service ; ignore_errors=no ; pid=1 }\n"
         "Description=A = \xC3\xA9\n",
         true, L"A = \u00E9", L"/opt/k --service ", false},
        {"Type=\nDescription=nothing.service\n", false, L"nothing.service", L"(none)", false},
        {"TYPE=forking\ndescription=\nexecstart={ argv[]=/etc/init.d/k start ; }", true, L"",
         L"/etc/init.d/k start ", true},
        {"Type=x\nExecStart={ argv[]=/etc/init.d/;", true, L"(none)", L"/etc/init.d/", true},
        {"Type=x\nExecStart={ argv[]=/etc/init.d;", true, L"(none)", L"/etc/init.d", false},
        {"Type=x\nExecStart=argv[]=/opt/k ; x", true, L"(none)", L"(none)", false},    // at position 0
        {"Type=x\nExecStart={ argv[]=; x", true, L"(none)", L"(none)", false},         // empty
        {"Type=x\nExecStart={ argv[]=/opt/k", true, L"(none)", L"(none)", false},      // without an end
        {"Type=x\nExecStart={ ; path=/opt/k ; }", true, L"(none)", L"(none)", false},  // without argv[]
        {"Type=oneshot\nExecStart={ argv[]=a ; }\nExecStart={ argv[]=b ; }\n", true, L"(none)", L"b ", false},
        {"ExecStart\nType\n=x\n\nTyp=x\n", false, L"(none)", L"(none)", false},
        {"", false, L"(none)", L"(none)", false},
    };
    for (const STCase& rst : tabCase) {
        const STUnitProperties st = stReadUnitProperties(rst.pszOutput);
        EXPECT_EQ(st.bExists, rst.bExists) << rst.pszOutput;
        EXPECT_EQ(csOr(st.csDescription), rst.pszDescription) << rst.pszOutput;
        EXPECT_EQ(csOr(st.csProgram), rst.pszProgram) << rst.pszOutput;
        EXPECT_EQ(st.bInitScript, rst.bInitScript) << rst.pszOutput;
    }
}

TEST(SystemctlOutput, OneProperty) {
    EXPECT_EQ(csReadProperty("FragmentPath=/a=b\n").svGet(), L"/a=b");
    for (const char* const psz : {"", "x\n", "FragmentPath=\n", "FragmentPath="}) {
        EXPECT_TRUE(csReadProperty(psz).bEmpty()) << psz;
    }
}

TEST(SystemctlOutput, UnitNames) {
    struct STCase {
        const char* pszOutput;
        const wchar_t* pszPrefix;
        const wchar_t* pszNames;  // each followed by "|"
        bool bMarked;
    };
    const STCase tabCase[] = {
        {"ZDCS-a.service loaded active\nZDCS-\xC3\xA9.service x\nssh.service x\n", L"ZDCS-",
         L"ZDCS-a|ZDCS-\u00E9|", false},
        {"zdcs-a.service x\nXZDCS-a.service x\nZDCS.service x\nZDCS-a.socket x\n", L"ZDCS-", L"", false},
        {"ZDCS-a.service.service x\n", L"ZDCS-a", L"ZDCS-a|", false},
        {"  ZDCS-a.service x\n\xE2\x97\x8F ZDCS-b.service x\n", L"ZDCS-", L"", true},
        {"* ZDCS-b.service x\n", L"ZDCS-", L"", true},
        {"  ssh.service x\n** ZDCS-b.service x\nx y ZDCS-.service\n", L"ZDCS-", L"", false},
        {"  ssh.service loaded ZDCS-service\n", L"ZDCS-", L"", false},
        {"ZDCS-a.service x\n\nZDCS-b.service x\n", L"ZDCS-", L"ZDCS-a|", false},
        {"\nZDCS-a.service x", L"ZDCS-", L"ZDCS-a|", false},
        {"a.service\n  b.service\n", L"", L"a|  b|", true},
        {"", L"ZDCS-", L"", false},
    };
    for (const STCase& rst : tabCase) {
        std::wstring csNames;
        for (const CTString& rcs : tabReadUnitNames(rst.pszOutput, rst.pszPrefix)) {
            csNames += std::wstring(rcs.svGet()) + L"|";
        }
        EXPECT_EQ(csNames, rst.pszNames) << rst.pszOutput;
        EXPECT_EQ(bHasMarkedNames(rst.pszOutput, rst.pszPrefix), rst.bMarked) << rst.pszOutput;
    }
}

TEST(InitScript, MarkedText) {
    const auto csPad = [](std::size_t n) { return std::string(n, '#'); };
    const std::string csMarker(svProgramMarker);  // nine bytes
    struct STCase {
        std::string csScript;
        const wchar_t* pszText;  // null: none
    };
    const STCase tabCase[] = {
        {"#!/bin/sh\n  Program=\"/opt/k --service\" # x\nProgram=\"other\"\n", L"/opt/k --service"},
        {"MyProgram=\"x\"", L"x"},
        {"Program=\"\"\nProgram=\"x\"\n", L""},
        {"program=\"x\"\nProgram = \"x\"\nProgram='x'\n", nullptr},
        {"Program=\"no end\r\nx\"\n", L"no end"},
        {"Program=\"h\xC3\xA9\xE2\x82\xAC\xFF\"", L"h\u00E9\u20AC\xDCFF"},
        // The closing quote at and beyond the limit of 150 bytes, no quote there, and the marker beyond it.
        {csPad(137) + csMarker + "abc\"\n", L"abc"},
        {csPad(138) + csMarker + "abc\"\n", nullptr},
        {csPad(139) + csMarker + "ab\n", L"ab"},
        {csPad(139) + csMarker + "ab", L"ab"},
        {csPad(142) + csMarker + "abc\"\n", nullptr},
        {csPad(150) + csMarker + "abc\"\n", L"abc"},
        {csPad(150) + "\n" + csMarker + "abc\"\n", L"abc"},
        {csPad(149) + "\n\n" + csMarker + "abc\"", L"abc"},
        {"", nullptr},
    };
    for (const STCase& rst : tabCase) {
        CMemoryStream clScript(CTLBIN(rst.csScript.begin(), rst.csScript.end()));
        CTString csText(L"before");
        EXPECT_EQ(bReadMarkedText(clScript, svProgramMarker, nMaxProgramLine, &csText),
                  rst.pszText != nullptr)
            << rst.csScript;
        EXPECT_EQ(csText.svGet(), rst.pszText != nullptr ? rst.pszText : L"before") << rst.csScript;
    }
    const std::string csLong = csPad(239) + std::string(svDisplayNameMarker) + "abcd\"";
    CMemoryStream clScript(CTLBIN(csLong.begin(), csLong.end()));
    CTString csText;
    EXPECT_TRUE(bReadMarkedText(clScript, svDisplayNameMarker, nMaxDisplayNameLine, &csText));
    EXPECT_EQ(csText.svGet(), L"abcd");
}

}  // namespace
}  // namespace kalmo
