#include "tests/serial/LineTestPeer.h"

#include <termios.h>

namespace
{

TEST(KorSerialLineRead, AHangUpComesAfterWhatIsHeld)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    std::string strData;
    oTest.Hold("line\nhalf");
    oTest.HangUp();
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.ReadBytes(10, strData, LONG)));
    EXPECT_TRUE(oLine.IsHungUp());
    EXPECT_EQ(DONE, Told(oLine, oLine.ReadUntil("\n", strData, LONG)));
    EXPECT_EQ("line\n", strData);
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.ReadUntil("\n", strData, LONG)));
    EXPECT_EQ(DONE, Told(oLine, oLine.Read(100, strData, LONG)));
    EXPECT_EQ("half", strData);
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.Read(100, strData, FOREVER)));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.ReadFrame(1, strData, FOREVER)));
    EXPECT_TRUE(oLine.IsOpen());
}

TEST(KorSerialLineRead, AHangUpEndsAFrame)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("frame");
    Caller oPeer([&oTest]() { oTest.m_oPeer.HangUp(); });
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(FOREVER, strData, FOREVER)));
    EXPECT_EQ("frame", strData);
    EXPECT_EQ(Refused(EIO), Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(1, strData, FOREVER)));
}

TEST(KorSerialLineRead, AHangUpEndsAWaitWithoutLimit)
{
    TestLine oTest;
    std::string strData;
    Caller oReader([&]() {
        EXPECT_EQ(Refused(EIO),
                  Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, FOREVER)));
    });
    oReader.AwaitSleep();
    oTest.m_oPeer.HangUp();
}

TEST(KorSerialLineRead, EveryCallTellsAHangUpUntilTheNextOpen)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    oTest.HangUp();
    SKorModemLines oModem;
    SKorLineCounts oCounts;
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.GetModemLines(oModem)));
    EXPECT_TRUE(oLine.IsHungUp());
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.SetOptions({})));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.WriteText("x", LONG)));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.Drain(LONG)));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.DiscardInput()));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.DiscardOutput()));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.SendBreak(1)));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.SetRS485({})));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.SetLowLatency(false)));
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.GetErrorCounts(oCounts)));
    EXPECT_EQ(Refused(EIO),
              Told(oLine, oLine.SetModemLines(CKorSerial::RTS_ON, CKorSerial::DTR_ON)));
    oLine.Close();
    EXPECT_TRUE(oLine.IsHungUp());
    const PseudoTerminal oNext;
    EXPECT_EQ(DONE, Told(oLine, oLine.Open(oNext.Name())));
    EXPECT_FALSE(oLine.IsHungUp());
}

TEST(KorSerialLineRead, AnEmptyReadIsNoHangUp)
{
    TestLine oTest;
    termios oSettings = oTest.m_oPeer.Settings();
    oSettings.c_cc[VMIN] = 0; // somebody else: an empty line reads as 0 bytes
    oTest.m_oPeer.Apply(oSettings);
    std::string strData;
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)));
    EXPECT_FALSE(oTest.m_oLine.IsHungUp());
    oTest.m_oPeer.Send("x");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, LONG)));
}

} // namespace
