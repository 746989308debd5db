#include "config/KorIniFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <vector>

namespace
{

/// A simulated meter and the settings of a gateway that polls it every few milliseconds.
class GatewayAndMeter
{
public:
    explicit GatewayAndMeter(const std::vector<std::string>& vecMeterOptions,
                             const std::string& strTimeout = "5000")
        : m_oMeter(Command(METER_PROGRAM, vecMeterOptions)), m_strIniFile(m_oDir.File("gw.ini"))
    {
        EXPECT_TRUE(m_oMeter.WaitForOutput("\n"));
        const std::string strOutput = m_oMeter.OutputSoFar();
        m_strDevice = strOutput.substr(0, strOutput.find('\n'));
        WriteFile(m_strIniFile,
                  "# mine\n[Line]\nDevice=" + m_strDevice +
                      "\n[Meter]\nPollInterval=10\nTimeout=" + strTimeout +
                      "\nRetries=2 # enough\n[Process]\nPidFile=" + m_oDir.File("gw.pid") + "\n");
    }

    /// A gateway with these settings.
    std::vector<std::string> Gateway(const std::vector<std::string>& vecOptions = {}) const
    {
        std::vector<std::string> vecCommand = {GATEWAY_PROGRAM, "-c", m_strIniFile};
        vecCommand.insert(vecCommand.end(), vecOptions.begin(), vecOptions.end());
        return vecCommand;
    }

    /// Names another device in the settings.
    void ReplaceDevice(const std::string& strDevice)
    {
        CKorIniFile(m_strIniFile.c_str(), CKorIniFile::PATH_UNCHANGED)
            .WriteOption("Line", "Device", strDevice.c_str());
    }

    /// What the gateway stored.
    std::string Stored(const char* pszSection, const char* pszOption) const
    {
        CKorIniFile oFile(m_strIniFile.c_str(), CKorIniFile::PATH_UNCHANGED);
        return oFile.ReadOption(pszSection, pszOption, "missing");
    }

    ScratchDir m_oDir;
    ChildProcess m_oMeter;
    std::string m_strIniFile;
    std::string m_strDevice;

private:
    static std::vector<std::string> Command(const char* pszProgram,
                                            const std::vector<std::string>& vecOptions)
    {
        std::vector<std::string> vecCommand = {pszProgram};
        vecCommand.insert(vecCommand.end(), vecOptions.begin(), vecOptions.end());
        return vecCommand;
    }
};

bool Holds(const std::string& strText, const std::string& strPart)
{
    return strText.find(strPart) != std::string::npos;
}

TEST(Gateway, ExplainsItself)
{
    const ChildResult oResult = RunProgram({GATEWAY_PROGRAM, "-help"});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(0U, oResult.strOut.find("usage: gateway.bin ")) << oResult.strOut;
}

TEST(Gateway, RefusesAnUnknownArgument)
{
    const ChildResult oResult = RunProgram({GATEWAY_PROGRAM, "-x"});
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "unknown argument -x")) << oResult.strErr;
}

TEST(Gateway, RefusesAnIniFileWithoutName)
{
    const ChildResult oResult = RunProgram({GATEWAY_PROGRAM, "-once", "-c"});
    EXPECT_EQ(2, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "-c needs a file")) << oResult.strErr;
}

TEST(Gateway, WritesItsIniFileBesideTheProgramOnTheFirstStart)
{
    const ScratchDir oDir;
    std::filesystem::copy_file(GATEWAY_PROGRAM, oDir.File("gateway.bin"));
    std::filesystem::create_directory(oDir.File("elsewhere"));
    const std::string strStart =
        "cd " + oDir.File("elsewhere") + " && " + oDir.File("gateway.bin") + " -once";
    const ChildResult oResult = RunProgram({"sh", "-c", strStart});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strOut, "cannot open /dev/ttyAM0: No such file or directory"));
    const std::string strFile = ReadFile(oDir.File("gateway.ini"));
    EXPECT_EQ(0U, strFile.find("# Settings of the gateway.")) << strFile;
    EXPECT_TRUE(Holds(strFile, "\nBaudrate=9600 # bit/s"));
}

TEST(Gateway, PrintsItsBannerAndTheLibrarys)
{
    const GatewayAndMeter oPair({});
    const std::string strOut = RunProgram(oPair.Gateway({"-once"})).strOut;
    EXPECT_TRUE(Holds(strOut, " Meter gateway, Version 1.0.0, Copyright (C) ")) << strOut;
    EXPECT_TRUE(Holds(strOut, " Quentor libTarvo, Version 1.0.10, Copyright (C) ")) << strOut;
}

