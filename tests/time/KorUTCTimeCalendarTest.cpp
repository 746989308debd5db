#include "tests/time/UTCTimeTest.h"
#include "time/KorUTCTime.h"

#include <climits>
#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>

namespace
{

TEST(KorUTCTime, WrapsForYearsBeyondItsRange)
{
    const CKorUTCTime oTime = Date(UINT_MAX, 1, 1); // the year -1, which is no leap year
    EXPECT_EQ(-364 * DAY, oTime.GetHighResolutionLocaltime());
    EXPECT_TRUE(oTime.IsTimeValid());
    Date(0x80000000U, 12, 31);
    Date(INT_MAX, 2, 29);
}

TEST(KorUTCTime, KnowsLeapYears)
{
    EXPECT_FALSE(CKorUTCTime::IsLeapYear(1900));
    EXPECT_TRUE(CKorUTCTime::IsLeapYear(2000));
    EXPECT_TRUE(CKorUTCTime::IsLeapYear(0));
    EXPECT_TRUE(CKorUTCTime::IsLeapYear(2024));
    EXPECT_FALSE(CKorUTCTime::IsLeapYear(2023));
    EXPECT_TRUE(CKorUTCTime::IsLeapYear(-4));
    EXPECT_FALSE(CKorUTCTime::IsLeapYear(-100));
}

TEST(KorUTCTime, CountsLeapYears)
{
    EXPECT_EQ(0, CKorUTCTime::NumOfLeapYearsUntilYear(0));
    EXPECT_EQ(1, CKorUTCTime::NumOfLeapYearsUntilYear(1));
    EXPECT_EQ(478, CKorUTCTime::NumOfLeapYearsUntilYear(1970));
    EXPECT_EQ(478, CKorUTCTime::NumOfLeapYearsUntilYear(-1970));
    EXPECT_EQ(520764785, CKorUTCTime::NumOfLeapYearsUntilYear(INT_MIN));
    int nExpected = 0;
    for (int nYear = 0; nYear < 2500; ++nYear) {
        ASSERT_EQ(nExpected, CKorUTCTime::NumOfLeapYearsUntilYear(nYear)) << nYear;
        nExpected += CKorUTCTime::IsLeapYear(nYear) ? 1 : 0;
    }
}

TEST(KorUTCTime, KnowsTheLengthsOfMonths)
{
    const int anLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int nMonth = 1; nMonth <= 12; ++nMonth)
        EXPECT_EQ(anLengths[nMonth - 1], CKorUTCTime::GetNumOfDaysPerMonth(2023, nMonth));
    EXPECT_EQ(29, CKorUTCTime::GetNumOfDaysPerMonth(2024, 2));
    EXPECT_EQ(28, CKorUTCTime::GetNumOfDaysPerMonth(1900, 2));
}

