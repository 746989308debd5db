#include "time/KorZoneTime.h"

#include "tests/time/InstantSupport.h"
#include "tests/time/TimeZoneScope.h"
#include "time/KorIsoTime.h"
#include "time/KorLocalTime.h"
#include "time/KorTimeZone.h"
#include "time/KorUnixTime.h"

#include <gtest/gtest.h>
#include <iomanip>
#include <limits>
#include <sstream>

namespace
{

using Limits = std::numeric_limits<std::int64_t>;

constexpr std::int64_t UNIX_5_MARCH = 1709647629; // Tue, 2024-03-05T14:07:09Z

CKorTimeZone Zone(const char* pszName)
{
    CKorTimeZone oZone;
    EXPECT_TRUE(oZone.Load(pszName));
    return oZone;
}

TEST(KorZoneTime, ShowsTheClockAheadOfUtc)
{
    const CKorZoneTime oTime(TimeOfUnix(UNIX_5_MARCH, 25012599), 330);
    EXPECT_EQ(330, oTime.GetOffsetMinutes());
    EXPECT_EQ(TimeOfUnix(UNIX_5_MARCH, 25012599), oTime.GetUtc());
    EXPECT_TRUE(oTime.GetUtc().IsTimeValid());
    EXPECT_EQ(2024, oTime.GetYear());
    EXPECT_EQ(3, oTime.GetMonth());
    EXPECT_EQ(5, oTime.GetDay());
    EXPECT_EQ(19, oTime.GetHour());
    EXPECT_EQ(37, oTime.GetMinute());
    EXPECT_EQ(9, oTime.GetSecond());
    EXPECT_EQ(250, oTime.GetMilliSecond());
    EXPECT_EQ(125, oTime.GetMicroSecond());
    EXPECT_EQ(990, oTime.GetNanoSecond());
    EXPECT_EQ(2, oTime.GetWeekDay());
    EXPECT_EQ(65, oTime.GetDayOfYear());
}

TEST(KorZoneTime, CrossesMidnightAndNewYear)
{
    const CKorZoneTime oWest(TimeOfUnix(1704067200), -1); // 2024-01-01T00:00Z
    EXPECT_EQ(2023, oWest.GetYear());
    EXPECT_EQ(12, oWest.GetMonth());
    EXPECT_EQ(31, oWest.GetDay());
    EXPECT_EQ(23, oWest.GetHour());
    EXPECT_EQ(59, oWest.GetMinute());
    EXPECT_EQ(7, oWest.GetWeekDay());
    EXPECT_EQ(365, oWest.GetDayOfYear());
    const CKorZoneTime oEast(TimeOfUnix(1704067199), 1440);
    EXPECT_EQ(2024, oEast.GetYear());
    EXPECT_EQ(1, oEast.GetWeekDay());
    EXPECT_EQ(1, oEast.GetDayOfYear());
}

TEST(KorZoneTime, ShowsTheFirstOfJanuaryOf2000AsSuch)
{
    const CKorZoneTime oTime(CKorUTCTime(1, 1, 2000, 12, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(2000, oTime.GetYear());
    EXPECT_EQ(6, oTime.GetWeekDay());
    EXPECT_EQ(1, oTime.GetDayOfYear());
}

TEST(KorZoneTime, ShowsTimesBeforeYear0)
{
    const CKorZoneTime oTime(TimeOfTicks(-1), 0);
    EXPECT_EQ(-1, oTime.GetYear());
    EXPECT_EQ(12, oTime.GetMonth());
    EXPECT_EQ(31, oTime.GetDay());
    EXPECT_EQ(23, oTime.GetHour());
    EXPECT_EQ(59, oTime.GetSecond());
    EXPECT_EQ(999, oTime.GetMilliSecond());
    EXPECT_EQ(999, oTime.GetMicroSecond());
    EXPECT_EQ(990, oTime.GetNanoSecond());
    EXPECT_EQ("", oTime.ToString());
}

TEST(KorZoneTime, ShowsTheEndsOfTheRangeWithAnyOffset)
{
    EXPECT_EQ(-2923, CKorZoneTime(TimeOfTicks(Limits::min()), 0).GetYear());
    EXPECT_EQ(2922, CKorZoneTime(TimeOfTicks(Limits::max()), 0).GetYear());
    const int nMax = std::numeric_limits<int>::max();
    const int nMin = std::numeric_limits<int>::min();
    EXPECT_EQ(7005, CKorZoneTime(TimeOfTicks(Limits::max()), nMax).GetYear());
    EXPECT_EQ(-7006, CKorZoneTime(TimeOfTicks(Limits::min()), nMin).GetYear());
    EXPECT_EQ("", CKorZoneTime(TimeOfTicks(0), nMin).ToString());
    const CKorZoneTime oFirst(TimeOfTicks(Limits::min()), 0); // its second began before the range
    EXPECT_EQ(452, oFirst.GetMilliSecond());
    EXPECT_EQ(241, oFirst.GetMicroSecond());
    EXPECT_EQ(920, oFirst.GetNanoSecond());
}

TEST(KorZoneTime, TakesALocalTimeByItsInstant)
{
    const CKorLocalTime oLocal(5, 3, 2024, 10, 0, 0, 0, 2);
    EXPECT_EQ(8, CKorZoneTime(oLocal, 0).GetHour());
}

TEST(KorZoneTime, TakesTheOffsetOfAZoneAtTheInstant)
{
    const CKorTimeZone oBerlin = Zone("Europe/Berlin");
    EXPECT_EQ(60, CKorZoneTime(TimeOfUnix(1704067200), oBerlin).GetOffsetMinutes());
    EXPECT_EQ(120, CKorZoneTime(TimeOfUnix(1719792000), oBerlin).GetOffsetMinutes());
    EXPECT_EQ(330, CKorZoneTime(TimeOfUnix(0), Zone("Asia/Kolkata")).GetOffsetMinutes());
}

TEST(KorZoneTime, RoundsTheSecondsOfAnOffsetDown)
{
    const CKorUTCTime oTime = TimeOfUnix(-2840140800); // 1880
    EXPECT_EQ(53, CKorZoneTime(oTime, Zone("Europe/Berlin")).GetOffsetMinutes());
    EXPECT_EQ(-297, CKorZoneTime(oTime, Zone("America/New_York")).GetOffsetMinutes());
    const TimeZoneScope oScope("ZZZ0:00:01");
    EXPECT_EQ(-1, CKorZoneTime(oTime).GetOffsetMinutes());
}

TEST(KorZoneTime, TakesTheOffsetOfTheProcesssZone)
{
    const TimeZoneScope oScope("ZZZ-5:30");
    EXPECT_EQ(330, CKorZoneTime(TimeOfUnix(UNIX_5_MARCH)).GetOffsetMinutes());
    EXPECT_EQ(330, CKorZoneTime::CurrentTime().GetOffsetMinutes());
}

TEST(KorZoneTime, ReadsTheSystemClock)
{
    const CKorUTCTime oBefore = CKorUTCTime::CurrentTime();
    const CKorZoneTime oHere = CKorZoneTime::CurrentTime();
    const CKorZoneTime oThere = CKorZoneTime::CurrentTime(Zone("Asia/Kolkata"));
    const CKorUTCTime oAfter = CKorUTCTime::CurrentTime();
    EXPECT_LE(oBefore, oHere.GetUtc());
    EXPECT_LE(oHere, oThere);
    EXPECT_LE(oThere.GetUtc(), oAfter);
    EXPECT_EQ(330, oThere.GetOffsetMinutes());
    EXPECT_TRUE(oHere.GetUtc().IsTimeValid());
}

TEST(KorZoneTime, WritesAndReadsIsoText)
{
    CKorZoneTime oTime(TimeOfUnix(UNIX_5_MARCH, 25000000), 330);
    EXPECT_EQ("2024-03-05T19:37:09.250+05:30", oTime.ToString());
    EXPECT_EQ("2024-03-05T19:37:09+05:30", oTime.ToString(0));
    ASSERT_TRUE(oTime.FromString("2020-01-02T03:04:05.6-08"));
    EXPECT_EQ("2020-01-02T03:04:05.600-08:00", oTime.ToString());
    ASSERT_TRUE(oTime.FromString("2020-01-02"));
    EXPECT_EQ("2020-01-02T00:00:00.000Z", oTime.ToString());
}

TEST(KorZoneTime, KeepsItsValueWhenATextIsNoTime)
{
    CKorZoneTime oTime(TimeOfUnix(UNIX_5_MARCH), 330);
    EXPECT_FALSE(oTime.FromString("2024-03-05T14:07:09+25:00"));
    EXPECT_FALSE(oTime.FromString("9999-03-05T14:07:09+01:00"));
    EXPECT_EQ("2024-03-05T19:37:09.000+05:30", oTime.ToString());
}

TEST(KorZoneTime, BeginsInYear0)
{
    EXPECT_EQ("0000-01-01T00:00:00.000Z", CKorZoneTime().ToString());
}

TEST(KorZoneTime, ComparesInstantsWhateverTheOffsets)
{
    const CKorZoneTime oEarly(TimeOfTicks(-5), 600);
    const CKorZoneTime oSame(TimeOfTicks(-5), -600);
    const CKorZoneTime oLate(TimeOfTicks(5), -600);
    EXPECT_TRUE(oEarly == oSame);
    EXPECT_FALSE(oEarly != oSame);
    EXPECT_TRUE(oEarly <= oSame);
    EXPECT_TRUE(oEarly >= oSame);
    EXPECT_FALSE(oEarly < oSame);
    EXPECT_FALSE(oEarly > oSame);
    EXPECT_TRUE(oEarly < oLate);
    EXPECT_TRUE(oEarly <= oLate);
    EXPECT_TRUE(oLate > oEarly);
    EXPECT_TRUE(oLate >= oEarly);
    EXPECT_TRUE(oLate != oEarly);
    EXPECT_FALSE(oLate == oEarly);
    EXPECT_FALSE(oLate <= oEarly);
    EXPECT_FALSE(oEarly >= oLate);
}

TEST(KorZoneTime, SubtractsWithASign)
{
    const CKorZoneTime oEarly(TimeOfUnix(0), 0);
    const CKorZoneTime oLate(TimeOfUnix(1, 5), 60);
    EXPECT_EQ("PT1.00000005S", KorToIsoDuration(oLate - oEarly));
    EXPECT_EQ("-PT1.00000005S", KorToIsoDuration(oEarly - oLate));
    const CKorZoneTime oFirst(TimeOfTicks(Limits::min()), 0);
    const CKorZoneTime oLast(TimeOfTicks(Limits::max()), 0);
    EXPECT_EQ(Limits::max(), KorToDuration(oLast - oFirst).count());
    EXPECT_EQ(Limits::min(), KorToDuration(oFirst - oLast).count());
}

TEST(KorZoneTime, IsWrittenToAStreamAsItsText)
{
    std::ostringstream oStream;
    oStream << std::setw(31) << CKorZoneTime(TimeOfUnix(0), 60) << "|";
    EXPECT_EQ("  1970-01-01T01:00:00.000+01:00|", oStream.str());
}

} // namespace
