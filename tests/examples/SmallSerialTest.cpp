// The small example programs about serial lines, run as their users run them.
#include "examples/modbus/ModbusRtu.h"
#include "tests/app/NotifySocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Patience.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/ScratchDir.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

class SmallSerialExample : public testing::Test
{
protected:
    SmallSerialExample() { m_oTerminal.MakeRaw(); }

    PseudoTerminal m_oTerminal;
};

TEST_F(SmallSerialExample, AskDeviceAsksAgainWhenNoAnswerComes)
{
    ChildProcess oProgram({ASK_DEVICE_PROGRAM, m_oTerminal.Name()});
    EXPECT_EQ("*IDN?\r\n*IDN?\r\n", m_oTerminal.Receive(14));
    m_oTerminal.Send("ACME,12\r\n");
    EXPECT_EQ(0, oProgram.Wait().nExitStatus);
    EXPECT_EQ(0u, oProgram.Wait().strOut.find("no answer\n"));
    EXPECT_NE(std::string::npos, oProgram.Wait().strOut.find("no answer\nACME,12\r\n"));
}

TEST_F(SmallSerialExample, AskDeviceSaysWhyALineCannotBeOpened)
{
    const ChildResult oResult = RunProgram({ASK_DEVICE_PROGRAM, "/dev/null"});
    EXPECT_EQ(1, oResult.nExitStatus);
    EXPECT_EQ(0u, oResult.strOut.find("cannot open the line: ")) << oResult.strOut;
}

TEST_F(SmallSerialExample, PollModbusShowsTheRegisters)
{
    ChildProcess oProgram({POLL_MODBUS_PROGRAM, m_oTerminal.Name()});
    const ModbusRequest oRequest = {1, MODBUS_READ_HOLDING_REGISTERS, 0, 2};
    EXPECT_TRUE(WaitUntil([&] {
        EXPECT_EQ(ModbusRequestTelegram(oRequest), m_oTerminal.Receive(MODBUS_REQUEST_LENGTH));
        m_oTerminal.Send(ModbusResponseTelegram(oRequest, {2301, 4998}));
        return oProgram.OutputSoFar().find("ok 2301 4998\n") != std::string::npos;
    }));
}

TEST_F(SmallSerialExample, TwoLinesServesBothAndOpensOneAgain)
{
    const ScratchDir oDir;
    const std::string strLink = oDir.File("line");
    ASSERT_EQ(0, symlink(m_oTerminal.Name(), strLink.c_str()));
    PseudoTerminal oOther;
    ChildProcess oProgram({TWO_LINES_PROGRAM, strLink, oOther.Name()});
    const auto Says = [&](const PseudoTerminal& oFrom, const std::string& strLine) {
        return WaitUntil([&] {
            oFrom.Send("x");
            return oProgram.ErrorsSoFar().find(strLine + ": x") != std::string::npos;
        });
    };
    EXPECT_TRUE(Says(oOther, oOther.Name()));
    EXPECT_TRUE(Says(m_oTerminal, strLink));
    m_oTerminal.HangUp();
    const PseudoTerminal oNew;
    ASSERT_EQ(0, unlink(strLink.c_str()));
    ASSERT_EQ(0, symlink(oNew.Name(), strLink.c_str()));
    EXPECT_TRUE(WaitUntil([&] {
        oNew.Send("again");
        return oProgram.ErrorsSoFar().find("again") != std::string::npos;
    }));
}

TEST_F(SmallSerialExample, WatchdogFallsSilentWithItsDevice)
{
    const ScratchDir oDir;
    const NotifySocket oManager(oDir.File("notify"));
    setenv("WATCHDOG_USEC", "20000", 1);
    ChildProcess oProgram({WATCHDOG_PROGRAM, m_oTerminal.Name(), "50"});
    unsetenv("WATCHDOG_USEC");
    EXPECT_EQ("READY=1", oManager.Receive());
    const auto TellsWhenTheDeviceTalks = [&] {
        return WaitUntil([&] {
            m_oTerminal.Send("x");
            return oManager.Receive() == "WATCHDOG=1";
        });
    };
    EXPECT_TRUE(TellsWhenTheDeviceTalks());
    EXPECT_TRUE(WaitUntil([&] { return oManager.Receive() == "STATUS=the device is silent"; }));
    EXPECT_TRUE(TellsWhenTheDeviceTalks());
    m_oTerminal.HangUp();
    EXPECT_EQ(1, oProgram.Wait().nExitStatus);
}

TEST_F(SmallSerialExample, DumpTelegramShowsWhatPassed)
{
    ChildProcess oProgram({DUMP_TELEGRAM_PROGRAM, m_oTerminal.Name(), "01 03:00"});
    EXPECT_EQ(std::string("\1\3\0", 3), m_oTerminal.Receive(3));
    m_oTerminal.Send("AB\n");
    EXPECT_EQ("> 01 03 00\n"
              "< 41 42 0A\n"
              "0000  41 42 0A                                         AB.\n",
              oProgram.Wait().strOut);
    EXPECT_EQ(2, RunProgram({DUMP_TELEGRAM_PROGRAM, m_oTerminal.Name(), "1"}).nExitStatus);
}

TEST_F(SmallSerialExample, ReadLinePrintsLinesUntilTheLineHangsUp)
{
    ChildProcess oProgram({READ_LINE_PROGRAM, m_oTerminal.Name()});
    ASSERT_TRUE(WaitUntil([&] {
        m_oTerminal.Send("$GPGLL\r\n");
        return oProgram.OutputSoFar().find("$GPGLL\r\n") != std::string::npos;
    }));
    m_oTerminal.HangUp();
    EXPECT_EQ(0, oProgram.Wait().nExitStatus);
    EXPECT_NE(std::string::npos, oProgram.Wait().strOut.find("end: ")) << oProgram.Wait().strOut;
}

TEST_F(SmallSerialExample, ReceiveInThreadCountsUntilTheLineHangsUp)
{
    ChildProcess oProgram({RECEIVE_IN_THREAD_PROGRAM, m_oTerminal.Name()});
    ASSERT_TRUE(oProgram.WaitForOutput("receives\n"));
    m_oTerminal.Send("12345");
    ASSERT_TRUE(oProgram.WaitForOutput("5 bytes\n"));
    m_oTerminal.HangUp();
    EXPECT_EQ(0, oProgram.Wait().nExitStatus);
    EXPECT_NE(std::string::npos, oProgram.Wait().strOut.find("ended it\n"));
}

TEST_F(SmallSerialExample, WaitWithLimitTellsWhatIsLeft)
{
    const ChildResult oResult = RunProgram({WAIT_WITH_LIMIT_PROGRAM, m_oTerminal.Name()});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_EQ(0u, oResult.strOut.find("open after ")) << oResult.strOut;
}

TEST(SmallExample, ListPortsEndsWithTheirNumber)
{
    const ChildResult oResult = RunProgram({LIST_PORTS_PROGRAM});
    EXPECT_EQ(0, oResult.nExitStatus);
    EXPECT_NE(std::string::npos, oResult.strOut.find(" ports\n")) << oResult.strOut;
}

} // namespace
