#include "tests/tools/LinesimTest.h"
#include "serial/KorSerialLine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/ScratchDir.h"
#include "text/KorHexText.h"

#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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
    Simulation oSimulation({"expect 05", "expect 01 02 within 100"});
    oSimulation.Send("\x05\x01"); // what is missing is waited for when the first byte is there
    EXPECT_EQ("linesim: line 3: 01 came, and no more\n", ErrorOf(oSimulation.Process().Wait()));
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

TEST(Linesim, ExplainsItself)
{
    for (const char* pszOption : {"-h", "--help"}) {
        const ChildResult oHelp = RunProgram(CommandLine({pszOption}));
        EXPECT_EQ(0, oHelp.nExitStatus);
        EXPECT_EQ(0U, oHelp.strOut.find("Usage: linesim [OPTION...]")) << oHelp.strOut;
    }
}

TEST(Linesim, TellsItsVersion)
{
    const ChildResult oVersion = RunProgram(CommandLine({"--version"}));
    EXPECT_EQ(0, oVersion.nExitStatus);
    EXPECT_EQ("Serial line simulator, Version " TARVO_VERSION
              "\nCopyright (C) Quentor GmbH (www.quentor.example)\n",
              oVersion.strOut);
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
