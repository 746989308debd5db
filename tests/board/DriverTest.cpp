#include "serial/KorSerialLine.h"
#include "tests/support/Patience.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

// What stands at the other end is scripts/board/driver.linesim; the script that runs this compares
// what the emulated chip was told.
namespace
{

const std::string ALL_BITS("\x55\xAA\x00\xFF", 4);

const char* Device()
{
    return std::getenv("BOARD_LINE");
}

class Driver : public testing::Test
{
protected:
    SKorLineCounts Counts()
    {
        SKorLineCounts oCounts;
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.GetErrorCounts(oCounts));
        return oCounts;
    }
    void ExpectEcho()
    {
        std::string strEcho;
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.WriteText(ALL_BITS, PATIENCE_MS));
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.ReadBytes(4, strEcho, PATIENCE_MS));
        EXPECT_EQ(ALL_BITS, strEcho);
    }

    CKorSerialLine m_oLine;
};

speed_t SpeedOf(int hLine)
{
    termios oSettings;
    return tcgetattr(hLine, &oSettings) == 0 ? cfgetospeed(&oSettings) : B0;
}

} // namespace

TEST_F(Driver, SendsAndReceivesAllBytesAtEachSpeed)
{
    for (const unsigned int nSpeed : {1200u, 9600u, 19200u, 57600u, 115200u}) {
        SKorLineOptions oOptions;
        oOptions.m_nSpeed = nSpeed;
        ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device(), oOptions)) << nSpeed;
        ExpectEcho();
    }
}

TEST_F(Driver, TakesEachFormat)
{
    SKorLineOptions oOptions;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device(), oOptions));
    for (const auto eParity :
         {CKorSerial::PARITY_EVEN, CKorSerial::PARITY_ODD, CKorSerial::PARITY_NONE}) {
        oOptions.m_eParity = eParity;
        oOptions.m_eByteSize = CKorSerial::BYTESIZE_7;
        oOptions.m_eStopbits = CKorSerial::STOPBITS_2;
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.SetOptions(oOptions));
        oOptions.m_eByteSize = CKorSerial::BYTESIZE_8;
        oOptions.m_eStopbits = CKorSerial::STOPBITS_1;
        EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.SetOptions(oOptions));
        ExpectEcho();
    }
}

TEST_F(Driver, RefusesASpeedThatTheChipCannotMakeAndKeepsTheOldOne)
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 19200;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device(), oOptions));
    oOptions.m_nSpeed = 4000000;
    EXPECT_EQ(CKorSerial::SERIAL_IO_ERROR, m_oLine.SetOptions(oOptions));
    EXPECT_EQ(EINVAL, m_oLine.GetLastError());
    EXPECT_EQ(static_cast<speed_t>(B19200), SpeedOf(m_oLine.GetHandle()));
    ExpectEcho();
}

TEST_F(Driver, IsExclusiveUntilItCloses)
{
    CKorSerialLine oOther;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    EXPECT_EQ(CKorSerial::SERIAL_OPEN_ERROR, oOther.Open(Device()));
    EXPECT_EQ(EBUSY, oOther.GetLastError());
    m_oLine.Close();
    EXPECT_EQ(CKorSerial::SERIAL_OK, oOther.Open(Device()));
}

TEST_F(Driver, GivesTheLineItsSettingsBack)
{
    const int hLine = open(Device(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_NE(-1, hLine);
    const speed_t nBefore = SpeedOf(hLine);
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 38400;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device(), oOptions));
    EXPECT_EQ(static_cast<speed_t>(B38400), SpeedOf(hLine));
    m_oLine.Close();
    EXPECT_EQ(nBefore, SpeedOf(hLine));
    close(hLine);
}

