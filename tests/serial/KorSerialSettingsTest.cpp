#include "serial/KorSerial.h"
#include "tests/serial/SerialTestPort.h"
#include "tests/support/Emulation.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/SerialResult.h"

#include <gtest/gtest.h>

namespace
{

using S = CKorSerial;

/// Opens the line with these settings and returns those that the terminal then has.
termios SettingsAfterOpen(const PseudoTerminal& oLine, S::E_BAUDRATE eBaudrate = S::BAUD_9600,
                          S::E_PARITY eParity = S::PARITY_NONE,
                          S::E_NUM_STOPBITS eStopbits = S::STOPBITS_1,
                          S::E_BYTESIZE eByteSize = S::BYTESIZE_8, CKorXonXoff* pXonXoff = nullptr)
{
    CKorSerial oPort;
    EXPECT_EQ(OK, SerialResult(oPort.open(oLine.Name(), eBaudrate, eParity, eStopbits, eByteSize,
                                          pXonXoff)));
    const termios oSettings = oLine.Settings();
    EXPECT_EQ(OK, SerialResult(oPort.close()));
    return oSettings;
}

struct Rate
{
    S::E_BAUDRATE eBaudrate;
    speed_t nCode;
};

constexpr Rate EVERY_RATE[] = {
    {S::BAUD_50, B50},           {S::BAUD_75, B75},           {S::BAUD_110, B110},
    {S::BAUD_134, B134},         {S::BAUD_150, B150},         {S::BAUD_200, B200},
    {S::BAUD_300, B300},         {S::BAUD_600, B600},         {S::BAUD_1200, B1200},
    {S::BAUD_1800, B1800},       {S::BAUD_2400, B2400},       {S::BAUD_4800, B4800},
    {S::BAUD_9600, B9600},       {S::BAUD_19200, B19200},     {S::BAUD_38400, B38400},
    {S::BAUD_57600, B57600},     {S::BAUD_115200, B115200},   {S::BAUD_230400, B230400},
    {S::BAUD_460800, B460800},   {S::BAUD_500000, B500000},   {S::BAUD_576000, B576000},
    {S::BAUD_921600, B921600},   {S::BAUD_1000000, B1000000}, {S::BAUD_1152000, B1152000},
    {S::BAUD_1500000, B1500000}, {S::BAUD_2000000, B2000000}, {S::BAUD_2500000, B2500000},
    {S::BAUD_3000000, B3000000}, {S::BAUD_3500000, B3500000}, {S::BAUD_4000000, B4000000},
};

TEST(KorSerialSettings, EveryRateHasThePlatformsCode)
{
    for (const Rate& oRate : EVERY_RATE)
        EXPECT_EQ(oRate.nCode, static_cast<speed_t>(oRate.eBaudrate));
}

// User-mode emulation passes the older rates on to its host's terminal and no others.
TEST(KorSerialSettings, TheTerminalGetsTheRateForBothDirections)
{
    const PseudoTerminal oLine;
    for (const Rate& oRate : EVERY_RATE) {
        if (UnderEmulation() && oRate.nCode > B460800)
            continue;
        const termios oSettings = SettingsAfterOpen(oLine, oRate.eBaudrate);
        EXPECT_EQ(oRate.nCode, cfgetospeed(&oSettings));
        const speed_t nInput = cfgetispeed(&oSettings);
        EXPECT_TRUE(nInput == oRate.nCode || nInput == 0) << nInput; // 0 follows the output
    }
}

TEST(KorSerialSettings, AnUnknownRateKeepsTheEarlierOneAndIsNoFailure)
{
    TestPort oPort;
    EXPECT_EQ(0, oPort.SetBaudrate(S::BAUD_300));
    EXPECT_EQ(0, oPort.SetBaudrate(12345));
    EXPECT_EQ(speed_t{B300}, cfgetospeed(&oPort.m_oTermios));
}

TEST(KorSerialSettings, SetBaudrateEditsTheCopyOnly)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    EXPECT_EQ(0, oPort.SetBaudrate(S::BAUD_300));
    EXPECT_EQ(speed_t{B300}, cfgetospeed(&oPort.m_oTermios));
    const termios oSettings = oLine.Settings();
    EXPECT_EQ(speed_t{B115200}, cfgetospeed(&oSettings));
}

// A pseudo-terminal always reports eight data bits and no parity bit: CSIZE and PARENB are
// looked at in the port's copy, all other settings at the terminal.

