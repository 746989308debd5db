// A program of its own, because its ftime() takes the place of the C library's.

#include "tests/time/TimeZoneScope.h"
#include "time/KorLocalTime.h"

#include <gtest/gtest.h>
#include <sys/timeb.h>

namespace
{

struct timeb g_oAnswer;
int g_nCalls = 0;

} // namespace

extern "C" int ftime(struct timeb* pTime)
{
    ++g_nCalls;
    *pTime = g_oAnswer;
    return 0;
}

namespace
{

int ZoneFor(short nMinutesWest, short nDaylight)
{
    const TimeZoneScope oScope("ZZZ-7");
    g_oAnswer.timezone = nMinutesWest;
    g_oAnswer.dstflag = nDaylight;
    const int nCallsBefore = g_nCalls;
    const int nZone = CKorLocalTime::GetCurrentTimezone();
    EXPECT_EQ(nCallsBefore + 1, g_nCalls);
    return nZone;
}

TEST(KorSystemZone, TakesTheAnswerOfFtime)
{
    EXPECT_EQ(2, ZoneFor(-60, 1));
    EXPECT_EQ(-5, ZoneFor(300, 0));
    EXPECT_EQ(1, ZoneFor(-60, 0));
    EXPECT_EQ(-4, ZoneFor(300, 1));
}

TEST(KorSystemZone, CutsTheMinutesOfFtimeTowardGreenwich)
{
    EXPECT_EQ(5, ZoneFor(-330, 0));
    EXPECT_EQ(-3, ZoneFor(210, 0));
    EXPECT_EQ(0, ZoneFor(-59, 0));
    EXPECT_EQ(0, ZoneFor(59, 0));
}

TEST(KorSystemZone, TakesTheFlagOfFtimeAlone)
{
    EXPECT_EQ(1, ZoneFor(0, 1));
    EXPECT_EQ(1, ZoneFor(0, -1));
}

TEST(KorSystemZone, AsksTheZoneDataWhenFtimeKnowsNothing)
{
    EXPECT_EQ(7, ZoneFor(0, 0));
}

} // namespace
