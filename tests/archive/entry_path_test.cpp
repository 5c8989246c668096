#include "archive/entry_path.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/temp_folder.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

TEST(EntryPath, NamesThatWouldLeaveTheDirectoryAreRefused) {
    const CTempFolder clFolder;
    const std::wstring csRoot = clFolder.csWide("root");
    fs::create_directory(csRoot);
    const auto Refused = [&](const std::wstring& rcsName, eARCHIVE eExpected) {
        CFSPath clPath;
        ASSERT_TRUE(clPath.bSet(L"before"));
        EXPECT_EQ(eCheminEntree(csRoot, rcsName, &clPath), eExpected) << testing::PrintToString(rcsName);
        EXPECT_TRUE(clPath.bEmpty());
    };
    for (const std::wstring& rcsName :
         {L""s, L"/etc/passwd"s, L"\\x"s, L"C:/x"s, L"c:x"s, L".."s, L"..\\x"s, L"a/../x"s, L"a/.."s,
          L"a/./../../x"s, L"dir/"s, L"dir\\"s, L"."s, L"a/."s, L"a\0b"s}) {
        Refused(rcsName, ARCHIVE_BAD);
    }
    Refused(L"a/" + std::wstring(258 - csRoot.size(), L'y'), ARCHIVE_CREATE);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_TRUE(fs::is_empty(csRoot)) << "nothing is touched";
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(csRoot).parent_path()), {}), 1);
}

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
    const mode_t unBefore = ::umask(077);
    for (const auto& rst : tabCase) {
        CFSPath clPath;
        EXPECT_EQ(eCheminEntree(clFolder.csWide(""), rst.pszName, &clPath), ARCHIVE_OK);
        EXPECT_EQ(clPath.svGet(), clFolder.csWide(rst.pszJoined));
        struct stat st {};
        EXPECT_EQ(::stat(clFolder.clPath(rst.pszMade).c_str(), &st), 0);
        EXPECT_EQ(st.st_mode, S_IFDIR | 0755U) << rst.pszMade;
    }
    ::umask(unBefore);
    // Just fits: 260 characters in all.
    CFSPath clPath;
    const std::wstring csLongest(260 - clFolder.csWide("").size(), L'z');
    EXPECT_EQ(eCheminEntree(clFolder.csWide(""), csLongest, &clPath), ARCHIVE_OK);
}

TEST(EntryPath, NothingBelowTheRootIsFollowed) {
    const CTempFolder clFolder;
    ASSERT_TRUE(
        clFolder.bShell("mkdir -p root/sub outside; touch root/file; ln -s root way; "
                        "ln -s ../outside root/link; ln -s nowhere root/sub/dangling"));
    CFSPath clPath;
    for (const wchar_t* const psz : {L"link/a/evil", L"sub/dangling/evil", L"file/evil"}) {
        errno = 0;
        EXPECT_EQ(eCheminEntree(clFolder.csWide("root"), psz, &clPath), ARCHIVE_CREATE);
        EXPECT_EQ(errno, ENOTDIR);
    }
    EXPECT_TRUE(fs::is_empty(clFolder.clPath("outside")));
    // The root itself is the administrator's choice.
    EXPECT_EQ(eCheminEntree(clFolder.csWide("way"), L"through/fine", &clPath), ARCHIVE_OK);
    EXPECT_TRUE(fs::is_directory(clFolder.clPath("root/through")));
    EXPECT_EQ(eCheminEntree(clFolder.csWide("missing"), L"a/b", &clPath), ARCHIVE_CREATE);
}

}  // namespace
}  // namespace kalmo
