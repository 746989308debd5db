// The INI file of the gateway: how it comes to be, what it keeps, what is refused in it.

#include "tests/examples/GatewayTest.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>

namespace
{

TEST(GatewaySettings, WritesItsIniFileBesideTheProgramOnTheFirstStart)
{
    const ScratchDir oDir;
    std::filesystem::copy_file(GATEWAY_PROGRAM, oDir.File("gateway.bin"));
    std::filesystem::create_directory(oDir.File("elsewhere"));
    const std::string strStart =
        "cd " + oDir.File("elsewhere") + " && " + oDir.File("gateway.bin") + " --once";
    const ChildResult oResult = RunProgram({"sh", "-c", strStart});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "cannot open /dev/ttyAM0: No such file or directory"))
        << oResult.strErr;
    const std::string strFile = ReadFile(oDir.File("gateway.ini"));
    EXPECT_EQ(0U, strFile.find("# Settings of the gateway.")) << strFile;
    EXPECT_TRUE(Holds(strFile, "\nSpeed=9600 # bit/s"));
}

TEST(GatewaySettings, LeavesItsIniFileAsItIs)
{
    const GatewayAndMeter oPair({});
    const std::string strBefore = ReadFile(oPair.m_strIniFile);
    EXPECT_EQ(0, RunProgram(oPair.Gateway({"--once"})).nExitStatus);
    EXPECT_EQ(strBefore, ReadFile(oPair.m_strIniFile));
}

TEST(GatewaySettings, ReadsItsSettingsAgainOnAHangUpSignal)
{
    GatewayAndMeter oPair({});
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForErrors(" kWh"));
    oPair.Set("Meter", "Retries", "eleven");
    oGateway.Signal(SIGHUP);
    ASSERT_TRUE(oGateway.WaitForErrors("the old settings stay in force"));
    EXPECT_TRUE(Holds(oGateway.ErrorsSoFar(), "gw.ini:7: [Meter] Retries=eleven"))
        << oGateway.ErrorsSoFar();

    oPair.Set("Meter", "Retries", "1");
    oPair.Set("Meter", "Station", "9"); // where nobody answers
    oGateway.Signal(SIGHUP);
    EXPECT_TRUE(oGateway.WaitForErrors("settings read again"));
    oPair.Set("Meter", "Station", "1");
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_FALSE(Holds(oResult.strErr, "opened")) << "the line did not change: " << oResult.strErr;
}

TEST(GatewaySettings, NamesASettingThatMakesNoSense)
{
    const std::pair<const char*, const char*> aSettings[] = {
        {"[Line]\nSpeed=0\n", "gw.ini:2: [Line] Speed=0"},
        {"[Line]\nSpeed=fast\n", "gw.ini:2: [Line] Speed=fast"},
        {"[Line]\nParity=some\n", "[Line] Parity=some"},
        {"[Line]\nStopBits=3\n", "[Line] StopBits=3"},
        {"[Meter]\nStation=0\n", "[Meter] Station=0"},
        {"[Meter]\nPollInterval=1s\n", "[Meter] PollInterval=1s"},
        {"[Meter]\nTimeout=\n", "[Meter] Timeout="},
        {"[Meter]\nTimeout=10001\n", "[Meter] Timeout=10001"},
        {"[Meter]\nRetries=-1\n", "[Meter] Retries=-1"},
        {"[Meter]\nRetries=11\n", "[Meter] Retries=11"},
        {"[Counters]\nPolls=x\n", "gw.ini:1: [Counters] is no section"},
        {"[Meter]\nPolInterval=5\n", "gw.ini:2: [Meter] PolInterval"},
    };
    const ScratchDir oDir;
    for (const auto& [pszContent, pszComplaint] : aSettings) {
        WriteFile(oDir.File("gw.ini"), pszContent);
        const ChildResult oResult =
            RunProgram({GATEWAY_PROGRAM, "--once", "-c", oDir.File("gw.ini")});
        EXPECT_EQ(1, oResult.nExitStatus);
        EXPECT_TRUE(Holds(oResult.strErr, pszComplaint)) << oResult.strErr;
        EXPECT_EQ(pszContent, ReadFile(oDir.File("gw.ini")));
    }
}

TEST(GatewaySettings, SaysWhenItCannotWriteItsIniFile)
{
    const ChildResult oResult =
        RunProgram({GATEWAY_PROGRAM, "--once", "-c", "/nowhere/at/all/gw.ini"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "cannot write /nowhere/at/all/gw.ini: No such file"))
        << oResult.strErr;
}

} // namespace
