// clang-format off
// Stories of an operator who installs, upgrades and removes servers on a real machine, which must be a throwaway
// one, as the files *.story tell them:
//
//   == NAME                  a story, on a machine without any server, with copies of the payloads in /srv/dist; in
//                            parentheses a part of others
//   @NAME SCREEN...          stands for screens in scripts
//   $ COMMAND                in a shell that knows story.sh ("fresh": such a machine again); it must succeed. What is
//                            indented below belongs to it
//   with HOW                 how all runs below are started, besides what they say themselves
//   story NAME               what another one tells
//   run HOW: SCRIPT          a run through the screens of a script, which ends well and leaves the terminal in order
//   start, walk, end         its beginning, some screens, its end; "launch HOW" does not wait for a screen
//   give up HOW: SCRIPT      a run for each screen, which is given up there: all is as at the last "remember"
//   hang up STATUS HOW: SCRIPT   the terminal goes away there
//   send, resize, settle, signal, unplug, ends, keep screen, same screen, picture   see CStory::__Do
//
// HOW: next (payload), en, fr or es, record (what is run), plain (no locales and no "clear": letters are ASCII, the
// screen may stay), options ("/RECORD=..."), a type and a size of terminals; "by" and a program that starts the installer; "a|b" is a run with
// each. SCRIPT: screens with "; " between them, or indented below, a line each: "SCREEN => KEYS" or "SCREEN => KEYS =>
// KEYS THAT GIVE UP"; without keys they are Enter. SCREEN holds the texts from top to bottom, " / " between two
// rows, frames and blank rows left out; what a box leaves to see of the screen below it does not count. "*" stands for
// anything, "{OK}" for the text of that key of the catalogues, "{CONFLIT_NOM|name}" for one with an insert, "<9d>" for
// nine "d". Lines that begin with "/" belong to the one before.
// clang-format on
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <regex>
#include <sstream>

#include "framework/conversion.h"
#include "framework/plain_letter.h"
#include "testkit/tui_terminal.h"
#include "tools/text_compiler/catalogue.h"

