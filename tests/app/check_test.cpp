#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "app/check/instance_check.h"
#include "app/check/machine_check.h"
#include "app/check/orders_check.h"
#include "app/check/payload_check.h"
#include "app/check/place_check.h"
#include "app/check/room_check.h"
#include "app/engine/data_extractor.h"
#include "app/engine/trace.h"
#include "app/unattended/orders.h"
#include "framework/conversion.h"
#include "framework/unique_fd.h"
#include "services/lance_processus.h"
#include "services/service_manager.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

// What was found: the first letter of the severity, the code and, behind a slash, the key.
std::string csFound(const CFindings& rclFindings) {
    std::string cs;
    for (const STFinding& rst : rclFindings.tabGet()) {
        EXPECT_FALSE(rst.csText.bEmpty()) << rst.pszCode;
        EXPECT_EQ(rst.csText.svGet().find_first_of(L"\r\n\x1B"), CTString::npos) << rst.pszCode;
        cs += std::string(cs.empty() ? "" : " ") + "nwe"[static_cast<int>(rst.eSeverity)] + ":" + rst.pszCode;
        cs += rst.pszKey == nullptr ? "" : "/" + std::string(csToUTF8(rst.pszKey).svGet());
    }
    return cs;
}

TEST(Check, OrdersAreJudgedAsTheyAreRead) {
    using namespace std::string_literals;
    const std::string csOk = "[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first\nRepertoire=/zd\n";
    const std::string csUpgrade = "[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=first\n";
    const std::string csNoServer = "e:missing-key/Serveur e:missing-key/Repertoire";
    const std::string csLong(101, 'n');
    const std::string csDeep = "/" + std::string(260, 'd');
    const struct {
        std::string csOrders, csFound;
    } TAB[] = {
        {csOk + "Port=4950\n", ""},
        {": x\n# Port=1\n ; y\n[pilotage]\n maj = "
         "2\n[Serveur]\nSERVEUR=first\nRepertoire=/zd\n\nPort\t=\t65535",
         ""},
        {"", "e:empty"},
        {" \r\n", "e:empty"},
        {"\xFF\xFE\0\0"s, "e:byte-order-mark"},
        {"\xEF\xBB\xBF: comment\n" + csOk, "w:byte-order-mark"},
        {"\xEF\xBB\xBF" + csUpgrade, "e:byte-order-mark e:no-operation/MAJ"},
        {"[PILOTAGE]\r\nMAJ=2\r\n[SERVEUR]\r\nServeur=first\r\nRepertoire=/zd\r\n", "n:crlf"},
        {"[PILOTAGE]\rMAJ=2\r", "w:carriage-return e:no-operation/MAJ"},
        {csOk + "Port=4\0009"s, "w:null-character"},
        // Names that are not quite right.
        {csOk + "Prot=4950\n", "e:unknown-key/Port"},
        {csOk + "Prot=4950\nPort=4950\n", "w:unknown-key/Port"},
        {csUpgrade + "Prot=4950\n", "w:unknown-key/Port"},
        {csOk + "\tPort=4950\n", "e:unknown-key/Port"},
        {csOk + "Colour=4950\x1B\n", "w:unknown-key"},
        {csOk + "Port: 4950\n", "e:unread-line/Port"},
        {csOk + "some text\n", "w:unread-line"},
        {"[PILOTAGE]\nMAJ=2\n[SERVER]\nServeur=first\nRepertoire=/zd\n", "e:unknown-section " + csNoServer},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR\nServeur=first\nRepertoire=/zd\n",
         "e:unknown-section e:misplaced-key/Serveur e:misplaced-key/Repertoire " + csNoServer},
        {csOk + "[OTHER]\nPort=1\n[SERVER]\n", "w:unknown-section w:unknown-section"},
        {csOk + "[SERVEUR]\nPort=4950\nServeur=x\n",
         "w:repeated-section e:misplaced-key/Port w:misplaced-key/Serveur"},
        {"Port=1\n" + csUpgrade + "MAJ=1\n", "w:misplaced-key/Port w:misplaced-key/MAJ"},
        {csOk + "Serveur=first\nServeur=other\n", "n:duplicate-key/Serveur w:duplicate-key/Serveur"},
        {csUpgrade + "Repertoire=zd\nPort=x\n", "n:unused-key/Repertoire n:unused-key/Port"},
        // Values that are not quite right.
        {"[PILOTAGE]\nMAJ=\n", "e:no-operation/MAJ"},
        {"[PILOTAGE]\nMAJ=4\n", "e:no-operation/MAJ"},
        {"[PILOTAGE]\nMAJ=\"2\"\n", "e:no-operation/MAJ"},
        {"[PILOTAGE]\nMAJ=2 ; install\n", "w:comment-in-value/MAJ " + csNoServer},
        {"[PILOTAGE]\nMAJ=2x\n", "w:number-cut/MAJ " + csNoServer},
        {csOk + "Port=0\n", "e:bad-port/Port"},
        {csOk + "Port=65536\n", "e:bad-port/Port"},
        {csOk + "Port=00000000000000000004950\n", "e:bad-port/Port"},
        {csOk + "Port=4950x\n", "e:bad-port/Port"},
        {csOk + "Port=\n", "e:bad-port/Port"},
        {csOk + "Port=4950 \n", ""},
        {csOk + "Port=4950 # x\n", "w:comment-in-value/Port"},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=first \nRepertoire='/zd'\n",
         "w:blank-at-end/Serveur w:quotes/Repertoire e:relative-directory/Repertoire e:bad-name/Serveur"},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=a;b\nRepertoire=/zd ; x\n",
         "w:comment-in-value/Repertoire e:bad-name/Serveur"},
        {"[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=" + csLong + "\nRepertoire=" + csDeep + "\n",
         "e:too-long/Serveur e:too-long/Repertoire"},
    };
    CServiceManager::ms_eDistri = eSystemd;
    for (const auto& rst : TAB) {
        CFindings clFindings;
        CheckOrders(rst.csOrders, clFindings);
        EXPECT_EQ(csFound(clFindings), rst.csFound) << rst.csOrders;
    }
}

