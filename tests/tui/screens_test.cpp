// clang-format off
// Programs at an emulated terminal, as the files *.screens tell it: keys that are pressed, screens that come.
//
//   == NAME                        a test
//   ! COMMAND                      a shell command before it
//   @ COMMAND => KEYS [=> READING] what its cases stand for: "%" is what they say. READING is "status" where
//                                  a report is the exit status, a regular expression, "chosen" where it is what
//                                  a directory chooser shows; else it is the last line that the program leaves
//   [{TERMINAL...}] COMMAND [=> KEYS [=> REPORT]]
//                                  a case: a command for bash, and keys for CTerminal::bPress. A key can also be
//                                  a size, a signal or "HangUp". In braces are types and sizes of terminals, for
//                                  each of which the case holds, and NAME=VALUE
//
// Indented below a case is what goes on:
//
//   => KEYS [=> REPORT]            and what can stand for a report: "=" is the picture below, "keep" the screen
//                                  now, which "kept" is again
//   ROW,COLUMN "TEXT" LOOKS [CURSOR-COLUMN]; "TEXT"; no "TEXT"; cursor hidden; cursor ROW,COLUMN visible|strong;
//   at "TEXT", what the cursor stands in front of, shown or hidden; bytes NUMBER
//   """                            the whole screen with its looks, as csShow has it, up to the next """: that
//                                  of a terminal that can do everything, on others it shows as they can
//
// "\u" and four digits are a character. "  # " begins a remark; " \" at its end goes on in the next line.
// The controls are told in scene.cpp, looks in testkit/tui_terminal.h (TAB_LEGEND), events in
// tui/toolkit/widget.h (eEVENT).
// clang-format on
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "framework/conversion.h"
#include "testkit/tui_terminal.h"

namespace kalmo {
namespace {

using CLines = std::vector<std::string>;

std::map<std::string, CLines> g_tabTest;

std::string csUnescaped(std::string cs) {
    for (std::size_t n = 0; (n = cs.find("\\u", n)) != cs.npos;) {
        const auto c = static_cast<wchar_t>(std::stoul(cs.substr(n + 2, 4), nullptr, 16));
        cs.replace(n, 6, csToUTF8(std::wstring(1, c)).pszGet());
    }
    return cs;
}

// Reads the tests; their names.
CLines tabReadTests() {
    CLines tabName;
    for (const char* const psz : {"controls", "dialogs", "pictures"}) {
        std::ifstream clFile(std::string(TUI_SCREENS "/") + psz + ".screens");
        if (!clFile) {
            std::abort();  // its tests would just be missing
        }
        for (std::string cs, csMore; std::getline(clFile, cs);) {
            while (cs.ends_with(" \\") && std::getline(clFile, csMore)) {
                cs.replace(cs.size() - 1, 1, csMore.substr(csMore.find_first_not_of(' ')));
            }
            cs.resize(std::min(cs.find("  # "), cs.size()));
            if (cs.starts_with("== ")) {
                tabName.push_back(cs.substr(3));
            } else if (!cs.empty() && cs[0] != '#') {
                g_tabTest[tabName.back()].push_back(csUnescaped(cs));
            }
        }
    }
    return tabName;
}

// The parts of a line between "=>", without the blanks around them.
CLines tabParts(const std::string& rcs) {
    static const std::regex clBlanks("^ +| +$");
    CLines tab;
    for (std::size_t n = 0, nEnd = 0; nEnd != rcs.npos; n = nEnd + 2) {
        nEnd = rcs.find("=>", n);
        tab.push_back(std::regex_replace(rcs.substr(n, nEnd - n), clBlanks, ""));
    }
    return tab;
}

// What a terminal's description makes of the colours. The machine's own "xterm" has eight.
enum class eCOLOURS { None, Fixed, Changed };
eCOLOURS eColours(const CTerminal::STOptions& rst) {
    static const std::regex clNone("vt[0-9]+|blurb");
    static const std::regex clFixed("xterm|(linux|putty|screen|tmux).*");
    if (std::regex_match(rst.csType, clNone)) {
        return eCOLOURS::None;
    }
    return std::regex_match(rst.csType, clFixed) ? eCOLOURS::Fixed : eCOLOURS::Changed;
}

// A picture as it shows on a terminal of another kind and size: clipped, or with the background around it.
std::string csShownOn(const std::string& rcsPicture, const CTerminal::STOptions& rst) {
    std::istringstream clLines(rcsPicture.substr(1));
    std::string csResult = "\n";
    for (int nRow = 0; nRow < rst.nRows; ++nRow) {
        std::string csLine;
        std::getline(clLines, csLine);
        const std::size_t nBlank = std::min(csLine.rfind(' '), csLine.size());
        std::wstring csText(csFromUTF8(csLine.substr(0, nBlank)).svGet());
        std::string csLooks = csLine.substr(std::min(nBlank + 1, csLine.size()));
        csText.resize(static_cast<std::size_t>(rst.nColumns), L' ');
        csLooks.resize(static_cast<std::size_t>(rst.nColumns), '.');
        if (eColours(rst) == eCOLOURS::None) {  // reverse is all that it has
            std::transform(csLooks.begin(), csLooks.end(), csLooks.begin(),
                           [](char c) { return c == 'r' || c == 'B' ? 'R' : ' '; });
        } else if (eColours(rst) == eCOLOURS::Fixed) {  // the grey among them
            std::replace(csLooks.begin(), csLooks.end(), 'd', 'n');
        }
        csResult += csToUTF8(csText).pszGet() + (' ' + csLooks) + '\n';
    }
    return csResult;
}

// The number of a signal by its name; 0 for another word.
int nSignal(const std::string& rcs) {
    int n = 31;
    while (n > 0 && rcs != std::string("SIG") + ::sigabbrev_np(n)) {
        --n;
    }
    return n;
}

// One case on one terminal.
class CCase {
  public:
    CCase(const std::string& rcsCommand, CTerminal::STOptions stOptions, std::string csReading)
        : m_stOptions(std::move(stOptions)),
          m_csReading(std::move(csReading)),
          m_clTerminal({"bash", "-c", rcsCommand}, m_stOptions) {}

