#include "time/KorUnixTime.h"

#include "tests/time/InstantSupport.h"
#include "time/KorLocalTime.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using Limits = std::numeric_limits<std::int64_t>;
using Clock = std::chrono::system_clock;

/// The ticks of a valid time; fails the test for another one.
std::int64_t ValidTicks(const CKorUTCTime& oTime)
{
    EXPECT_TRUE(oTime.IsTimeValid());
    return TicksOf(oTime);
}

template <class R, class P>
std::int64_t TicksOfDuration(std::chrono::duration<R, P> oDuration)
{
    return KorToDuration(KorFromDuration(oDuration)).count();
}

template <class P, class R>
std::int64_t TicksOfCount(R nCount)
{
    return TicksOfDuration(std::chrono::duration<R, P>(nCount));
}

TEST(KorUnixTime, CountsFrom1970)
{
    EXPECT_EQ(CKorUTCTime(1, 1, 1970, 0, 0, 0, 0, 0, 0), KorFromUnixTime(0));
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 14, 7, 9, 250, 125, 990),
              KorFromUnixTime(1709647629, 250125999));
    EXPECT_EQ(CKorUTCTime(31, 12, 1969, 23, 59, 59, 0, 0, 0), KorFromUnixTime(-1));
    EXPECT_TRUE(KorFromUnixTime(-1).IsTimeValid());
}

TEST(KorUnixTime, CarriesAnyNanosecondsAndRoundsThemDown)
{
    EXPECT_EQ(KorFromUnixTime(0, 999999990), KorFromUnixTime(1, -1));
    EXPECT_EQ(KorFromUnixTime(0, 999999990), KorFromUnixTime(1, -10));
    EXPECT_EQ(KorFromUnixTime(0, 999999980), KorFromUnixTime(1, -11));
    EXPECT_EQ(KorFromUnixTime(3), KorFromUnixTime(1, 2000000000));
    EXPECT_EQ(KorFromUnixTime(-1, 147483640), KorFromUnixTime(-3, 2147483647));
    EXPECT_EQ(KorFromUnixTime(-2, 852516350), KorFromUnixTime(1, -2147483648));
    EXPECT_EQ(KorFromUnixTime(0), KorFromUnixTime(0, 9));
}

TEST(KorUnixTime, EndsAtTheNearestEndOfTheRangeAndIsNotValidBeyond)
{
    // 92,233,720,368.54775807 s behind the begin of year 0.
    constexpr std::int64_t LAST = 92233720368 - EPOCH_SECONDS;
    constexpr std::int64_t FIRST = -92233720369 - EPOCH_SECONDS;
    EXPECT_EQ(Limits::max(), ValidTicks(KorFromUnixTime(LAST, 547758079)));
    EXPECT_EQ(Limits::max() - 1, ValidTicks(KorFromUnixTime(LAST, 547758069)));
    EXPECT_EQ(Limits::min(), ValidTicks(KorFromUnixTime(FIRST, 452241920)));
    for (const CKorUTCTime& oTime :
         {KorFromUnixTime(LAST, 547758080), KorFromUnixTime(LAST + 1, 0),
          KorFromUnixTime(Limits::max(), 2147483647), KorFromUnixTime(Limits::max(), 0)}) {
        EXPECT_EQ(Limits::max(), TicksOf(oTime));
        EXPECT_FALSE(oTime.IsTimeValid());
    }
    for (const CKorUTCTime& oTime :
         {KorFromUnixTime(FIRST, 452241919), KorFromUnixTime(FIRST - 1, 0),
          KorFromUnixTime(Limits::min(), -2147483648), KorFromUnixTime(Limits::min(), 0)}) {
        EXPECT_EQ(Limits::min(), TicksOf(oTime));
        EXPECT_FALSE(oTime.IsTimeValid());
    }
}

TEST(KorUnixTime, RoundsSecondsDown)
{
    EXPECT_EQ(0, KorToUnixTime(TimeOfUnix(0, 99999999)));
    EXPECT_EQ(-1, KorToUnixTime(TimeOfUnix(0, -1)));
    EXPECT_EQ(-EPOCH_SECONDS, KorToUnixTime(CKorUTCTime()));
    EXPECT_EQ(-EPOCH_SECONDS - 1, KorToUnixTime(TimeOfTicks(-1)));
    EXPECT_EQ(-92233720369 - EPOCH_SECONDS, KorToUnixTime(TimeOfTicks(Limits::min())));
    EXPECT_EQ(92233720368 - EPOCH_SECONDS, KorToUnixTime(TimeOfTicks(Limits::max())));
}

