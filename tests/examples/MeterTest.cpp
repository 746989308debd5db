#include "serial/KorSerial.h"
#include "tests/examples/PortModbusClient.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"

#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using Values = std::vector<std::uint16_t>;

const ModbusRequest ALL_REGISTERS = {1, MODBUS_READ_INPUT_REGISTERS, 0, 6};

std::vector<std::string> CommandLine(const std::vector<std::string>& vecOptions)
{
    std::vector<std::string> vecArgs = {METER_PROGRAM};
    vecArgs.insert(vecArgs.end(), vecOptions.begin(), vecOptions.end());
    return vecArgs;
}

/// A running meter and an open port on its line.
class RunningMeter
{
public:
    explicit RunningMeter(const std::vector<std::string>& vecOptions)
        : m_oProcess(CommandLine(vecOptions))
    {
        EXPECT_TRUE(m_oProcess.WaitForOutput("\n"));
        const std::string strOutput = m_oProcess.OutputSoFar();
        m_strDevice = strOutput.substr(0, strOutput.find('\n'));
        EXPECT_EQ(0,
                  m_oPort.open(m_strDevice.c_str(), CKorSerial::BAUD_9600, CKorSerial::PARITY_EVEN,
                               CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr));
    }

    /// What it printed behind the device's name, once it was told to end.
    std::string End()
    {
        m_oProcess.Signal(SIGTERM);
        return Summary();
    }

    /// The same, once it ended by itself.
    std::string Summary()
    {
        const ChildResult& oResult = m_oProcess.Wait();
        EXPECT_EQ(0, oResult.nExitStatus);
        EXPECT_EQ("", oResult.strErr);
        return oResult.strOut.substr(m_strDevice.size() + 1);
    }

    ChildProcess m_oProcess;
    std::string m_strDevice;
    CKorSerial m_oPort;
};

std::uint32_t Energy(const Values& vecValues)
{
    return std::uint32_t{vecValues[0]} << 16 | vecValues[1];
}

TEST(Meter, PrintsItsDeviceAndEndsCleanlyWithASummary)
{
    RunningMeter oMeter({});
    EXPECT_EQ("/dev/pts/", oMeter.m_strDevice.substr(0, 9));
    EXPECT_EQ("Served 0 requests, 0 of them disturbed.\n", oMeter.End());
}

TEST(Meter, EndsOnAnInterruptToo)
{
    RunningMeter oMeter({});
    oMeter.m_oProcess.Signal(SIGINT);
    EXPECT_EQ("Served 0 requests, 0 of them disturbed.\n", oMeter.Summary());
}

TEST(Meter, AnswersWithValuesThatFitTogether)
{
    RunningMeter oMeter({"--station", "17"});
    PortModbusClient oClient(oMeter.m_oPort, PATIENCE_MS, 0);
    std::uint32_t nLastEnergy = 0;
    for (int nPoll = 0; nPoll < 25; ++nPoll) {
        Values vecValues;
        ASSERT_EQ(MODBUS_OK, oClient.Read({17, MODBUS_READ_INPUT_REGISTERS, 0, 6}, vecValues));
        ASSERT_EQ(6U, vecValues.size());
        EXPECT_GT(Energy(vecValues), nLastEnergy);
        nLastEnergy = Energy(vecValues);
        EXPECT_NEAR(2300, vecValues[2], 10);
        EXPECT_EQ(std::uint32_t{vecValues[2]} * vecValues[3] / 1000, vecValues[4]);
        EXPECT_NEAR(5000, vecValues[5], 5);
    }
    EXPECT_EQ("Served 25 requests, 0 of them disturbed.\n", oMeter.End());
}

TEST(Meter, ServesHoldingRegistersAndPartsToo)
{
    RunningMeter oMeter({});
    PortModbusClient oClient(oMeter.m_oPort, PATIENCE_MS, 0);
    Values vecValues;
    EXPECT_EQ(MODBUS_OK, oClient.Read({1, MODBUS_READ_HOLDING_REGISTERS, 5, 1}, vecValues));
    ASSERT_EQ(1U, vecValues.size());
    EXPECT_NEAR(5000, vecValues[0], 5);
}

TEST(Meter, RefusesWhatItDoesNotHave)
{
    RunningMeter oMeter({});
    PortModbusClient oClient(oMeter.m_oPort, PATIENCE_MS, 0);
    Values vecValues;
    EXPECT_EQ(MODBUS_EXCEPTION, oClient.Read({1, 4, 5, 2}, vecValues));
    EXPECT_EQ(MODBUS_ILLEGAL_ADDRESS, oClient.LastException());
    EXPECT_EQ(MODBUS_EXCEPTION, oClient.Read({1, 4, 0, 0}, vecValues));
    EXPECT_EQ(MODBUS_ILLEGAL_VALUE, oClient.LastException());
    EXPECT_EQ(MODBUS_EXCEPTION, oClient.Read({1, 6, 0, 1}, vecValues));
    EXPECT_EQ(MODBUS_ILLEGAL_FUNCTION, oClient.LastException());
    EXPECT_EQ(3U, oClient.Counters().nExceptions);
}