TEST(KorSerialSettings, NoParityClearsTheBitAndTheCheck)
{
    TestPort oPort;
    oPort.m_oTermios.c_iflag = INPCK;
    oPort.m_oTermios.c_cflag = PARENB | PARODD;
    oPort.UseParity(S::PARITY_NONE);
    EXPECT_EQ(0U, oPort.m_oTermios.c_iflag);
    EXPECT_EQ(tcflag_t{PARODD}, oPort.m_oTermios.c_cflag);
}

TEST(KorSerialSettings, EvenParitySetsTheBitAndTheCheck)
{
    TestPort oPort;
    oPort.m_oTermios.c_iflag = 0;
    oPort.m_oTermios.c_cflag = PARODD;
    oPort.UseParity(S::PARITY_EVEN);
    EXPECT_EQ(tcflag_t{INPCK}, oPort.m_oTermios.c_iflag);
    EXPECT_EQ(tcflag_t{PARENB}, oPort.m_oTermios.c_cflag);
}

TEST(KorSerialSettings, OddParitySetsTheBitTheKindAndTheCheck)
{
    TestPort oPort;
    oPort.m_oTermios.c_iflag = 0;
    oPort.m_oTermios.c_cflag = 0;
    oPort.UseParity(S::PARITY_ODD);
    EXPECT_EQ(tcflag_t{INPCK}, oPort.m_oTermios.c_iflag);
    EXPECT_EQ(tcflag_t{PARENB | PARODD}, oPort.m_oTermios.c_cflag);
}

TEST(KorSerialSettings, AnyOtherParityIsEven)
{
    TestPort oPort;
    oPort.UseParity(S::PARITY_ODD);
    oPort.UseParity(static_cast<S::E_PARITY>(3));
    EXPECT_EQ(tcflag_t{PARENB}, oPort.m_oTermios.c_cflag & (PARENB | PARODD));
}

TEST(KorSerialSettings, TheTerminalGetsTheParity)
{
    const PseudoTerminal oLine;
    termios oSettings = SettingsAfterOpen(oLine, S::BAUD_9600, S::PARITY_ODD);
    EXPECT_NE(0U, oSettings.c_iflag & INPCK);
    EXPECT_NE(0U, oSettings.c_cflag & PARODD);
    oSettings = SettingsAfterOpen(oLine, S::BAUD_9600, S::PARITY_EVEN);
    EXPECT_NE(0U, oSettings.c_iflag & INPCK);
    EXPECT_EQ(0U, oSettings.c_cflag & PARODD);
    oSettings = SettingsAfterOpen(oLine, S::BAUD_9600, S::PARITY_NONE);
    EXPECT_EQ(0U, oSettings.c_iflag & INPCK);
}

TEST(KorSerialSettings, TheTerminalGetsTheStopBits)
{
    const PseudoTerminal oLine;
    termios oSettings = SettingsAfterOpen(oLine, S::BAUD_9600, S::PARITY_NONE, S::STOPBITS_2);
    EXPECT_NE(0U, oSettings.c_cflag & CSTOPB);
    oSettings = SettingsAfterOpen(oLine, S::BAUD_9600, S::PARITY_NONE, S::STOPBITS_1);
    EXPECT_EQ(0U, oSettings.c_cflag & CSTOPB);
}

TEST(KorSerialSettings, AnyOtherNumberOfStopBitsChangesNothing)
{
    TestPort oPort;
    oPort.SetNumStopbits(S::STOPBITS_2);
    oPort.SetNumStopbits(static_cast<S::E_NUM_STOPBITS>(2));
    EXPECT_EQ(tcflag_t{CSTOPB}, oPort.m_oTermios.c_cflag);
    oPort.SetNumStopbits(S::STOPBITS_1);
    oPort.SetNumStopbits(static_cast<S::E_NUM_STOPBITS>(2));
    EXPECT_EQ(0U, oPort.m_oTermios.c_cflag);
}

TEST(KorSerialSettings, SetsTheCharacterSize)
{
    TestPort oPort;
    oPort.m_oTermios.c_cflag = CSTOPB;
    for (const S::E_BYTESIZE eSize : {S::BYTESIZE_8, S::BYTESIZE_5, S::BYTESIZE_7, S::BYTESIZE_6}) {
        oPort.SetByteSize(eSize);
        EXPECT_EQ(CSTOPB | static_cast<tcflag_t>(eSize), oPort.m_oTermios.c_cflag);
    }
}

