#include "serial/KorLineTermiosDetail.h"
#include "tests/serial/LineOptions.h"
#include "tests/serial/LineTestPeer.h"

#include <fstream>
#include <termios.h>
#include <unistd.h>

TEST(KorSerialLine, PassesAllBytesBothWays)
{
    TestLine oTest;
    std::string strData;
    oTest.m_oPeer.Send(AllBytes());
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(512, strData, LONG)));
    EXPECT_EQ(AllBytes(), strData);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText(AllBytes(), LONG)));
    EXPECT_EQ(AllBytes(), oTest.m_oPeer.Receive(512));
}

TEST(KorSerialLine, IsRawInEveryBitWhateverTheLineWas)
{
    PseudoTerminal oPeer;
    oPeer.Apply(StrangeSettings(oPeer));
    CKorSerialLine oLine;
    ASSERT_EQ(DONE, Told(oLine, oLine.Open(oPeer.Name())));
    const termios oRaw = oPeer.Settings();
    EXPECT_EQ(0U, oRaw.c_iflag);
    EXPECT_EQ(0U, oRaw.c_oflag);
    EXPECT_EQ(0U, oRaw.c_lflag);
    EXPECT_EQ(tcflag_t(CREAD | CLOCAL), oRaw.c_cflag & (CREAD | CLOCAL | CSTOPB | PARODD));
    EXPECT_EQ(1, oRaw.c_cc[VMIN]);
    EXPECT_EQ(0, oRaw.c_cc[VTIME]);
}

TEST(KorSerialLine, SetsTheOptionsThatAPseudoTerminalHas)
{
    SKorLineOptions oOptions;
    oOptions.m_nSpeed = 115200;
    oOptions.m_eParity = CKorSerial::PARITY_ODD;
    oOptions.m_eByteSize = CKorSerial::BYTESIZE_7;
    oOptions.m_eStopbits = CKorSerial::STOPBITS_2;
    oOptions.m_eFlow = SKorLineOptions::FLOW_XON_XOFF;
    oOptions.m_cXon = 'n';
    oOptions.m_cXoff = 'f';
    const TestLine oTest(oOptions);
    const termios oSettings = oTest.m_oPeer.Settings();
    EXPECT_EQ(speed_t(B115200), cfgetospeed(&oSettings));
    EXPECT_EQ(tcflag_t(CSTOPB), oSettings.c_cflag & CSTOPB);
    EXPECT_EQ(tcflag_t(PARODD), oSettings.c_cflag & PARODD);
    EXPECT_EQ(tcflag_t(IXON | IXOFF), oSettings.c_iflag);
    EXPECT_EQ('n', oSettings.c_cc[VSTART]);
    EXPECT_EQ('f', oSettings.c_cc[VSTOP]);
}

TEST(KorSerialLine, UsesRtsAndCtsWhenAsked)
{
    SKorLineOptions oOptions;
    oOptions.m_eFlow = SKorLineOptions::FLOW_RTS_CTS;
    TestLine oTest(oOptions);
    EXPECT_NE(0U, oTest.m_oPeer.Settings().c_cflag & CRTSCTS);
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions({})));
    EXPECT_EQ(0U, oTest.m_oPeer.Settings().c_cflag & CRTSCTS);
}

TEST(KorSerialLine, TakesEverySpeedThatHasAName)
{
    TestLine oTest;
    const unsigned int nHighest = UnderEmulation() ? 460800 : 4000000; // that emulators know
    for (const unsigned int nSpeed :
         {50U,      75U,      110U,     134U,     150U,     200U,    300U,     600U,
          1200U,    1800U,    2400U,    4800U,    9600U,    19200U,  38400U,   57600U,
          115200U,  230400U,  460800U,  500000U,  576000U,  921600U, 1000000U, 1152000U,
          1500000U, 2000000U, 2500000U, 3000000U, 3500000U, 4000000U}) {
        if (nSpeed > nHighest)
            break;
        EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(nSpeed)))) << nSpeed;
        SKorLineSettings oSettings;
        EXPECT_TRUE(KorGetLineSettings(oTest.m_oPeer.FarEnd(), oSettings));
        EXPECT_EQ(nSpeed, oSettings.m_nOutputSpeed);
    }
}

TEST(KorSerialLine, TakesFreeSpeedsWhereTheKernelHasThem)
{
    const PseudoTerminal oPeer;
    CKorSerialLine oLine;
    for (const unsigned int nSpeed : {250000U, 31250U, 1U, 9601U, 12345678U}) {
        const Outcome oOutcome = Told(oLine, oLine.Open(oPeer.Name(), Speed(nSpeed)));
        EXPECT_EQ(UnderEmulation() ? NotOpened(EINVAL) : DONE, oOutcome) << nSpeed;
        SKorLineSettings oSettings;
        EXPECT_TRUE(KorGetLineSettings(oPeer.FarEnd(), oSettings));
        EXPECT_EQ(oOutcome == DONE ? nSpeed : 38400U, oSettings.m_nOutputSpeed);
    }
}

