#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

class DetectionTest : public CStandInTest {
  protected:
    int nDetect() {
        CServiceManager::ms_eDistri = eNotDetected;
        EXPECT_TRUE(m_clManager.bInit(nullptr, 0));
        return CServiceManager::ms_eDistri;
    }
};

TEST_F(DetectionTest, TheFirstOfSeveralSignsDecides) {
    struct STCase {
        const char* pszPath;
        const char* pszText;
        int nDistri;
    };
    // In the order in which they are looked at: each one decides while all those behind it are there too.
    const STCase tabCase[] = {
        {PSZ_SYSTEMCTL, "#!/bin/sh\n[ \"$*\" = '--no-pager --no-legend' ]\n", 7},
        {"/etc/debian_version", "", 0},
        {"/etc/mandrake-release", "", 2},
        {"/etc/mandriva-release", "", 2},
        {"/etc/SuSE-release", "", 4},
        {"/sbin/SuSEconfig", "", 4},
        {"/etc/gentoo-release", "", 5},
        {"/etc/fedora-release", "", 3},
        {"/etc/slackware-release", "", 6},
        {"/etc/slackware-version", "", 6},
        {"/etc/redhat-release", "Fedora release 12, formerly Mandriva", 2},
        {"/etc/version", "fedora", 3},
        {"/etc/init.d/function", "", 1},
    };
    for (const STCase& rst : tabCase) {
        Write(rst.pszPath, rst.pszText);
    }
    for (const STCase& rst : tabCase) {
        EXPECT_EQ(nDetect(), rst.nDistri) << rst.pszPath;
        std::filesystem::remove(rst.pszPath);
        m_clManager.bInit(L"machine", 0xF003F);
        EXPECT_EQ(CServiceManager::ms_eDistri, rst.nDistri) << "detected once";
    }
    Write("/etc/init.d/functions", "");
    Write("/etc/gentoo-release/directory", "");
    EXPECT_EQ(nDetect(), 0) << "no sign at all";
    std::filesystem::remove_all("/etc/gentoo-release");
}

TEST_F(DetectionTest, ReleaseTexts) {
    constexpr int nUndecided = -1;
    struct STCase {
        const char* pszPath;
        std::string csText;
        int nDistri;
    };
    const STCase tabCase[] = {
        {"/etc/redhat-release", "Red Hat Linux release 9", 1},
        {"/etc/redhat-release", "", 1},
        {"/etc/redhat-release", "FEDORA Core", 3},
        {"/etc/redhat-release", "Fedora, once MANDRAKE", 2},
        {"/etc/version", "Mandriva", 2},
        {"/etc/version", "Debian and RedHat", 1},
        {"/etc/version", "Debian", 0},
        {"/etc/version", "something else", nUndecided},
        {"/etc/version", std::string(70000, ' ') + "Debian", nUndecided},  // too long to be one
    };
    for (const STCase& rst : tabCase) {
        Clear();
        Write(rst.pszPath, rst.csText);
        EXPECT_EQ(nDetect(), rst.nDistri == nUndecided ? 0 : rst.nDistri) << rst.csText.substr(0, 40);
        Write("/etc/init.d/function", "");
        EXPECT_EQ(nDetect(), rst.nDistri == nUndecided ? 1 : rst.nDistri) << rst.csText.substr(0, 40);
        std::filesystem::remove(rst.pszPath);
    }
}

TEST_F(DetectionTest, ASystemctlThatDoesNotWorkIsNoSystemd) {
    Write("/etc/slackware-version", "");
    for (const char* const psz : {"#!/bin/sh\nexit 1\n", "#!/bin/sh\nkill -HUP $$\n", "#!/no/such\n",
                                  "#!/bin/sh\nexec >&- 2>&-; sleep 0.1; exit 3\n"}) {
        Write(PSZ_SYSTEMCTL, psz);
        EXPECT_EQ(nDetect(), 6) << psz;
    }
    std::filesystem::remove("/etc/slackware-version");
}

}  // namespace
}  // namespace kalmo