// A folder with a payload of ./tree, "p.zip", and an install directory "zd" in it.
class CheckOf : public ::testing::Test {
  protected:
    void SetUp() override {
        CLanceProcessus::sInit();
        CServiceManager::ms_eDistri = eDebian;
        m_csPlace = m_clFolder.csWide("zd/");
        ASSERT_TRUE(m_clDirectory.bSet(m_csPlace));
        Pack(
            "mkdir tree tree/lib; head -c 300000 /dev/urandom >tree/kalmo; cp tree/kalmo tree/KalmoManager; "
            "cp tree/kalmo tree/license.txt; echo x >tree/lib/a; " +
            std::string(PACK));
    }
    void TearDown() override { Shell("umount -R zd zd/lib; chattr -R -ai zd; rm -rf zd; true"); }
    void Shell(const std::string& cs) { EXPECT_TRUE(m_clFolder.bShell("{ " + cs + "; } 2>/dev/null")) << cs; }
    void Pack(const std::string& csCommand) {
        Shell("rm -f p.zip; " + csCommand);
        m_eOpened = m_clExtractor.eOuvreArchive(m_clFolder.csWide("p.zip"), 0, 0);
    }
    template <class F>
    static std::string csOf(F fnCheck) {
        CFindings clFindings;
        fnCheck(clFindings);
        return csFound(clFindings);
    }

    static constexpr const char* PACK = "(cd tree && zip -qX0 ../p.zip KalmoManager kalmo lib/a license.txt)";
    CTempFolder m_clFolder;
    std::wstring m_csPlace;
    CFSPath m_clDirectory;
    CTrace m_clTrace;
    CDataExtractor m_clExtractor{m_clTrace};
    eARCHIVE m_eOpened = ARCHIVE_OK;
};