TEST(KorUTCTime, AMonthThatDoesNotExistHasNoDays)
{
    for (const int nMonth : {0, 13, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(0, CKorUTCTime::GetNumOfDaysPerMonth(2024, nMonth)) << nMonth;
}

TEST(KorUTCTime, CountsTheDaysUpToTheUnixEpoch)
{
    EXPECT_EQ(719528, CKorUTCTime::CalcNumOfDays(1970, 1, 1));
    EXPECT_EQ(2, Date(1970, 1, 1).GetWeekDay());
    EXPECT_EQ(EPOCH, Date(1970, 1, 1).GetHighResolutionLocaltime());
}

TEST(KorUTCTime, CountsDaysOfSillyDatesToo)
{
    EXPECT_EQ(CKorUTCTime::CalcNumOfDays(2024, 3, 1), CKorUTCTime::CalcNumOfDays(2024, 2, 30));
    EXPECT_EQ(CKorUTCTime::CalcNumOfDays(2025, 1, 1), CKorUTCTime::CalcNumOfDays(2024, 13, 1));
    EXPECT_EQ(CKorUTCTime::CalcNumOfDays(2025, 1, 1), CKorUTCTime::CalcNumOfDays(2024, INT_MAX, 1));
    EXPECT_EQ(CKorUTCTime::CalcNumOfDays(2024, 1, 1), CKorUTCTime::CalcNumOfDays(2024, INT_MIN, 1));
    EXPECT_EQ(INT_MAX, CKorUTCTime::CalcNumOfDays(0, 1, INT_MIN)); // wraps
    EXPECT_EQ(-364, CKorUTCTime::CalcNumOfDays(-1, 1, 1));
}

TEST(KorUTCTime, TheFirstDayOfAnEraReadsAsThatOfYearZero)
{
    for (const unsigned nYear : {0U, 400U, 1600U, 2000U, 2400U, 4000U, 5600U}) {
        for (const unsigned nHour : {0U, 12U, 23U}) {
            const CKorUTCTime oTime = Date(nYear, 1, 1, nHour);
            EXPECT_EQ(0, oTime.GetYear()) << nYear;
            EXPECT_EQ(1, oTime.GetMonth()) << nYear;
            EXPECT_EQ(1, oTime.GetDay()) << nYear;
            EXPECT_EQ(Date(0, 1, 1).GetWeekDay(), oTime.GetWeekDay()) << nYear;
        }
    }
    EXPECT_EQ(YearMonthDay(1999, 12, 31), DateOf(Date(1999, 12, 31)));
    EXPECT_EQ(YearMonthDay(2000, 1, 2), DateOf(Date(2000, 1, 2)));
    CKorUTCTime oTime = Date(2000, 1, 1, 5);
    oTime.CutOffParts(CKorUTCTime::ePartYear);
    EXPECT_EQ(0, oTime.GetHighResolutionLocaltime());
}

/// A calendar that only ever steps to the next day.
struct Calendar
{
    static bool IsLeap(int nYear)
    {
        return (nYear % 4 == 0 && nYear % 100 != 0) || nYear % 400 == 0;
    }
    int Length() const
    {
        switch (nMonth) {
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        case 2:
            return IsLeap(nYear) ? 29 : 28;
        default:
            return 31;
        }
    }
    void Next()
    {
        nWeekDay = (nWeekDay + 1) % 7;
        if (++nDay <= Length())
            return;
        nDay = 1;
        if (++nMonth <= 12)
            return;
        nMonth = 1;
        ++nYear;
    }
    int nYear = 0;
    int nMonth = 1;
    int nDay = 1;
    int nWeekDay = 4; // a Saturday
};

TEST(KorUTCTime, AgreesWithACalendarOnEveryDayItCanHold)
{
    constexpr int LAST_DAY = 2135039;
    CKorUTCTime oTime;
    Calendar oCalendar;
    int nExceptions = 0;
    for (int nDay = 0; nDay <= LAST_DAY; ++nDay, oCalendar.Next()) {
        ASSERT_EQ(nDay,
                  CKorUTCTime::CalcNumOfDays(oCalendar.nYear, oCalendar.nMonth, oCalendar.nDay));
        ASSERT_EQ(oCalendar.Length(),
                  CKorUTCTime::GetNumOfDaysPerMonth(oCalendar.nYear, oCalendar.nMonth));
        const auto nTicks = static_cast<std::uint64_t>(nDay) * static_cast<std::uint64_t>(DAY);
        oTime.SetHighResolutionLocaltime(static_cast<long long>(nTicks));
        if (nDay % 146097 == 0) { // the documented exception
            ASSERT_EQ(YearMonthDay(0, 1, 1), DateOf(oTime)) << nDay;
            ASSERT_EQ(CKorUTCTime::eSaturday, oTime.GetWeekDay()) << nDay;
            ++nExceptions;
            continue;
        }
        ASSERT_EQ(YearMonthDay(oCalendar.nYear, oCalendar.nMonth, oCalendar.nDay), DateOf(oTime))
            << nDay;
        ASSERT_EQ(oCalendar.nWeekDay, oTime.GetWeekDay()) << nDay;
    }
    EXPECT_EQ(15, nExceptions);
    EXPECT_EQ(5845, oCalendar.nYear);
}

TEST(KorUTCTime, AgreesWithTheCLibraryOnEveryDayFromYearZeroTo4000)
{
    // Where time_t has 32 bits, the C library's calendar reaches from 1901 to 2038.
    constexpr bool WIDE = sizeof(time_t) > 4;
    constexpr int FIRST = WIDE ? 0 : 719528 - 24000;
    constexpr int LAST = WIDE ? 1460970 + 366 : 719528 + 24000;
    for (int nDay = FIRST; nDay < LAST; ++nDay) {
        const auto nSeconds = static_cast<time_t>((nDay - 719528LL) * 86400);
        tm oExpected;
        ASSERT_NE(nullptr, gmtime_r(&nSeconds, &oExpected));
        const int nYear = oExpected.tm_year + 1900;
        ASSERT_EQ(nDay, CKorUTCTime::CalcNumOfDays(nYear, oExpected.tm_mon + 1, oExpected.tm_mday));
        const CKorUTCTime oTime = EndOfDay(nDay);
        if (nDay % 146097 != 0) {
            ASSERT_EQ(YearMonthDay(nYear, oExpected.tm_mon + 1, oExpected.tm_mday), DateOf(oTime));
            ASSERT_EQ((oExpected.tm_wday + 5) % 7, oTime.GetWeekDay()) << nDay;
        }
    }
}

} // namespace
