#include "serial/KorSerialLine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/ScratchDir.h"
#include "text/KorHexText.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

const std::string REQUEST("\x01\x03\0\0\0\x02\xC4\x0B", 8);

std::vector<std::string> CommandLine(const std::vector<std::string>& vecOptions)
{
    std::vector<std::string> vecArgs = {LINESIM_PROGRAM};
    vecArgs.insert(vecArgs.end(), vecOptions.begin(), vecOptions.end());
    return vecArgs;
}

/// linesim under a name of its own, and a program's end of the line.
class Simulation
{
public:
    explicit Simulation(std::vector<std::string> vecSteps,
                        const std::vector<std::string>& vecOptions = {})
    {
        std::vector<std::string> vecArgs = vecOptions;
        vecArgs.insert(vecArgs.end(), {"--link", Link()});
        // Opening the line forgets what came before: the script begins when it is open.
        vecSteps.insert(vecSteps.begin(), "expect \"open\" within 60000");
        for (const std::string& strStep : vecSteps)
            vecArgs.insert(vecArgs.end(), {"-e", strStep});
        m_pProcess = std::make_unique<ChildProcess>(CommandLine(vecArgs));
        EXPECT_TRUE(m_pProcess->WaitForOutput(Link() + "\n"));
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Link().c_str()));
        Send("open");
    }

    std::string Link() const { return m_oFolder.File("line"); }
    ChildProcess& Process() { return *m_pProcess; }
    CKorSerialLine& Line() { return m_oLine; }

    void Send(const std::string& strBytes)
    {
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.WriteText(strBytes, PATIENCE_MS));
    }
    std::string Receive(unsigned int nCount)
    {
        std::string strBytes;
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.ReadBytes(nCount, strBytes, PATIENCE_MS));
        return strBytes;
    }
    void WaitForHangUp()
    {
        std::string strBytes;
        while (m_oLine.Read(4096, strBytes, PATIENCE_MS) == CKorSerial::SERIAL_OK) {
        }
        EXPECT_TRUE(m_oLine.IsHungUp());
    }

private:
    ScratchDir m_oFolder;
    std::unique_ptr<ChildProcess> m_pProcess;
    CKorSerialLine m_oLine;
};

std::string ErrorOf(const ChildResult& oResult)
{
    EXPECT_EQ(1, oResult.nExitStatus);
    return oResult.strErr;
}

} // namespace

TEST(Linesim, AnswersWhatTheScriptExpects)
{
    Simulation oSimulation({"expect 01 03 ??{4} crc16", "send \"ok\" 00", "echo 05"});
    oSimulation.Send(REQUEST);
    EXPECT_EQ(std::string("ok\0", 3), oSimulation.Receive(3));
    oSimulation.Send("\x05");
    EXPECT_EQ("\x05", oSimulation.Receive(1));
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, LeavesTheLastBytesToTheProgram)
{
    Simulation oSimulation({"send 61{4000}"});
    EXPECT_EQ(std::string(4000, 'a'), oSimulation.Receive(4000));
    oSimulation.WaitForHangUp();
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, PassesEveryByteValueBothWays)
{
    std::string strAll;
    for (int i = 0; i < 256; ++i)
        strAll += static_cast<char>(i);
    Simulation oSimulation({"echo ??{256}"});
    oSimulation.Send(strAll);
    EXPECT_EQ(strAll, oSimulation.Receive(256));
}

TEST(Linesim, NamesTheWrongByte)
{
    Simulation oSimulation({"send 00", "expect 01 02"});
    oSimulation.Send("\x01\x04");
    EXPECT_EQ("linesim: line 3: 01 04 came, byte 2 is wrong\n",
              ErrorOf(oSimulation.Process().Wait()));
}

TEST(Linesim, SaysWhatCameWhenTheRestIsMissing)
{
    Simulation oSimulation({"expect 01 02 within 100"});
    oSimulation.Send("\x01");
    EXPECT_EQ("linesim: line 2: 01 came, and no more\n", ErrorOf(oSimulation.Process().Wait()));
}

TEST(Linesim, WaitsNoLongerThanItIsTold)
{
    Simulation oSimulation({"expect 01"}, {"--timeout", "50"});
    EXPECT_EQ("linesim: line 2: nothing came\n", ErrorOf(oSimulation.Process().Wait()));
}