TEST_F(CheckOf, RoomIsThatOfTheFileSystemsThatAreWritten) {
    // Two programs of 74 blocks, and seven files and directories with what the run adds.
    const std::string csTmpfs = "mkdir -p zd; mount -t tmpfs kalmo zd -o ";
    const struct {
        std::string csPrepare, csFound;
    } TAB[] = {
        {"true", ""},
        {csTmpfs + "size=680k", ""},
        {csTmpfs + "size=592k", "e:disk-full"},
        {csTmpfs + "size=680k; cp tree/kalmo zd", ""},  // emptied before it is written
        {csTmpfs + "size=680k; cp tree/kalmo zd; ln zd/kalmo zd/other", "e:disk-full"},
        {csTmpfs + "size=760k; head -c 500000 /dev/zero >zd/kalmo", "e:disk-full"},  // it shrinks too late
        {csTmpfs + "size=760k; head -c 500000 /dev/zero >zd/kalmomanager", ""},
        {csTmpfs + "nr_inodes=8", ""},  // the root of the file system is one
        {csTmpfs + "nr_inodes=7", "e:inodes-full"},
        {csTmpfs + "nr_inodes=8; touch zd/kalmo; mkdir zd/BDD", ""},
        {csTmpfs + "ro", "e:read-only"},
        {csTmpfs + "noexec", "e:noexec"},
        {"mkdir -p zd/lib; mount -t tmpfs -o ro,noexec kalmo zd/lib", "e:read-only"},
        {"touch zd", "e:in-the-way"},
        {"ln -s nowhere zd", "e:in-the-way"},
        {"mkdir zd; ln -s /tmp zd/lib; mkdir zd/kalmo; touch zd/BDD",
         "e:in-the-way e:in-the-way e:in-the-way"},
        {"mkdir -p zd/Install.log", "e:in-the-way"},
        {"mkdir zd; mount --bind zd zd; mount -o remount,bind,ro zd", "e:read-only"},
        {"mkdir -p zd/lib; touch zd/lib/a; chattr +i zd/lib", ""},  // what is there is emptied
        {"mkdir -p zd/lib; chattr +i zd/lib", "e:not-writable"},
        {"mkdir zd; chattr +a zd", ""},
        {"mkdir zd; touch zd/Install.log; chattr +a zd", "e:not-writable"},
        {"mkdir zd; touch zd/kalmo zd/ZDConf.ini; chattr +i zd/kalmo; chattr +a zd/ZDConf.ini",
         "e:not-writable e:not-writable"},
        {"mkdir zd; mkfifo zd/kalmo zd/ZDConf.ini", "e:not-writable"},  // only the program is replaced
        {"mkdir zd; ln -s nowhere zd/ZDConf.ini", ""},
    };
    for (const auto& rst : TAB) {
        Shell(rst.csPrepare);
        EXPECT_EQ(csOf([&](CFindings& rcl) { CheckRoom(m_clExtractor, m_clDirectory, true, rcl); }),
                  rst.csFound)
            << rst.csPrepare;
        TearDown();
    }
    for (const bool bFits : {true, false}) {
        ASSERT_TRUE(
            m_clDirectory.bSet(m_csPlace + L"new/" + std::wstring(bFits ? 127 : 128, L'\xE9') + L"/"));
        EXPECT_EQ(csOf([&](CFindings& rcl) { CheckRoom(m_clExtractor, m_clDirectory, true, rcl); }),
                  bFits ? "" : "e:too-long");
    }
}

TEST_F(CheckOf, EveryEntryIsReadAndNothingIsWritten) {
    const auto csSpoil = [](const char* pszName) {
        return std::string(PACK) +
               "; python3 -c \"import zipfile; z=zipfile.ZipFile('p.zip'); i=z.getinfo('" + pszName +
               "'); f=open('p.zip','r+b'); f.seek(i.header_offset+40000); f.write(b'spoilt')\"";
    };
    const std::string csNamed = std::string(PACK) +
                                "; python3 -c \"import sys, zipfile; zipfile.ZipFile('p.zip', "
                                "'a').writestr(sys.argv[1], 'x')\" ";
    std::string csLong;
    for (int n = 0; n < 128; ++n) {
        csLong += "\xC3\xA9";
    }
    const struct {
        std::string csPack, csFound;
    } TAB[] = {
        {PACK, ""},
        {csSpoil("kalmo"), "e:bad-payload"},
        {csSpoil("license.txt"), "w:bad-payload"},
        {"(cd tree && zip -qP other ../p.zip KalmoManager kalmo)", "e:bad-payload e:bad-payload"},
        {"(cd tree && zip -q ../p.zip kalmo)", "e:incomplete-payload"},
        {csNamed + "a/../../b", "e:entry-outside"},
        {csNamed + std::string(250, 'n'), "e:entry-too-long"},
        {csNamed + "new/" + csLong + "/n", "e:entry-too-long"},
        {csNamed + csLong, "e:entry-too-long"},
        {csNamed + "lib//A", "w:same-target"},
        {csNamed + "lib", "e:same-target"},
        {csNamed + "lib/a/b", "e:same-target"},
        {csNamed + "BDD", "e:same-target"},
        {csNamed + "Install.log/n", "e:same-target"},
        {csNamed + "ZDConf.ini", ""},
        {"echo x >p.zip", "e:bad-payload"},
        {"true", "e:no-payload"},
    };
    for (const auto& rst : TAB) {
        Pack(rst.csPack);
        EXPECT_EQ(csOf([&](CFindings& rcl) { CheckPayload(m_clExtractor, m_clDirectory, true, rcl); }),
                  rst.csFound)
            << rst.csPack;
    }
    EXPECT_FALSE(std::filesystem::exists(m_csPlace));
}