namespace kalmo {
namespace {

using CLines = std::vector<std::string>;

struct STStep {
    std::string csShown, csKeys, csGiveUp;
};

std::map<std::string, CLines> g_tabStory;
std::map<std::string, std::string> g_tabScreen;

std::string csReplaced(std::string cs, const std::string& rcsOld, const std::string& rcsNew) {
    for (std::size_t n = 0; (n = cs.find(rcsOld, n)) != cs.npos; n += rcsNew.size()) {
        cs.replace(n, rcsOld.size(), rcsNew);
    }
    return cs;
}

// The catalogue of a language, read once.
const STCatalogue& rstCatalogue(const std::string& rcsLanguage) {
    static std::map<std::string, STCatalogue> tabRead;
    STCatalogue& rst = tabRead[rcsLanguage];
    if (rst.tabText.empty()) {
        const std::string csFile = KALMO_SOURCE "/framework/texts/" + rcsLanguage + ".txt";
        std::ifstream clFile(csFile);
        const std::string csContent{std::istreambuf_iterator<char>(clFile), {}};
        CComplaints clComplaints;
        rst = stReadCatalogue(csFile, csContent, &clComplaints);
    }
    return rst;
}

// The text of a key, "key|insert|insert", in a language.
std::string csTextOfKey(const std::string& rcsKey, const std::string& rcsLanguage) {
    std::istringstream clParts(rcsKey);
    std::string csPart;
    std::getline(clParts, csPart, '|');
    const STText* const pst = rstCatalogue(rcsLanguage).pstFind(csPart);
    if (pst == nullptr) {
        ADD_FAILURE() << "no text " << csPart;
        return "";
    }
    std::string csText = csToUTF8(pst->csText).pszGet();
    for (const char* const pszLineEnd : {"\n\n", "\n"}) {
        csText = csReplaced(csText, pszLineEnd, " / ");
    }
    for (int n = 1; std::getline(clParts, csPart, '|'); ++n) {
        const std::string csInsert = "%" + std::to_string(n);
        csText = csReplaced(csReplaced(csText, csInsert + "!d!", csPart), csInsert, csPart);
    }
    return csReplaced(csText, "[ ]", "[X]");
}

// The texts of an area of the screen, as a script has them.
std::string csTexts(const CEmulator& rcl, int nTop, int nLeft, int nRows, int nColumns) {
    static const std::regex clFrame("[-+]*\\+[-+]*|--+|\\|");
    static const std::regex clBlanks(" +");
    std::string csAll;
    for (int nRow = nTop; nRow < nTop + nRows; ++nRow) {
        std::string cs = std::regex_replace(rcl.csText(nRow, nLeft, nColumns), clFrame, " ");
        cs = std::regex_replace(cs, clBlanks, " ");
        cs.erase(0, cs.find_first_not_of(' '));
        cs.erase(cs.find_last_not_of(' ') + 1);
        csAll += (csAll.empty() || cs.empty() ? "" : " / ") + cs;
    }
    return csAll;
}

bool bMatches(const std::string& rcsText, const std::string& rcsExpected) {
    static const std::regex clSpecial(R"([.\\^$|()\[\]{}+?])");
    const std::string csPattern = std::regex_replace(rcsExpected, clSpecial, R"(\$&)");
    return std::regex_match(rcsText, std::regex(csReplaced(csPattern, "*", ".*")));
}

CLines tabSplit(const std::string& rcs, const char* pszSeparator) {
    const std::regex clSeparator(pszSeparator);
    return {std::sregex_token_iterator(rcs.begin(), rcs.end(), clSeparator, -1), {}};
}

// Reads the stories; the names of those that are told for themselves.
CLines tabReadStories() {
    CLines tabName;
    for (const char* const psz : {"screens", "install", "upgrade", "failure"}) {
        std::ifstream clFile(std::string(KALMO_SOURCE "/tests/interactive/") + psz + ".story");
        if (!clFile) {
            std::abort();  // its stories would just be missing
        }
        std::string csName;
        for (std::string cs; std::getline(clFile, cs);) {
            if (cs.starts_with("== ")) {
                csName = cs.substr(3);
                if (csName[0] != '(') {
                    tabName.push_back(csName);
                }
            } else if (cs.starts_with("@")) {
                const std::size_t n = cs.find(' ');
                g_tabScreen[cs.substr(0, n)] = cs.substr(cs.find_first_not_of(' ', n));
            } else if (cs.starts_with("    ")) {
                g_tabStory[csName].back() += "\n" + cs.substr(4);
            } else if (!cs.empty() && cs[0] != '#') {
                g_tabStory[csName].push_back(cs);
            }
        }
    }
    return tabName;
}

void AddSteps(std::string csLine, const std::string& rcsLanguage, std::vector<STStep>* ptab) {
    static const std::regex clNamed("(@[a-z]+)(?: => (.*))?");
    static const std::regex clSpecial("\\{([^}]*)\\}|<(\\d+)(.)>");
    static const std::regex clStep("(.*?)(?: => (.*?))?(?: => (.*))?");
    csLine = csReplaced(csLine, "$VERSION", KALMO_VERSION);
    for (std::smatch clText; std::regex_search(csLine, clText, clSpecial);) {
        csLine = clText.prefix().str() +
                 (clText[1].matched ? csTextOfKey(clText[1], rcsLanguage)
                                    : std::string(std::stoul(clText[2]), *clText[3].first)) +
                 clText.suffix().str();
    }
    std::smatch clMatch;
    if (std::regex_match(csLine, clMatch, clNamed)) {
        for (const std::string& rcs : tabSplit(g_tabScreen.at(clMatch[1]), "; ")) {
            AddSteps(rcs, rcsLanguage, ptab);
        }
        ptab->back().csKeys = clMatch[2].matched ? clMatch[2].str() : ptab->back().csKeys;
        return;
    }
    std::regex_match(csLine, clMatch, clStep);
    ptab->push_back({clMatch[1], clMatch[2].matched ? clMatch[2].str() : "Enter", clMatch[3]});
}

class CStory : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        ASSERT_NE(std::getenv("KALMO_MACHINE"), nullptr)
            << "this installs services: run it in a throwaway machine (testkit/machine)";
        ::setenv("KALMO_PAYLOAD", KALMO_PAYLOAD, 1);
        ::setenv("VERSION", KALMO_VERSION, 1);
    }
    void TearDown() override {
        if (HasFailure() && m_pclTerminal != nullptr) {
            std::puts(m_pclTerminal->csText().c_str());
            __Shell("tail -n 20 /tmp/trace; ps axfo pid,stat,args | tail -n 20; false");
        }
    }
    void _Tell(const std::string& rcsName) {
        __Shell("fresh");
        __TellOn(rcsName);
    }

