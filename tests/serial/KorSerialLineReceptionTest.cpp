#include "tests/serial/LineListener.h"
#include "tests/serial/LineTestPeer.h"

TEST(KorSerialLineReception, HandsOnEverythingInOrder)
{
    TestLine oTest;
    Listener oListener;
    std::string strBytes;
    while (strBytes.size() < 100000)
        strBytes += std::to_string(strBytes.size()) + "\r\n";
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    oTest.m_oPeer.Send(strBytes);
    EXPECT_EQ(strBytes, oListener.Await(strBytes.size()));
}

TEST(KorSerialLineReception, BeginsWithWhatIsHeld)
{
    TestLine oTest;
    Listener oListener;
    oTest.Hold("held ");
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    EXPECT_EQ("held ", oListener.Await(5));
    EXPECT_EQ(0U, oTest.m_oLine.GetHeldCount());
    oTest.m_oPeer.Send("new");
    EXPECT_EQ("held new", oListener.Await(8));
}

TEST(KorSerialLineReception, ReadsAreNotSupportedMeanwhile)
{
    TestLine oTest;
    Listener oListener;
    std::string strData = "kept";
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, LONG)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(1, strData, LONG)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, LONG)));
    EXPECT_EQ(UNSUPPORTED, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(1, strData, LONG)));
    EXPECT_EQ("kept", strData);
    oTest.m_oLine.StopReception();
    oTest.m_oPeer.Send("x");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadUntil("x", strData, LONG)));
}

TEST(KorSerialLineReception, ASecondStartLeavesTheFirst)
{
    TestLine oTest;
    Listener oFirst;
    Listener oSecond;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oFirst.Data(), nullptr)));
    EXPECT_EQ(RUNS_ALREADY,
              Told(oTest.m_oLine, oTest.m_oLine.StartReception(oSecond.Data(), nullptr)));
    oTest.m_oPeer.Send("x");
    EXPECT_EQ("x", oFirst.Await(1));
}

TEST(KorSerialLineReception, NeedsADataHandler)
{
    TestLine oTest;
    Listener oListener;
    EXPECT_EQ(Refused(EINVAL),
              Told(oTest.m_oLine, oTest.m_oLine.StartReception(nullptr, oListener.Hangup())));
    std::string strData;
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)));
}

TEST(KorSerialLineReception, TellsAHangUpOnceBehindTheData)
{
    TestLine oTest;
    Listener oListener;
    oTest.Hold("last");
    ASSERT_EQ(DONE, Told(oTest.m_oLine,
                         oTest.m_oLine.StartReception(oListener.Data(), oListener.Hangup())));
    oListener.Await(4);
    oTest.m_oPeer.HangUp();
    EXPECT_EQ("last" + HUNG_UP, oListener.Await(4 + HUNG_UP.size()));
    oTest.m_oLine.StopReception();
    oTest.m_oLine.Close();
    EXPECT_EQ("last" + HUNG_UP, oListener.Await(0));
    EXPECT_TRUE(oTest.m_oLine.IsHungUp());
}

TEST(KorSerialLineReception, ALineThatHungUpGivesWhatIsHeldAndThenTells)
{
    TestLine oTest;
    CKorSerialLine& oLine = oTest.m_oLine;
    Listener oListener;
    oTest.Hold("held");
    oTest.HangUp();
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.WriteText("x", 0)));
    ASSERT_EQ(DONE, Told(oLine, oLine.StartReception(oListener.Data(), oListener.Hangup())));
    EXPECT_EQ("held" + HUNG_UP, oListener.Await(4 + HUNG_UP.size()));
    oLine.StopReception();
    EXPECT_EQ(Refused(EIO), Told(oLine, oLine.StartReception(oListener.Data(), nullptr)));
}

TEST(KorSerialLineReception, AHangUpWithoutHandlerEndsIt)
{
    TestLine oTest;
    Listener oListener;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(oListener.Data(), nullptr)));
    oTest.m_oPeer.HangUp();
    EXPECT_TRUE(WaitUntil([&oTest]() { return oTest.m_oLine.IsHungUp(); }));
    std::string strData;
    EXPECT_TRUE(WaitUntil(
        [&]() { return Told(oTest.m_oLine, oTest.m_oLine.Read(1, strData, 0)) == Refused(EIO); }));
}

TEST(KorSerialLineReception, CloseIsNoHangUp)
{
    for (int i = 0; i < 50; ++i) {
        TestLine oTest;
        Listener oListener;
        ASSERT_EQ(DONE, Told(oTest.m_oLine,
                             oTest.m_oLine.StartReception(oListener.Data(), oListener.Hangup())));
        oTest.m_oLine.Close();
        EXPECT_EQ("", oListener.Await(0));
        EXPECT_FALSE(oTest.m_oLine.IsHungUp());
    }
}

TEST(KorSerialLineReception, CancelDoesNotEndIt)
{
    TestLine oTest;
    Listener oListener;
    ASSERT_EQ(DONE, Told(oTest.m_oLine,
                         oTest.m_oLine.StartReception(oListener.Data(), oListener.Hangup())));
    oTest.m_oLine.Cancel();
    oTest.m_oPeer.Send("x");
    EXPECT_EQ("x", oListener.Await(1));
}

TEST(KorSerialLineReception, StopLeavesWhatWasNotHandedOn)
{
    TestLine oTest;
    Signal oInside;
    Signal oMayLeave;
    std::string strGot;
    ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(
                                            [&](const char* pData, unsigned int nLength) {
                                                strGot.append(pData, nLength);
                                                oInside.Set();
                                                oMayLeave.Await();
                                            },
                                            nullptr)));
    oTest.m_oPeer.Send("a");
    oInside.Await();
    oTest.Arrive("b");
    Caller oStopper([&oTest]() { oTest.m_oLine.StopReception(); });
    oStopper.AwaitSleep();
    oMayLeave.Set();
    oStopper.Join();
    EXPECT_EQ("a", strGot);
    std::string strData;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(1, strData, LONG)));
    EXPECT_EQ("b", strData);
}

TEST(KorSerialLineReception, StopAndCloseWaitForTheHandler)
{
    for (const bool bClose : {false, true}) {
        TestLine oTest;
        Signal oInside;
        Signal oMayLeave;
        std::atomic<bool> bLeft{false};
        const auto fnEnd = [&]() {
            bClose ? oTest.m_oLine.Close() : oTest.m_oLine.StopReception();
            EXPECT_TRUE(bLeft);
        };
        ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.StartReception(
                                                [&](const char*, unsigned int) {
                                                    oInside.Set();
                                                    oMayLeave.Await();
                                                    bLeft = true;
                                                },
                                                nullptr)));
        oTest.m_oPeer.Send("x");
        oInside.Await();
        Caller oOne(fnEnd);
        Caller oOther(fnEnd);
        oOne.AwaitSleep();
        oOther.AwaitSleep();
        oMayLeave.Set();
    }
}