TEST(KorSerialLine, RefusesOptionsThatMakeNoSense)
{
    const PseudoTerminal oPeer;
    CKorSerialLine oLine;
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), Speed(0))));
    SKorLineOptions oOptions;
    oOptions.m_eParity = static_cast<CKorSerial::E_PARITY>(3);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    oOptions = {};
    oOptions.m_eByteSize = static_cast<CKorSerial::E_BYTESIZE>(8);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    oOptions = {};
    oOptions.m_eStopbits = static_cast<CKorSerial::E_NUM_STOPBITS>(2);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    oOptions = {};
    oOptions.m_eFlow = static_cast<SKorLineOptions::EFlow>(3);
    EXPECT_EQ(NotOpened(EINVAL), Told(oLine, oLine.Open(oPeer.Name(), oOptions)));
    EXPECT_FALSE(oLine.IsOpen());
}

TEST(KorSerialLine, SettingsTakeEffectAtOnceAndLoseNothing)
{
    TestLine oTest;
    oTest.Hold("held ");
    oTest.Arrive("and not read");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(115200))));
    const termios oSettings = oTest.m_oPeer.Settings();
    EXPECT_EQ(speed_t(B115200), cfgetospeed(&oSettings));
    std::string strData;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(17, strData, LONG)));
    EXPECT_EQ("held and not read", strData);
}

TEST(KorSerialLine, RefusedSettingsLeaveTheOldOnes)
{
    TestLine oTest;
    const termios oBefore = oTest.m_oPeer.Settings();
    EXPECT_EQ(Refused(EINVAL), Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(0))));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(TwoWire())));
    ExpectSameSettings(oBefore, oTest.m_oPeer.Settings());
    EXPECT_TRUE(oTest.m_oLine.IsOpen());
}

TEST(KorSerialLine, AnOpenLineCanBeSharedAndTakenBack)
{
    TestLine oTest;
    CKorSerialLine oSecond;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Shared())));
    ASSERT_EQ(DONE, Told(oSecond, oSecond.Open(oTest.m_oPeer.Name(), Shared())));
    EXPECT_EQ(Refused(EBUSY), Told(oTest.m_oLine, oTest.m_oLine.SetOptions({})));
    CKorSerialLine oThird;
    EXPECT_EQ(NotOpened(EBUSY), Told(oThird, oThird.Open(oTest.m_oPeer.Name())));
    oSecond.Close();
    EXPECT_EQ(NotOpened(EBUSY), Told(oThird, oThird.Open(oTest.m_oPeer.Name())));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.SetOptions({})));
    EXPECT_EQ(NotOpened(EBUSY), Told(oThird, oThird.Open(oTest.m_oPeer.Name(), Shared())));
}

TEST(KorSerialLine, TellsWhatAPseudoTerminalDoesNotHave)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    SKorModemLines oModem;
    oModem.m_bRing = true;
    SKorLineCounts oCounts;
    oCounts.m_nBreak = 77;
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.GetModemLines(oModem)));
    EXPECT_EQ(UNSUPPORTED,
              Told(oLine, oLine.SetModemLines(CKorSerial::RTS_OFF, CKorSerial::DTR_ON)));
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.SetRS485({})));
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.SetLowLatency(true)));
    EXPECT_EQ(UNSUPPORTED, Told(oLine, oLine.GetErrorCounts(oCounts)));
    EXPECT_TRUE(oModem.m_bRing);
    EXPECT_EQ(77U, oCounts.m_nBreak);
}

TEST(KorSerialLine, EachThreadLearnsItsOwnReason)
{
    TestLine oTest;
    EXPECT_EQ(0, oTest.m_oLine.GetLastError());
    EXPECT_EQ(Refused(EINVAL), Told(oTest.m_oLine, oTest.m_oLine.SetOptions(Speed(0))));
    Caller([&oTest]() {
        EXPECT_EQ(0, oTest.m_oLine.GetLastError());
        std::string strData;
        EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)));
    }).Join();
    EXPECT_EQ(EINVAL, oTest.m_oLine.GetLastError());
}

TEST(KorSerialLine, ALineWithoutReceptionHasNoThread)
{
    const auto fnThreads = []() {
        std::ifstream oStatus("/proc/self/status");
        std::string strWord;
        int nThreads = 0;
        while (oStatus >> strWord && strWord != "Threads:") {
        }
        oStatus >> nThreads;
        return nThreads;
    };
    const int nBefore = fnThreads();
    TestLine oTest;
    std::string strData;
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 1)));
    EXPECT_GE(nBefore, fnThreads()); // a thread of another test may have ended meanwhile
}