TEST(Linesim, FindsBytesInTheSilence)
{
    Simulation oSimulation({"expect 01", "silence 60000"});
    oSimulation.Send("\x01\x02");
    oSimulation.Process().Signal(SIGTERM);
    EXPECT_EQ(1, oSimulation.Process().Wait().nExitStatus);

    Simulation oLoud({"expect 01", "silence 50"});
    oLoud.Send("\x01\x02");
    EXPECT_EQ("linesim: line 3: 02 came\n", ErrorOf(oLoud.Process().Wait()));

    Simulation oQuiet({"expect 01", "silence 50"});
    oQuiet.Send("\x01");
    EXPECT_EQ(0, oQuiet.Process().Wait().nExitStatus);
}

TEST(Linesim, SendsTheSameNoiseForTheSameSeed)
{
    Simulation oFirst({"noise 64"}, {"--seed", "7"});
    Simulation oSecond({"noise 64"}, {"--seed", "7"});
    Simulation oThird({"noise 64"}, {"--seed", "8"});
    const std::string strNoise = oFirst.Receive(64);
    EXPECT_EQ(strNoise, oSecond.Receive(64));
    EXPECT_NE(strNoise, oThird.Receive(64));
}

TEST(Linesim, DropsWhatItIsToldToDrop)
{
    Simulation oSimulation({"drop 3", "echo 34"});
    oSimulation.Send("1234");
    EXPECT_EQ("4", oSimulation.Receive(1));
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, RepeatsBlocksWithinBlocks)
{
    Simulation oSimulation({"repeat 2", "send \"a\"", "repeat 3", "send \"b\"", "end", "end"});
    EXPECT_EQ("abbbabbb", oSimulation.Receive(8));
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, HangsUpAndComesBackUnderTheSameName)
{
    Simulation oSimulation({"expect 01", "hangup", "delay 1", "comeback", "expect 02"});
    oSimulation.Send("\x01");
    oSimulation.WaitForHangUp();
    ASSERT_TRUE(WaitUntil([&] {
        return oSimulation.Line().Open(oSimulation.Link().c_str()) == CKorSerial::SERIAL_OK;
    }));
    oSimulation.Send("\x02");
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, PrintsTheNewNameOfALineWithoutLink)
{
    ChildProcess oProcess(CommandLine({"-e", "hangup", "-e", "comeback"}));
    const std::string strOut = oProcess.Wait().strOut;
    EXPECT_EQ(0U, strOut.find("/dev/pts/"));
    EXPECT_NE(std::string::npos, strOut.find("\n/dev/pts/"));
}

