#include "serial/KorSerialLine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/ScratchDir.h"
#include "tests/tools/LinesimTest.h"
#include "text/KorHexText.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <thread>

namespace
{

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

} // namespace