TEST_F(Driver, ShowsWhatTheModemLinesDo)
{
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    SKorModemLines oLines;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.GetModemLines(oLines));
    EXPECT_TRUE(oLines.m_bRts && oLines.m_bDtr);
    ASSERT_EQ(CKorSerial::SERIAL_OK,
              m_oLine.SetModemLines(CKorSerial::RTS_OFF, CKorSerial::DTR_OFF));
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.GetModemLines(oLines));
    EXPECT_FALSE(oLines.m_bRts || oLines.m_bDtr);
}

// The chip joins its outputs to its inputs: RTS to CTS, DTR to DSR.
TEST_F(Driver, LoopShowsTheOutputsAtTheInputs)
{
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    int nLoop = 0x8000; // TIOCM_LOOP, which the C library has no name for
    ASSERT_EQ(0, ioctl(m_oLine.GetHandle(), TIOCMBIS, &nLoop));
    for (const bool bRts : {true, false}) {
        for (const bool bDtr : {true, false}) {
            SKorModemLines oLines;
            ASSERT_EQ(CKorSerial::SERIAL_OK,
                      m_oLine.SetModemLines(bRts ? CKorSerial::RTS_ON : CKorSerial::RTS_OFF,
                                            bDtr ? CKorSerial::DTR_ON : CKorSerial::DTR_OFF));
            ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.GetModemLines(oLines));
            EXPECT_EQ(bRts, oLines.m_bCts);
            EXPECT_EQ(bDtr, oLines.m_bDsr);
        }
    }
    ASSERT_EQ(0, ioctl(m_oLine.GetHandle(), TIOCMBIC, &nLoop));
}

TEST_F(Driver, CountsBytesThatTheKernelLostAndGoesOn)
{
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    const unsigned int nBefore = Counts().m_nBufferOverrun;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.WriteText("flood", PATIENCE_MS));
    // An emulated chip hands on some ten thousand bytes in a second.
    bool bLost = false;
    for (int nMinute = 0; nMinute < 5 && !bLost; ++nMinute)
        bLost = WaitUntil([&] { return Counts().m_nBufferOverrun > nBefore; });
    std::string strFlood;
    EXPECT_EQ(CKorSerial::SERIAL_OK,
              m_oLine.ReadFrame(1000000, strFlood, 2 * PATIENCE_MS, 2000000));
    EXPECT_TRUE(bLost) << strFlood.size() << " bytes came";
    EXPECT_EQ(std::string::npos, strFlood.find_first_not_of('Z'));
    ExpectEcho();
}

TEST_F(Driver, HoldsABreakAsLongAsItIsTold)
{
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    const auto oBegin = std::chrono::steady_clock::now();
    EXPECT_EQ(CKorSerial::SERIAL_OK, m_oLine.SendBreak(200));
    EXPECT_GE(std::chrono::steady_clock::now() - oBegin, std::chrono::milliseconds(200));
    ExpectEcho();
}

TEST_F(Driver, CountsABreakAndDeliversItAsNul)
{
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    const SKorLineCounts oBefore = Counts();
    std::string strBreak;
    std::cout << "board: waits for a break" << std::endl;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.ReadBytes(1, strBreak, PATIENCE_MS));
    EXPECT_EQ(std::string(1, '\0'), strBreak);
    EXPECT_EQ(oBefore.m_nBreak + 1, Counts().m_nBreak);
    EXPECT_EQ(oBefore.m_nFrame, Counts().m_nFrame);
}

TEST_F(Driver, SaysWhatItDoesNotHave)
{
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device()));
    SKorRS485 oRS485;
    oRS485.m_bEnabled = true;
    EXPECT_EQ(CKorSerial::SERIAL_NOT_SUPPORTED, m_oLine.SetRS485(oRS485));
    ExpectEcho();
}

TEST_F(Driver, SwitchesTheTransmitterOfATwoWireLine)
{
    SKorLineOptions oOptions;
    oOptions.m_oRS485.m_bEnabled = true;
    ASSERT_EQ(CKorSerial::SERIAL_OK, m_oLine.Open(Device(), oOptions));
    ExpectEcho();
}
