#include "config/KorSafeIniFile.h"
#include "fs/KorWholeFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Emulation.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <unistd.h>
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
        std::vector<std::string> vecCommand = {GATEWAY_PROGRAM, "--config", m_strIniFile};
        vecCommand.insert(vecCommand.end(), vecOptions.begin(), vecOptions.end());
        return vecCommand;
    }

    /// Changes a setting.
    void Set(const char* pszSection, const char* pszOption, const std::string& strValue)
    {
        EXPECT_TRUE(CKorSafeIniFile(m_strIniFile.c_str(), CKorIniFile::PATH_UNCHANGED)
                        .WriteOption(pszSection, pszOption, strValue.c_str()));
    }

    /// What the gateway stored.
    std::string Stored(const char* pszSection, const char* pszOption) const
    {
        CKorSafeIniFile oFile(m_strIniFile.c_str(), CKorIniFile::PATH_UNCHANGED);
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

const std::string EXPECT_REQUEST = "expect * 01 03 ??{4} crc16\n";
const std::string SEND_ANSWER = "send 01 03 0A 00 0F 42 47 08 F3 02 01 04 97 crc16\n";
const std::string ANSWER_FOR_EVER = "repeat\n" + EXPECT_REQUEST + SEND_ANSWER + "end\n";

/// A meter that plays a script, and the settings of a gateway that polls it.
class GatewayAndScript
{
public:
    GatewayAndScript(const std::string& strScript, const std::string& strMeterSettings)
        : m_strLink(m_oDir.File("meter")),
          m_strIniFile(m_oDir.File("gw.ini")),
          m_oMeter({LINESIM_PROGRAM, "--timeout", "60000", "-l", m_strLink, "-"}, strScript)
    {
        EXPECT_TRUE(m_oMeter.WaitForOutput(m_strLink));
        WriteFile(m_strIniFile, "[Line]\nDevice=" + m_strLink + "\n[Meter]\n" + strMeterSettings +
                                    "\n[Process]\nPidFile=" + m_oDir.File("pid") + "\n");
    }

    ScratchDir m_oDir;
    std::string m_strLink;
    std::string m_strIniFile;
    ChildProcess m_oMeter;
};

/// The content of a file, or nothing when there is none.
std::string ReadIfThere(const std::string& strFile)
{
    std::string strContent;
    KorReadFile(strFile.c_str(), strContent);
    return strContent;
}

bool Holds(const std::string& strText, const std::string& strPart)
{
    return strText.find(strPart) != std::string::npos;
}

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

TEST(Gateway, WritesItsIniFileBesideTheProgramOnTheFirstStart)
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

TEST(Gateway, TellsItsVersionAndTheLibrarys)
{
    const GatewayAndMeter oPair({});
    const std::string strErr = RunProgram(oPair.Gateway({"--once"})).strErr;
    EXPECT_TRUE(Holds(strErr, " Meter gateway, Version 1.0.0, Copyright (C) ")) << strErr;
    EXPECT_TRUE(Holds(strErr, " Quentor libTarvo, Version 1.0.10, Copyright (C) ")) << strErr;
}

TEST(Gateway, PollsOnceAndStoresTheReading)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once"}));
    EXPECT_EQ(0, oResult.nExitStatus) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "229.1 V, 5.13 A, 1175 W, 1000.007 kWh")) << oResult.strErr;
    EXPECT_EQ("229.1", oPair.Stored("Reading", "Voltage"));
    EXPECT_EQ("1000.007", oPair.Stored("Reading", "Energy"));
    EXPECT_EQ("1", oPair.Stored("Counters", "Polls"));
    EXPECT_EQ("0", oPair.Stored("Counters", "Errors"));
    // 2026-03-05T14:07:09.250+01:00, or with a Z
    EXPECT_EQ('T', oPair.Stored("Reading", "Time")[10]);
}

TEST(Gateway, KeepsEveryByteButItsResultsAndCountsOnFromTheLastStart)
{
    const GatewayAndMeter oPair({});
    const std::string strBefore = ReadFile(oPair.m_strIniFile);
    RunProgram(oPair.Gateway({"--once"}));
    RunProgram(oPair.Gateway({"--once"}));
    EXPECT_EQ("2", oPair.Stored("Counters", "Polls"));
    EXPECT_EQ(0U, ReadFile(oPair.m_strIniFile).find(strBefore));
}

