#include "tests/serial/LineTestPeer.h"

namespace
{

SKorLineOptions SoftwareFlow()
{
    SKorLineOptions oOptions;
    oOptions.m_eFlow = SKorLineOptions::FLOW_XON_XOFF;
    return oOptions;
}

/// A line that the far end stopped; its settings show when the byte was seen.
struct StoppedLine : TestLine
{
    StoppedLine() : TestLine(SoftwareFlow())
    {
        m_oPeer.Send("\x13");
        EXPECT_TRUE(WaitUntil([this]() {
            m_oLine.WriteText("-", 0);
            return m_oLine.GetWrittenCount() == 0;
        }));
    }
};

} // namespace

TEST(KorSerialLineWrite, WritesAllOfIt)
{
    TestLine oTest;
    const std::string strBytes(300000, 'x');
    Caller oWriter([&]() {
        EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Write(strBytes.data(), 300000, LONG)));
    });
    EXPECT_EQ(strBytes, oTest.m_oPeer.Receive(300000));
    oWriter.Join();
    EXPECT_EQ(300000U, oTest.m_oLine.GetWrittenCount());
}

TEST(KorSerialLineWrite, NothingIsWrittenAtOnce)
{
    TestLine oTest;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("abc", 0)));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Write(nullptr, 0, 0)));
    EXPECT_EQ(0U, oTest.m_oLine.GetWrittenCount());
    EXPECT_EQ("abc", oTest.m_oPeer.Receive(3));
}

TEST(KorSerialLineWrite, AWriteFromNowhereIsRefused)
{
    TestLine oTest;
    EXPECT_EQ(Refused(EFAULT), Told(oTest.m_oLine, oTest.m_oLine.Write(nullptr, 3, LONG)));
    EXPECT_FALSE(oTest.m_oLine.IsHungUp());
}

TEST(KorSerialLineWrite, AFullLineTimesOutAndTellsHowFarItCame)
{
    TestLine oTest;
    std::string strBytes;
    while (strBytes.size() < 1000000)
        strBytes += std::to_string(strBytes.size()) + " ";
    const unsigned int nLength = static_cast<unsigned int>(strBytes.size());
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.Write(strBytes.data(), nLength, 20)));
    const unsigned int nFirst = oTest.m_oLine.GetWrittenCount();
    EXPECT_GT(nFirst, 0U);
    EXPECT_LT(nFirst, nLength);
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.WriteText("more", 0)));
    EXPECT_EQ(0U, oTest.m_oLine.GetWrittenCount());
    EXPECT_EQ(strBytes.substr(0, nFirst), oTest.m_oPeer.Receive(nFirst));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("end", LONG)));
    EXPECT_EQ("end", oTest.m_oPeer.Receive(3));
}

TEST(KorSerialLineWrite, AStoppedLineTimesOutAndGoesOn)
{
    StoppedLine oTest;
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.WriteText("abc", 20)));
    EXPECT_EQ(0U, oTest.m_oLine.GetWrittenCount());
    Caller oWriter([&oTest]() {
        EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("now", FOREVER)));
    });
    oWriter.AwaitSleep();
    oTest.m_oPeer.Send("\x11");
    oWriter.Join();
    std::string strReceived;
    while (strReceived.find('n') == std::string::npos)
        strReceived += oTest.m_oPeer.Receive(1);
    EXPECT_EQ("ow", oTest.m_oPeer.Receive(2));
}

TEST(KorSerialLineWrite, ATimeOutEndsACallThatAlwaysFindsRoom)
{
    TestLine oTest;
    const std::string strBytes(50000000, 'x');
    oTest.m_oLine.SetTrace(
        [&](bool, const char*, unsigned int nLength) { oTest.m_oPeer.Receive(nLength); });
    EXPECT_EQ(TIMED_OUT, Told(oTest.m_oLine, oTest.m_oLine.WriteText(strBytes, 3)));
    EXPECT_GT(oTest.m_oLine.GetWrittenCount(), 0U);
    EXPECT_LT(oTest.m_oLine.GetWrittenCount(), 50000000U);
}