TEST_F(CheckOf, NamesDirectoriesAndPortsAreTaken) {
    Shell("mkdir zd; printf '[INIT]\nAccessPort=4950\n' >zd/ZDConf.ini; cp tree/kalmo zd");
    CServiceList tabServer;
    const std::wstring csProgram = m_csPlace + L"kalmo";
    tabServer.Add(
        CXPtr_deleteRCV<CService>(new CService(nullptr, L"ZDCS-first", L"first", csProgram.c_str())));
    const auto csPlace = [&](std::wstring_view svDirectory, int nPort) {
        STOrders stOrders{OP_INSTALL, L"second", {}, nPort};
        EXPECT_TRUE(stOrders.clInstallDir.bSet(svDirectory));
        return csOf([&](CFindings& rcl) { CheckPlace(stOrders, L"ZDCS-second", tabServer, rcl); });
    };
    EXPECT_EQ(csPlace(L"/other/", 4951), "");
    EXPECT_EQ(csPlace(m_csPlace, 4950), "e:directory-taken/Repertoire e:port-taken/Port");
    EXPECT_EQ(csPlace(L"/other --x/", 4951), "e:directory-cut/Repertoire");
    for (const int nFamily : {AF_INET, AF_INET6}) {
        const CUniqueFd clSocket(::socket(nFamily, SOCK_STREAM, 0));
        sockaddr_in6 st{};
        socklen_t unLength = sizeof st;
        ASSERT_EQ(::listen(clSocket.nGet(), 1), 0);  // at a port that the system chooses
        ASSERT_EQ(::getsockname(clSocket.nGet(), reinterpret_cast<sockaddr*>(&st), &unLength), 0);
        const int nPort = ntohs(st.sin6_port);  // lies where that of the other family does
        EXPECT_EQ(csPlace(L"/other/", nPort), "e:port-listened/Port");
        CFindings clFindings;
        CheckPlace({OP_INSTALL, L"second", m_clDirectory, nPort}, L"ZDCS-second", tabServer, clFindings);
        EXPECT_THAT(std::wstring(clFindings.tabGet().back().csText.pszGet()),
                    ::testing::HasSubstr(std::to_wstring(::getpid()) + L", \"check_test\""));
    }
}

