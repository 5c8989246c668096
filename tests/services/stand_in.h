#ifndef KALMO_TESTS_SERVICES_STAND_IN_H
#define KALMO_TESTS_SERVICES_STAND_IN_H

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "services/lance_processus.h"
#include "services/service_manager.h"

namespace kalmo {

using CNames = std::multiset<std::wstring>;

/// A test of services on a machine that is not this one, as the variable pszVariable tells.
class CServicesTest : public testing::Test {
  protected:
    explicit CServicesTest(const char* pszVariable) : m_pszVariable(pszVariable) {}
    void SetUp() override {
        ASSERT_NE(std::getenv(m_pszVariable), nullptr) << "it would change this machine";
        std::signal(SIGINT, SIG_DFL);  // as a command that is interrupted expects it
        CLanceProcessus::sInit();
    }
    void TearDown() override { CLanceProcessus::sTerm(); }

    static bool bExists(const std::string& csPath) {
        return std::filesystem::exists(std::filesystem::symlink_status(csPath));
    }
    static void Write(const std::string& csPath, const std::string& csText) {
        std::filesystem::create_directories(std::filesystem::path(csPath).parent_path());
        std::ofstream(csPath) << csText;
        std::filesystem::permissions(csPath, std::filesystem::perms(0755));
    }
    /// Name, description and program of a service.
    std::wstring csFind(const wchar_t* pszName) {
        const auto csOf = [](const wchar_t* psz) { return std::wstring(psz == nullptr ? L"(null)" : psz); };
        const auto pcl = m_clManager.pclGetService(pszName, 0);
        return pcl == nullptr ? L"none"
                              : csOf(pcl->pszGetName()) + L"," + csOf(pcl->pszGetDisplayName()) + L"," +
                                    csOf(pcl->pszBinaryPathName());
    }
    /// The names that a listing finds.
    CNames tabList(const wchar_t* pszPrefix) {
        CNames tabName;
        unsigned dwCursor = 0;
        while (const auto pcl = m_clManager.pclEnumService(&dwCursor, pszPrefix, 0)) {
            tabName.insert(pcl->pszGetName());
        }
        return tabName;
    }

    CServiceManager m_clManager;

  private:
    const char* const m_pszVariable;
};

/// Tests on a copy of the machine without any init system: what a test needs of one it puts there itself, as
/// scripts that record how they are called, one line a call.
class CStandInTest : public CServicesTest {
  protected:
    static constexpr const char* PSZ_SYSTEMCTL = "/bin/systemctl";
    static constexpr const char* PSZ_SCRIPT = "/etc/init.d/svc";

    CStandInTest() : CServicesTest("KALMO_PRIVATE_ROOT") {}
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(CServicesTest::SetUp());
        for (const char* const psz : {PSZ_SYSTEMCTL, "/etc/debian_version", "/etc/init.d", "/tmp/record"}) {
            std::filesystem::remove_all(psz);
        }
        std::filesystem::create_directories("/etc/init.d");
        CServiceManager::ms_eDistri = eNotDetected;
    }
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
