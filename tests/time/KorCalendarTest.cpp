#include "time/KorCalendarDetail.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using KorCalendar::DateOfDay;
using KorCalendar::DateOfDay32;
using KorCalendar::DayOfDate;
using KorCalendar::DayOfYear;
using KorCalendar::IsLeapYear;
using KorCalendar::IsoWeekday;
using KorCalendar::SDate;

void ExpectDate(std::int64_t nYear, int nMonth, int nDay, const SDate& oDate)
{
    EXPECT_EQ(nYear, oDate.nYear);
    EXPECT_EQ(nMonth, oDate.nMonth);
    EXPECT_EQ(nDay, oDate.nDay);
}

int MonthLength(std::int64_t nYear, int nMonth)
{
    static constexpr int LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool bLeap = nYear % 4 == 0 && (nYear % 100 != 0 || nYear % 400 == 0);
    return nMonth == 2 && bLeap ? 29 : LENGTHS[nMonth - 1];
}

/// The day after, by hand.
SDate Next(SDate oDate)
{
    if (oDate.nDay < MonthLength(oDate.nYear, oDate.nMonth))
        return {oDate.nYear, oDate.nMonth, oDate.nDay + 1};
    if (oDate.nMonth < 12)
        return {oDate.nYear, oDate.nMonth + 1, 1};
    return {oDate.nYear + 1, 1, 1};
}

/// Walks day by day and expects each function to agree with the walk.
void Walk(std::int64_t nFromYear, std::int64_t nToYear)
{
    SDate oDate = {nFromYear, 1, 1};
    int nDayOfYear = 1;
    for (std::int64_t nDay = DayOfDate(nFromYear, 1, 1); oDate.nYear < nToYear; ++nDay) {
        ASSERT_EQ(nDay, DayOfDate(oDate.nYear, oDate.nMonth, oDate.nDay));
        ASSERT_NO_FATAL_FAILURE(ExpectDate(oDate.nYear, oDate.nMonth, oDate.nDay, DateOfDay(nDay)));
        ASSERT_EQ(nDayOfYear, DayOfYear(oDate));
        ASSERT_EQ(MonthLength(oDate.nYear, oDate.nMonth),
                  KorCalendar::DaysOfMonth(oDate.nMonth, IsLeapYear(oDate.nYear)));
        const std::int64_t nYear = oDate.nYear;
        oDate = Next(oDate);
        nDayOfYear = oDate.nYear == nYear ? nDayOfYear + 1 : 1;
    }
}

TEST(KorCalendar, KnowsEveryDayOfAnEraOnBothSidesOfYearZero)
{
    Walk(-401, 402);
}

TEST(KorCalendar, RepeatsEveryFourHundredYears)
{
    for (std::int64_t nEra : {-1000000000000LL, -5845LL, -7LL, 5LL, 14LL, 1000000000000LL}) {
        const std::int64_t nDay = DayOfDate(400 * nEra, 2, 29);
        EXPECT_EQ(nEra * 146097 + 59, nDay);
        ExpectDate(400 * nEra, 2, 29, DateOfDay(nDay));
        ExpectDate(400 * nEra - 1, 12, 31, DateOfDay(nDay - 60));
    }
}

TEST(KorCalendar, CountsFromTheFirstOfJanuaryOfYearZero)
{
    EXPECT_EQ(0, DayOfDate(0, 1, 1));
    EXPECT_EQ(719528, DayOfDate(1970, 1, 1));
    ExpectDate(-1, 12, 31, DateOfDay(-1));
}

TEST(KorCalendar, TakesDaysOutsideTheirMonth)
{
    EXPECT_EQ(DayOfDate(2024, 3, 1), DayOfDate(2024, 2, 30));
    EXPECT_EQ(DayOfDate(2023, 12, 31), DayOfDate(2024, 1, 0));
}

TEST(KorCalendar, HoldsTheDayOfEveryTickCount)
{
    constexpr std::int64_t TICKS_PER_DAY = 8640000000000;
    constexpr std::int64_t LEAST = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    ExpectDate(-2923, 3, 25, DateOfDay(KorCalendar::FloorQuotient(LEAST, TICKS_PER_DAY)));
    ExpectDate(2922, 10, 8, DateOfDay(KorCalendar::FloorQuotient(MOST, TICKS_PER_DAY)));
}

TEST(KorCalendar, HoldsTheDayOfEverySecondCount)
{
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max() / 86400;
    for (std::int64_t nDay : {-MOST - 1, MOST}) {
        const SDate oDate = DateOfDay(nDay);
        EXPECT_EQ(nDay, DayOfDate(oDate.nYear, oDate.nMonth, oDate.nDay));
    }
}

TEST(KorCalendar, ReachesTheEndsOfItsRange)
{
    for (std::int64_t nDay : {-(std::int64_t(1) << 61), std::int64_t(1) << 61}) {
        const SDate oDate = DateOfDay(nDay);
        EXPECT_EQ(nDay, DayOfDate(oDate.nYear, oDate.nMonth, oDate.nDay));
    }
    const auto oDate = DateOfDay32((1U << 30) - 146098);
    EXPECT_EQ((1 << 30) - 146098, DayOfDate(oDate.nYear, oDate.nMonth, oDate.nDay));
}

TEST(KorCalendar, NumbersTheWeekFromMonday)
{
    EXPECT_EQ(4, IsoWeekday(DayOfDate(1970, 1, 1)));
    EXPECT_EQ(1, IsoWeekday(DayOfDate(2024, 1, 1)));
    EXPECT_EQ(7, IsoWeekday(DayOfDate(2023, 12, 31)));
    EXPECT_EQ(6, IsoWeekday(0));
    EXPECT_EQ(5, IsoWeekday(-1));
    EXPECT_EQ(7, IsoWeekday(-6));
}

TEST(KorCalendar, RoundsQuotientsDown)
{
    EXPECT_EQ(-1, KorCalendar::FloorQuotient(-1, 7));
    EXPECT_EQ(-1, KorCalendar::FloorQuotient(-7, 7));
    EXPECT_EQ(-2, KorCalendar::FloorQuotient(-8, 7));
    EXPECT_EQ(1, KorCalendar::FloorQuotient(13, 7));
    EXPECT_EQ(6, KorCalendar::FloorRest(-1, 7));
    EXPECT_EQ(0, KorCalendar::FloorRest(-7, 7));
    EXPECT_EQ(6, KorCalendar::FloorRest(13, 7));
}

} // namespace
