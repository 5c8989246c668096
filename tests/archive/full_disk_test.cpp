#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "tests/archive/crafted_zip.h"
#include "tests/support/temp_folder.h"

// Extraction onto a disk that fills up. The disk is a mount of the throwaway file tree that this test runs
// in.

namespace kalmo {
namespace {

TEST(FullDisk, HasItsOwnCodeAndLeavesNoFile) {
    ASSERT_STREQ(::getenv("KALMO_PRIVATE_ROOT"), "1") << "run by tests/support/in_private_root";
    const CTempFolder clFolder;
    std::filesystem::create_directory(clFolder.clPath("disk"));
    ASSERT_EQ(::mount("kalmo", clFolder.clPath("disk").c_str(), "tmpfs", 0, "size=64k"), 0);
    STCraftedZip st;
    st.tabEntry.resize(2);
    st.tabEntry[0].csData.assign(200000, 'x');
    st.tabEntry[0].bDeflate = true;
    st.tabEntry[1].csName = "small";
    CCraftedArchive cl(st.csBytes());
    const auto Extract = [&](std::wstring_view svName, std::string_view svTo) {
        return cl.rclZip().eExtraitFichier(svName, clFolder.csWide(svTo), 0, nullptr, 0, 0, nullptr);
    };
    EXPECT_EQ(Extract(L"a.txt", "disk/out"), ARCHIVE_DISK_FULL);
    EXPECT_FALSE(std::filesystem::exists(clFolder.clPath("disk/out")));
    EXPECT_EQ(Extract(L"small", "disk/out"), ARCHIVE_OK) << "the room is free again";
    ASSERT_EQ(::umount(clFolder.clPath("disk").c_str()), 0);

    // Any other reason is another code, with errno.
    ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
    const rlimit stSmall{50000, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &stSmall), 0);
    EXPECT_EQ(Extract(L"a.txt", "out"), ARCHIVE_WRITE);
    EXPECT_EQ(errno, EFBIG);
    EXPECT_FALSE(std::filesystem::exists(clFolder.clPath("out")));
    EXPECT_EQ(cl.csExtract().size(), 200000U) << "memory is another matter";
}

}  // namespace
}  // namespace kalmo
