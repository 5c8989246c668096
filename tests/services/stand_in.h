#ifndef KALMO_TESTS_SERVICES_STAND_IN_H
#define KALMO_TESTS_SERVICES_STAND_IN_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "services/lance_processus.h"
#include "services/service_manager.h"

namespace kalmo {

/// Tests on a copy of the machine without any init system: what a test needs of one it puts there itself, as
/// scripts that record how they are called, one line a call.
class CStandInTest : public testing::Test {
  protected:
    static constexpr const char* PSZ_SYSTEMCTL = "/bin/systemctl";
    static constexpr const char* PSZ_SCRIPT = "/etc/init.d/svc";

    void SetUp() override {
        ASSERT_STREQ(std::getenv("KALMO_PRIVATE_ROOT"), "1") << "it would change this machine";
        ::setenv("PATH", "/tmp/tools:/usr/bin:/bin", 1);
        Clear();
        CLanceProcessus::sInit();
    }
    void TearDown() override { CLanceProcessus::sTerm(); }

    /// Back to the machine without anything, nothing detected, nothing recorded.
    static void Clear() {
        for (const char* const psz :
             {PSZ_SYSTEMCTL, "/etc/debian_version", "/etc/mandrake-release", "/etc/mandriva-release",
              "/etc/SuSE-release", "/sbin/SuSEconfig", "/etc/gentoo-release", "/etc/fedora-release",
              "/etc/slackware-release", "/etc/slackware-version", "/etc/redhat-release", "/etc/version",
              "/etc/init.d", "/etc/rc.d", "/tmp/tools", "/tmp/record"}) {
            std::filesystem::remove_all(psz);
        }
        std::filesystem::create_directories("/etc/init.d");
        CServiceManager::ms_eDistri = eNotDetected;
    }
    static void Write(const std::string& csPath, const std::string& csText) {
        std::filesystem::create_directories(std::filesystem::path(csPath).parent_path());
        std::ofstream(csPath) << csText;
        std::filesystem::permissions(csPath, std::filesystem::perms(0755));
    }
    static bool bExists(const std::string& csPath) { return std::filesystem::exists(csPath); }
    /// Puts a shell script in place that records its call and does what csBody says.
    static void Tool(const std::string& csPath, const std::string& csBody) {
        Write(csPath, "#!/bin/sh\necho \"${0##*/} $*\" >>/tmp/record\n" + csBody + "\n");
    }
    /// The calls since the last time.
    static std::string csTakeRecord() {
        std::ifstream clFile("/tmp/record");
        const std::string cs{std::istreambuf_iterator<char>(clFile), {}};
        std::filesystem::remove("/tmp/record");
        return cs;
    }
};

}  // namespace kalmo

#endif
