#include "tests/services/stand_in.h"

namespace kalmo {
namespace {

struct STSign {
    std::string csPath;
    std::string csText;
    int nDistri;
};

// In the order in which they are looked at. The texts are what some machine says there.
const STSign tabSign[] = {
    {"/bin/systemctl", "#!/bin/sh\n[ \"$*\" = '--no-pager --no-legend' ]\n", eSystemd},
    {"/etc/debian_version", "12.11\n", eDebian},
    {"/etc/mandrake-release", "Mandrake Linux release 10.1\n", eMandriva},
    {"/etc/mandriva-release", "Mandriva Linux release 2011.0\n", eMandriva},
    {"/etc/SuSE-release", "SUSE Linux Enterprise Server 11\n", eSuSE},
    {"/sbin/SuSEconfig", "", eSuSE},
    {"/etc/gentoo-release", "Gentoo Base System release 2.7\n", eGentoo},
    {"/etc/fedora-release", "Fedora release 12\n", eFedora},
    {"/etc/slackware-release", "", eSlackware},
    {"/etc/slackware-version", "Slackware 13.37.0\n", eSlackware},
    {"/etc/redhat-release", "CentOS release 5.11 (Final)\n", eRedHat},
    {"/etc/version", "fedora\n", eFedora},
    {"/etc/init.d/function", "", eRedHat},
};

struct DetectionTest : CStandInTest {
    void SetUp() override {
        CStandInTest::SetUp();
        for (const STSign& rst : tabSign) {
            Remove(rst.csPath);
        }
    }
    static void Remove(const std::string& csPath) { std::filesystem::remove_all(csPath); }
    int nDetect() {
        CServiceManager::ms_eDistri = eNotDetected;
        EXPECT_TRUE(m_clManager.bInit(L"neither counts", 0xF003F));
        return CServiceManager::ms_eDistri;
    }
    int nDetect(const std::string& csPath, const std::string& csText) {
        Write(csPath, csText);
        const int nDistri = nDetect();
        Remove(csPath);
        return nDistri;
    }
};

TEST_F(DetectionTest, EverySignAloneAndBeforeTheLaterOnes) {
    EXPECT_EQ(nDetect("/etc/init.d/functions", ""), eDebian) << "another file";
    for (const STSign& rst : tabSign) {
        EXPECT_EQ(nDetect(rst.csPath, rst.csText), rst.nDistri) << rst.csPath;
    }
    for (const STSign& rst : tabSign) {
        Write(rst.csPath, rst.csText);
    }
    for (const STSign& rst : tabSign) {
        EXPECT_EQ(nDetect(rst.csPath, rst.csText), rst.nDistri) << rst.csPath << " and all behind it";
    }
    // Once is enough: a manager made later finds what the first one found.
    CServiceManager::ms_eDistri = eSlackware;
    Write("/etc/debian_version", "");
    EXPECT_TRUE(CServiceManager().bInit(nullptr, 0));
    EXPECT_EQ(CServiceManager::ms_eDistri, eSlackware);
}

TEST_F(DetectionTest, WhatTheTextsSay) {
    const std::string csLong(70000, ' ');  // no release file is as long as that
    const STSign TAB[] = {
        {"/etc/redhat-release", "Mandrake, once Fedora", eMandriva},
        {"/etc/redhat-release", "Fedora, once MANDRIVA", eMandriva},
        {"/etc/redhat-release", csLong + "Fedora", eDebian},
        {"/etc/version", "Fedora, formerly Mandrake", eMandriva},
        {"/etc/version", "Debian, RedHat, fEDORA", eFedora},
        {"/etc/version", "Debian and RedHat", eRedHat},
    };
    for (const STSign& rst : TAB) {
        EXPECT_EQ(nDetect(rst.csPath, rst.csText), rst.nDistri) << rst.csPath << " " << rst.csText;
    }
    // "debian" would be found without the word, too, so that here "function" must not be looked at any more.
    Write("/etc/init.d/function", "");
    EXPECT_EQ(nDetect("/etc/version", "A DEBIAN derivative"), eDebian);
    EXPECT_EQ(nDetect("/etc/version", "something else"), eRedHat);
    // What is there but cannot be read tells nothing.
    std::filesystem::create_directory("/etc/redhat-release");
    EXPECT_EQ(nDetect("/etc/version", "Fedora"), eFedora);
}

TEST_F(DetectionTest, ASystemctlThatFailsIsNone) {
    Write("/etc/gentoo-release", "");
    const std::string csSh = "#!/bin/sh\n";
    for (const auto& [csProgram, nDistri] : {std::pair{csSh + "echo ssh.service; exit 3\n", eGentoo},
                                             {csSh + "kill -9 $$\n", eGentoo},
                                             {"#!/no/such\n", eGentoo},
                                             {csSh + "exec >&- 2>&-; sleep 0.1\n", eSystemd},
                                             {csSh + "head -c 5000000 /dev/zero\n", eSystemd},
                                             {csSh + "cat; kill -CHLD $PPID\n", eSystemd}}) {
        EXPECT_EQ(nDetect(PSZ_SYSTEMCTL, csProgram), nDistri) << csProgram;
    }
    Write(PSZ_SYSTEMCTL, csSh);
    std::filesystem::permissions(PSZ_SYSTEMCTL, std::filesystem::perms(0644));
    EXPECT_EQ(nDetect(), eGentoo);
}

}  // namespace
}  // namespace kalmo