  private:
    void __TellOn(const std::string& rcsName) {
        for (const std::string& rcs : g_tabStory.at(rcsName)) {
            SCOPED_TRACE(rcs);
            __Do(rcs);
            if (HasFailure()) {
                return;
            }
        }
    }
    void __Do(const std::string& rcsLine) {
        static const std::regex clParts("(give up|hang up \\d+|\\$|\\w+)(?: ([^]*?))?(?:(?:: |\n)([^]*))?");
        std::smatch clMatch;
        ASSERT_TRUE(std::regex_match(rcsLine, clMatch, clParts));
        const std::string csWhat = clMatch[1];
        const std::string csHow = clMatch[2];
        static const std::regex clEach("^([^:\n]* )([^ |:\n]+)\\|([^ :\n]+)([^]*)$");
        if (std::smatch clOther; csWhat == "run" && std::regex_match(rcsLine, clOther, clEach)) {
            for (const std::string& rcs : {clOther[2].str(), clOther[3].str()}) {
                SCOPED_TRACE(rcs);
                ASSERT_NO_FATAL_FAILURE(__Do(clOther[1].str() + rcs + clOther[4].str()));
            }
            return;
        }
        if (csWhat == "run" || csWhat == "start" || csWhat == "launch") {
            __Start(csHow);
        }
        if (csWhat == "run" || csWhat == "end") {
            __End(__tabSteps(clMatch[3]));
        } else if (csWhat == "start" || csWhat == "walk") {
            __Walk(__tabSteps(clMatch[3]));
        } else if (csWhat == "$" || csWhat == "fresh") {
            __Shell(csWhat == "$" ? rcsLine.substr(2) : csWhat);
        } else if (csWhat == "with") {
            m_csWith = csHow;
        } else if (csWhat == "story") {
            __TellOn(csHow);
        } else if (csWhat == "give up" || csWhat.starts_with("hang up")) {
            std::vector<STStep> tab;
            for (const STStep& rst : __tabSteps(clMatch[3])) {
                SCOPED_TRACE(rst.csShown);
                tab.push_back({rst.csShown, rst.csGiveUp, ""});
                __Start(csHow);
                if (csWhat == "give up") {
                    __End(tab);
                } else {
                    tab.back().csKeys = "";
                    __Walk(tab);
                    m_pclTerminal->HangUp();
                    EXPECT_EQ(m_pclTerminal->nWaitEnd(), std::stoi(csWhat.substr(8)));
                }
                __Shell("unchanged");
                tab.back().csKeys = rst.csKeys;
            }
        } else if (csWhat == "send") {  // without waiting, or until a text shows
            const std::size_t nUntil = csHow.find(" until ");
            m_pclTerminal->Send(
                csReplaced(csReplaced(csHow.substr(0, nUntil), "\\r", "\r"), "\\x03", "\x03"));
            ASSERT_TRUE(nUntil == csHow.npos || m_pclTerminal->bWaitText(csHow.substr(nUntil + 7)));
        } else if (csWhat == "resize" || csWhat == "settle") {  // without waiting, and with
            int nColumns = 0;
            int nRows = 0;
            std::sscanf(csHow.c_str(), "%dx%d", &nColumns, &nRows);
            m_pclTerminal->Resize(nColumns, nRows);
            ASSERT_TRUE(csWhat == "resize" || m_pclTerminal->bSettle());
        } else if (csWhat == "signal") {
            m_pclTerminal->Signal(std::stoi(csHow));
        } else if (csWhat == "unplug" || csWhat == "ends") {  // with a status
            if (csWhat == "unplug") {
                m_pclTerminal->HangUp();
            }
            EXPECT_EQ(m_pclTerminal->nWaitEnd(), std::stoi(csHow));
            EXPECT_TRUE(csWhat == "unplug" ||
                        (m_pclTerminal->bCooked() && !m_pclTerminal->clScreen().bAlternateScreen()));
        } else if (csWhat == "keep") {
            m_csKept = m_pclTerminal->clScreen().csSvg();
        } else if (csWhat == "same") {
            EXPECT_TRUE(m_pclTerminal->clScreen().csSvg() == m_csKept) << m_pclTerminal->csText();
        } else if (csWhat == "picture") {  // with KALMO_PICTURES set, draws it into that folder
            const char* const pszFolder = std::getenv("KALMO_PICTURES");
            const std::string csFolder = pszFolder != nullptr ? pszFolder : KALMO_SOURCE "/docs/pictures";
            EXPECT_TRUE(m_pclTerminal->bPicture(csFolder + "/" + csHow, pszFolder != nullptr))
                << "out of date: build the target \"pictures_install\"";
        } else if (csWhat != "launch") {
            ADD_FAILURE() << "not understood";
        }
    }
    void __Shell(const std::string& rcsCommand) {
        ::setenv("KALMO_COMMAND", rcsCommand.c_str(), 1);
        std::FILE* const pstPipe = ::popen("cd " KALMO_SOURCE
                                           " && exec bash -c '. samples/story/server_state.sh; . "
                                           "tests/interactive/story.sh; eval \"$KALMO_COMMAND\"' 2>&1",
                                           "re");
        std::string cs;
        std::array<char, 4096> tab{};
        for (std::size_t n = 0; (n = std::fread(tab.data(), 1, tab.size(), pstPipe)) > 0;) {
            cs.append(tab.data(), n);
        }
        EXPECT_EQ(::pclose(pstPipe), 0) << cs;
    }
    void __Start(const std::string& rcsHow) {
        CTerminal::STOptions stOptions{.stPatience = std::chrono::seconds(300)};
        const std::string csHow = " " + m_csWith + " " + rcsHow;
        const std::size_t nBy = csHow.find(" by ");
        std::string csCommand = nBy == csHow.npos ? "" : csHow.substr(nBy + 4) + " ";
        std::string csPayload = "current";
        std::string csOptions;
        m_csLanguage = "en";
        m_bPlain = false;
        for (const std::string& rcs : CTuiTerminal::tabWords(csHow.substr(0, nBy))) {
            if (rcs == "next") {
                csPayload = rcs;
            } else if (rcs == "en" || rcs == "fr" || rcs == "es") {
                m_csLanguage = rcs;
            } else if (rcs == "plain") {
                m_bPlain = true;
            } else if (rcs == "record") {
                __Shell("rm -f /tmp/record*");
                // A process cannot be looked at by two: no leak can be found meanwhile.
                csCommand =
                    "env ASAN_OPTIONS=detect_leaks=0 strace -D -ff --seccomp-bpf -qq -s 2000 -o /tmp/record "
                    "-e trace=execve,fork,vfork,clone,clone3,syncfs ";
            } else if (rcs.starts_with("/")) {
                csOptions += " " + rcs;
            } else if (std::sscanf(rcs.c_str(), "%dx%d", &stOptions.nColumns, &stOptions.nRows) != 2) {
                stOptions.csType = rcs;
            }
        }
        stOptions.tabEnvironment = {"LC_ALL=" + m_csLanguage + ".UTF-8"};
        csCommand += "/srv/dist/" + csPayload + "/kalmoinstall /DEBUG=/tmp/trace" + csOptions;
        m_pclTerminal.reset();
        m_pclTerminal = std::make_unique<CTerminal>(CTuiTerminal::tabWords(csCommand), stOptions);
    }
    [[nodiscard]] std::vector<STStep> __tabSteps(const std::string& rcsScript) const {
        std::vector<STStep> tab;
        const std::string csScript = csReplaced(csReplaced(rcsScript, "\n    /", " /"), "\n", "; ");
        for (const std::string& rcs : tabSplit(csScript, "; ")) {
            if (!rcs.empty()) {
                AddSteps(rcs, m_csLanguage, &tab);
            }
        }
        for (STStep& rst : tab) {
            std::wstring cs(csFromUTF8(rst.csShown).svGet());
            std::transform(cs.begin(), cs.end(), cs.begin(), cPlainLetter);
            rst.csShown = m_bPlain ? csToUTF8(cs).pszGet() : rst.csShown;
        }
        return tab;
    }
    void __Walk(const std::vector<STStep>& rtab) {
        ASSERT_TRUE(m_pclTerminal->bSettle());
        for (const STStep& rst : rtab) {
            ASSERT_EQ(__csShown(rst.csShown), rst.csShown);
            ASSERT_TRUE(m_pclTerminal->bPress(rst.csKeys)) << rst.csShown;
        }
    }
    void __End(const std::vector<STStep>& rtab) {
        ASSERT_NO_FATAL_FAILURE(__Walk(rtab));
        ASSERT_EQ(m_pclTerminal->nWaitEnd(), 0);
        EXPECT_TRUE(m_bPlain || m_pclTerminal->csText() == "\n") << m_pclTerminal->csText();
        EXPECT_TRUE(m_pclTerminal->bCooked() && !m_pclTerminal->clScreen().bAlternateScreen());
    }
    // What is expected, when the screen shows it; else what it shows.
    [[nodiscard]] std::string __csShown(const std::string& rcsExpected) const {
        const CEmulator& rcl = m_pclTerminal->clScreen();
        const auto nShrunk = [](int nPreferred, int nScreen) {
            return nScreen < nPreferred + 4 ? nScreen - 4 : nPreferred;
        };
        // A box of one of these heights may stand over another screen.
        const int nWidth = nShrunk(60, rcl.nColumns());
        for (const int nPreferred : {20, 13}) {
            const int nHeight = nShrunk(nPreferred, rcl.nRows());
            // Beside the shadow two corners show what is below.
            if (bMatches(csTexts(rcl, (rcl.nRows() - nHeight) / 2, (rcl.nColumns() - nWidth) / 2, nHeight - 1,
                                 nWidth - 1),
                         rcsExpected)) {
                return rcsExpected;
            }
        }
        const std::string csWhole = csTexts(rcl, 0, 0, rcl.nRows(), rcl.nColumns());
        return bMatches(csWhole, rcsExpected) ? rcsExpected : csWhole;
    }

    std::string m_csWith;
    std::string m_csLanguage = "en";
    bool m_bPlain = false;
    std::string m_csKept;  // A screen.
    std::unique_ptr<CTerminal> m_pclTerminal;
};

TEST_P(CStory, IsTold) {
    _Tell(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Operator, CStory, testing::ValuesIn(tabReadStories()),
                         [](const auto& rst) { return rst.param; });

}  // namespace
}  // namespace kalmo
