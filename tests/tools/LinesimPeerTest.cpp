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
#include <memory>
#include <signal.h>
#include <string>
#include <thread>
#include <vector>

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

/// linesim as a cable between two open lines.
class JoinedLines
{
public:
    explicit JoinedLines(const std::vector<std::string>& vecOptions = {})
    {
        std::vector<std::string> vecArgs = {"--join", "-l", m_oFolder.File("A"), "-l",
                                            m_oFolder.File("B")};
        vecArgs.insert(vecArgs.end(), vecOptions.begin(), vecOptions.end());
        m_pProcess = std::make_unique<ChildProcess>(CommandLine(vecArgs));
        EXPECT_TRUE(m_pProcess->WaitForOutput(m_oFolder.File("B") + "\n"));
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLineA.Open(m_oFolder.File("A").c_str()));
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLineB.Open(m_oFolder.File("B").c_str()));
    }

    ScratchDir m_oFolder;
    std::unique_ptr<ChildProcess> m_pProcess;
    CKorSerialLine m_oLineA;
    CKorSerialLine m_oLineB;
};

TEST(Linesim, JoinsTwoLines)
{
    JoinedLines oJoined;
    std::string strBytes;
    EXPECT_EQ(CKorSerial::SERIAL_OK, oJoined.m_oLineA.WriteText("to B", PATIENCE_MS));
    EXPECT_EQ(CKorSerial::SERIAL_OK, oJoined.m_oLineB.ReadBytes(4, strBytes, PATIENCE_MS));
    EXPECT_EQ("to B", strBytes);
    EXPECT_EQ(CKorSerial::SERIAL_OK, oJoined.m_oLineB.WriteText("to A", PATIENCE_MS));
    EXPECT_EQ(CKorSerial::SERIAL_OK, oJoined.m_oLineA.ReadBytes(4, strBytes, PATIENCE_MS));
    EXPECT_EQ("to A", strBytes);
    oJoined.m_pProcess->Signal(SIGTERM);
    EXPECT_EQ(0, oJoined.m_pProcess->Wait().nExitStatus);
}

TEST(Linesim, JoinedLinesCarryMoreThanTheyHold)
{
    JoinedLines oJoined;
    std::string strAll;
    for (unsigned int i = 0; i < 300000; ++i)
        strAll += static_cast<char>(i * 7 % 251);
    std::thread oWriter([&] { oJoined.m_oLineA.WriteText(strAll, PATIENCE_MS); });
    std::string strBytes;
    EXPECT_EQ(CKorSerial::SERIAL_OK, oJoined.m_oLineB.ReadBytes(300000, strBytes, PATIENCE_MS));
    oWriter.join();
    EXPECT_TRUE(strAll == strBytes);
}

TEST(Linesim, DisturbsJoinedLinesAsItIsTold)
{
    JoinedLines oJoined({"--drop", "10", "--spoil", "10"});
    EXPECT_EQ(CKorSerial::SERIAL_OK,
              oJoined.m_oLineA.WriteText(std::string(2000, 'x'), PATIENCE_MS));
    std::string strBytes;
    std::string strAll;
    constexpr std::size_t FEWEST = 1600;
    // How many come is not known; once there are enough, a pause is their end.
    while (oJoined.m_oLineB.Read(4096, strBytes, strAll.size() > FEWEST ? 500 : PATIENCE_MS) ==
           CKorSerial::SERIAL_OK)
        strAll += strBytes;
    const auto nRight = std::count(strAll.begin(), strAll.end(), 'x');
    EXPECT_GT(1950U, strAll.size());
    EXPECT_LT(FEWEST, strAll.size());
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
