#include "archive/entry_path.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "testkit/temp_folder.h"

// Names that would lead out of the directory are among the hostile archives.

namespace kalmo {
namespace {

TEST(EntryPath, DirectoriesAreMadeBelowTheRoot) {
    const CTempFolder clFolder;
    const struct {
        const wchar_t* pszName;
        const char *pszJoined, *pszMade;
    } tabCase[] = {
        {L"win\\dows\\file", "win/dows/file", "win/dows"},
        {L"x//.///y", "x/y", "x"},
        {L"a/..b/c..", "a/..b/c..", "a/..b"},
        {L"1:/x", "1:/x", "1:"},
    };
    CFSPath clPath;
    const mode_t unBefore = ::umask(077);
    for (const auto& rst : tabCase) {
        EXPECT_EQ(eCheminEntree(clFolder.csWide(""), rst.pszName, &clPath), ARCHIVE_OK);
        EXPECT_EQ(clPath.svGet(), clFolder.csWide(rst.pszJoined));
        struct stat st {};
        EXPECT_EQ(::stat(clFolder.clPath(rst.pszMade).c_str(), &st), 0);
        EXPECT_EQ(st.st_mode, S_IFDIR | 0755U) << rst.pszMade;
    }
    ::umask(unBefore);
    for (const wchar_t* const psz : {L"dir/", L"dir\\", L".", L"a/.", L"a/./../../x"}) {
        EXPECT_EQ(eCheminEntree(clFolder.csWide(""), psz, &clPath), ARCHIVE_BAD) << psz;
        EXPECT_TRUE(clPath.bEmpty());
    }
    // 260 characters in all just fit.
    const std::wstring csLongest(260 - clFolder.csWide("").size(), L'z');
    EXPECT_EQ(eCheminEntree(clFolder.csWide(""), csLongest, &clPath), ARCHIVE_OK);
    EXPECT_EQ(eCheminEntree(clFolder.csWide(""), csLongest + L"z", &clPath), ARCHIVE_CREATE);
    // The root itself may be a link, for it is the administrator's choice; it has to be there.
    ASSERT_TRUE(clFolder.bShell("ln -s win way"));
    EXPECT_EQ(eCheminEntree(clFolder.csWide("way"), L"through/fine", &clPath), ARCHIVE_OK);
    EXPECT_TRUE(std::filesystem::is_directory(clFolder.clPath("win/through")));
    EXPECT_EQ(eCheminEntree(clFolder.csWide("missing"), L"a/b", &clPath), ARCHIVE_CREATE);
}

}  // namespace
}  // namespace kalmo
