// When a meter is due, and what is counted of it.

#include "examples/gateway/PolledMeter.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace
{

using Clock = PolledMeter::Clock;
using std::chrono::milliseconds;

MeterSettings Every(unsigned int nMilliseconds, const std::string& strName = "m")
{
    MeterSettings oSettings;
    oSettings.m_strName = strName;
    oSettings.m_nPollInterval = nMilliseconds;
    oSettings.m_nTries = 3;
    oSettings.m_vecRegisters = *FindReadyMap("simulated");
    return oSettings;
}

TEST(PolledMeter, IsDueAtWholeIntervalsAndSkipsTurnsThatWereMissed)
{
    PolledMeter oMeter(Every(100));
    const Clock::time_point oBegin = oMeter.Due();
    EXPECT_LE(oBegin, Clock::now());
    oMeter.TakeValues({}, oBegin + milliseconds(30));
    EXPECT_EQ(oBegin + milliseconds(100), oMeter.Due());
    oMeter.TakeValues({}, oBegin + milliseconds(350));
    EXPECT_EQ(oBegin + milliseconds(400), oMeter.Due());
    oMeter.TakeValues({}, oBegin + milliseconds(400));
    EXPECT_EQ(oBegin + milliseconds(500), oMeter.Due());
}

TEST(PolledMeter, KeepsItsTurnsWhenItIsPolledBetweenThem)
{
    PolledMeter oMeter(Every(100000));
    const Clock::time_point oBegin = oMeter.Due();
    oMeter.TakeValues({}, oBegin);
    bool bAnswered = false;
    oMeter.PollNow(
        [&](const Reading* pReading, const std::string&) { bAnswered = pReading != nullptr; });
    EXPECT_LE(oMeter.Due(), Clock::now());
    oMeter.TakeValues({}, oBegin + milliseconds(500));
    EXPECT_TRUE(bAnswered);
    EXPECT_EQ(oBegin + milliseconds(100000), oMeter.Due());
}

TEST(PolledMeter, WaitsLongerAfterEachSilenceUpToAMinute)
{
    PolledMeter oMeter(Every(100));
    Clock::time_point oNow = oMeter.Due();
    oMeter.TakeFailure("time-out", true, oNow);
    EXPECT_EQ(oNow + milliseconds(100), oMeter.Due()) << "one may be an accident";
    for (const int nSeconds : {1, 2, 4, 8, 16, 32, 60, 60, 60}) {
        oNow = oMeter.Due();
        oMeter.TakeFailure("time-out", true, oNow);
        EXPECT_GE(oMeter.Due(), oNow + milliseconds(nSeconds * 1000));
        EXPECT_LE(oMeter.Due(), oNow + milliseconds(nSeconds * 1250));
        EXPECT_EQ(1U, oMeter.Tries());
    }
    oNow = oMeter.Due();
    oMeter.TakeValues({}, oNow);
    EXPECT_EQ(oNow + milliseconds(100), oMeter.Due());
    EXPECT_EQ(3U, oMeter.Tries());
}

TEST(PolledMeter, OfALongIntervalIsNeverAskedMoreOftenThanThat)
{
    PolledMeter oMeter(Every(3600000));
    for (int i = 0; i < 5; ++i) {
        const Clock::time_point oNow = oMeter.Due();
        oMeter.TakeFailure("time-out", true, oNow);
        EXPECT_GE(oMeter.Due(), oNow + milliseconds(3600000));
        EXPECT_LE(oMeter.Due(), oNow + milliseconds(4500000));
    }
}

TEST(PolledMeter, DoesNotStayInStepWithOthersThatAreSilent)
{
    std::set<Clock::duration> setPauses;
    for (int i = 0; i < 20; ++i) {
        PolledMeter oMeter(Every(1000, "m" + std::to_string(i)));
        const Clock::time_point oNow = oMeter.Due();
        oMeter.TakeFailure("time-out", true, oNow);
        oMeter.TakeFailure("time-out", true, oNow);
        setPauses.insert(oMeter.Due() - oNow);
    }
    EXPECT_GE(setPauses.size(), 5U);
}

TEST(PolledMeter, ThatAnswersWronglyIsAskedAsOftenAsBefore)
{
    PolledMeter oMeter(Every(100));
    const Clock::time_point oBegin = oMeter.Due();
    for (int i = 1; i <= 5; ++i) {
        oMeter.TakeFailure("bad CRC", false, oMeter.Due());
        EXPECT_EQ(oBegin + milliseconds(100 * i), oMeter.Due());
        EXPECT_EQ(3U, oMeter.Tries());
    }
}

TEST(PolledMeter, AnswersEachWaiterOnce)
{
    int nAnswers = 0;
    const auto fnWaiter = [&](const Reading*, const std::string&) { ++nAnswers; };
    {
        PolledMeter oMeter(Every(100));
        oMeter.PollNow(fnWaiter);
        oMeter.PollNow(fnWaiter);
        oMeter.TakeFailure("time-out", true, Clock::now());
        EXPECT_EQ(2, nAnswers);
        oMeter.TakeValues({}, Clock::now());
        EXPECT_EQ(2, nAnswers);
        oMeter.PollNow(fnWaiter);
    }
    EXPECT_EQ(3, nAnswers) << "at its end";
}

TEST(MeterStatistics, TellTheTimesOfTheLastHundredAnswers)
{
    MeterStatistics oStatistics;
    EXPECT_EQ(0U, oStatistics.Times().m_nMaximum);
    oStatistics.CountAnswer(7);
    EXPECT_EQ(7U, oStatistics.Times().m_nMinimum);
    EXPECT_EQ(7U, oStatistics.Times().m_nMedian);
    EXPECT_EQ(7U, oStatistics.Times().m_nMaximum);
    for (std::uint32_t i = 300; i > 0; --i)
        oStatistics.CountAnswer(i);
    const MeterStatistics::ResponseTimes oTimes = oStatistics.Times();
    EXPECT_EQ(1U, oTimes.m_nMinimum);
    EXPECT_EQ(50U, oTimes.m_nMedian);
    EXPECT_EQ(100U, oTimes.m_nMaximum);
}

TEST(MeterStatistics, CountWhatAClientCountedMeanwhile)
{
    ModbusCounters oBefore;
    oBefore.nTimeouts = 5;
    oBefore.nCrcErrors = 1;
    ModbusCounters oAfter = oBefore;
    oAfter.nTimeouts = 7;
    oAfter.nExceptions = 1;
    MeterStatistics oStatistics;
    oStatistics.CountRequest(oBefore, oAfter);
    oStatistics.CountRequest(oBefore, oAfter);
    EXPECT_EQ(4U, oStatistics.Requests().nTimeouts);
    EXPECT_EQ(2U, oStatistics.Requests().nExceptions);
    EXPECT_EQ(0U, oStatistics.Requests().nCrcErrors);
}

TEST(MeterStatistics, KeepTheLastErrorAndItsTime)
{
    MeterStatistics oStatistics;
    oStatistics.CountReading();
    EXPECT_EQ("", oStatistics.LastError());
    oStatistics.CountFailure("time-out");
    oStatistics.CountReading();
    EXPECT_EQ("time-out", oStatistics.LastError());
    EXPECT_EQ(3U, oStatistics.Polls());
    EXPECT_EQ(2U, oStatistics.Readings());
    EXPECT_GT(oStatistics.LastErrorTime().GetYear(), 2000);
}

} // namespace
