// The gateway as a process: usage, start, one poll, signals, its end.

#include "tests/examples/GatewayTest.h"
#include "fs/KorWholeFile.h"

#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace
{

TEST(Gateway, ExplainsItself)
{
    for (const char* pszOption : {"-h", "--help"}) {
        const ChildResult oResult = RunProgram({GATEWAY_PROGRAM, pszOption});
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ(0U, oResult.strOut.find("Usage: gateway ")) << oResult.strOut;
    }
}

TEST(Gateway, RefusesWrongUsage)
{
    for (const char* pszOption : {"--unknown", "leftover", "--config"}) {
        const ChildResult oResult = RunProgram({GATEWAY_PROGRAM, "--once", pszOption});
        EXPECT_EQ(2, oResult.nExitStatus);
        EXPECT_TRUE(Holds(oResult.strErr, pszOption)) << oResult.strErr;
    }
}

TEST(Gateway, TellsItsVersionAndTheLibrarys)
{
    EXPECT_EQ("Meter gateway, Version " TARVO_VERSION
              "\nCopyright (C) Quentor GmbH (www.quentor.example)\n",
              RunProgram({GATEWAY_PROGRAM, "--version"}).strOut);
    const GatewayAndMeter oPair({});
    const std::string strErr = RunProgram(oPair.Gateway({"--once"})).strErr;
    EXPECT_TRUE(Holds(strErr, " Meter gateway, Version " TARVO_VERSION ", Copyright (C) "))
        << strErr;
    EXPECT_TRUE(Holds(strErr, " Quentor libTarvo, Version " TARVO_VERSION ", Copyright (C) "))
        << strErr;
}

TEST(Gateway, PollsOnceAndLogsTheReading)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once"}));
    EXPECT_EQ(0, oResult.nExitStatus) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr,
                      "meter: Energy 1000.007 kWh, Voltage 229.1 V, Current 5.13 A, Power 1175 W"))
        << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, ": 1 requests, 0 repetitions, 0 time-outs"))
        << oResult.strErr;
}

TEST(Gateway, PollsEachMeterOnceAndTellsByItsStatusWhetherAllAnswered)
{
    const ScratchDir oDir;
    ChildProcess oMeters({METER_PROGRAM, "--units", "3-4"});
    ASSERT_TRUE(oMeters.WaitForOutput("\n"));
    const std::string strOutput = oMeters.OutputSoFar();
    std::string strSettings =
        "[Line a]\nDevice=" + strOutput.substr(0, strOutput.find('\n')) +
        "\n[Process]\nPidFile=" + oDir.File("pid") +
        "\n[Meter m3]\nUnit=3\nMap=simulated\nTimeout=10000\nPollInterval=86400000\n"
        "[Meter m4]\nUnit=4\nMap=simulated\nTimeout=10000\nPollInterval=86400000\n";
    WriteFile(oDir.File("gw.ini"), strSettings);
    const ChildResult oAll = RunProgram({GATEWAY_PROGRAM, "--once", "-c", oDir.File("gw.ini")});
    EXPECT_EQ(0, oAll.nExitStatus) << oAll.strErr;
    EXPECT_TRUE(Holds(oAll.strErr, ": 2 requests, ")) << oAll.strErr;

    strSettings += "[Meter m5]\nUnit=5\nPollInterval=86400000\nMap=simulated\nTimeout=50\n";
    WriteFile(oDir.File("gw.ini"), strSettings);
    const ChildResult oOneSilent =
        RunProgram({GATEWAY_PROGRAM, "--once", "-c", oDir.File("gw.ini")});
    EXPECT_EQ(1, oOneSilent.nExitStatus);
    for (const char* pszPart : {"m3: Energy", "m4: Energy", "m5: no reading: time-out"})
        EXPECT_TRUE(Holds(oOneSilent.strErr, pszPart)) << oOneSilent.strErr;
}

TEST(Gateway, EndsCleanlyOnASignalAndSaysHowItWent)
{
    for (const int nSignal : {SIGTERM, SIGINT}) {
        const GatewayAndMeter oPair({});
        ChildProcess oGateway(oPair.Gateway());
        ASSERT_TRUE(oGateway.WaitForErrors("1000.035 kWh")) << oGateway.ErrorsSoFar();
        oGateway.Signal(nSignal);
        const ChildResult oResult = oGateway.Wait();
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_TRUE(Holds(oResult.strErr, " ends after 0:0")) << oResult.strErr;
        EXPECT_TRUE(Holds(oResult.strErr, " requests, 0 repetitions, 0 time-outs"))
            << oResult.strErr;
    }
}