TEST(Gateway, EndsCleanlyOnASignalWithItsCountersStored)
{
    for (const int nSignal : {SIGTERM, SIGINT}) {
        const GatewayAndMeter oPair({});
        ChildProcess oGateway(oPair.Gateway());
        ASSERT_TRUE(oGateway.WaitForErrors("1000.035 kWh")) << oGateway.ErrorsSoFar();
        oGateway.Signal(nSignal);
        const ChildResult oResult = oGateway.Wait();
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_TRUE(Holds(oResult.strErr, " ends after 0:0")) << oResult.strErr;
        EXPECT_GE(std::stoi(oPair.Stored("Counters", "Polls")), 5);
        EXPECT_EQ("0", oPair.Stored("Counters", "Errors"));
    }
}

TEST(Gateway, RepeatsARequestAfterAWrongAnswer)
{
    const GatewayAndMeter oPair({"--badcrc", "--every", "2"});
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForErrors("1000.035 kWh")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const std::string strErr = oGateway.Wait().strErr;
    EXPECT_TRUE(Holds(strErr, " wrong CRCs")) << strErr;
    EXPECT_FALSE(Holds(strErr, " 0 wrong CRCs")) << strErr;
    EXPECT_EQ("0", oPair.Stored("Counters", "Errors"));
}

TEST(Gateway, CountsAPollWithoutAnswerAsAnError)
{
    const GatewayAndMeter oPair({"--silent"}, "50");
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once"}));
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "no reading: time-out")) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "2 repetitions, 3 time-outs")) << oResult.strErr;
    EXPECT_EQ("1", oPair.Stored("Counters", "Errors"));
    EXPECT_EQ("", oPair.Stored("Reading", "Voltage"));
}

TEST(Gateway, ShowsTheCodeOfAnExceptionAndKeepsTheLine)
{
    const GatewayAndScript oPair("repeat\n" + EXPECT_REQUEST + "send 01 83 02 crc16\nend\n",
                                 "PollInterval=10");
    ChildProcess oGateway({GATEWAY_PROGRAM, "-c", oPair.m_strIniFile});
    ASSERT_TRUE(oGateway.WaitForErrors("no reading: exception 2")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_FALSE(Holds(oResult.strErr, "opened")) << oResult.strErr;
    EXPECT_FALSE(Holds(oResult.strErr, "hung up")) << oResult.strErr;
}

TEST(Gateway, FindsALineThatWasUnpluggedAndCameBack)
{
    const GatewayAndScript oPair(EXPECT_REQUEST + "hangup\ndelay 100\ncomeback\n" + ANSWER_FOR_EVER,
                                 "PollInterval=10");
    ChildProcess oGateway({GATEWAY_PROGRAM, "-c", oPair.m_strIniFile});
    EXPECT_TRUE(oGateway.WaitForErrors("1000.007 kWh")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, " hung up")) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "opened " + oPair.m_strLink)) << oResult.strErr;
}

TEST(Gateway, EndsAtOnceWhileItWaitsForASilentMeter)
{
    const GatewayAndMeter oPair({"--silent"}, "10000");
    ChildProcess oGateway(oPair.Gateway({"--verbose"}));
    ASSERT_TRUE(oGateway.WaitForErrors("debug: sent 01 03")) << oGateway.ErrorsSoFar();
    oGateway.Signal(SIGTERM);
    const ChildResult oResult = oGateway.Wait();
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, ": 1 polls, 0 repetitions, 0 time-outs")) << oResult.strErr;
}

TEST(Gateway, EndsOnASecondSignalToo)
{
    const GatewayAndMeter oPair({});
    ChildProcess oGateway(oPair.Gateway());
    ASSERT_TRUE(oGateway.WaitForErrors(" kWh"));
    oGateway.Signal(SIGTERM);
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
    EXPECT_GE(std::stoi(oPair.Stored("Counters", "Polls")), 1);
}

TEST(Gateway, ReadsItsSettingsAgainOnAHangUpSignal)
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
    EXPECT_EQ("1", oPair.Stored("Meter", "Retries"));
}

TEST(Gateway, StoresItsResultsWhileItRuns)
{
    GatewayAndMeter oPair({});
    oPair.Set("Process", "StoreInterval", "1");
    ChildProcess oGateway(oPair.Gateway());
    EXPECT_TRUE(WaitUntil([&] { return oPair.Stored("Reading", "Energy") != "missing"; }));
    oGateway.Signal(SIGKILL);
    oGateway.Wait();
    EXPECT_EQ('1', oPair.Stored("Reading", "Energy")[0]);
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
    EXPECT_NE("missing", oPair.Stored("Counters", "Polls"));
    close(anPipe[0]);
    close(anPipe[1]);
}