TEST(KorUnixTime, TakesALocalTimeByItsInstant)
{
    const CKorLocalTime oLocal(1, 1, 1970, 2, 0, 0, 0, 2);
    EXPECT_EQ(0, KorToUnixTime(oLocal));
    EXPECT_EQ(0, KorToUnixNanoseconds(oLocal));
    EXPECT_EQ(Clock::time_point(), KorToSystemClock(oLocal));
}

TEST(KorUnixTime, TakesTheFirstOfJanuaryOf2000AsSuch)
{
    EXPECT_EQ(946728000, KorToUnixTime(CKorUTCTime(1, 1, 2000, 12, 0, 0, 0, 0, 0)));
}

TEST(KorUnixTime, SaturatesNanoseconds)
{
    EXPECT_EQ(-10, KorToUnixNanoseconds(TimeOfUnix(0, -1)));
    EXPECT_EQ(1709647629250125990, KorToUnixNanoseconds(TimeOfUnix(1709647629, 25012599)));
    EXPECT_EQ(9223372036854775800, KorToUnixNanoseconds(TimeOfUnix(0, 922337203685477580)));
    EXPECT_EQ(Limits::max(), KorToUnixNanoseconds(TimeOfUnix(0, 922337203685477581)));
    EXPECT_EQ(-9223372036854775800, KorToUnixNanoseconds(TimeOfUnix(0, -922337203685477580)));
    EXPECT_EQ(Limits::min(), KorToUnixNanoseconds(TimeOfUnix(0, -922337203685477581)));
    EXPECT_EQ(Limits::max(), KorToUnixNanoseconds(TimeOfTicks(Limits::max())));
    EXPECT_EQ(Limits::min(), KorToUnixNanoseconds(TimeOfTicks(Limits::min())));
}

TEST(KorUnixTime, ReadsBackAnyInstant)
{
    RandomTicks oRandom;
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t nTicks = oRandom.Next();
        std::int64_t nOfSecond = nTicks % TICKS_PER_SECOND;
        nOfSecond += nOfSecond < 0 ? TICKS_PER_SECOND : 0;
        ASSERT_EQ(nTicks, ValidTicks(KorFromUnixTime(KorToUnixTime(TimeOfTicks(nTicks)),
                                                     static_cast<std::int32_t>(nOfSecond * 10))));
    }
}

TEST(KorUnixTime, ConvertsTheSystemClock)
{
    const Clock::time_point oTime(std::chrono::nanoseconds(1709647629250125999));
    EXPECT_EQ(TimeOfUnix(1709647629, 25012599), KorFromSystemClock(oTime));
    EXPECT_TRUE(KorFromSystemClock(oTime).IsTimeValid());
    EXPECT_EQ(Clock::time_point(std::chrono::nanoseconds(1709647629250125990)),
              KorToSystemClock(TimeOfUnix(1709647629, 25012599)));
    EXPECT_EQ(TimeOfUnix(0, -1), KorFromSystemClock(Clock::time_point(Clock::duration(-1))));
}

TEST(KorUnixTime, ConvertsTheEndsOfTheSystemClock)
{
    EXPECT_EQ(TimeOfUnix(0, 922337203685477580), KorFromSystemClock(Clock::time_point::max()));
    EXPECT_EQ(TimeOfUnix(0, -922337203685477581), KorFromSystemClock(Clock::time_point::min()));
    EXPECT_TRUE(KorFromSystemClock(Clock::time_point::min()).IsTimeValid());
    EXPECT_EQ(Clock::time_point::max(), KorToSystemClock(TimeOfTicks(Limits::max())));
    EXPECT_EQ(Clock::time_point::min(), KorToSystemClock(TimeOfTicks(Limits::min())));
}

TEST(KorUnixTime, ConvertsDurationsOfTheUsualUnits)
{
    using namespace std::chrono;
    EXPECT_EQ(90 * 60 * TICKS_PER_SECOND, TicksOfDuration(minutes(90)));
    EXPECT_EQ(-24 * 3600 * TICKS_PER_SECOND, TicksOfDuration(hours(-24)));
    EXPECT_EQ(150000, TicksOfDuration(microseconds(1500)));
    EXPECT_EQ(-150000000, TicksOfDuration(milliseconds(-1500)));
    EXPECT_EQ(-7, TicksOfDuration(CKorTickDuration(-7)));
    EXPECT_EQ(CKorTimeDiff(1500LL), KorFromDuration(milliseconds(1500)));
}