TEST(Gateway, EndsAtOnceWhileItWaitsForASilentMeter)
{
    const GatewayAndMeter oPair({"--silent"}, "10000");
    ChildProcess oGateway(oPair.Gateway({"--verbose"}));
    ASSERT_TRUE(oGateway.WaitForErrors("debug: sent 01 03")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, ": 1 requests, 0 repetitions, 0 time-outs"))
        << oResult.strErr;
}

TEST(Gateway, EndsOnASecondSignalToo)
{
    const GatewayAndMeter oPair({});
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForErrors(" kWh"));
    oGateway.Signal(SIGTERM);
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
}

/// The content of a file, or nothing when there is none.
std::string ReadIfThere(const std::string& strFile)
{
    std::string strContent;
    KorReadFile(strFile.c_str(), strContent);
    return strContent;
}

/// Whether a file comes to hold a text.
bool WaitForText(const std::string& strFile, const char* pszText)
{
    return WaitUntil([&] { return Holds(ReadIfThere(strFile), pszText); });
}

TEST(Gateway, LogsIntoAFileThatSomebodyMayMove)
{
    const GatewayAndMeter oPair({});
    const std::string strLog = oPair.m_oDir.File("log");
    ChildProcess oGateway(oPair.Gateway({"--log", strLog}));
    ASSERT_TRUE(WaitForText(strLog, " kWh"));
    ASSERT_EQ(0, std::rename(strLog.c_str(), oPair.m_oDir.File("moved").c_str()));
    oGateway.Signal(SIGHUP);
    EXPECT_TRUE(WaitForText(strLog, " kWh"));
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ("", oResult.strErr);
}

TEST(Gateway, KeepsItsLogSmall)
{
    const GatewayAndMeter oPair({});
    const std::string strLog = oPair.m_oDir.File("log");
    WriteFile(strLog, std::string(100000, '\n'));
    ChildProcess oGateway(oPair.Gateway({"--log", strLog}));
    EXPECT_TRUE(WaitForText(strLog, " kWh"));
    EXPECT_EQ(100000U, ReadFile(strLog + ".1").size());
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
}

TEST(Gateway, SaysWhenItCannotWriteItsLog)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once", "--log", "/nowhere/at/all"}));
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "cannot log into /nowhere/at/all: No such file"))
        << oResult.strErr;
}

TEST(Gateway, IsNotHeldUpByAStandardOutputThatStalls)
{
    const GatewayAndMeter oPair({});
    int anPipe[2];
    ASSERT_EQ(0, pipe2(anPipe, O_CLOEXEC));
    fcntl(anPipe[1], F_SETFL, O_NONBLOCK);
    while (write(anPipe[1], "#", 1) == 1) {
    }
    fcntl(anPipe[1], F_SETFL, 0);
    ChildProcess oGateway([&] {
        dup2(anPipe[1], STDOUT_FILENO);
        dup2(anPipe[1], STDERR_FILENO);
        execl(GATEWAY_PROGRAM, GATEWAY_PROGRAM, "-c", oPair.m_strIniFile.c_str(), nullptr);
        return 127;
    });
    EXPECT_TRUE(WaitUntil([&] { return !ReadIfThere(oPair.m_oDir.File("gw.pid")).empty(); }));
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
    EXPECT_EQ("", ReadIfThere(oPair.m_oDir.File("gw.pid")));
    close(anPipe[0]);
    close(anPipe[1]);
}

TEST(Gateway, RefusesToStartTwiceOnOneProcessIdFile)
{
    const GatewayAndMeter oPair({});
    ChildProcess oFirst(oPair.Gateway());
    ASSERT_TRUE(oFirst.WaitForErrors(" kWh"));
    const std::string strID = std::to_string(oFirst.Id());
    EXPECT_EQ(strID + "\n", ReadFile(oPair.m_oDir.File("gw.pid")));

    const ChildResult oSecond = RunProgram(oPair.Gateway({"--once"}));
    EXPECT_EQ(1, oSecond.nExitStatus);
    EXPECT_TRUE(Holds(oSecond.strErr, "already running as process " + strID)) << oSecond.strErr;

    oFirst.Signal(SIGTERM);
    EXPECT_EQ(0, oFirst.Wait().nExitStatus);
    EXPECT_EQ(0, RunProgram(oPair.Gateway({"--once"})).nExitStatus);
}

} // namespace
