#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tools/text_compiler/block_writer.h"
#include "tools/text_compiler/catalogue.h"
#include "tools/text_compiler/catalogue_check.h"

namespace kalmo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST(TextCompiler, ReadsACatalogue) {
    CComplaints clComplaints;
    const STCatalogue st = stReadCatalogue("x.txt",
                                           "# remark\n"
                                           "\n"
                                           "[0x1F 7x1] button\n"
                                           "Oui\n"
                                           "\n"
                                           "# remark\n"
                                           "[12 20x3]\n"
                                           "[ ] \xC3\xA9tape\n"
                                           "\n"
                                           "%1\n"
                                           "\n",
                                           &clComplaints);
    EXPECT_THAT(clComplaints.rtabGet(), ElementsAre());
    ASSERT_EQ(st.tabText.size(), 2U);
    EXPECT_EQ(st.tabText[0].unNumber, 31U);
    EXPECT_EQ(st.tabText[0].csText, L"Oui");
    EXPECT_EQ(st.tabText[1].unNumber, 12U);
    EXPECT_EQ(st.tabText[1].unColumns, 20U);
    EXPECT_EQ(st.tabText[1].unLines, 3U);
    EXPECT_EQ(st.tabText[1].nLine, 7);
    EXPECT_EQ(st.tabText[1].csText, L"[ ] \u00E9tape\n\n%1");
}

TEST(TextCompiler, NamesTheLineOfAFault) {
    struct STCase {
        const char* pszContent;
        const char* pszWhere;
    };
    const STCase tabCase[] = {
        {"stray\n", "x.txt:1: text before"},
        {"[1 5x1]\na\n[2 5x1]\n\n", "x.txt:3: the text is empty"},
        {"[1 5x2]\n\na\n", "x.txt:1: the text is empty or begins"},
        {"[1 5x1]\n\xC3\n", "x.txt:2: not valid UTF-8"},
        {"[1 5x1]\na\r\n", "x.txt:2: control character"},
        {"[1 5x1]\na\tb\n", "x.txt:2: control character"},
        {"[1 5x1]\na \n", "x.txt:2: blank at the end"},
        {"[0 5x1]\na\n", "x.txt:1: a header"},
        {"[257 5x1]\na\n", "x.txt:1: a header"},
        {"[65536 5x1]\na\n", "x.txt:1: a header"},
        {"[0x 5x1]\na\n", "x.txt:1: a header"},
        {"[1]\na\n", "x.txt:1: a header"},
        {"[1 5x0]\na\n", "x.txt:1: a header"},
        {"[1 5x1\na\n", "x.txt:1: a header"},
    };
    for (const STCase& rst : tabCase) {
        CComplaints clComplaints;
        stReadCatalogue("x.txt", rst.pszContent, &clComplaints);
        EXPECT_THAT(clComplaints.rtabGet(), ElementsAre(StartsWith(rst.pszWhere))) << rst.pszContent;
    }
}

std::string csManyTexts(int nCount) {
    std::string cs;
    for (int n = 1; n <= nCount; ++n) {
        cs += "[" + std::to_string(1000 + n) + " 5x1]\na\n";
    }
    return cs;
}

TEST(TextCompiler, CataloguesMustAgree) {
    struct STCase {
        std::string csFirst;
        std::string csOther;
        std::vector<std::string> tabExpected;
    };
    const STCase tabCase[] = {
        {"[1 9x1]\n%1 %2!u!\n[2 5x1]\nb\n", "[2 5x1]\nB\n[1 9x1]\n%2!u!, %1!s!\n", {}},
        {csManyTexts(121), csManyTexts(121), {}},
        {csManyTexts(122), csManyTexts(122), {"1.txt:243: 122 texts", "2.txt:243: 122 texts"}},
        {"[1 5x1]\na\n[2 5x1]\nb\n",
         "[1 5x1]\na\n[3 5x1]\nc\n",
         {"1.txt:3: number 2 is not in 2.txt", "2.txt:3: number 3 is not in 1.txt"}},
        {"[1 5x1]\n%1\n", "[1 5x1]\na\n", {"2.txt:1: inserts differ"}},
        {"[1 5x1]\n%1\n", "[1 5x1]\n%2\n", {"2.txt:1: inserts differ"}},
        {"[1 5x1]\n%1!u!\n", "[1 5x1]\n%1!d!\n", {"2.txt:1: inserts differ"}},
        {"[1 5x1]\n%1!u!\n", "[1 5x1]\n%1\n", {"2.txt:1: inserts differ"}},
        {"[1 5x1]\n5 %\n", "[1 5x1]\na\n", {"1.txt:1: a percent sign"}},
        {"[1 5x1]\na\n", "[1 5x1]\n%1!\n", {"2.txt:1: a percent sign"}},
        {"[1 5x1]\na\n[1 5x1]\nb\n", "[1 5x1]\na\n", {"1.txt:3: number 1 again; first on line 1"}},
        {"[1 5x2]\na\n", "[1 5x3]\na\n", {"2.txt:1: room differs"}},
        {"[1 5x2]\nabcde\nabcdef\n",
         "[1 5x2]\na\n",
         {"1.txt:1: line 2 of the text takes 6 columns in a room of 5"}},
        {"[1 5x2]\na\nb\nc\n", "[1 5x2]\na\n", {"1.txt:1: the text takes 3 lines in a room of 2"}},
        {"[1 5x1]\n%%%1!d!abcd\n", "[1 5x1]\n\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9%1!d!\n", {}},
    };
    for (const STCase& rst : tabCase) {
        CComplaints clComplaints;
        const std::array<STCatalogue, 2> tab = {stReadCatalogue("1.txt", rst.csFirst, &clComplaints),
                                                stReadCatalogue("2.txt", rst.csOther, &clComplaints)};
        CheckCatalogues(tab, &clComplaints);
        ASSERT_EQ(clComplaints.rtabGet().size(), rst.tabExpected.size()) << rst.csFirst;
        for (std::size_t n = 0; n < rst.tabExpected.size(); ++n) {
            EXPECT_THAT(clComplaints.rtabGet()[n], StartsWith(rst.tabExpected[n]));
        }
    }
}

TEST(TextCompiler, WritesEntriesByNumber) {
    CComplaints clComplaints;
    STCatalogue st;
    st.tabText = {{1, 0x201, 9, 1, L"\u00E9\U0001F600"}, {3, 0x102, 9, 1, L"ab"}};
    const std::vector<unsigned char> tab = tabBuildBlock(st, &clComplaints);
    const std::vector<unsigned char> tabExpected = {
        10,   0,    0x02, 0x01, 0,    3, 0, 'a',  'b', 0,  // one-byte units
        15,   0,    0x01, 0x02, 0x40, 8, 0, 0xE9, 0,   0x3D,
        0xD8, 0x00, 0xDE, 0,    0,    0, 0,  // two-byte units, the end
    };
    ASSERT_GT(tab.size(), 36U);
    EXPECT_EQ(std::vector<unsigned char>(tab.begin() + 36, tab.end()), tabExpected);

    st.tabText = {{1, 5, 9, 1, std::wstring(65527, L'a')}};
    EXPECT_EQ(tabBuildBlock(st, &clComplaints).size(), 36U + 65535 + 2);
    EXPECT_THAT(clComplaints.rtabGet(), ElementsAre());
    st.tabText[0].csText += L'a';
    tabBuildBlock(st, &clComplaints);
    EXPECT_THAT(clComplaints.rtabGet(), ElementsAre(HasSubstr("too long")));
}

}  // namespace
}  // namespace kalmo
