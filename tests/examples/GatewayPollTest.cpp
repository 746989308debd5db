// Many meters on many lines, simulated on the loop that polls them.

#include "tests/examples/GatewaySimulation.h"
#include "time/KorTimeout.h"

#include <algorithm>

namespace
{

using GatewayPolling = GatewaySimulation;

std::string NameOf(const char* pszKind, int nNumber)
{
    return pszKind + std::to_string(nNumber);
}

TEST_F(GatewayPolling, ServesTenMetersOnOneLineByTurns)
{
    Plug("bus", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    std::string strSettings = Line("bus");
    for (int i = 1; i <= 10; ++i)
        strSettings += MeterOn("bus", NameOf("m", i), static_cast<unsigned int>(i));
    Apply(strSettings);
    ASSERT_TRUE(RunUntilRead("m10", 20));
    for (int i = 1; i <= 10; ++i) {
        EXPECT_GE(m_oSink.Count(NameOf("m", i)), 12U);
        EXPECT_LE(m_oSink.Count(NameOf("m", i)), 28U);
        EXPECT_EQ(0U, Polled(NameOf("m", i)).Statistics().Requests().nTimeouts);
    }
    const ReadingValue& oEnergy = m_oSink.m_mapReadings["m3"][1].m_vecValues[0];
    EXPECT_EQ("Energy", oEnergy.m_strName);
    EXPECT_NEAR(1000.014, oEnergy.m_dValue, 1e-9) << "each meter counts its own requests";
}

TEST_F(GatewayPolling, LetsNoMeterStarveOnALineThatHasMoreToDoThanItCan)
{
    Plug("bus", {1, 2, 3});
    Apply(Line("bus", "TurnAround=20\n") + MeterOn("bus", "often", 1) + MeterOn("bus", "too", 2) +
          MeterOn("bus", "seldom", 3));
    ASSERT_TRUE(RunUntilRead("seldom", 10));
    for (const char* pszMeter : {"often", "too"}) {
        EXPECT_GE(m_oSink.Count(pszMeter), 8U);
        EXPECT_LE(m_oSink.Count(pszMeter), 12U);
    }
}

TEST_F(GatewayPolling, IsNotHeldUpByWhoAsksAgainAndAgain)
{
    Plug("bus", {1, 2});
    Apply(Line("bus", "TurnAround=10\n") + MeterOn("bus", "asked", 1) + MeterOn("bus", "other", 2));
    PolledMeter::Waiter fnAgain = [&](const Reading*, const std::string&) {
        m_oLoop.Post([&] { m_oPoller.PollNow("asked", fnAgain); });
    };
    m_oPoller.PollNow("asked", fnAgain);
    ASSERT_TRUE(RunUntilRead("asked", 20));
    EXPECT_GE(m_oSink.Count("other"), 8U);
    fnAgain = [](const Reading*, const std::string&) {};
}

TEST_F(GatewayPolling, AsksASilentMeterMoreAndMoreSeldomAndTheOthersAsBefore)
{
    Plug("bus", {1, 2});
    Apply(Line("bus") + MeterOn("bus", "a", 1) + MeterOn("bus", "b", 2) +
          "[Meter gone]\nLine=bus\nUnit=99\nMap=simulated\nPollInterval=10\nTimeout=20\nTries=2\n");
    ASSERT_TRUE(RunUntilRead("a", 60));
    EXPECT_GE(m_oSink.Count("b"), 40U);
    const MeterStatistics& oGone = Polled("gone").Statistics();
    EXPECT_GE(oGone.Polls(), 2U);
    EXPECT_LE(oGone.Polls(), 15U);
    EXPECT_EQ(0U, oGone.Readings());
    EXPECT_EQ(oGone.Polls() + 1, oGone.Requests().nTimeouts) << "two tries, then single ones";
    EXPECT_EQ("time-out", oGone.LastError());
    EXPECT_FALSE(Polled("gone").IsAnswering());
}

TEST_F(GatewayPolling, ServesSixtyFourLines)
{
    std::string strSettings;
    for (int i = 0; i < 64; ++i) {
        Plug(NameOf("l", i), {7});
        strSettings += Line(NameOf("l", i)) + MeterOn(NameOf("l", i), NameOf("m", i), 7);
    }
    Apply(strSettings);
    for (int i = 0; i < 64; ++i)
        ASSERT_TRUE(RunUntilRead(NameOf("m", i), 5)) << i;
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(0U, Polled(NameOf("m", i)).Statistics().Requests().nTimeouts) << i;
}

TEST_F(GatewayPolling, GoesOnWithTheOtherLinesWhileOneIsUnplugged)
{
    Plug("a", {1});
    Plug("b", {1});
    Apply(Line("a") + Line("b") + MeterOn("a", "on_a", 1) + MeterOn("b", "on_b", 1));
    ASSERT_TRUE(RunUntilRead("on_a", 2) && RunUntilRead("on_b", 2));
    Unplug("a");
    ASSERT_TRUE(RunUntil([&] { return !m_oPoller.Lines()[0]->Line().IsOpen(); }));
    const std::size_t nReadOnA = m_oSink.Count("on_a");
    ASSERT_TRUE(RunUntilRead("on_b", m_oSink.Count("on_b") + 10));
    EXPECT_EQ(nReadOnA, m_oSink.Count("on_a"));
    Plug("a", {1});
    ASSERT_TRUE(RunUntilRead("on_a", nReadOnA + 2));
    EXPECT_EQ(2U, m_oPoller.Lines()[0]->Line().Openings());
    EXPECT_TRUE(Polled("on_a").IsAnswering());
}

TEST_F(GatewayPolling, AsksTheMetersOfALineAtOnceWhenItIsBack)
{
    Plug("a", {1});
    Apply(Line("a") + "[Meter seldom]\nLine=a\nMap=simulated\nPollInterval=86400000\n");
    ASSERT_TRUE(RunUntilRead("seldom", 1));
    Unplug("a");
    ASSERT_TRUE(RunUntil([&] { return !m_oPoller.Lines()[0]->Line().IsOpen(); }));
    Plug("a", {1});
    EXPECT_TRUE(RunUntilRead("seldom", 2));
}

TEST_F(GatewayPolling, PollsAtOnceAndTellsWhoAsked)
{
    Plug("bus", {1});
    Apply(Line("bus") + "[Meter slow]\nLine=bus\nMap=simulated\nPollInterval=86400000\n");
    ASSERT_TRUE(RunUntilRead("slow", 1));
    std::string strText;
    EXPECT_TRUE(m_oPoller.PollNow("SLOW", [&](const Reading* pReading, const std::string&) {
        strText = pReading->m_strMeter;
    }));
    EXPECT_TRUE(RunUntil([&] { return strText == "slow"; }));
    EXPECT_EQ(2U, m_oSink.Count("slow"));
    EXPECT_FALSE(m_oPoller.PollNow("none", [](const Reading*, const std::string&) { FAIL(); }));
}

TEST_F(GatewayPolling, TellsWhoAskedThatALineIsNotThere)
{
    Apply(Line("bus") + MeterOn("bus", "m", 1));
    std::string strWhy;
    const auto fnWaiter = [&](const Reading* pReading, const std::string& strError) {
        EXPECT_EQ(nullptr, pReading);
        strWhy = strError;
    };
    EXPECT_TRUE(m_oPoller.PollNow("m", fnWaiter));
    EXPECT_EQ("cannot open " + m_oDir.File("bus") + ": No such file or directory", strWhy);

    Plug("bus", {9}); // another unit: the poll of this one runs until the line is unplugged
    ASSERT_TRUE(RunUntil([&] { return m_oPoller.Lines()[0]->Line().IsOpen(); }));
    strWhy.clear();
    EXPECT_TRUE(m_oPoller.PollNow("m", fnWaiter));
    EXPECT_EQ("", strWhy);
    Unplug("bus");
    EXPECT_TRUE(RunUntil([&] { return !strWhy.empty(); }));
}

TEST_F(GatewayPolling, TellsAllWhoWaitThatALineWasUnplugged)
{
    Plug("bus", {9}); // nobody answers for ten seconds, and the second meter is not asked yet
    Apply(Line("bus") + MeterOn("bus", "m", 1) + MeterOn("bus", "n", 2));
    int nTold = 0;
    for (const char* pszMeter : {"m", "n"})
        m_oPoller.PollNow(pszMeter, [&](const Reading*, const std::string&) { ++nTold; });
    m_oLoop.RunOnce(0);
    Unplug("bus");
    EXPECT_TRUE(RunUntil([&] { return nTold == 2; }));
}

TEST_F(GatewayPolling, ReadsWhatDoesNotStandTogetherWithSeveralRequests)
{
    Plug("bus", {1});
    Apply(Line("bus") + "[Meter m]\nLine=bus\nRegister.Frequency=5 u16 0.01 Hz\n"
                        "Register.Energy=0 u32 Wh\nRegister.Current=3 u16 input 0.01 A\n");
    ASSERT_TRUE(RunUntilRead("m", 1));
    const Reading& oReading = m_oSink.m_mapReadings["m"][0];
    ASSERT_EQ(3U, oReading.m_vecValues.size());
    EXPECT_EQ("Energy", oReading.m_vecValues[0].m_strName);
    EXPECT_EQ("Current", oReading.m_vecValues[1].m_strName);
    EXPECT_EQ("Frequency", oReading.m_vecValues[2].m_strName);
    EXPECT_NEAR(49.97, oReading.m_vecValues[2].m_dValue, 0.05);
    EXPECT_EQ(3U, Polled("m").Statistics().Requests().nRequests);
    EXPECT_EQ(1U, Polled("m").Statistics().Polls());
}

TEST_F(GatewayPolling, TellsOfAnExceptionInWordsAndAsksOnAsOften)
{
    Plug("bus", {1});
    Apply(Line("bus") + MeterOn("bus", "m", 1, "Register.Nothing=100 u16\n"));
    ASSERT_TRUE(RunUntil([&] { return Polled("m").Statistics().Polls() >= 20; }));
    EXPECT_EQ("exception 2, illegal address", Polled("m").Statistics().LastError());
    EXPECT_EQ(0U, m_oSink.Count("m")) << "a reading is whole or none";
    EXPECT_EQ(Polled("m").Statistics().Polls(), Polled("m").Statistics().Requests().nExceptions);
}

TEST_F(GatewayPolling, LetsALineRestBetweenAnAnswerAndTheNextRequest)
{
    Plug("a", {1});
    Plug("b", {1});
    Apply(Line("a", "TurnAround=60\n") + MeterOn("a", "asked", 1) +
          "[Line b]\nDevice=" + m_oDir.File("b") + "\nSpeed=1200\n" + MeterOn("b", "slow", 1));
    const CKorStopwatch oWatch;
    ASSERT_TRUE(RunUntilRead("asked", 6));
    EXPECT_GE(oWatch.GetElapsed().GetTotalMilliSeconds(), 5 * 60);
    EXPECT_LE(m_oSink.Count("slow") - 1, oWatch.GetElapsed().GetTotalMilliSeconds() / 32)
        << "3.5 characters of 11 bits";
}

TEST_F(GatewayPolling, CountsHowLongAnswersTake)
{
    Plug("bus", {1});
    Apply(Line("bus") + MeterOn("bus", "m", 1));
    ASSERT_TRUE(RunUntilRead("m", 10));
    const MeterStatistics::ResponseTimes oTimes = Polled("m").Statistics().Times();
    EXPECT_GT(oTimes.m_nMinimum, 0U);
    EXPECT_LE(oTimes.m_nMinimum, oTimes.m_nMedian);
    EXPECT_LE(oTimes.m_nMedian, oTimes.m_nMaximum);
}

} // namespace