TEST(KorUnixTime, RoundsDurationsDown)
{
    using std::chrono::nanoseconds;
    EXPECT_EQ(1, TicksOfDuration(nanoseconds(19)));
    EXPECT_EQ(0, TicksOfDuration(nanoseconds(9)));
    EXPECT_EQ(-1, TicksOfDuration(nanoseconds(-1)));
    EXPECT_EQ(-1, TicksOfDuration(nanoseconds(-10)));
    EXPECT_EQ(-2, TicksOfDuration(nanoseconds(-11)));
    EXPECT_EQ(33333333, (TicksOfCount<std::ratio<1, 3>>(1)));
    EXPECT_EQ(-33333334, (TicksOfCount<std::ratio<1, 3>>(-1)));
    EXPECT_EQ(3336666, (TicksOfCount<std::ratio<1001, 30000>>(1)));
    EXPECT_EQ(-1, TicksOfCount<std::pico>(std::int64_t{-1}));
    EXPECT_EQ(-1, TicksOfCount<std::atto>(std::int64_t{-10000000000}));
    EXPECT_EQ(922, TicksOfCount<std::femto>(std::int64_t{9223372036}));
}

TEST(KorUnixTime, TakesCountsOfAnyWidthAndSign)
{
    EXPECT_EQ(-128 * 60 * TICKS_PER_SECOND, TicksOfCount<std::ratio<60>>(std::int8_t{-128}));
    EXPECT_EQ(255 * TICKS_PER_SECOND, TicksOfCount<std::ratio<1>>(std::uint8_t{255}));
    EXPECT_EQ(4294967295 * TICKS_PER_SECOND, TicksOfCount<std::ratio<1>>(4294967295U));
    EXPECT_EQ(1844674407370955161,
              TicksOfCount<std::nano>(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(-922337203685477581, TicksOfCount<std::nano>(Limits::min()));
    EXPECT_EQ(922337203685477580, TicksOfCount<std::nano>(Limits::max()));
}

TEST(KorUnixTime, SaturatesDurations)
{
    using std::chrono::seconds;
    EXPECT_EQ(9223372036800000000, TicksOfDuration(seconds(92233720368)));
    EXPECT_EQ(Limits::max(), TicksOfDuration(seconds(92233720369)));
    EXPECT_EQ(-9223372036800000000, TicksOfDuration(seconds(-92233720368)));
    EXPECT_EQ(Limits::min(), TicksOfDuration(seconds(-92233720369)));
    EXPECT_EQ(Limits::max(),
              TicksOfCount<std::ratio<1>>(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(Limits::max(), TicksOfDuration(std::chrono::hours::max()));
    EXPECT_EQ(Limits::min(), TicksOfDuration(std::chrono::hours::min()));
    EXPECT_EQ(Limits::max(), TicksOfCount<std::exa>(std::int64_t{1}));
    EXPECT_EQ(Limits::min(), TicksOfCount<std::tera>(-1));
    EXPECT_EQ(0, TicksOfCount<std::exa>(0));
    // A third of a second short of the end and at it.
    EXPECT_EQ(9223372036833333333, (TicksOfCount<std::ratio<1, 3>>(std::int64_t{276701161105})));
    EXPECT_EQ(Limits::max(), (TicksOfCount<std::ratio<1, 3>>(std::int64_t{276701161106})));
    EXPECT_EQ(-9223372036833333334, (TicksOfCount<std::ratio<1, 3>>(std::int64_t{-276701161105})));
    EXPECT_EQ(Limits::min(), (TicksOfCount<std::ratio<1, 3>>(std::int64_t{-276701161106})));
}

TEST(KorUnixTime, TakesFloatingPointDurations)
{
    EXPECT_EQ(10000000, TicksOfCount<std::ratio<1>>(0.1));
    EXPECT_EQ(50000000, TicksOfCount<std::ratio<1>>(0.5F));
    EXPECT_EQ(-1, TicksOfCount<std::nano>(-0.5));
    EXPECT_EQ(1, TicksOfCount<std::nano>(19.9));
    EXPECT_EQ(25000000, TicksOfCount<std::milli>(250.0L));
    EXPECT_EQ(Limits::max(), TicksOfCount<std::ratio<1>>(1e11));
    EXPECT_EQ(Limits::min(), TicksOfCount<std::ratio<1>>(-1e11));
    EXPECT_EQ(Limits::max(), TicksOfCount<std::ratio<1>>(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(Limits::min(), TicksOfCount<std::ratio<1>>(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(0, TicksOfCount<std::ratio<1>>(std::nan("")));
}

TEST(KorUnixTime, GivesSpansExactly)
{
    for (const std::int64_t nTicks :
         {Limits::min(), Limits::max(), std::int64_t{-1}, std::int64_t{0}})
        EXPECT_EQ(nTicks, TicksOfDuration(CKorTickDuration(nTicks)));
}

} // namespace