TEST(Gateway, PollsOnceAndStoresTheReading)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"-once"}));
    EXPECT_EQ(0, oResult.nExitStatus) << oResult.strOut;
    EXPECT_TRUE(Holds(oResult.strOut, "229.1 V, 5.13 A, 1175 W, 1000.007 kWh")) << oResult.strOut;
    EXPECT_EQ("229.1", oPair.Stored("Reading", "Voltage"));
    EXPECT_EQ("1000.007", oPair.Stored("Reading", "Energy"));
    EXPECT_EQ("1", oPair.Stored("Counters", "Polls"));
    EXPECT_EQ("0", oPair.Stored("Counters", "Errors"));
    // "2026-03-05 14:07:09.250" with its quotes
    EXPECT_EQ(25U, oPair.Stored("Reading", "Time").size());
}

TEST(Gateway, KeepsCommentsAndCountsOnFromTheLastStart)
{
    const GatewayAndMeter oPair({});
    RunProgram(oPair.Gateway({"-once"}));
    RunProgram(oPair.Gateway({"-once"}));
    EXPECT_EQ("2", oPair.Stored("Counters", "Polls"));
    const std::string strFile = ReadFile(oPair.m_strIniFile);
    EXPECT_EQ(0U, strFile.find("# mine\n"));
    EXPECT_TRUE(Holds(strFile, "\nRetries=2 # enough\n")) << strFile;
}

TEST(Gateway, EndsCleanlyOnASignalWithItsCountersStored)
{
    for (const int nSignal : {SIGTERM, SIGINT}) {
        const GatewayAndMeter oPair({});
        ChildProcess oGateway(oPair.Gateway());
        ASSERT_TRUE(oGateway.WaitForOutput("1000.035 kWh")) << oGateway.OutputSoFar();
        oGateway.Signal(nSignal);
        const ChildResult oResult = oGateway.Wait();
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_TRUE(Holds(oResult.strOut, " ends after 0:0")) << oResult.strOut;
        EXPECT_GE(std::stoi(oPair.Stored("Counters", "Polls")), 5);
        EXPECT_EQ("0", oPair.Stored("Counters", "Errors"));
    }
}

TEST(Gateway, RepeatsARequestAfterAWrongAnswer)
{
    const GatewayAndMeter oPair({"-badcrc", "-every", "2"});
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForOutput("1000.035 kWh")) << oGateway.OutputSoFar();
    oGateway.Signal(SIGTERM);
    EXPECT_TRUE(Holds(oGateway.Wait().strOut, " wrong CRCs")) << oGateway.Wait().strOut;
    EXPECT_FALSE(Holds(oGateway.Wait().strOut, " 0 wrong CRCs")) << oGateway.Wait().strOut;
    EXPECT_EQ("0", oPair.Stored("Counters", "Errors"));
}

TEST(Gateway, CountsAPollWithoutAnswerAsAnError)
{
    const GatewayAndMeter oPair({"-silent"}, "50");
    const ChildResult oResult = RunProgram(oPair.Gateway({"-once"}));
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strOut, "no reading: time-out")) << oResult.strOut;
    EXPECT_TRUE(Holds(oResult.strOut, "2 repetitions, 3 time-outs")) << oResult.strOut;
    EXPECT_EQ("1", oPair.Stored("Counters", "Errors"));
    EXPECT_EQ("", oPair.Stored("Reading", "Voltage"));
}

TEST(Gateway, OutlivesAMeterThatHangsUp)
{
    const GatewayAndMeter oPair({"-hangup", "-every", "3"}, "50");
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForOutput("no reading")) << oGateway.OutputSoFar();
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
    EXPECT_EQ("1000.014", oPair.Stored("Reading", "Energy"));
}

TEST(Gateway, ReopensALineThatWasReplaced)
{
    GatewayAndMeter oPair({"-hangup", "-every", "3"}, "50");
    const std::string strLink = oPair.m_oDir.File("line");
    std::filesystem::create_symlink(oPair.m_strDevice, strLink);
    oPair.ReplaceDevice(strLink);
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForOutput("no reading")) << oGateway.OutputSoFar();

    ChildProcess oNewMeter(std::vector<std::string>{METER_PROGRAM});
    ASSERT_TRUE(oNewMeter.WaitForOutput("\n"));
    const std::string strOutput = oNewMeter.OutputSoFar();
    std::filesystem::remove(strLink);
    std::filesystem::create_symlink(strOutput.substr(0, strOutput.find('\n')), strLink);
    EXPECT_TRUE(oGateway.WaitForOutput("1000.035 kWh")) << oGateway.OutputSoFar();
    EXPECT_TRUE(Holds(oGateway.OutputSoFar(), "opened " + strLink + " again"));
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
}

