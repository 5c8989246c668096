// The measurements of bench/tui.sh.
//
//   tui_bench keys DIRECTORY    prints one line a kind of key: name, most bytes sent, median and longest
//                               seconds. The directory has thousands of sub-directories "d1...".
//   tui_bench fill DIRECTORY    prints two numbers: seconds to read and sort the directory's sub-directories,
//                               and to make a chooser that lists them; the best of several.
#include <dirent.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cwchar>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/conversion.h"
#include "framework/process_info.h"
#include "testkit/terminal.h"
#include "tui/toolkit/directory.h"

namespace kalmo {
namespace {

using CClock = std::chrono::steady_clock;

double dSeconds(CClock::duration st) {
    return std::chrono::duration<double>(st).count();
}

double dTime(const std::function<void()>& Work) {
    const CClock::time_point stStart = CClock::now();
    Work();
    return dSeconds(CClock::now() - stStart);
}

struct STMeasure {
    const char* pszName;
    std::vector<std::string> tabArgument;          // of the gallery
    std::vector<std::string_view> tabPreparation;  // keys before the ones that count
    std::vector<std::string_view> tabKey;          // keys that count, over and over
    int nTimes;
};

bool bMeasure(const STMeasure& rst) {
    std::vector<std::string> tabCommand{KALMO_GALLERY};
    tabCommand.insert(tabCommand.end(), rst.tabArgument.begin(), rst.tabArgument.end());
    CTerminal clTerminal(tabCommand);
    bool bAlive = clTerminal.bSettle();
    for (const std::string_view sv : rst.tabPreparation) {
        bAlive = bAlive && clTerminal.bPress(sv);
    }
    std::uint64_t u64Most = 0;
    std::vector<double> tabTime;
    for (int n = 0; n < rst.nTimes && bAlive; ++n) {
        const std::uint64_t u64Before = clTerminal.u64Received();
        const std::string_view svKey = rst.tabKey[static_cast<std::size_t>(n) % rst.tabKey.size()];
        tabTime.push_back(dTime([&] { bAlive = clTerminal.bPress(svKey); }));
        u64Most = std::max(u64Most, clTerminal.u64Received() - u64Before);
    }
    if (!bAlive || !clTerminal.clScreen().bAlternateScreen()) {
        std::fprintf(stderr, "%s: the gallery did not stay\n", rst.pszName);
        return false;
    }
    std::sort(tabTime.begin(), tabTime.end());
    std::printf("%s\t%llu\t%.6f\t%.6f\n", rst.pszName, static_cast<unsigned long long>(u64Most),
                tabTime[tabTime.size() / 2], tabTime.back());
    return true;
}

int nMeasureKeys(const std::string& rcsDirectory) {
    const std::vector<STMeasure> TAB_MEASURE{
        {"Down-within-the-view", {"lists", "10000"}, {}, {"Down", "Down", "Down", "Up", "Up", "Up"}, 300},
        {"Down-that-scrolls", {"lists", "10000"}, std::vector<std::string_view>(8, "Down"), {"Down"}, 1000},
        {"character-typed", {"entries"}, {}, {"a", "b", "Backspace", "Backspace"}, 300},
        {"Tab-in-a-full-dialog", {"entries"}, {}, {"Tab"}, 300},
        {"character-in-the-chooser",
         {"directory", rcsDirectory + "/"},
         {},
         {"d", "1", "Backspace", "Backspace"},
         100},
    };
    return std::all_of(TAB_MEASURE.begin(), TAB_MEASURE.end(), bMeasure) ? 0 : 1;
}

// What no chooser can do without: the names as texts, sorted.
void ReadAndSort(const std::string& rcsDirectory) {
    std::vector<CTString> tabName;
    DIR* const pclDir = ::opendir(rcsDirectory.c_str());
    while (const dirent* const pst = ::readdir(pclDir)) {
        if (pst->d_type == DT_DIR && pst->d_name[0] != '.') {
            tabName.push_back(csFromUTF8(pst->d_name));
        }
    }
    ::closedir(pclDir);
    std::stable_sort(tabName.begin(), tabName.end(), [](const CTString& rcsLeft, const CTString& rcsRight) {
        return ::wcscasecmp(rcsLeft.pszGet(), rcsRight.pszGet()) < 0;
    });
}

int nMeasureFilling(const std::string& rcsDirectory) {
    double dRead = 1e9;
    double dFill = 1e9;
    const CTString csPath = csFromUTF8(rcsDirectory + "/");
    for (int n = 0; n < 20; ++n) {
        dRead = std::min(dRead, dTime([&] { ReadAndSort(rcsDirectory); }));
        dFill = std::min(dFill, dTime([&] { CDirectory(0, 0, 64, 24, L"", csPath.pszGet()); }));
    }
    std::printf("%.6f\t%.6f\n", dRead, dFill);
    return 0;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    using namespace kalmo;
    SetLocaleUTF8();
    const std::string_view svWhat = nArgc == 3 ? ppszArgv[1] : "";
    if (svWhat == "keys") {
        return nMeasureKeys(ppszArgv[2]);
    }
    if (svWhat == "fill") {
        return nMeasureFilling(ppszArgv[2]);
    }
    std::fputs("usage: tui_bench keys|fill DIRECTORY\n", stderr);
    return 2;
}
