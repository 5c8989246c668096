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

TEST_F(DetectionTest, EverySignAloneAndTheFirstOfTwoOrAll) {
    EXPECT_EQ(nDetect(), eDebian) << "no sign at all";
    EXPECT_EQ(nDetect("/etc/init.d/functions", ""), eDebian) << "another file";
    for (const STSign* pst = std::begin(tabSign); pst != std::end(tabSign); ++pst) {
        EXPECT_EQ(nDetect(pst->csPath, pst->csText), pst->nDistri) << pst->csPath;
        Write(pst->csPath, pst->csText);
        for (const STSign* pstLater = pst + 1; pstLater != std::end(tabSign); ++pstLater) {
            EXPECT_EQ(nDetect(pstLater->csPath, pstLater->csText), pst->nDistri)
                << pst->csPath << " " << pstLater->csPath;
        }
        Remove(pst->csPath);
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
        {"/etc/redhat-release", "", eRedHat},
        {"/etc/redhat-release", "Mandrake, once Fedora", eMandriva},
        {"/etc/redhat-release", "Fedora, once MANDRIVA", eMandriva},
        {"/etc/redhat-release", "FEDORA Core", eFedora},
        {"/etc/redhat-release", csLong + "Fedora", eDebian},
        {"/etc/version", "Fedora, formerly Mandrake", eMandriva},
        {"/etc/version", "RedHat, Mandriva", eMandriva},
        {"/etc/version", "Debian, RedHat, fEDORA", eFedora},
        {"/etc/version", "Debian and RedHat", eRedHat},
        {"/etc/version", "Red Hat", eDebian},
        {"/etc/version", csLong + "RedHat", eDebian},
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
    std::filesystem::remove("/etc/redhat-release");
    std::filesystem::create_symlink("/nowhere", "/etc/redhat-release");
    EXPECT_EQ(nDetect("/etc/version", "Fedora"), eFedora);
}

TEST_F(DetectionTest, ASystemctlThatFailsIsNone) {
    Write("/etc/gentoo-release", "");
    const std::string csSh = "#!/bin/sh\n";
    for (const auto& [csProgram, nDistri] : {std::pair{csSh + "exit 1\n", eGentoo},
                                             {csSh + "exit 255\n", eGentoo},
                                             {csSh + "echo ssh.service; exit 3\n", eGentoo},
                                             {csSh + "kill -9 $$\n", eGentoo},
                                             {csSh + "kill -SEGV $$\n", eGentoo},
                                             {"#!/no/such\n", eGentoo},
                                             {"\x7F"
                                              "ELF",
                                              eGentoo},
                                             {"", eSystemd},  // runs as an empty script
                                             {csSh + "exec >&- 2>&-; sleep 0.1\n", eSystemd},
                                             {csSh + "head -c 5000000 /dev/zero\n", eSystemd},
                                             {csSh + "cat; kill -CHLD $PPID\n", eSystemd}}) {
        EXPECT_EQ(nDetect(PSZ_SYSTEMCTL, csProgram), nDistri) << csProgram;
    }
    Write(PSZ_SYSTEMCTL, csSh);
    std::filesystem::permissions(PSZ_SYSTEMCTL, std::filesystem::perms(0644));
    EXPECT_EQ(nDetect(), eGentoo);
    Remove(PSZ_SYSTEMCTL);
    std::filesystem::create_directory(PSZ_SYSTEMCTL);
    EXPECT_EQ(nDetect(), eGentoo);
    Remove(PSZ_SYSTEMCTL);
    std::filesystem::create_symlink("/nowhere", PSZ_SYSTEMCTL);
    EXPECT_EQ(nDetect(), eGentoo);
}

}  // namespace
}  // namespace kalmo
