#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <span>
#include <string>
#include <vector>

#include "tools/text_compiler/catalogue.h"
#include "tools/text_compiler/catalogue_check.h"

namespace kalmo {
namespace {

MATCHER(StartsAsExpected, "") {
    return std::get<0>(arg).starts_with(std::get<1>(arg));
}

// What is said of two catalogues that should be the same texts in two languages.
TEST(TextCompiler, NamesTheLineOfAFault) {
    const std::string csGood = "[1 5x1]\na\n";
    const struct {
        std::string csFirst, csOther;
        std::vector<std::string> tabComplaint;
    } tabCase[] = {
        {"stray\n", "", {"1.txt:1: text before"}},
        {"[1 5x1]\na\n[2 5x2]\n\nb\n", "", {"1.txt:3: the text is empty or begins"}},
        {"[1 5x1]\na\r\n", "", {"1.txt:2: control character"}},
        {"[1 5x0]\na\n", "", {"1.txt:1: a header"}},
        // Together.
        {"[1 9x1]\n%1 %2!u!\n[2 5x1]\nb\n", "[2 5x1]\nB\n[1 9x1]\n%2!u!, %1!s!\n", {}},
        {csGood + "[2 5x1]\nb\n",
         csGood + "[3 5x1]\nc\n",
         {"1.txt:3: number 2 is not in 2.txt", "2.txt:3: number 3 is not in 1.txt"}},
        {"[1 5x1]\n%1!u!\n", "[1 5x1]\n%1!d!\n", {"2.txt:1: inserts differ"}},
        {csGood + csGood, csGood, {"1.txt:3: number 1 again; first on line 1"}},
        {"[1 5x2]\nabcde\nabcdef\n", "[1 5x2]\na\n", {"1.txt:1: line 2 of the text takes 6 columns"}},
        {"[1 5x2]\na\nb\nc\n", "[1 5x2]\na\n", {"1.txt:1: the text takes 3 lines in a room of 2"}},
        {"[1 5x1]\n%%%1!d!abcd\n", "[1 5x1]\n\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9%1!d!\n", {}},
    };
    for (const auto& rst : tabCase) {
        CComplaints clComplaints;
        const std::array<STCatalogue, 2> tab = {stReadCatalogue("1.txt", rst.csFirst, &clComplaints),
                                                stReadCatalogue("2.txt", rst.csOther, &clComplaints)};
        CheckCatalogues(std::span(tab).first(rst.csOther.empty() ? 1 : 2), &clComplaints);
        EXPECT_THAT(clComplaints.rtabGet(), testing::Pointwise(StartsAsExpected(), rst.tabComplaint))
            << rst.csFirst;
    }
}

}  // namespace
}  // namespace kalmo
