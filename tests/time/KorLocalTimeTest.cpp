#include "time/KorLocalTime.h"

#include "tests/time/TimeZoneScope.h"

#include <climits>
#include <gtest/gtest.h>
#include <type_traits>

namespace
{

constexpr long long SECOND = 100000000LL;
constexpr long long HOUR = 3600 * SECOND;
constexpr long long HOUR_MS = 3600000LL;

long long UTCTicks(const CKorLocalTime& oTime)
{
    return oTime.CKorUTCTime::GetHighResolutionLocaltime();
}

CKorUTCTime UTC(unsigned nDay, unsigned nHour)
{
    return CKorUTCTime(nDay, 3, 2024, nHour, 0, 0, 0, 0, 0);
}

CKorLocalTime Local(unsigned nDay, unsigned nHour, int nTimeZone)
{
    return CKorLocalTime(nDay, 3, 2024, nHour, 0, 0, 0, nTimeZone);
}

static_assert(std::is_base_of_v<CKorUTCTime, CKorLocalTime>);

TEST(KorLocalTime, IsTheInvalidYearZeroInZoneZeroAtFirst)
{
    const CKorLocalTime oTime;
    EXPECT_EQ(0, UTCTicks(oTime));
    EXPECT_EQ(0, oTime.GetTimezone());
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorLocalTime, ReadsLocalPartsAndStoresUTC)
{
    const CKorLocalTime oTime = Local(5, 10, 2);
    EXPECT_EQ(10, oTime.GetHour());
    EXPECT_EQ(UTC(5, 8).GetHighResolutionLocaltime(), UTCTicks(oTime));
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(2, oTime.GetTimezone());
}

TEST(KorLocalTime, ReadsTheCalendarOnTheLocalClock)
{
    const CKorLocalTime oTime = Local(1, 0, 2); // still February in UTC
    EXPECT_EQ(1, oTime.GetDay());
    EXPECT_EQ(3, oTime.GetMonth());
    EXPECT_EQ(CKorUTCTime::eFriday, oTime.GetWeekDay());
    EXPECT_TRUE(static_cast<const CKorUTCTime&>(oTime) ==
                CKorUTCTime(29, 2, 2024, 22, 0, 0, 0, 0, 0));
}

TEST(KorLocalTime, TakesPartsDownToNanoseconds)
{
    const CKorLocalTime oTime(5, 3, 2024, 14, 7, 9, 250, 125, 990, -3);
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(14, oTime.GetHour());
    EXPECT_EQ(250, oTime.GetMilliSecond());
    EXPECT_EQ(125, oTime.GetMicroSecond());
    EXPECT_EQ(990, oTime.GetNanoSecond());
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 17, 7, 9, 250, 125, 990).GetHighResolutionLocaltime(),
              UTCTicks(oTime));
}

TEST(KorLocalTime, ClampsPartsLikeItsBase)
{
    const CKorLocalTime oTime(31, 2, 2023, 24, 0, 0, 0, 1);
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ(28, oTime.GetDay());
    EXPECT_EQ(23, oTime.GetHour());
}

TEST(KorLocalTime, IsNotValidWhenMadeOfMilliseconds)
{
    const CKorLocalTime oTime(5 * HOUR_MS, 1);
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ(5 * HOUR_MS, oTime.GetLocaltime());
    EXPECT_EQ(4 * HOUR, UTCTicks(oTime));
}

TEST(KorLocalTime, ChangeTimezoneKeepsTheInstant)
{
    CKorLocalTime oTime = Local(5, 10, 2);
    oTime.ChangeTimezone(3);
    EXPECT_EQ(11, oTime.GetHour());
    EXPECT_EQ(UTC(5, 8).GetHighResolutionLocaltime(), UTCTicks(oTime));
}

TEST(KorLocalTime, AdjustTimezoneKeepsTheClock)
{
    CKorLocalTime oTime = Local(5, 10, 2);
    oTime.AdjustTimezone(3);
    EXPECT_EQ(10, oTime.GetHour());
    EXPECT_EQ(3, oTime.GetTimezone());
    EXPECT_EQ(UTC(5, 7).GetHighResolutionLocaltime(), UTCTicks(oTime));
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorLocalTime, AdjustTimezoneDropsWhatIsBelowAMillisecond)
{
    CKorLocalTime oTime(5, 3, 2024, 10, 0, 0, 7, 8, 90, 2);
    oTime.AdjustTimezone(2);
    EXPECT_EQ(7, oTime.GetMilliSecond());
    EXPECT_EQ(0, oTime.GetMicroSecond());
    EXPECT_EQ(0, oTime.GetNanoSecond());
}

