// "zdlogger": kalmo's logger. Copies the lines of its standard input, each with its time, to the file that
// its argument names, until the input ends.

#include <array>
#include <cstdio>
#include <ctime>

int main(int nArgc, char** ppszArgv) {
    std::FILE* const pstLog = nArgc == 2 ? std::fopen(ppszArgv[1], "ae") : nullptr;
    if (pstLog == nullptr) {
        return 2;
    }
    std::array<char, 1024> szLine{};
    while (std::fgets(szLine.data(), szLine.size(), stdin) != nullptr) {
        const std::time_t nNow = std::time(nullptr);
        std::tm st{};
        std::array<char, 32> szTime{};
        std::strftime(szTime.data(), szTime.size(), "%Y-%m-%d %H:%M:%S", ::localtime_r(&nNow, &st));
        static_cast<void>(std::fprintf(pstLog, "%s %s", szTime.data(), szLine.data()));
        static_cast<void>(std::fflush(pstLog));
    }
    return std::fclose(pstLog) == 0 ? 0 : 1;
}