TEST(Linesim, IsFulfilledWhenAnIdleDeviceIsEnded)
{
    Simulation oSimulation({"repeat", "expect 01", "send 02", "end"}, {"--timeout", "20"});
    for (int i = 0; i < 3; ++i) {
        oSimulation.Send("\x01");
        EXPECT_EQ("\x02", oSimulation.Receive(1));
    }
    std::string strNothing;
    EXPECT_EQ(CKorSerial::SERIAL_WOULDBLOCK, // longer than a step may wait
              oSimulation.Line().Read(1, strNothing, 50));
    oSimulation.Process().Signal(SIGTERM);
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, IsNotFulfilledWhenItIsEndedTooEarly)
{
    Simulation oSimulation({"send 00", "expect 01"});
    EXPECT_EQ(std::string(1, '\0'), oSimulation.Receive(1));
    oSimulation.Process().Signal(SIGINT);
    EXPECT_EQ(1, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, LimitsTheTurnOnceItHasBegun)
{
    Simulation oSimulation({"repeat", "expect 01 02", "end"}, {"--timeout", "20"});
    oSimulation.Send("\x01");
    EXPECT_EQ("linesim: line 3: 01 came, and no more\n", ErrorOf(oSimulation.Process().Wait()));
}

TEST(Linesim, KeepsTheLineWhileProgramsComeAndGo)
{
    Simulation oSimulation({"repeat 2", "expect 01", "end"});
    oSimulation.Send("\x01");
    EXPECT_EQ(CKorSerial::SERIAL_OK, oSimulation.Line().Drain(PATIENCE_MS));
    ASSERT_TRUE(WaitUntil([&] {
        oSimulation.Line().Close();
        return oSimulation.Line().Open(oSimulation.Link().c_str()) == CKorSerial::SERIAL_OK;
    }));
    oSimulation.Send("\x01");
    EXPECT_EQ(0, oSimulation.Process().Wait().nExitStatus);
}

TEST(Linesim, ReadsTheScriptFromAFileOrStandardInput)
{
    ScratchDir oFolder;
    const std::string strScript = "# a device\nsend 01\n";
    std::ofstream(oFolder.File("script")) << strScript;
    const ChildResult oFromFile =
        RunProgram(CommandLine({"--timeout", "10", oFolder.File("script")}));
    EXPECT_EQ(0, oFromFile.nExitStatus) << oFromFile.strErr;
    const ChildResult oFromInput = RunProgram(CommandLine({"--timeout", "10", "-"}), strScript);
    EXPECT_EQ(0, oFromInput.nExitStatus) << oFromInput.strErr;
}

TEST(Linesim, TracesBothWaysWithTimes)
{
    ScratchDir oFolder;
    const std::string strTrace = oFolder.File("trace");
    std::string strLink;
    {
        Simulation oSimulation({"send 03", "expect 01 02"}, {"--trace", strTrace});
        strLink = oSimulation.Link();
        oSimulation.Receive(1);
        oSimulation.Send("\x01\x02");
        oSimulation.Process().Wait();
    }
    std::ifstream oTrace(strTrace);
    double fBefore = 0;
    for (const char* pszExpected : {" < 6F 70 65 6E", " > 03", " < 01 02"}) {
        double fTime = -1;
        std::string strName;
        std::string strRest;
        ASSERT_TRUE(std::getline(oTrace >> fTime >> strName, strRest));
        EXPECT_EQ(strLink, strName);
        EXPECT_EQ(pszExpected, strRest);
        EXPECT_LE(fBefore, fTime);
        fBefore = fTime;
    }
}

TEST(Linesim, RemovesTheLinkAtTheEndAndReplacesAnOldOne)
{
    ScratchDir oFolder;
    const std::string strLink = oFolder.File("line");
    ASSERT_EQ(0, symlink("/dev/nowhere", strLink.c_str()));
    EXPECT_EQ(0, RunProgram(CommandLine({"-l", strLink, "-e", "delay 1"})).nExitStatus);
    struct stat oStatus;
    EXPECT_NE(0, lstat(strLink.c_str(), &oStatus));
}

TEST(Linesim, RefusesANameThatIsNoLink)
{
    ScratchDir oFolder;
    const std::string strFile = oFolder.File("precious");
    std::ofstream(strFile) << "kept";
    const ChildResult oResult = RunProgram(CommandLine({"-l", strFile, "-e", "delay 1"}));
    EXPECT_EQ(3, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strErr.find(strFile)) << oResult.strErr;
    std::string strContent;
    std::ifstream(strFile) >> strContent;
    EXPECT_EQ("kept", strContent);
}

TEST(Linesim, PlaysTheDeviceOnAnotherLine)
{
    PseudoTerminal oTerminal;
    ChildProcess oProcess(
        CommandLine({"-d", oTerminal.Name(), "-e", "send 0D 11 0A", "-e", "expect 0A 13 0D"}));
    EXPECT_EQ("\r\x11\n", oTerminal.Receive(3));
    oTerminal.Send("\n\x13\r");
    EXPECT_EQ(0, oProcess.Wait().nExitStatus);
}

TEST(Linesim, JoinsTwoLines)
{
    ScratchDir oFolder;
    ChildProcess oProcess(
        CommandLine({"--join", "-l", oFolder.File("A"), "-l", oFolder.File("B")}));
    ASSERT_TRUE(oProcess.WaitForOutput(oFolder.File("B") + "\n"));
    CKorSerialLine oLineA;
    CKorSerialLine oLineB;
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLineA.Open(oFolder.File("A").c_str()));
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLineB.Open(oFolder.File("B").c_str()));
    std::string strBytes;
    EXPECT_EQ(CKorSerial::SERIAL_OK, oLineA.WriteText("to B", PATIENCE_MS));
    EXPECT_EQ(CKorSerial::SERIAL_OK, oLineB.ReadBytes(4, strBytes, PATIENCE_MS));
    EXPECT_EQ("to B", strBytes);
    EXPECT_EQ(CKorSerial::SERIAL_OK, oLineB.WriteText("to A", PATIENCE_MS));
    EXPECT_EQ(CKorSerial::SERIAL_OK, oLineA.ReadBytes(4, strBytes, PATIENCE_MS));
    EXPECT_EQ("to A", strBytes);
    oProcess.Signal(SIGTERM);
    EXPECT_EQ(0, oProcess.Wait().nExitStatus);
}