    // Presses keys, compares the report where there is one, goes on with the lines below.
    void Go(const CLines& rtabLine, CLines tabPart) {
        SCOPED_TRACE(m_stOptions.csType + " " + std::to_string(m_stOptions.nColumns));
        __Step(tabPart);
        for (auto it = rtabLine.begin() + 1; it < rtabLine.end(); ++it) {
            SCOPED_TRACE(*it);
            const std::string cs = it->substr(it->find_first_not_of(' '));
            if (cs == "\"\"\"") {
                m_csPicture = "\n";
                while (++it < rtabLine.end() && it->find("\"\"\"") == it->npos) {
                    m_csPicture += *it + "\n";
                }
                __Check("=");
            } else if (cs.starts_with("=>")) {
                __Step(tabParts(cs));
            } else {
                __Check(cs);
            }
        }
    }

  private:
    void __Step(const CLines& rtabPart) {
        for (const std::string& rcs : CTuiTerminal::tabWords(rtabPart[1])) {
            int nColumns = 0;
            int nRows = 0;
            if (const int nNumber = nSignal(rcs); nNumber > 0) {
                m_clTerminal.Signal(nNumber);
            } else if (rcs == "HangUp") {
                m_clTerminal.HangUp();
                m_bHungUp = true;
            } else if (std::sscanf(rcs.c_str(), "%dx%d", &nColumns, &nRows) == 2) {
                m_clTerminal.Resize(m_stOptions.nColumns = nColumns, m_stOptions.nRows = nRows);
            } else {
                EXPECT_TRUE(m_clTerminal.bPress(rcs)) << rcs;
            }
        }
        if (rtabPart.size() > 2) {
            __Check(rtabPart[2]);
        }
    }
    void __Check(const std::string& rcs) {
        static const std::regex clPlace("(\\d+),(\\d+) \"(.*)\" ?([A-Za-z.]*) ?(\\d*)");
        static const std::regex clText("(no )?\"(.*)\"");
        static const std::regex clCursor("cursor (?:(\\d+),(\\d+) (visible|strong)|hidden)");
        static const std::regex clAt("at \"(.*)\"");
        static const std::regex clBytes("bytes (\\d+)");
        const STCursor& rstCursor = m_clTerminal.clScreen().stCursor();
        std::smatch clMatch;
        const auto nPart = [&clMatch](std::size_t n) { return std::stoi(clMatch[n]); };
        const auto nWidth = [&clMatch](std::size_t n) {
            return static_cast<int>(csFromUTF8(clMatch[n].str()).nGetLength());
        };
        if (rcs == "=") {
            EXPECT_EQ(m_clTerminal.csShow(), csShownOn(m_csPicture, m_stOptions));
            // The grey of what is disabled.
            const bool bGrey = eColours(m_stOptions) == eCOLOURS::Changed;
            EXPECT_EQ(m_clTerminal.clScreen().unPaletteColour(8), bGrey ? 0x262626U : 0x808080U);
        } else if (rcs == "keep") {
            m_csKept = m_clTerminal.csShow();
        } else if (rcs == "kept") {
            EXPECT_EQ(m_clTerminal.csShow(), m_csKept);
        } else if (std::regex_match(rcs, clMatch, clPlace)) {
            EXPECT_EQ(m_clTerminal.csText(nPart(1), nPart(2), nWidth(clMatch[4].length() > 0 ? 4 : 3)),
                      clMatch[3]);
            EXPECT_EQ(m_clTerminal.csLooks(nPart(1), nPart(2), nWidth(4)), clMatch[4]);
            EXPECT_TRUE(clMatch[5].length() == 0 || rstCursor.nColumn == nPart(5)) << rstCursor.nColumn;
        } else if (std::regex_match(rcs, clMatch, clText)) {
            EXPECT_EQ(m_clTerminal.bShows(clMatch[2].str()), !clMatch[1].matched) << m_clTerminal.csText();
        } else if (std::regex_match(rcs, clMatch, clCursor)) {
            if (clMatch[3].matched) {
                EXPECT_EQ(rstCursor, (STCursor{nPart(1), nPart(2), true, clMatch[3] == "strong"}));
            } else {
                EXPECT_FALSE(rstCursor.bVisible);
            }
        } else if (std::regex_match(rcs, clMatch, clAt)) {
            EXPECT_EQ(m_clTerminal.csText(rstCursor.nRow, rstCursor.nColumn, nWidth(1)), clMatch[1]);
        } else if (std::regex_match(rcs, clMatch, clBytes)) {
            EXPECT_EQ(std::to_string(m_clTerminal.u64Received()), clMatch[1]);
        } else if (m_csReading == "chosen") {
            EXPECT_EQ(__csChosen(), rcs);
        } else {
            const std::string cs =
                m_csReading == "status" ? std::to_string(m_clTerminal.nWaitEnd()) : m_clTerminal.csReport();
            EXPECT_TRUE(cs == rcs || (m_csReading == "status" && std::regex_match(cs, std::regex(rcs))))
                << cs;
            // Where the sanitizers ended it, their report must be there to be read.
            EXPECT_TRUE(cs != "1" || m_csReading != "status" || m_clTerminal.bShows("ABORTING\n"));
            EXPECT_TRUE(m_bHungUp || m_clTerminal.bGivenBack());
        }
    }
    // Path and, behind a blank, the selected line of a chooser 64 columns wide on 80 by 24.
    [[nodiscard]] std::string __csChosen() const {
        const auto csLine = [this](int nRow) {
            const std::string cs = m_clTerminal.csText(nRow, 12, 53);
            return cs.substr(0, cs.find_last_not_of(' ') + 1);
        };
        for (int nRow = 9; nRow < 14; ++nRow) {
            const std::string csLook = m_clTerminal.csLooks(nRow, 12, 1);
            if (csLook == "s" || csLook == "r") {
                return csLine(5) + " " + csLine(nRow);
            }
        }
        return "nothing";
    }