TEST(KorLocalTime, SetLocaltimeTakesLocalMillisecondsAndItsHighResolutionUTC)
{
    CKorLocalTime oTime = Local(5, 10, 2);
    oTime.SetLocaltime(7 * HOUR_MS);
    EXPECT_EQ(5 * HOUR, UTCTicks(oTime));
    EXPECT_EQ(7 * HOUR, oTime.GetHighResolutionLocaltime());
    oTime.SetHighResolutionLocaltime(7 * HOUR);
    EXPECT_EQ(7 * HOUR, UTCTicks(oTime));
    EXPECT_EQ(9 * HOUR, oTime.GetHighResolutionLocaltime());
}

TEST(KorLocalTime, TheZoneInMillisecondsWrapsTo32Bits)
{
    CKorLocalTime oTime;
    oTime.ChangeTimezone(600); // 2,160,000,000 ms
    EXPECT_EQ(2160000000LL - 4294967296LL, oTime.GetLocaltime());
    EXPECT_EQ((2160000000LL - 4294967296LL) * 100000, oTime.GetHighResolutionLocaltime());
    oTime.SetLocaltime(0);
    EXPECT_EQ(-(2160000000LL - 4294967296LL) * 100000, UTCTicks(oTime));
    for (const int nZone : {INT_MIN, INT_MAX}) {
        oTime.ChangeTimezone(nZone);
        oTime.SetLocaltime(LLONG_MIN);
        oTime.AdjustTimezone(-1);
        EXPECT_EQ(-1, oTime.GetTimezone());
    }
}

