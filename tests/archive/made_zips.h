#ifndef KALMO_TESTS_ARCHIVE_MADE_ZIPS_H
#define KALMO_TESTS_ARCHIVE_MADE_ZIPS_H

#include <gtest/gtest.h>

#include <string>

#include "archive/tv_win_zip.h"
#include "framework/memory_stream.h"
#include "testkit/temp_folder.h"

namespace kalmo {

/// A test with the archives of make_zips.py in its folder.
class CMadeZips : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(m_clFolder.bShell("python3 " KALMO_MAKE_ZIPS)); }
    [[nodiscard]] CTLBIN tabBytes(const std::string& csName) const {
        const std::string cs = m_clFolder.csRead(csName);
        return {cs.begin(), cs.end()};
    }

    const CTempFolder m_clFolder;
};

/// Extracts into memory: the text, or "!" and the code.
inline std::string csExtract(CTVWinZip& rcl, std::wstring_view svName = L"a.txt") {
    CTLBIN tab;
    const eARCHIVE e = rcl.eExtraitFichier(svName, &tab, 0, nullptr, 0, nullptr);
    return e == ARCHIVE_OK ? std::string(tab.begin(), tab.end()) : std::string("!").append(std::to_string(e));
}

}  // namespace kalmo

#endif