TEST(Gateway, CanBeEndedBetweenTheRepetitionsToASilentMeter)
{
    const GatewayAndMeter oPair({"-silent"}, "2000");
    ChildProcess oGateway(oPair.Gateway({"-once", "-v"}));
    ASSERT_TRUE(oGateway.WaitForOutput(" sent\n"));
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
    EXPECT_FALSE(Holds(oGateway.Wait().strOut, "no reading")) << oGateway.Wait().strOut;
}

TEST(Gateway, ShowsEachTelegramWhenAsked)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"-once", "-v"}));
    EXPECT_TRUE(Holds(oResult.strOut, " sent\nAddress: 0x")) << oResult.strOut;
    EXPECT_TRUE(Holds(oResult.strOut, "0x0000 01 03 00 00 00 05 85 c9 ")) << oResult.strOut;
    EXPECT_TRUE(Holds(oResult.strOut, " received\nAddress: 0x")) << oResult.strOut;
    EXPECT_TRUE(Holds(oResult.strOut, "0x0000 01 03 0a 00 0f 42 47 ")) << oResult.strOut;
}

TEST(Gateway, RefusesToStartTwiceOnOneProcessIdFile)
{
    const GatewayAndMeter oPair({});
    ChildProcess oFirst(oPair.Gateway());
    ASSERT_TRUE(oFirst.WaitForOutput(" kWh"));
    const std::string strID = std::to_string(oFirst.Id());
    EXPECT_EQ(strID + "\n", ReadFile(oPair.m_oDir.File("gw.pid")));

    const ChildResult oSecond = RunProgram(oPair.Gateway({"-once"}));
    EXPECT_EQ(1, oSecond.nExitStatus);
    EXPECT_TRUE(Holds(oSecond.strOut, "already running as process " + strID)) << oSecond.strOut;

    oFirst.Signal(SIGTERM);
    EXPECT_EQ(0, oFirst.Wait().nExitStatus);
    EXPECT_EQ("", ReadFile(oPair.m_oDir.File("gw.pid")));
    EXPECT_EQ(0, RunProgram(oPair.Gateway({"-once"})).nExitStatus);
}

TEST(Gateway, NamesASettingThatMakesNoSense)
{
    const std::pair<const char*, const char*> aSettings[] = {
        {"[Line]\nBaudrate=9601\n", "[Line] Baudrate"},
        {"[Line]\nBaudrate=fast\n", "[Line] Baudrate"},
        {"[Line]\nParity=some\n", "[Line] Parity"},
        {"[Line]\nStopBits=3\n", "[Line] StopBits"},
        {"[Meter]\nStation=0\n", "[Meter] Station"},
        {"[Meter]\nPollInterval=1s\n", "[Meter] PollInterval"},
        {"[Meter]\nTimeout=\n", "[Meter] Timeout"},
        {"[Meter]\nTimeout=10001\n", "[Meter] Timeout"},
        {"[Meter]\nRetries=-1\n", "[Meter] Retries"},
        {"[Meter]\nRetries=11\n", "[Meter] Retries"},
        {"[Counters]\nPolls=x\n", "[Counters] Polls"},
    };
    const ScratchDir oDir;
    for (const auto& [pszContent, pszComplaint] : aSettings) {
        WriteFile(oDir.File("gw.ini"), pszContent);
        const ChildResult oResult =
            RunProgram({GATEWAY_PROGRAM, "-once", "-c", oDir.File("gw.ini")});
        EXPECT_EQ(1, oResult.nExitStatus);
        EXPECT_TRUE(Holds(oResult.strOut, pszComplaint)) << oResult.strOut;
        EXPECT_EQ(pszContent, ReadFile(oDir.File("gw.ini")));
    }
}

TEST(Gateway, SaysWhenItCannotWriteItsIniFile)
{
    const ChildResult oResult =
        RunProgram({GATEWAY_PROGRAM, "-once", "-c", "/nowhere/at/all/gw.ini"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strOut, "cannot write /nowhere/at/all/gw.ini")) << oResult.strOut;
}

} // namespace