TEST(KorLocalTime, BaseOperationsMoveTheTimeByItsZone)
{
    CKorLocalTime oTime = Local(5, 10, 2);
    oTime.AddTime(0, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(13, oTime.GetHour()); // one hour, and the two of the zone

    oTime = Local(5, 10, 2);
    oTime.SubTime(0, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(11, oTime.GetHour());

    oTime = Local(5, 10, 2);
    oTime.CutOffParts(CKorUTCTime::ePartDay);
    EXPECT_EQ(5, oTime.GetDay());
    EXPECT_EQ(2, oTime.GetHour());

    oTime = Local(5, 10, 2);
    oTime.CKorUTCTime::operator+=(CKorTimeDiff(0, 1, 0, 0, 0, 0, 0));
    EXPECT_EQ(13, oTime.GetHour());
    oTime.CKorUTCTime::operator-=(CKorTimeDiff(0, 1, 0, 0, 0, 0, 0));
    EXPECT_EQ(14, oTime.GetHour());

    oTime.SetDate(5, 3, 2024, 10, 0, 0, 0, 0, 0);
    EXPECT_EQ(12, oTime.GetHour());
}

TEST(KorLocalTime, ItsOwnOperatorsMoveItByTheSpanAlone)
{
    CKorLocalTime oTime = Local(5, 10, 2);
    EXPECT_EQ(&oTime, &(oTime += CKorTimeDiff(0, 1, 0, 0, 0, 0, 0)));
    EXPECT_EQ(11, oTime.GetHour());
    EXPECT_EQ(&oTime, &(oTime -= CKorTimeDiff(0, 3, 0, 0, 0, 0, 0)));
    EXPECT_EQ(8, oTime.GetHour());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorLocalTime, ItsOwnOperatorsWorkInMilliseconds)
{
    CKorLocalTime oTime(5, 3, 2024, 10, 0, 0, 7, 8, 90, 2);
    oTime += CKorTimeDiff(1, 999, 990);
    EXPECT_EQ(8, oTime.GetMilliSecond());
    EXPECT_EQ(0, oTime.GetMicroSecond());
    EXPECT_EQ(0, oTime.GetNanoSecond());
}

TEST(KorLocalTime, SumsKeepValidFlagAndZone)
{
    const CKorLocalTime oTime = Local(5, 10, 2);
    const CKorLocalTime oSum = oTime + CKorTimeDiff(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Local(6, 10, 2), oSum);
    EXPECT_TRUE(oSum.IsTimeValid());
    EXPECT_EQ(2, oSum.GetTimezone());
    const CKorLocalTime oDifference = oTime - CKorTimeDiff(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Local(4, 10, 2), oDifference);
    EXPECT_TRUE(oDifference.IsTimeValid());
    EXPECT_FALSE((CKorLocalTime(0, 1) + CKorTimeDiff(1LL)).IsTimeValid());
}

TEST(KorLocalTime, ComparesWhatTheClocksShow)
{
    const CKorLocalTime oBerlin = Local(5, 10, 1);
    CKorLocalTime oAthens(oBerlin);
    oAthens.ChangeTimezone(2); // the same instant
    EXPECT_FALSE(oBerlin == oAthens);
    EXPECT_TRUE(oBerlin != oAthens);
    EXPECT_TRUE(oBerlin < oAthens);
    EXPECT_TRUE(oAthens > oBerlin);
    EXPECT_TRUE(oBerlin <= oAthens);
    EXPECT_FALSE(oBerlin >= oAthens);

    const CKorLocalTime oLater = Local(5, 10, 2); // the same clock, another instant
    EXPECT_TRUE(oBerlin == oLater);
    EXPECT_TRUE(oBerlin <= oLater);
    EXPECT_TRUE(oBerlin >= oLater);
    EXPECT_FALSE(oBerlin < oLater);
    EXPECT_FALSE(oBerlin > oLater);
}

TEST(KorLocalTime, ComparesInMilliseconds)
{
    const CKorLocalTime oEarly(5, 3, 2024, 10, 0, 0, 7, 0, 0, 2);
    const CKorLocalTime oLate(5, 3, 2024, 10, 0, 0, 7, 999, 990, 2);
    EXPECT_TRUE(oEarly == oLate);
    EXPECT_FALSE(oEarly < oLate);
}

TEST(KorLocalTime, ComparesSigned)
{
    const CKorLocalTime oZero(0LL, 0);
    const CKorLocalTime oNegative = [] {
        CKorLocalTime oTime(0LL, 0);
        oTime.ChangeTimezone(-1); // the local clock shows less than 0
        return oTime;
    }();
    EXPECT_TRUE(oNegative < oZero);
    EXPECT_EQ(-1, oNegative.GetHour());
}

TEST(KorLocalTime, ADifferenceIsThatOfTheClocks)
{
    EXPECT_EQ(CKorTimeDiff(0, 1, 0, 0, 0, 0, 0), Local(5, 11, 1) - Local(5, 10, 5));
    EXPECT_EQ(CKorTimeDiff(0, 2, 0, 0, 0, 0, 0), Local(5, 10, 3) - UTC(5, 8));
}

TEST(KorLocalTime, GivesTheUnixTimeOfItsClock)
{
    EXPECT_EQ(UTC(5, 10).GetTimeval().tv_sec, Local(5, 10, 3).GetTimeval().tv_sec);
}

TEST(KorLocalTime, FindsTheFirstWeekdayOfAMonth)
{
    EXPECT_EQ(1, CKorLocalTime::CalcFirstWeekdayOfMonth(3, 2024, CKorUTCTime::eFriday));
    EXPECT_EQ(2, CKorLocalTime::CalcFirstWeekdayOfMonth(3, 2024, CKorUTCTime::eSaturday));
    EXPECT_EQ(7, CKorLocalTime::CalcFirstWeekdayOfMonth(3, 2024, CKorUTCTime::eThursday));
}

TEST(KorLocalTime, FindsEveryWeekdayInItsFirstWeek)
{
    for (int nMonth = 1; nMonth <= 12 * 40; ++nMonth) {
        const int nYear = 1990 + (nMonth - 1) / 12;
        const int nOfYear = (nMonth - 1) % 12 + 1;
        for (int nWeekday = 0; nWeekday < 7; ++nWeekday) {
            const int nDay = CKorLocalTime::CalcFirstWeekdayOfMonth(
                nOfYear, nYear, static_cast<CKorUTCTime::EWeekday>(nWeekday));
            ASSERT_GE(nDay, 1);
            ASSERT_LE(nDay, 7);
            ASSERT_EQ(nWeekday, (CKorUTCTime::CalcNumOfDays(nYear, nOfYear, nDay) + 4) % 7);
        }
    }
}

TEST(KorLocalTime, FindsTheNthWeekdayOfAMonth)
{
    const auto Sunday = [](int nIndex) {
        return CKorLocalTime::CalcDayFromWeek(3, 2024, CKorUTCTime::eSunday, nIndex);
    };
    EXPECT_EQ(3, Sunday(1));
    EXPECT_EQ(10, Sunday(2));
    EXPECT_EQ(17, Sunday(3));
    EXPECT_EQ(24, Sunday(4));
    EXPECT_EQ(31, Sunday(5));
    EXPECT_EQ(31, Sunday(6));
    EXPECT_EQ(31, Sunday(INT_MAX));
    EXPECT_EQ(3, Sunday(0));
    EXPECT_EQ(3, Sunday(INT_MIN));
    EXPECT_EQ(25, CKorLocalTime::CalcDayFromWeek(2, 2024, CKorUTCTime::eSunday, 5));
    EXPECT_EQ(29, CKorLocalTime::CalcDayFromWeek(2, 2024, CKorUTCTime::eThursday, 5));
}

TEST(KorLocalTime, FindsNoDayForWhatIsNoWeekday)
{
    for (const int nWeekday : {-1, 7, INT_MIN, INT_MAX}) {
        const auto eWeekday = static_cast<CKorUTCTime::EWeekday>(nWeekday);
        EXPECT_EQ(0, CKorLocalTime::CalcFirstWeekdayOfMonth(3, 2024, eWeekday)) << nWeekday;
        EXPECT_EQ(0, CKorLocalTime::CalcDayFromWeek(3, 2024, eWeekday, 5)) << nWeekday;
    }
}

TEST(KorLocalTime, SetTimeZoneTakesTheSystemsZone)
{
    const TimeZoneScope oScope("ZZZ-4");
    CKorLocalTime oTime = Local(5, 10, 1);
    EXPECT_EQ(4, oTime.SetTimeZone());
    EXPECT_EQ(4, oTime.GetTimezone());
    EXPECT_EQ(13, oTime.GetHour());
}

TEST(KorLocalTime, CurrentLocalTimeIsNowInTheSystemsZone)
{
    const TimeZoneScope oScope("ZZZ-4");
    const long long nBefore = CKorUTCTime::CurrentTime().GetLocaltime();
    const CKorLocalTime oNow = CKorLocalTime::CurrentLocalTime();
    const long long nAfter = CKorUTCTime::CurrentTime().GetLocaltime();
    EXPECT_TRUE(oNow.IsTimeValid());
    EXPECT_EQ(4, oNow.GetTimezone());
    EXPECT_EQ(0, UTCTicks(oNow) % 100000); // whole milliseconds
    EXPECT_LE(nBefore, UTCTicks(oNow) / 100000);
    EXPECT_GE(nAfter, UTCTicks(oNow) / 100000);
    EXPECT_EQ(UTCTicks(oNow) + 4 * HOUR, oNow.GetHighResolutionLocaltime());
}

TEST(KorLocalTime, CopiesItsZoneToo)
{
    const CKorLocalTime oTime = Local(5, 10, 2);
    CKorLocalTime oCopy(oTime);
    CKorLocalTime oAssigned;
    oAssigned = oTime;
    for (CKorLocalTime* pCopy : {&oCopy, &oAssigned}) {
        EXPECT_EQ(2, pCopy->GetTimezone());
        EXPECT_EQ(UTCTicks(oTime), UTCTicks(*pCopy));
        EXPECT_TRUE(pCopy->IsTimeValid());
        pCopy->ChangeTimezone(3);
    }
    EXPECT_EQ(2, oTime.GetTimezone());
}

TEST(KorLocalTime, ASpanAcrossAChangeOfTheZoneIsThatOfTheClocks)
{
    const CKorLocalTime oWinter(30, 3, 2024, 12, 0, 0, 0, 1);
    const CKorLocalTime oSummer(31, 3, 2024, 12, 0, 0, 0, 2);
    EXPECT_EQ(CKorTimeDiff(1, 0, 0, 0, 0, 0, 0), oSummer - oWinter);
    EXPECT_EQ(CKorTimeDiff(0, 23, 0, 0, 0, 0, 0), CKorUTCTime(oSummer) - CKorUTCTime(oWinter));
}

} // namespace
