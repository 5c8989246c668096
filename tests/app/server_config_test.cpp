#include "app/config/server_config.h"

#include <gtest/gtest.h>

#include <string>

#include "services/service.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

TEST(ServerConfig, ProgramAndConfigurationOfAService) {
    const std::wstring csLong = L"/" + std::wstring(240, L'd') + L"/abcdefgh/kalmo";
    const struct {
        const wchar_t *pszCommandLine, *pszProgram, *pszConf;
    } TAB[] = {
        {L"/opt/zd/kalmo", L"/opt/zd/kalmo", L"/opt/zd/ZDConf.ini"},
        {L"/opt/zd/kalmo --service ", L"/opt/zd/kalmo", L"/opt/zd/ZDConf.ini"},
        {L"/opt/a --b/kalmo  --service --x", L"/opt/a", L"/opt/ZDConf.ini"},
        {L"/opt/zd -x/kalmo   ", L"/opt/zd -x/kalmo", L"/opt/zd -x/ZDConf.ini"},
        {L"\\opt\\zd\\kalmo --service", L"\\opt\\zd\\kalmo", L"/opt/zd/ZDConf.ini"},
        {L"kalmo --service", L"kalmo", L""},
        {nullptr, L"", L""},
        {csLong.c_str(), csLong.c_str(), L""},  // a path that is too long is not cut
    };
    for (const auto& rst : TAB) {
        CService clService(nullptr, L"ZDCS-x", L"x", rst.pszCommandLine);
        EXPECT_EQ(csGetProgramWithoutArg(&clService).svGet(), rst.pszProgram);
        CPathBuffer szConf;
        GetZDConfPath(&clService, szConf);
        EXPECT_STREQ(szConf, rst.pszConf);
    }
}

TEST(ServerConfig, TelemetryIsKnownWhenItIsZeroOrOne) {
    const CTempFolder clFolder;
    const std::wstring csConf = clFolder.csWide("ZDConf.ini");
    EXPECT_EQ(eReadTelemetry(csConf.c_str()), ETelemetryState::Unknown);
    for (const char* const psz : {"0", "1 ", "2", "-1", "yes", "1x", "0 1", ""}) {
        clFolder.Write("ZDConf.ini", std::string("[telemetry]\nActive=") + psz + "\n");
        EXPECT_EQ(eReadTelemetry(csConf.c_str()), psz == std::string("0")    ? ETelemetryState::Off
                                                  : psz == std::string("1 ") ? ETelemetryState::On
                                                                             : ETelemetryState::Unknown);
    }
    WriteTelemetryOn(csConf.c_str(), 7);
    WriteDBRootPath(csConf.c_str(), L"%%EXE%%/BDD");
    WriteServerPort(csConf.c_str(), L"4901");
    WriteServerName(csConf.c_str(), L"Ren\u00E9");
    EXPECT_EQ(
        clFolder.csRead("ZDConf.ini"),
        "[telemetry]\nACTIVE = 1\n[INIT]\nDBRootPath = %%EXE%%/BDD\nAccessPort = 4901\nName = Ren\xC3\xA9\n");
}

}  // namespace
}  // namespace kalmo