TEST(KorSerialSettings, TheCharacterSizeIsNotMasked)
{
    TestPort oPort;
    oPort.m_oTermios.c_cflag = 0;
    oPort.SetByteSize(static_cast<S::E_BYTESIZE>(0x31));
    EXPECT_EQ(tcflag_t{CS8 | 0x01}, oPort.m_oTermios.c_cflag);
}

TEST(KorSerialSettings, ARecordSwitchesFlowControlOn)
{
    const PseudoTerminal oLine;
    oLine.MakeRaw();
    CKorXonXoff oRecord(10, 20, '\x05', '\xF6');
    const termios oSettings = SettingsAfterOpen(oLine, S::BAUD_9600, S::PARITY_NONE, S::STOPBITS_1,
                                                S::BYTESIZE_8, &oRecord);
    EXPECT_EQ(tcflag_t{IXON | IXOFF}, oSettings.c_iflag & (IXON | IXOFF));
    EXPECT_EQ(0x05, oSettings.c_cc[VSTART]);
    EXPECT_EQ(0xF6, oSettings.c_cc[VSTOP]);
}

TEST(KorSerialSettings, ARecordSwitchesFlowControlOnWhateverItsUseFlagSays)
{
    TestPort oPort;
    CKorXonXoff oRecord(10, 20, '\x11', '\x13');
    oRecord.UseXonXoff(false);
    oPort.SetXonXoff(&oRecord);
    EXPECT_EQ(tcflag_t{IXON | IXOFF}, oPort.m_oTermios.c_iflag);
    EXPECT_EQ(0x11, oPort.m_oTermios.c_cc[VSTART]);
    EXPECT_EQ(0x13, oPort.m_oTermios.c_cc[VSTOP]);
}

TEST(KorSerialSettings, WithoutARecordFlowControlStaysAsItIs)
{
    const PseudoTerminal oLine;
    for (const tcflag_t nFlags : {tcflag_t{0}, tcflag_t{IXON}, tcflag_t{IXOFF}}) {
        termios oBefore = oLine.Settings();
        oBefore.c_iflag = (oBefore.c_iflag & ~tcflag_t{IXON | IXOFF}) | nFlags;
        oBefore.c_cc[VSTART] = 0x21;
        oBefore.c_cc[VSTOP] = 0x22;
        oLine.Apply(oBefore);
        const termios oSettings = SettingsAfterOpen(oLine);
        EXPECT_EQ(nFlags, oSettings.c_iflag & (IXON | IXOFF));
        EXPECT_EQ(0x21, oSettings.c_cc[VSTART]);
        EXPECT_EQ(0x22, oSettings.c_cc[VSTOP]);
    }
}

TEST(KorSerialSettings, OpenMakesTheLineTransparent)
{
    const PseudoTerminal oLine;
    termios oBefore = oLine.Settings();
    oBefore.c_oflag |= ONLCR;
    oBefore.c_lflag |= ISIG | ICANON | ECHO | ECHOE;
    oLine.Apply(oBefore);
    const termios oSettings = SettingsAfterOpen(oLine);
    EXPECT_EQ(0U, oSettings.c_oflag & ONLCR);
    EXPECT_EQ(0U, oSettings.c_lflag & (ISIG | ICANON | ECHO | ECHOE));
}

/// What the port must leave alone, once all set and once all cleared. CREAD is not in it: a
/// pseudo-terminal always has it set.
constexpr tcflag_t KEPT_CFLAGS = CLOCAL | CRTSCTS | HUPCL;
constexpr tcflag_t KEPT_IFLAGS =
    ICRNL | INLCR | IGNCR | ISTRIP | IGNBRK | BRKINT | PARMRK | IGNPAR | IMAXBEL | IXANY;
constexpr tcflag_t KEPT_OFLAGS = OPOST | OCRNL | ONOCR | ONLRET;
constexpr tcflag_t KEPT_LFLAGS = ECHOK | ECHONL | NOFLSH | TOSTOP | IEXTEN | ECHOCTL | ECHOKE;