TEST(KorSerialLineWrite, AHangUpEndsAWaitWithoutLimit)
{
    StoppedLine oTest;
    Caller oWriter([&oTest]() {
        EXPECT_EQ(Refused(EIO), Told(oTest.m_oLine, oTest.m_oLine.WriteText("x", FOREVER)));
        EXPECT_TRUE(oTest.m_oLine.IsHungUp());
    });
    oWriter.AwaitSleep();
    oTest.m_oPeer.HangUp();
}

TEST(KorSerialLineWrite, DrainEndsWhenAllIsSent)
{
    TestLine oTest;
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("abc", LONG)));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Drain(0)));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Drain(FOREVER)));
    EXPECT_EQ("abc", oTest.m_oPeer.Receive(3));
}

TEST(KorSerialLineWrite, DiscardOutputDropsWhatTheFarEndDidNotTake)
{
    TestLine oTest;
    const std::string strOld(10000, 'x'); // more than a terminal takes by itself
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText(strOld, LONG)));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.DiscardOutput()));
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("new", LONG)));
    std::size_t nOld = 0;
    while (oTest.m_oPeer.Receive(1) == "x")
        ++nOld;
    EXPECT_LT(nOld, strOld.size());
    EXPECT_EQ("ew", oTest.m_oPeer.Receive(2));
}

TEST(KorSerialLineWrite, ABreakLastsAsLongAsAsked)
{
    TestLine oTest;
    const auto oStart = std::chrono::steady_clock::now();
    const Outcome oOutcome = Told(oTest.m_oLine, oTest.m_oLine.SendBreak(30));
    EXPECT_EQ(OfBreak(DONE), oOutcome);
    EXPECT_GE(std::chrono::steady_clock::now() - oStart,
              std::chrono::milliseconds(oOutcome == DONE ? 30 : 0));
    EXPECT_EQ(OfBreak(DONE), Told(oTest.m_oLine, oTest.m_oLine.SendBreak(0)));
}

TEST(KorSerialLineWrite, TheTraceShowsEveryByteInOrder)
{
    TestLine oTest;
    std::string strTrace;
    oTest.m_oLine.SetTrace([&strTrace](bool bSent, const char* pData, unsigned int nLength) {
        strTrace += bSent ? '>' : '<';
        strTrace.append(pData, nLength);
    });
    std::string strData;
    oTest.m_oLine.WriteText("ask", LONG);
    oTest.Arrive("answer");
    EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.Read(2, strData, LONG)));
    oTest.m_oLine.WriteText("more", LONG);
    EXPECT_EQ(">ask<answer>more", strTrace);
    oTest.m_oLine.SetTrace(nullptr);
    oTest.m_oLine.WriteText("hidden", LONG);
    EXPECT_EQ(">ask<answer>more", strTrace);
}

TEST(KorSerialLineWrite, TheTraceIsNeverCalledTwiceAtOnceAndSeesARequestBeforeItsAnswer)
{
    TestLine oTest;
    constexpr int ROUNDS = 2000;
    std::atomic<int> nInside{0};
    int nSent = 0;
    int nAnswered = 0;
    oTest.m_oLine.SetTrace([&](bool bSent, const char*, unsigned int nLength) {
        EXPECT_EQ(1, ++nInside);
        (bSent ? nSent : nAnswered) += static_cast<int>(nLength);
        EXPECT_GE(nSent, nAnswered);
        --nInside;
    });
    Caller oEcho([&oTest]() {
        for (int i = 0; i < ROUNDS; ++i)
            oTest.m_oPeer.Send(oTest.m_oPeer.Receive(1));
    });
    Caller oReader([&oTest]() {
        std::string strData;
        EXPECT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.ReadBytes(ROUNDS, strData, LONG)));
    });
    for (int i = 0; i < ROUNDS; ++i)
        ASSERT_EQ(DONE, Told(oTest.m_oLine, oTest.m_oLine.WriteText("x", LONG)));
    oReader.Join();
    EXPECT_EQ(ROUNDS, nAnswered);
}