    CTerminal::STOptions m_stOptions;
    std::string m_csReading;
    CTuiTerminal m_clTerminal;
    std::string m_csKept;
    std::string m_csPicture;
    bool m_bHungUp = false;
};

// The terminals in braces at the start of a case, which are taken off it.
std::vector<CTerminal::STOptions> tabTakeTerminals(std::string* pcs) {
    static const std::regex clBraces("\\{(\\S.*?)\\} *(.*)");
    std::smatch clMatch;
    CLines tabType;
    std::vector<std::pair<int, int>> tabSize;
    CLines tabEnvironment = {"ESCDELAY=10"};
    if (const std::string cs = *pcs; std::regex_match(cs, clMatch, clBraces)) {
        for (const std::string& rcs : CTuiTerminal::tabWords(clMatch[1])) {
            int nColumns = 0;
            int nRows = 0;
            if (rcs.find('=') != rcs.npos) {
                tabEnvironment.push_back(rcs);
            } else if (std::sscanf(rcs.c_str(), "%dx%d", &nColumns, &nRows) == 2) {
                tabSize.emplace_back(nColumns, nRows);
            } else {
                tabType.push_back(rcs);
            }
        }
        *pcs = clMatch[2];
    }
    tabType.resize(std::max<std::size_t>(tabType.size(), 1), "xterm-256color");
    tabSize.resize(std::max<std::size_t>(tabSize.size(), 1), {80, 24});
    std::vector<CTerminal::STOptions> tab;
    for (const std::string& rcsType : tabType) {
        for (const auto& [nColumns, nRows] : tabSize) {
            tab.push_back({rcsType, nColumns, nRows, tabEnvironment});
        }
    }
    return tab;
}

class CScreens : public testing::TestWithParam<std::string> {};

TEST_P(CScreens, AreAsWritten) {
    const char* const pszWrapper = std::getenv("TUI_WRAPPER");  // runs the programs under this command
    const std::string csWrapper = pszWrapper == nullptr ? "" : pszWrapper + std::string(" ");
    ::setenv("SCENE", (csWrapper + TUI_SCENE).c_str(), 1);
    ::setenv("GALLERY", (csWrapper + KALMO_GALLERY).c_str(), 1);
    const auto csFilled = [](const std::string& rcsPattern, const std::string& rcs) {
        const std::size_t n = rcsPattern.find('%');
        return n == rcsPattern.npos ? rcsPattern : rcsPattern.substr(0, n) + rcs + rcsPattern.substr(n + 1);
    };
    CLines tabPattern = {"%", "%", ""};
    const CLines& rtab = g_tabTest.at(GetParam());
    for (auto it = rtab.begin(), itNext = it; it != rtab.end() && !HasFailure(); it = itNext) {
        SCOPED_TRACE(*it);
        itNext = std::find_if(it + 1, rtab.end(), [](const std::string& rcs) { return rcs[0] != ' '; });
        CLines tabPart = tabParts(*it);
        if (it->starts_with("! ")) {
            ::setenv("COMMAND", it->c_str() + 2, 1);
            ASSERT_EQ(std::system("bash -c \"$COMMAND\""), 0);
        } else if (it->starts_with("@ ")) {
            tabPattern = std::move(tabPart);
            tabPattern[0].erase(0, 2);
            tabPattern.resize(3);
        } else {
            tabPart.resize(std::max<std::size_t>(tabPart.size(), 2));
            tabPart[1] = csFilled(tabPattern[1], tabPart[1]);
            for (const CTerminal::STOptions& rst : tabTakeTerminals(&tabPart[0])) {
                CCase(csFilled(tabPattern[0], tabPart[0]), rst, tabPattern[2]).Go({it, itNext}, tabPart);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Tui, CScreens, testing::ValuesIn(tabReadTests()),
                         [](const auto& rst) { return rst.param; });

}  // namespace
}  // namespace kalmo
