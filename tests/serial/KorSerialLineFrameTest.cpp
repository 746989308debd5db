#include "tests/serial/LineTestPeer.h"

namespace
{

TEST(KorSerialLineRead, ReadFrameEndsWithASilence)
{
    TestLine oTest;
    std::string strData;
    oTest.m_oPeer.Send("frame");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(20000, strData, LONG)));
    EXPECT_EQ("frame", strData);
}

TEST(KorSerialLineRead, ReadFrameWaitsForTheSilenceAfterTheLastByte)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("a");
    const auto oStart = std::chrono::steady_clock::now();
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(1, strData, 0)));
    oTest.Arrive("b");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(30000, strData, LONG)));
    EXPECT_EQ("b", strData);
    EXPECT_GE(std::chrono::steady_clock::now() - oStart, std::chrono::milliseconds(30));
}

TEST(KorSerialLineRead, HeldBytesThatAreOldEnoughAreAFrameAtOnce)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("old");
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(600000000, strData, 0)));
    EXPECT_TRUE(WaitUntil(
        [&]() { return oTest.m_oLine.ReadFrame(3000, strData, 0) == CKorSerial::SERIAL_OK; }));
    EXPECT_EQ("old", strData);
}

TEST(KorSerialLineRead, BytesThatTheKernelHasBelongToTheFrame)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("held ");
    oTest.Arrive("and new");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(0, strData, LONG)));
    EXPECT_EQ("held and new", strData);
}

TEST(KorSerialLineRead, ReadFrameKeepsAFrameThatIsTooLong)
{
    TestLine oTest;
    std::string strData;
    oTest.Hold("12345");
    EXPECT_EQ(Refused(EMSGSIZE), Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(0, strData, LONG, 4)));
    EXPECT_EQ(5U, oTest.m_oLine.GetHeldCount());
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(0, strData, LONG, 5)));
    EXPECT_EQ("12345", strData);
}

TEST(KorSerialLineRead, AFrameThatDoesNotEndInTimeStays)
{
    TestLine oTest;
    std::string strData;
    oTest.Arrive(".");
    std::atomic<bool> bEnough{false};
    Caller oPeer([&]() {
        while (!bEnough) {
            oTest.m_oPeer.Send(".");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.ReadFrame(30000000, strData, 50)));
    EXPECT_NE(0U, oTest.m_oLine.GetHeldCount());
    bEnough = true;
}

} // namespace