void ExpectLeftAlone(tcflag_t nEach, cc_t nMin, cc_t nTime)
{
    const PseudoTerminal oLine;
    termios oBefore = oLine.Settings();
    oBefore.c_cflag = (oBefore.c_cflag & ~KEPT_CFLAGS) | (KEPT_CFLAGS & nEach);
    oBefore.c_iflag = (oBefore.c_iflag & ~KEPT_IFLAGS) | (KEPT_IFLAGS & nEach);
    oBefore.c_oflag = (oBefore.c_oflag & ~KEPT_OFLAGS) | (KEPT_OFLAGS & nEach);
    oBefore.c_lflag = (oBefore.c_lflag & ~KEPT_LFLAGS) | (KEPT_LFLAGS & nEach);
    oBefore.c_cc[VMIN] = nMin;
    oBefore.c_cc[VTIME] = nTime;
    oLine.Apply(oBefore);

    const termios oSettings = SettingsAfterOpen(oLine);
    EXPECT_EQ(KEPT_CFLAGS & nEach, oSettings.c_cflag & KEPT_CFLAGS);
    EXPECT_EQ(KEPT_IFLAGS & nEach, oSettings.c_iflag & KEPT_IFLAGS);
    EXPECT_EQ(KEPT_OFLAGS & nEach, oSettings.c_oflag & KEPT_OFLAGS);
    EXPECT_EQ(KEPT_LFLAGS & nEach, oSettings.c_lflag & KEPT_LFLAGS);
    EXPECT_EQ(nMin, oSettings.c_cc[VMIN]);
    EXPECT_EQ(nTime, oSettings.c_cc[VTIME]);
    EXPECT_EQ(oBefore.c_cflag & CREAD, oSettings.c_cflag & CREAD);
    for (const int nCharacter : {VINTR, VQUIT, VERASE, VKILL, VEOF, VEOL, VSUSP})
        EXPECT_EQ(oBefore.c_cc[nCharacter], oSettings.c_cc[nCharacter]) << nCharacter;
}

TEST(KorSerialSettings, LeavesEverythingElseSet)
{
    ExpectLeftAlone(~tcflag_t{0}, 7, 9);
}

TEST(KorSerialSettings, LeavesEverythingElseCleared)
{
    ExpectLeftAlone(0, 0, 0);
}

TEST(KorSerialSettings, InitPortKeepsEveryOtherFlagOfTheCopy)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    oPort.m_oTermios.c_cflag &= ~tcflag_t{CREAD};
    EXPECT_EQ(OK, SerialResult(oPort.InitPort(S::BAUD_9600, S::PARITY_ODD, S::STOPBITS_2,
                                              S::BYTESIZE_7, nullptr)));
    EXPECT_EQ(0U, oPort.m_oTermios.c_cflag & CREAD);
    EXPECT_EQ(tcflag_t{PARENB | PARODD | CSTOPB | CS7},
              oPort.m_oTermios.c_cflag & (PARENB | PARODD | CSTOPB | CSIZE));
}

TEST(KorSerialSettings, TheSettersReachTheDeviceWithInitPortOnly)
{
    const PseudoTerminal oLine;
    TestPort oPort;
    ASSERT_EQ(OK, SerialResult(oPort.open(oLine)));
    CKorXonXoff oRecord(10, 20, '\x11', '\x13');
    oPort.SetNumStopbits(S::STOPBITS_2);
    oPort.UseParity(S::PARITY_ODD);
    oPort.SetXonXoff(&oRecord);
    const termios oBefore = oLine.Settings();
    EXPECT_EQ(0U, oBefore.c_cflag & (CSTOPB | PARODD));
    EXPECT_EQ(0U, oBefore.c_iflag & IXOFF);

    EXPECT_EQ(OK, SerialResult(oPort.InitPort(S::BAUD_300, S::PARITY_ODD, S::STOPBITS_2,
                                              S::BYTESIZE_8, nullptr)));
    const termios oAfter = oLine.Settings();
    EXPECT_EQ(tcflag_t{CSTOPB | PARODD}, oAfter.c_cflag & (CSTOPB | PARODD));
    EXPECT_EQ(tcflag_t{IXOFF}, oAfter.c_iflag & IXOFF);
    EXPECT_EQ(speed_t{B300}, cfgetospeed(&oAfter));
}

TEST(KorSerialSettings, UseBinaryDoesNothing)
{
    for (const tcflag_t nFlags : {tcflag_t{0}, ~tcflag_t{0}}) {
        TestPort oPort;
        oPort.m_oTermios.c_iflag = nFlags;
        oPort.m_oTermios.c_oflag = nFlags;
        oPort.m_oTermios.c_cflag = nFlags;
        oPort.m_oTermios.c_lflag = nFlags;
        oPort.UseBinary(true);
        oPort.UseBinary(false);
        EXPECT_EQ(nFlags, oPort.m_oTermios.c_iflag);
        EXPECT_EQ(nFlags, oPort.m_oTermios.c_oflag);
        EXPECT_EQ(nFlags, oPort.m_oTermios.c_cflag);
        EXPECT_EQ(nFlags, oPort.m_oTermios.c_lflag);
    }
}

} // namespace
