// New settings while meters are polled.

#include "tests/examples/GatewaySimulation.h"

namespace
{

using GatewayReload = GatewaySimulation;

TEST_F(GatewayReload, KeepsALineThatDidNotChangeAndTheStatisticsOfItsMeters)
{
    Plug("a", {1});
    Plug("b", {1, 2});
    const std::string strBefore = Line("a") + Line("b") + MeterOn("b", "m", 1);
    Apply(strBefore + MeterOn("a", "n", 1));
    ASSERT_TRUE(RunUntilRead("m", 3) && RunUntilRead("n", 3));
    const LinePoller* const pB = m_oPoller.Lines()[1].get();
    const unsigned int nPolls = Polled("m").Statistics().Polls();
    Apply(Line("a", "Parity=even\n") + Line("b", "TurnAround=7\n") +
          MeterOn("b", "m", 1, "Tries=5\n") + MeterOn("a", "n", 1) + MeterOn("b", "new", 2));
    EXPECT_LE(m_oPoller.Lines()[0]->Line().Counters().nRequests, 1U) << "a new one";
    EXPECT_EQ(pB, m_oPoller.Lines()[1].get());
    EXPECT_EQ(1U, pB->Line().Openings());
    EXPECT_EQ(7U, pB->Line().Settings().m_nTurnAround);
    EXPECT_GE(Polled("m").Statistics().Polls(), nPolls);
    EXPECT_EQ(5U, Polled("m").Settings().m_nTries);
    ASSERT_TRUE(RunUntilRead("new", 2) && RunUntilRead("n", 5) && RunUntilRead("m", 5));
}

TEST_F(GatewayReload, KeepsWhatWasLearntOfAMeterThatMovesToAnotherLine)
{
    Plug("a", {1});
    Plug("b", {1});
    Apply(Line("a") + Line("b") + MeterOn("a", "m", 1));
    ASSERT_TRUE(RunUntilRead("m", 3));
    Apply(Line("a") + Line("b") + MeterOn("b", "m", 1));
    EXPECT_GE(Polled("m").Statistics().Polls(), 3U);
    ASSERT_TRUE(RunUntilRead("m", 6));
    EXPECT_TRUE(m_oPoller.Lines()[0]->Meters().empty());
}

TEST_F(GatewayReload, LetsTwoLinesChangeTheirDevices)
{
    Plug("a", {1});
    Plug("b", {2});
    Apply(Line("a") + Line("b") + MeterOn("a", "one", 1) + MeterOn("b", "two", 2));
    ASSERT_TRUE(RunUntilRead("one", 1) && RunUntilRead("two", 1));
    Apply("[Line a]\nDevice=" + m_oDir.File("b") + "\n[Line b]\nDevice=" + m_oDir.File("a") + "\n" +
          MeterOn("b", "one", 1) + MeterOn("a", "two", 2));
    for (const auto& pLine : m_oPoller.Lines())
        EXPECT_TRUE(pLine->Line().IsOpen()) << pLine->Line().Error();
    EXPECT_TRUE(RunUntilRead("one", 3) && RunUntilRead("two", 3));
}

TEST_F(GatewayReload, FinishesAPollThatRunsWhenItsMeterIsTakenOut)
{
    Plug("a", {9});
    Apply(Line("a") + MeterOn("a", "m", 1)); // nobody answers for ten seconds
    std::string strWhy;
    m_oPoller.PollNow("m", [&](const Reading*, const std::string& strError) { strWhy = strError; });
    m_oLoop.RunOnce(0);
    Plug("b", {2});
    Apply(Line("b") + MeterOn("b", "other", 2));
    EXPECT_EQ("the meter was taken out of the settings", strWhy);
    EXPECT_TRUE(RunUntilRead("other", 2));
}

TEST_F(GatewayReload, TakesNewRegistersFromTheNextPollOn)
{
    Plug("a", {1});
    Apply(Line("a") + MeterOn("a", "m", 1));
    ASSERT_TRUE(RunUntilRead("m", 1));
    Apply(Line("a") + MeterOn("a", "m", 1, "Register.Frequency=5 u16 0.01 Hz\n"));
    ASSERT_TRUE(RunUntilRead("m", m_oSink.Count("m") + 2));
    EXPECT_EQ(5U, m_oSink.m_mapReadings["m"].back().m_vecValues.size());
}

} // namespace