TEST(Meter, LeavesTheRequestsOfOtherStationsAlone)
{
    RunningMeter oMeter({"--station", "2"});
    Values vecValues;
    EXPECT_EQ(MODBUS_TIMEOUT,
              PortModbusClient(oMeter.m_oPort, 100, 0).Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ(MODBUS_OK, PortModbusClient(oMeter.m_oPort, PATIENCE_MS, 0)
                             .Read({2, MODBUS_READ_INPUT_REGISTERS, 0, 6}, vecValues));
    EXPECT_EQ("Served 1 requests, 0 of them disturbed.\n", oMeter.End());
}

TEST(Meter, DropsPiecesOfTelegrams)
{
    RunningMeter oMeter({});
    EXPECT_EQ(0, oMeter.m_oPort.DataReq("noise", 5, 0));
    PortModbusClient oClient(oMeter.m_oPort, 500, 20);
    Values vecValues;
    EXPECT_EQ(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
}

TEST(Meter, AnswersLate)
{
    RunningMeter oMeter({"--late", "1000", "--every", "2"});
    PortModbusClient oClient(oMeter.m_oPort, 100, 100);
    Values vecValues;
    EXPECT_EQ(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_GE(oClient.Counters().nTimeouts, 1U);
}

TEST(Meter, AnswersWithAWrongCrc)
{
    RunningMeter oMeter({"--badcrc", "--every", "3"});
    PortModbusClient oClient(oMeter.m_oPort, PATIENCE_MS, 1);
    Values vecValues;
    for (int nPoll = 0; nPoll < 4; ++nPoll)
        EXPECT_EQ(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ(1U, oClient.Counters().nCrcErrors);
    EXPECT_EQ(1U, oClient.Counters().nRetries);
    EXPECT_EQ("Served 5 requests, 1 of them disturbed.\n", oMeter.End());
}

TEST(Meter, StaysSilent)
{
    RunningMeter oMeter({"--silent"});
    PortModbusClient oClient(oMeter.m_oPort, 1000, 1);
    Values vecValues;
    EXPECT_EQ(MODBUS_TIMEOUT, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ(2U, oClient.Counters().nTimeouts);
    EXPECT_EQ("Served 2 requests, 2 of them disturbed.\n", oMeter.End());
}

TEST(Meter, HangsUp)
{
    RunningMeter oMeter({"--hangup", "--every", "2"});
    PortModbusClient oClient(oMeter.m_oPort, 500, 0);
    Values vecValues;
    EXPECT_EQ(MODBUS_OK,
              PortModbusClient(oMeter.m_oPort, PATIENCE_MS, 0).Read(ALL_REGISTERS, vecValues));
    EXPECT_NE(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ("Served 2 requests, 1 of them disturbed.\n", oMeter.Summary());
    EXPECT_EQ(MODBUS_SEND_ERROR, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ(0, oMeter.m_oPort.close());
}

TEST(Meter, EndsAfterTheNumberOfRequestsAskedFor)
{
    RunningMeter oMeter({"--count", "2"});
    PortModbusClient oClient(oMeter.m_oPort, PATIENCE_MS, 0);
    Values vecValues;
    EXPECT_EQ(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ(MODBUS_OK, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ("Served 2 requests, 0 of them disturbed.\n", oMeter.Summary());
}

TEST(Meter, EndsWhileItsAnswerIsLate)
{
    RunningMeter oMeter({"--late", "4000000"});
    PortModbusClient oClient(oMeter.m_oPort, 100, 0);
    Values vecValues;
    EXPECT_EQ(MODBUS_TIMEOUT, oClient.Read(ALL_REGISTERS, vecValues));
    EXPECT_EQ("Served 1 requests, 1 of them disturbed.\n", oMeter.End());
}

TEST(Meter, EndsWhileItsAnswersAreNotRead)
{
    ChildProcess oMeter(CommandLine({}));
    ASSERT_TRUE(oMeter.WaitForOutput("\n"));
    const std::string strOutput = oMeter.OutputSoFar();
    const int nDevice = open(strOutput.substr(0, strOutput.find('\n')).c_str(), O_RDWR | O_NOCTTY);
    ASSERT_NE(-1, nDevice);
    const std::string strRequest = ModbusRequestTelegram(ALL_REGISTERS);
    // Many more than the line holds, so that most are answered, and far more than it takes.
    for (int nRequest = 0; nRequest < 20000; ++nRequest)
        ASSERT_EQ(ssize_t(strRequest.size()), write(nDevice, strRequest.data(), strRequest.size()));
    oMeter.Signal(SIGTERM);
    EXPECT_EQ(0, oMeter.Wait().nExitStatus);
    close(nDevice);
}

/// Whether a process sleeps in a system call on its standard output.
bool IsHeldByItsOutput(pid_t nProcess)
{
    std::ifstream oFile("/proc/" + std::to_string(nProcess) + "/syscall");
    std::string strCall;
    std::string strDescriptor;
    return oFile >> strCall >> strDescriptor && strDescriptor == "0x1";
}

/// A pipe that takes nothing more holds the program where it prints its summary.
TEST(Meter, PrintsItsSummaryOnceWhenASignalArrivesMeanwhile)
{
    int anPipe[2];
    ASSERT_EQ(0, pipe2(anPipe, O_CLOEXEC));
    ChildProcess oMeter([&anPipe] {
        dup2(anPipe[1], STDOUT_FILENO);
        execl(METER_PROGRAM, METER_PROGRAM, "--count", "1", nullptr);
        return 127;
    });
    std::string strDevice;
    for (char c = 0; read(anPipe[0], &c, 1) == 1 && c != '\n';)
        strDevice += c;

    fcntl(anPipe[1], F_SETFL, O_NONBLOCK);
    while (write(anPipe[1], "#", 1) == 1) {
    }
    fcntl(anPipe[1], F_SETFL, 0);
    close(anPipe[1]);

    CKorSerial oPort;
    ASSERT_EQ(0, oPort.open(strDevice.c_str(), CKorSerial::BAUD_9600, CKorSerial::PARITY_EVEN,
                            CKorSerial::STOPBITS_1, CKorSerial::BYTESIZE_8, nullptr));
    Values vecValues;
    EXPECT_EQ(MODBUS_OK, PortModbusClient(oPort, PATIENCE_MS, 0).Read(ALL_REGISTERS, vecValues));
    for (const int nSignal : {SIGTERM, SIGINT}) {
        EXPECT_TRUE(WaitUntil([&oMeter] { return IsHeldByItsOutput(oMeter.Id()); }));
        oMeter.Signal(nSignal);
    }

    std::string strSummary;
    for (char c = 0; read(anPipe[0], &c, 1) == 1;) {
        if (c != '#')
            strSummary += c;
    }
    close(anPipe[0]);
    EXPECT_EQ("Served 1 requests, 0 of them disturbed.\n", strSummary);
    EXPECT_EQ(0, oMeter.Wait().nExitStatus);
}

TEST(Meter, ExplainsItself)
{
    for (const char* pszOption : {"-h", "--help"}) {
        const ChildResult oHelp = RunProgram(CommandLine({pszOption}));
        EXPECT_EQ(0, oHelp.nExitStatus);
        EXPECT_NE(std::string::npos, oHelp.strOut.find("--station=N")) << oHelp.strOut;
    }
}

TEST(Meter, TellsItsVersion)
{
    const ChildResult oVersion = RunProgram(CommandLine({"--version"}));
    EXPECT_EQ(0, oVersion.nExitStatus);
    EXPECT_EQ("Modbus RTU meter simulator, Version " TARVO_VERSION
              "\nCopyright (C) Quentor GmbH (www.quentor.example)\n",
              oVersion.strOut);
}

TEST(Meter, NamesTheArgumentThatItRefuses)
{
    const std::pair<std::vector<std::string>, const char*> aoWrong[] = {
        {{"--station", "0"}, "--station is not in 1 to 247"},
        {{"--station", "248"}, "--station is not in 1 to 247"},
        {{"--units", "3"}, "--units is no range in 1 to 247"},
        {{"--units", "0-3"}, "--units is no range in 1 to 247"},
        {{"--units", "3-2"}, "--units is no range in 1 to 247"},
        {{"--units", "3-248"}, "--units is no range in 1 to 247"},
        {{"--units", "3-"}, "--units is no range in 1 to 247"},
        {{"--station", "4294967297"}, "'4294967297'"},
        {{"--station", "-1"}, "'-1'"},
        {{"--every", "0"}, "--every is 0"},
        {{"--late", "x"}, "'x'"},
        {{"--late"}, "--late"},
        {{"--unknown"}, "'--unknown'"},
        {{"leftover"}, "'leftover'"}};
    for (const auto& [vecOptions, pszReason] : aoWrong) {
        const ChildResult oRefused = RunProgram(CommandLine(vecOptions));
        EXPECT_EQ(2, oRefused.nExitStatus) << pszReason;
        EXPECT_EQ("", oRefused.strOut);
        EXPECT_EQ(0U, oRefused.strErr.find("meter: ")) << oRefused.strErr;
        EXPECT_NE(std::string::npos, oRefused.strErr.find(pszReason)) << oRefused.strErr;
    }
}

} // namespace