TEST_F(CheckOf, MachineAndInstanceAreAsked) {
    const auto csMachine = [](int nOperation) {
        return csOf([&](CFindings& rcl) { CheckMachine(nOperation, rcl); });
    };
    EXPECT_EQ(csMachine(OP_INSTALL), "");
    Shell(
        "flock -F /run/kalmoinstall.lock sleep 60 >/dev/null & echo $! >locker; "
        "until ! flock -n /run/kalmoinstall.lock true; do :; done");
    EXPECT_EQ(csMachine(OP_INSTALL), "w:locked");
    Shell("kill $(cat locker); flock /run/kalmoinstall.lock true");
    ASSERT_EQ(::setenv("PATH", "/", 1) + ::seteuid(1), 0);
    EXPECT_EQ(csMachine(OP_UNINSTALL), "e:not-root e:missing-command");
    ASSERT_EQ(::setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1) + ::seteuid(0), 0);

    Shell(
        "mkdir -p zd/lib; cp /bin/bash zd/kalmo; cp /bin/sleep zd/lib/a; "
        "zd/kalmo -c 'zd/lib/a 60; :' >/dev/null & echo $! >runner; sleep 0.2");
    Shell(
        "printf '#!/bin/sh\n[ \"$1\" != status ] || exit \"$(cat status)\"\n' >/etc/init.d/ZDCS-first; "
        "chmod 755 /etc/init.d/ZDCS-first; sed -i \"s,cat ,&$PWD/,\" /etc/init.d/ZDCS-first; echo 0 >status");
    CServiceList tabServer;
    const std::wstring csProgram = m_csPlace + L"kalmo --service";
    tabServer.Add(
        CXPtr_deleteRCV<CService>(new CService(nullptr, L"ZDCS-first", L"first", csProgram.c_str())));
    CService* const pclFirst = tabServer[0].get();
    const auto csInstance = [&](int nOperation, const wchar_t* pszName, CService* pcl) {
        return csOf([&](CFindings& rcl) {
            CheckInstance({nOperation, pszName, m_clDirectory, 4950},
                          {CTString(L"ZDCS-") + pszName, pcl, tabServer}, &m_clExtractor, m_clTrace, rcl);
        });
    };
    EXPECT_EQ(csInstance(OP_INSTALL, L"second", nullptr), "");
    EXPECT_EQ(csInstance(OP_UPGRADE, L"fisrt", nullptr), "e:no-instance/Serveur");
    EXPECT_EQ(csInstance(OP_UPGRADE, L"first", pclFirst), "n:version-unknown n:stops");
    EXPECT_EQ(csInstance(OP_INSTALL, L"first", pclFirst),
              "n:is-upgrade/Serveur w:other-port/Port n:version-unknown n:stops");
    EXPECT_EQ(csInstance(OP_UNINSTALL, L"first", pclFirst), "n:not-stopped e:missing-file e:missing-file");
    Shell("echo 3 >status; touch zd/tvzdsrv.so zd/tvsqlsrv.so");
    EXPECT_EQ(csInstance(OP_UNINSTALL, L"first", pclFirst), "");
    const struct {
        const char *pszMade, *pszUndone, *pszFound;
    } TAB_KEPT[] = {
        {"mkdir zd/Install.log", "rmdir zd/Install.log", "e:in-the-way"},
        {"mkdir zd/zdlogger zd/tvx.so", "rmdir zd/zdlogger zd/tvx.so", "e:in-the-way"},
        {"chattr +a zd", "chattr -a zd", "e:not-writable"},
        {"chattr +i zd/tvzdsrv.so", "chattr -i zd/tvzdsrv.so", "e:not-writable"},
        {"mount --bind zd/kalmo zd/kalmo", "umount zd/kalmo", "e:not-writable"},
        {"chattr +i /etc/init.d/ZDCS-first", "chattr -i /etc/init.d/ZDCS-first", "e:not-writable"},
        {"chattr +i /etc/init.d", "chattr -i /etc/init.d", "e:not-writable"},
        {"mkdir -p /var/lib/kalmoinstall/ZDCS-first.uninstall", "rm -r /var/lib/kalmoinstall",
         "e:in-the-way"},
        {"mkdir /var/lib/kalmoinstall; chattr +i /var/lib/kalmoinstall",
         "chattr -i /var/lib/kalmoinstall; rmdir /var/lib/kalmoinstall", ""},
        {"mount --bind /var/lib /var/lib; mount -o remount,bind,ro /var/lib", "umount /var/lib", ""},
    };
    for (const auto& rst : TAB_KEPT) {
        Shell(rst.pszMade);
        EXPECT_EQ(csInstance(OP_UNINSTALL, L"first", pclFirst), rst.pszFound) << rst.pszMade;
        Shell(rst.pszUndone);
    }
    EXPECT_EQ(csInstance(OP_UPGRADE, L"first", pclFirst), "n:version-unknown e:busy e:busy");
    Shell("ln zd/kalmo zd/other; ln zd/lib/a zd/lib/b; chmod 644 /etc/init.d/ZDCS-first");  // it is replaced,
                                                                                            // not written
    EXPECT_EQ(csInstance(OP_UPGRADE, L"first", pclFirst), "n:version-unknown e:missing-command");
    Shell("pkill -P $(cat runner); rm /etc/init.d/ZDCS-first");
    CService clForeign(nullptr, L"ZDCS-first", L"first", L"/usr/bin/nice --adjustment=5 /tmp/kalmo");
    EXPECT_EQ(csInstance(OP_UPGRADE, L"first", &clForeign), "e:foreign-program/Serveur");
    EXPECT_EQ(csInstance(OP_UNINSTALL, L"first", &clForeign), "e:foreign-program/Serveur");
    Shell(
        "mkdir -p /var/lib/kalmoinstall; printf 'ZDCS-gone\n/tmp/x/kalmo\n/tmp/none\n' "
        ">/var/lib/kalmoinstall/ZDCS-gone.uninstall");
    EXPECT_EQ(csInstance(OP_UNINSTALL, L"gone", nullptr), "n:unfinished");
}

}  // namespace
}  // namespace kalmo
