// Feeds every file of the given folders to the fuzz target, so that the corpora run in every test run.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize);

int main(int argc, char** argv) try {
    int nReplayed = 0;
    for (int n = 1; n < argc; ++n) {
        for (const auto& rclEntry : std::filesystem::recursive_directory_iterator(argv[n])) {
            if (!rclEntry.is_regular_file()) {
                continue;
            }
            std::ifstream clFile(rclEntry.path(), std::ios::binary);
            const std::string cs{std::istreambuf_iterator<char>(clFile), {}};
            // A copy of the exact size, so that a read past the end is caught.
            const auto ptabExact = std::make_unique<std::uint8_t[]>(cs.size());
            std::copy(cs.begin(), cs.end(), ptabExact.get());
            LLVMFuzzerTestOneInput(ptabExact.get(), cs.size());
            ++nReplayed;
        }
    }
    std::printf("%d inputs replayed\n", nReplayed);
    return nReplayed > 0 ? 0 : 1;
} catch (const std::exception& rcl) {
    std::fprintf(stderr, "%s\n", rcl.what());
    return 1;
}