TEST(Linesim, JoinedLinesCarryMoreThanTheyHold)
{
    ScratchDir oFolder;
    ChildProcess oProcess(
        CommandLine({"--join", "-l", oFolder.File("A"), "-l", oFolder.File("B")}));
    ASSERT_TRUE(oProcess.WaitForOutput(oFolder.File("B") + "\n"));
    CKorSerialLine oLineA;
    CKorSerialLine oLineB;
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLineA.Open(oFolder.File("A").c_str()));
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLineB.Open(oFolder.File("B").c_str()));
    std::string strAll;
    for (unsigned int i = 0; i < 300000; ++i)
        strAll += static_cast<char>(i * 7 % 251);
    std::thread oWriter([&] { oLineA.WriteText(strAll, PATIENCE_MS); });
    std::string strBytes;
    EXPECT_EQ(CKorSerial::SERIAL_OK, oLineB.ReadBytes(300000, strBytes, PATIENCE_MS));
    oWriter.join();
    EXPECT_TRUE(strAll == strBytes);
}

TEST(Linesim, DisturbsJoinedLinesAsItIsTold)
{
    ScratchDir oFolder;
    ChildProcess oProcess(CommandLine({"--join", "-l", oFolder.File("A"), "-l", oFolder.File("B"),
                                       "--drop", "10", "--spoil", "10"}));
    ASSERT_TRUE(oProcess.WaitForOutput(oFolder.File("B") + "\n"));
    CKorSerialLine oLineA;
    CKorSerialLine oLineB;
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLineA.Open(oFolder.File("A").c_str()));
    ASSERT_EQ(CKorSerial::SERIAL_OK, oLineB.Open(oFolder.File("B").c_str()));
    EXPECT_EQ(CKorSerial::SERIAL_OK, oLineA.WriteText(std::string(2000, 'x'), PATIENCE_MS));
    std::string strBytes;
    std::string strAll;
    while (oLineB.Read(4096, strBytes, 500) == CKorSerial::SERIAL_OK)
        strAll += strBytes;
    const auto nRight = std::count(strAll.begin(), strAll.end(), 'x');
    EXPECT_GT(1950U, strAll.size());
    EXPECT_LT(1600U, strAll.size());
    EXPECT_LT(50, static_cast<long>(strAll.size()) - nRight);
    EXPECT_GT(400, static_cast<long>(strAll.size()) - nRight);
}

/// The script in the page about linesim.
std::string ExampleOfThePage()
{
    std::ifstream oPage(LINESIM_PAGE);
    const std::string strPage(std::istreambuf_iterator<char>(oPage), {});
    const std::size_t nBegin = strPage.find("```\n") + 4;
    return strPage.substr(nBegin, strPage.find("```\n", nBegin) - nBegin);
}

TEST(Linesim, PlaysTheExampleOfItsPage)
{
    ScratchDir oFolder;
    const std::string strLink = oFolder.File("meter");
    std::ofstream(oFolder.File("script")) << ExampleOfThePage();
    ChildProcess oProcess(CommandLine({"-l", strLink, oFolder.File("script")}));
    ASSERT_TRUE(oProcess.WaitForOutput(strLink + "\n"));
    CKorSerialLine oLine;
    std::string strAnswer;
    for (const unsigned int nAnswer : {9U, 9U, 12U}) {
        ASSERT_TRUE(WaitUntil([&] {
            return oLine.Open(strLink.c_str()) == CKorSerial::SERIAL_OK &&
                   oLine.WriteText(REQUEST, PATIENCE_MS) == CKorSerial::SERIAL_OK &&
                   oLine.ReadBytes(nAnswer, strAnswer, PATIENCE_MS) == CKorSerial::SERIAL_OK;
        }));
        EXPECT_EQ("01 03 04 08 FD 13 86", KorToHexText(strAnswer.data() + nAnswer - 9, 7));
    }
    const ChildResult oResult = oProcess.Wait();
    EXPECT_EQ(0, oResult.nExitStatus) << oResult.strErr;
}

TEST(Linesim, RefusesWrongUsage)
{
    const std::vector<std::vector<std::string>> vecWrong = {{},
                                                            {"--no-such-option"},
                                                            {"--join", "script"},
                                                            {"--join", "-e", "send 01"},
                                                            {"-l", "a", "-l", "b", "-e", "send 01"},
                                                            {"-l", "a", "-d", "b", "-e", "send 01"},
                                                            {"--drop", "5", "-e", "send 01"},
                                                            {"script", "-e", "send 01"},
                                                            {"-e", "sing"},
                                                            {"/no/such/script"}};
    for (const std::vector<std::string>& vecOptions : vecWrong) {
        const ChildResult oResult = RunProgram(CommandLine(vecOptions));
        EXPECT_EQ(2, oResult.nExitStatus) << testing::PrintToString(vecOptions);
        EXPECT_EQ(0U, oResult.strErr.find("linesim: ")) << oResult.strErr;
        EXPECT_EQ("", oResult.strOut);
    }
}