TEST(Gateway, ShowsEachTelegramWhenAsked)
{
    const GatewayAndMeter oPair({});
    const ChildResult oResult = RunProgram(oPair.Gateway({"--once", "-v"}));
    EXPECT_TRUE(Holds(oResult.strErr, "debug: sent 01 03 00 00 00 05 85 C9\n")) << oResult.strErr;
    EXPECT_TRUE(Holds(oResult.strErr, "debug: received 01 03 0A 00 0F 42 47 ")) << oResult.strErr;
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

TEST(Gateway, RefusesADeviceThatAnotherInstanceHas)
{
    GatewayAndMeter oPair({});
    ChildProcess oFirst(oPair.Gateway());
    ASSERT_TRUE(oFirst.WaitForErrors(" kWh"));
    const std::string strOther = oPair.m_oDir.File("other.ini");
    WriteFile(strOther, "[Line]\nDevice=" + oPair.m_strDevice +
                            "\n[Process]\nPidFile=" + oPair.m_oDir.File("other.pid") + "\n");
    const ChildResult oSecond = RunProgram({GATEWAY_PROGRAM, "--once", "-c", strOther});
    EXPECT_EQ(1, oSecond.nExitStatus);
    EXPECT_TRUE(
        Holds(oSecond.strErr, "cannot open " + oPair.m_strDevice + ": Device or resource busy"))
        << oSecond.strErr;
    oFirst.Signal(SIGTERM);
    EXPECT_TRUE(Holds(oFirst.Wait().strErr, " 0 time-outs"));
}

TEST(Gateway, NamesASettingThatMakesNoSense)
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
        {"[Counters]\nPolls=x\n", "[Counters] Polls=x"},
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

TEST(Gateway, SaysWhenItCannotWriteItsIniFile)
{
    const ChildResult oResult =
        RunProgram({GATEWAY_PROGRAM, "--once", "-c", "/nowhere/at/all/gw.ini"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_TRUE(Holds(oResult.strErr, "cannot write /nowhere/at/all/gw.ini: No such file"))
        << oResult.strErr;
}

/// How many descriptors a process has open.
std::ptrdiff_t OpenDescriptors(pid_t nProcess)
{
    const std::filesystem::directory_iterator oFirst("/proc/" + std::to_string(nProcess) + "/fd");
    return std::distance(oFirst, std::filesystem::directory_iterator());
}

TEST(Gateway, OutlivesAHundredUnpluggingsAsSessionLeader)
{
    const int nTimes = UnderEmulation() ? 10 : 100;
    const GatewayAndScript oPair("repeat " + std::to_string(nTimes) + "\n" + EXPECT_REQUEST +
                                     SEND_ANSWER + "hangup\ncomeback\nend\n" + ANSWER_FOR_EVER,
                                 "PollInterval=2\nTimeout=10000");
    ChildProcess oGateway([&oPair] {
        setsid();
        execl(GATEWAY_PROGRAM, GATEWAY_PROGRAM, "-c", oPair.m_strIniFile.c_str(), nullptr);
        return 127;
    });
    ASSERT_TRUE(oGateway.WaitForErrors(" hung up")) << oGateway.ErrorsSoFar();
    const auto fnOpened = [&oGateway] {
        const std::string strLog = oGateway.ErrorsSoFar();
        int nCount = 0;
        for (std::size_t nPos = 0; (nPos = strLog.find(" opened ", nPos)) != std::string::npos;
             ++nPos)
            ++nCount;
        return nCount;
    };
    ASSERT_TRUE(WaitUntil([&] { return fnOpened() >= 2; }));
    const std::ptrdiff_t nBefore = OpenDescriptors(oGateway.Id());
    ASSERT_TRUE(WaitUntil([&] { return fnOpened() >= nTimes; })) << fnOpened();
    const std::size_t nLog = oGateway.ErrorsSoFar().size();
    EXPECT_TRUE(
        WaitUntil([&] { return oGateway.ErrorsSoFar().find(" kWh", nLog) != std::string::npos; }));
    EXPECT_LE(OpenDescriptors(oGateway.Id()), nBefore + 1);
    oGateway.Signal(SIGTERM);
    EXPECT_EQ(0, oGateway.Wait().nExitStatus);
}

} // namespace
