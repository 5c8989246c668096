#include "app/config/server_config.h"

#include <gtest/gtest.h>

#include <string>

#include "services/service.h"
#include "testkit/temp_folder.h"

namespace kalmo {
namespace {

TEST(ServerConfig, ProgramAndConfigurationOfAService) {
    const std::wstring csLong(240, L'd');
    struct STCase {
        const wchar_t* pszCommandLine;
        std::wstring csProgram;
        std::wstring csConf;
    };
    const STCase tabCase[] = {
        {L"/opt/zd/kalmo", L"/opt/zd/kalmo", L"/opt/zd/ZDConf.ini"},
        {L"/opt/zd/kalmo --service ", L"/opt/zd/kalmo", L"/opt/zd/ZDConf.ini"},
        {L"/opt/a --b/kalmo  --service --x", L"/opt/a", L"/opt/ZDConf.ini"},
        {L"/opt/zd -x/kalmo   ", L"/opt/zd -x/kalmo", L"/opt/zd -x/ZDConf.ini"},
        {L"\\opt\\zd\\kalmo --service", L"\\opt\\zd\\kalmo", L"/opt/zd/ZDConf.ini"},
        {L"kalmo --service", L"kalmo", L""},
        {nullptr, L"", L""},
    };
    for (const STCase& rst : tabCase) {
        CService clService(nullptr, L"ZDCS-x", L"x", rst.pszCommandLine);
        EXPECT_EQ(csGetProgramWithoutArg(&clService).svGet(), rst.csProgram);
        CPathBuffer szConf;
        GetZDConfPath(&clService, szConf);
        EXPECT_EQ(szConf, rst.csConf);
    }
    CService clTooLong(nullptr, L"ZDCS-x", L"x", (L"/" + csLong + L"/abcdefgh/kalmo").c_str());
    CPathBuffer szConf;
    GetZDConfPath(&clTooLong, szConf);
    EXPECT_STREQ(szConf, L"") << "a path that is too long is not cut";
}

TEST(ServerConfig, TelemetryIsKnownWhenItIsZeroOrOne) {
    const CTempFolder clFolder;
    const std::wstring csConf = clFolder.csWide("ZDConf.ini");
    EXPECT_EQ(eReadTelemetry(csConf.c_str()), ETelemetryState::Unknown);
    const std::pair<const char*, ETelemetryState> tabCase[] = {
        {"0", ETelemetryState::Off},       {"1 ", ETelemetryState::On},
        {"2", ETelemetryState::Unknown},   {"-1", ETelemetryState::Unknown},
        {"yes", ETelemetryState::Unknown}, {"1x", ETelemetryState::Unknown},
        {"0 1", ETelemetryState::Unknown}, {"", ETelemetryState::Unknown},
    };
    for (const auto& [pszValue, eState] : tabCase) {
        clFolder.Write("ZDConf.ini", std::string("[telemetry]\nActive=") + pszValue + "\n");
        EXPECT_EQ(eReadTelemetry(csConf.c_str()), eState) << pszValue;
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
