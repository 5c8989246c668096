#include "archive/crc32.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "framework/memory_stream.h"

namespace kalmo {
namespace {

TEST(Crc32, IsThatOfZlibForEveryLengthAndAlignment) {
    std::mt19937 clRandom(7);
    CTLBIN tab(70000);
    for (unsigned char& rby : tab) {
        rby = static_cast<unsigned char>(clRandom());
    }
    for (std::size_t nStart = 0; nStart < 17; ++nStart) {
        for (std::size_t nLength = 0; nLength < 400; ++nLength) {
            const auto dwBefore = static_cast<std::uint32_t>(clRandom());
            ASSERT_EQ(dwCrc32(dwBefore, std::span(tab).subspan(nStart, nLength)),
                      ::crc32_z(dwBefore, tab.data() + nStart, nLength));
        }
    }
    const std::uint32_t dwFirst = dwCrc32(0, std::span(tab).first(32768));
    EXPECT_EQ(dwCrc32(dwFirst, std::span(tab).subspan(32768)), ::crc32_z(0, tab.data(), tab.size()));
}

}  // namespace
}  // namespace kalmo
