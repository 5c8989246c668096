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
    const std::string csGood = "[A 1 5x1]\na\n";
    const struct {
        std::string csFirst, csOther;
        std::vector<std::string> tabComplaint;
    } tabCase[] = {
        {"stray\n", "", {"1.txt:1: text before"}},
        {"[A 1 5x1]\na\n[B 2 5x2]\n\nb\n", "", {"1.txt:3: the text is empty or begins"}},
        {"[A 1 5x1]\na\r\n", "", {"1.txt:2: control character"}},
        {"[A 1 5x0]\na\n", "", {"1.txt:1: a header"}},
        {"[A 0x1 5x1]\na\n", "", {"1.txt:1: a header"}},
        {"[A 1 5x1 %1=]\na\n", "", {"1.txt:1: a header"}},
        // Together.
        {"[A 1 9x1 %1=1 %2=3]\n%1 %2!u!\n[B 2 5x1]\nb\n",
         "[A 1 9x1 %1=1 %2=3]\n%2!u!, %1!s!\n[B 2 5x1]\nB\n",
         {}},
        {csGood + "[B 2 5x1]\nb\n",
         csGood + "[C 2 5x1]\nc\n",
         {"1.txt:3: B is not in 2.txt", "2.txt:3: C is not in 1.txt"}},
        {csGood + "[B 2 5x1]\nb\n", "[B 2 5x1]\nb\n" + csGood, {"2.txt:3: A comes later than in 1.txt"}},
        {csGood, "[A 2 5x1]\na\n", {"2.txt:1: number differs"}},
        {csGood, "[A 1 5x2]\na\n", {"2.txt:1: room or samples differ"}},
        {"[A 1 5x1 %1=1]\n%1!u!\n", "[A 1 5x1 %1=1]\n%1!d!\n", {"2.txt:1: inserts differ"}},
        {csGood + csGood,
         csGood,
         {"1.txt:3: A again; first on line 1", "1.txt:3: number 1 again; first on line 1"}},
        // Room, samples included.
        {"[A 1 5x2]\nabcde\nabcdef\n", "", {"1.txt:1: line 2 of the text takes 6 columns"}},
        {"[A 1 5x2]\na\nb\nc\n", "", {"1.txt:1: the text takes 3 lines in a room of 2"}},
        {"[A 1 5x1]\n%1\n", "", {"1.txt:1: the header has no sample"}},
        {"[A 1 5x1 %1=1]\na\n", "", {"1.txt:1: the header has no sample"}},
        {"[A 1 5x1 %1=1]\n%%%1!d!abc\n", "[A 1 5x1 %1=1]\n\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9%1!d!\n", {}},
        {"[A 1 5x1 %1=2]\n%%%1!d!abc\n", "", {"1.txt:1: line 1 of the text takes 6 columns"}},
        {"[A 1 5x2 %1=4 %2=4]\n%1 %2\n", "", {"1.txt:1: line 1 of the text takes 9 columns"}},
        {"[A 1 5x4 %1=0+2+6]\na%1\nb\n", "", {"1.txt:1: the text takes 5 lines in a room of 4"}},
        // Behind another text, and broken at words.
        {"[A 1 5x1]\na b\n[B 2 5x2 after A]\nb cdef\n", "", {}},
        {"[A 1 5x1]\na b\n[B 2 5x2 after A]\nb cdef g\n",
         "",
         {"1.txt:3: the text takes 3 lines in a room of 2"}},
        {csGood + "[B 2 5x1 after C]\nb\n", "", {"1.txt:3: there is no C"}},
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
