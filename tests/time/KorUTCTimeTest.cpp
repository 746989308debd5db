#include "time/KorUTCTime.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <ostream>
#include <sys/time.h>
#include <tuple>

namespace
{

constexpr long long SECOND = 100000000LL;
constexpr long long HOUR = 3600 * SECOND;
constexpr long long DAY = 24 * HOUR;
constexpr long long EPOCH = 6216721920000000000LL;

CKorUTCTime At(long long nTicks)
{
    CKorUTCTime oTime;
    oTime.SetHighResolutionLocaltime(nTicks);
    return oTime;
}

CKorUTCTime Date(unsigned nYear, unsigned nMonth, unsigned nDay, unsigned nHour = 0)
{
    return CKorUTCTime(nDay, nMonth, nYear, nHour, 0, 0, 0, 0, 0);
}

/// A day at one tick before its end; the count of ticks exceeds its sign bit after the year 2922.
CKorUTCTime EndOfDay(int nDay)
{
    return At(static_cast<long long>(
        static_cast<std::uint64_t>(nDay + 1) * static_cast<std::uint64_t>(DAY) - 1));
}

using YearMonthDay = std::tuple<int, int, int>;

YearMonthDay DateOf(const CKorUTCTime& oTime)
{
    YearMonthDay oDate;
    oTime.CalcDate(std::get<0>(oDate), std::get<1>(oDate), std::get<2>(oDate));
    return oDate;
}

TEST(KorUTCTime, HasItsNumbers)
{
    EXPECT_EQ(1, CKorUTCTime::ePartYear);
    EXPECT_EQ(2, CKorUTCTime::ePartMonth);
    EXPECT_EQ(3, CKorUTCTime::ePartDay);
    EXPECT_EQ(4, CKorUTCTime::ePartHour);
    EXPECT_EQ(5, CKorUTCTime::ePartMinute);
    EXPECT_EQ(6, CKorUTCTime::ePartSecond);
    EXPECT_EQ(0, CKorUTCTime::eTuesday);
    EXPECT_EQ(1, CKorUTCTime::eWednesday);
    EXPECT_EQ(2, CKorUTCTime::eThursday);
    EXPECT_EQ(3, CKorUTCTime::eFriday);
    EXPECT_EQ(4, CKorUTCTime::eSaturday);
    EXPECT_EQ(5, CKorUTCTime::eSunday);
    EXPECT_EQ(6, CKorUTCTime::eMonday);
}

TEST(KorUTCTime, IsTheInvalidYearZeroAtFirst)
{
    const CKorUTCTime oTime;
    EXPECT_EQ(YearMonthDay(0, 1, 1), DateOf(oTime));
    EXPECT_EQ(0, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(0, oTime.GetHour());
    EXPECT_EQ(0, oTime.GetMinute());
    EXPECT_EQ(0, oTime.GetSecond());
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_TRUE(oTime.IsClassValid());
}

TEST(KorUTCTime, IsValidWhenMadeOfMilliseconds)
{
    const CKorUTCTime oTime(86400001LL);
    EXPECT_EQ(DAY + 100000, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(86400001, oTime.GetLocaltime());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, IsMadeOfParts)
{
    const CKorUTCTime oTime(5, 3, 2024, 14, 7, 9, 250, 125, 999);
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(5, oTime.GetDay());
    EXPECT_EQ(3, oTime.GetMonth());
    EXPECT_EQ(2024, oTime.GetYear());
    EXPECT_EQ(14, oTime.GetHour());
    EXPECT_EQ(7, oTime.GetMinute());
    EXPECT_EQ(9, oTime.GetSecond());
    EXPECT_EQ(250, oTime.GetMilliSecond());
    EXPECT_EQ(125, oTime.GetMicroSecond());
    EXPECT_EQ(2024 * 12 + 3, oTime.GetTotalMonths());
    EXPECT_EQ(CKorUTCTime::eTuesday, oTime.GetWeekDay());
    EXPECT_EQ(oTime.GetLocaltime(), oTime.GetTotalMilliseconds());
    EXPECT_EQ(oTime.GetHighResolutionLocaltime() / 100, oTime.GetTotalMicroseconds());
}

TEST(KorUTCTime, CutsNanosecondsToWholeTens)
{
    EXPECT_EQ(990, CKorUTCTime(1, 1, 2024, 0, 0, 0, 0, 0, 999).GetNanoSecond());
}

TEST(KorUTCTime, ClampsTheDayToItsMonth)
{
    const CKorUTCTime oTime = Date(2023, 2, 31);
    EXPECT_EQ(YearMonthDay(2023, 2, 28), DateOf(oTime));
    EXPECT_FALSE(oTime.IsTimeValid());
    EXPECT_EQ(YearMonthDay(2023, 2, 28), DateOf(Date(2023, 2, UINT_MAX)));
}

TEST(KorUTCTime, AcceptsTheLeapDay)
{
    const CKorUTCTime oTime = Date(2024, 2, 29);
    EXPECT_EQ(YearMonthDay(2024, 2, 29), DateOf(oTime));
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, ClampsDayZeroToTheFirst)
{
    const CKorUTCTime oTime = Date(2020, 1, 0);
    EXPECT_EQ(YearMonthDay(2020, 1, 1), DateOf(oTime));
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, ClampsTheHour)
{
    const CKorUTCTime oTime = Date(2020, 1, 2, 24);
    EXPECT_EQ(YearMonthDay(2020, 1, 2), DateOf(oTime));
    EXPECT_EQ(23, oTime.GetHour());
    EXPECT_EQ(0, oTime.GetMinute());
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, ClampsEveryClockPart)
{
    const CKorUTCTime oLast(31, 12, 2023, 23, 59, 59, 999, 999, 999);
    EXPECT_TRUE(oLast.IsTimeValid());
    for (unsigned nPart = 0; nPart < 6; ++nPart) {
        unsigned anParts[] = {23, 59, 59, 999, 999, 999};
        for (const unsigned nBad : {anParts[nPart] + 1, UINT_MAX}) {
            anParts[nPart] = nBad;
            const CKorUTCTime oTime(31, 12, 2023, anParts[0], anParts[1], anParts[2], anParts[3],
                                    anParts[4], anParts[5]);
            EXPECT_EQ(oLast, oTime) << nPart << ' ' << nBad;
            EXPECT_FALSE(oTime.IsTimeValid()) << nPart << ' ' << nBad;
        }
    }
}

TEST(KorUTCTime, ClampsTheMonth)
{
    for (const unsigned nMonth : {0U, 13U, 14U, UINT_MAX, 0x80000000U}) {
        const CKorUTCTime oTime = Date(2023, nMonth, 31);
        EXPECT_EQ(YearMonthDay(2023, nMonth == 0 ? 1 : 12, 31), DateOf(oTime)) << nMonth;
        EXPECT_FALSE(oTime.IsTimeValid()) << nMonth;
    }
}

TEST(KorUTCTime, AValidDateMakesAnInvalidTimeValidAgain)
{
    CKorUTCTime oTime = Date(2023, 13, 1);
    oTime.SetDate(1, 12, 2023, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(oTime.IsTimeValid());
}

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

TEST(KorUTCTime, HasEveryClockFieldAtItsLimits)
{
    const CKorUTCTime oTime = At(719528 * DAY - 1);
    EXPECT_EQ(23, oTime.GetHour());
    EXPECT_EQ(59, oTime.GetMinute());
    EXPECT_EQ(59, oTime.GetSecond());
    EXPECT_EQ(999, oTime.GetMilliSecond());
    EXPECT_EQ(999, oTime.GetMicroSecond());
    EXPECT_EQ(990, oTime.GetNanoSecond());
}

TEST(KorUTCTime, ReadsANegativeCountAsAnUnsignedOne)
{
    const CKorUTCTime oTime = At(-1);
    EXPECT_EQ(184467440737095LL, oTime.GetLocaltime());
    EXPECT_EQ(-1, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(184467440737095516LL, oTime.GetTotalMicroseconds());
    EXPECT_EQ(516, oTime.GetMicroSecond());
    EXPECT_EQ(150, oTime.GetNanoSecond());
    EXPECT_EQ(5845, oTime.GetYear());
}

TEST(KorUTCTime, RawSettersKeepTheValidFlag)
{
    CKorUTCTime oInvalid;
    oInvalid.SetLocaltime(1);
    EXPECT_EQ(100000, oInvalid.GetHighResolutionLocaltime());
    EXPECT_FALSE(oInvalid.IsTimeValid());
    CKorUTCTime oValid(1LL);
    oValid.SetHighResolutionLocaltime(7);
    EXPECT_EQ(7, oValid.GetHighResolutionLocaltime());
    EXPECT_TRUE(oValid.IsTimeValid());
}

TEST(KorUTCTime, AssigningSecondsMovesTheEpochByTenMicrosecondsEach)
{
    CKorUTCTime oTime;
    const CKorUTCTime& oResult = oTime = 10L;
    EXPECT_EQ(&oTime, &oResult);
    EXPECT_EQ(EPOCH + 10000, oTime.GetHighResolutionLocaltime());
    EXPECT_EQ(YearMonthDay(1970, 1, 1), DateOf(oTime));
    EXPECT_EQ(0, oTime.GetMilliSecond());
    EXPECT_EQ(100, oTime.GetMicroSecond());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, AssigningSecondsWrapsTo32Bits)
{
    CKorUTCTime oTime;
    oTime = 2147484L; // 2,147,484,000 wraps
    EXPECT_EQ(EPOCH + 2147484000LL - 4294967296LL, oTime.GetHighResolutionLocaltime());
    oTime = -1L;
    EXPECT_EQ(EPOCH - 1000, oTime.GetHighResolutionLocaltime());
    oTime = 1700000000L;
    EXPECT_EQ(EPOCH - 807049216LL, oTime.GetHighResolutionLocaltime());
    oTime = LONG_MIN;
    EXPECT_EQ(EPOCH, oTime.GetHighResolutionLocaltime());
    oTime = LONG_MAX;
    EXPECT_EQ(EPOCH - 1000, oTime.GetHighResolutionLocaltime());
}

TEST(KorUTCTime, AddTimeMovesForward)
{
    CKorUTCTime oTime(28, 2, 2024, 23, 59, 59, 999, 999, 990);
    oTime.AddTime(0, 0, 0, 0, 0, 0, 10);
    EXPECT_EQ(Date(2024, 2, 29), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
    oTime.AddTime(1, 25, 61, 61, 1001, 1001, 1010);
    EXPECT_EQ(CKorUTCTime(2, 3, 2024, 2, 2, 2, 2, 2, 10), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, SubTimeMovesBack)
{
    CKorUTCTime oTime = Date(2024, 3, 1);
    oTime.SubTime(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 29), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, AddingNothingClearsTheValidFlag)
{
    CKorUTCTime oTime = Date(2024, 3, 1);
    oTime.AddTime(0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 3, 1), oTime);
    EXPECT_FALSE(oTime.IsTimeValid());
    oTime = Date(2024, 3, 1);
    oTime.SubTime(0, 0, 0, 0, 0, 0, 9); // less than a tick
    EXPECT_EQ(Date(2024, 3, 1), oTime);
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, AnOverflowClearsTheValidFlag)
{
    CKorUTCTime oTime(1LL);
    oTime.SetHighResolutionLocaltime(LLONG_MAX);
    oTime.AddTime(0, 0, 0, 0, 0, 0, 10);
    EXPECT_EQ(LLONG_MIN, oTime.GetHighResolutionLocaltime());
    EXPECT_FALSE(oTime.IsTimeValid());

    CKorUTCTime oOther(1LL);
    oOther.SetHighResolutionLocaltime(LLONG_MIN);
    oOther.SubTime(0, 0, 0, 0, 0, 0, 10);
    EXPECT_EQ(LLONG_MAX, oOther.GetHighResolutionLocaltime());
    EXPECT_FALSE(oOther.IsTimeValid());
    oOther.AddTime(UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX);
}

TEST(KorUTCTime, AddTimeDoesNotMakeAnInvalidTimeValid)
{
    CKorUTCTime oTime;
    oTime.AddTime(1, 0, 0, 0, 0, 0, 0);
    EXPECT_FALSE(oTime.IsTimeValid());
    oTime.SubTime(0, 1, 0, 0, 0, 0, 0);
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, CutsOffParts)
{
    const CKorUTCTime oFull(5, 3, 2024, 14, 7, 9, 250, 125, 990);
    const struct
    {
        int nPart;
        CKorUTCTime oExpected;
    } aoCases[] = {
        {1, Date(2024, 1, 1)},
        {2, Date(2024, 3, 1)},
        {3, Date(2024, 3, 5)},
        {4, CKorUTCTime(5, 3, 2024, 14, 0, 0, 0, 0, 0)},
        {5, CKorUTCTime(5, 3, 2024, 14, 7, 0, 0, 0, 0)},
        {6, CKorUTCTime(5, 3, 2024, 14, 7, 9, 0, 0, 0)},
        {0, oFull},
        {7, oFull},
        {-1, oFull},
        {INT_MAX, oFull},
    };
    for (const auto& oCase : aoCases) {
        CKorUTCTime oTime = oFull;
        oTime.CutOffParts(static_cast<CKorUTCTime::ETimePart>(oCase.nPart));
        EXPECT_EQ(oCase.oExpected, oTime) << oCase.nPart;
        EXPECT_TRUE(oTime.IsTimeValid()) << oCase.nPart;
    }
}

TEST(KorUTCTime, CuttingKeepsTheInvalidFlag)
{
    CKorUTCTime oTime = At(DAY + 1);
    oTime.CutOffParts(CKorUTCTime::ePartDay);
    EXPECT_EQ(DAY, oTime.GetHighResolutionLocaltime());
    EXPECT_FALSE(oTime.IsTimeValid());
}

TEST(KorUTCTime, MovesBySpansInPlace)
{
    CKorUTCTime oTime = Date(2024, 3, 1);
    EXPECT_EQ(&oTime, &(oTime += CKorTimeDiff(0, 1, 0, 0, 0, 0, 10)));
    EXPECT_EQ(CKorUTCTime(1, 3, 2024, 1, 0, 0, 0, 0, 10), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
    EXPECT_EQ(&oTime, &(oTime -= CKorTimeDiff(1, 1, 0, 0, 0, 0, 10)));
    EXPECT_EQ(Date(2024, 2, 29), oTime);
    EXPECT_TRUE(oTime.IsTimeValid());
    oTime += CKorTimeDiff(-1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 28), oTime);
    oTime -= CKorTimeDiff(-1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 29), oTime);
}

TEST(KorUTCTime, SpansOfMoreThan292YearsWrap)
{
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(1844674407370955162LL, true); // ten of these are 2^64 + 4
    CKorUTCTime oTime = At(100);
    oTime += oSpan;
    EXPECT_EQ(100, oTime.GetHighResolutionLocaltime());
    oSpan.SetTimeDiff(LLONG_MIN, true);
    oTime -= oSpan;
    EXPECT_EQ(100, oTime.GetHighResolutionLocaltime());
}

TEST(KorUTCTime, ASumOrDifferenceWithASpanIsNotValid)
{
    const CKorUTCTime oTime = Date(2024, 3, 1);
    const CKorUTCTime oSum = oTime + CKorTimeDiff(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 3, 2), oSum);
    EXPECT_FALSE(oSum.IsTimeValid());
    const CKorUTCTime oDifference = oTime - CKorTimeDiff(1, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Date(2024, 2, 29), oDifference);
    EXPECT_FALSE(oDifference.IsTimeValid());
    EXPECT_TRUE(oTime.IsTimeValid());
}

TEST(KorUTCTime, TheDifferenceFromAnEarlierTimeIsExact)
{
    const CKorTimeDiff oSpan = At(EPOCH + 12345678987654LL) - At(EPOCH);
    CKorTimeDiff oExpected;
    oExpected.SetTimeDiff(12345678987654LL, true);
    EXPECT_EQ(oExpected, oSpan);
    EXPECT_EQ(CKorTimeDiff(), At(EPOCH) - At(EPOCH));
}

TEST(KorUTCTime, TheDifferenceFromALaterTimeIsNotNegative)
{
    const CKorTimeDiff oSpan = Date(2024, 3, 1) - Date(2024, 3, 2);
    EXPECT_NE(CKorTimeDiff(-1, 0, 0, 0, 0, 0, 0), oSpan);
    // The whole milliseconds and microseconds of 2^64 ticks less one day, without the ticks of a
    // microsecond, which are zero in a difference of whole days.
    CKorTimeDiff oExpected;
    oExpected.SetTimeDiff(
        static_cast<long long>((0ULL - static_cast<std::uint64_t>(DAY)) / 100 * 100), true);
    EXPECT_EQ(oExpected, oSpan);

    // 2^64 - 1: 184467440737095 ms, 516 us and the remainder -1 as an unsigned count of 10 ns.
    EXPECT_EQ(CKorTimeDiff(184467440737095LL, 516, static_cast<unsigned>(-10)), At(0) - At(1));
}

TEST(KorUTCTime, ComparesInstantsWhateverTheValidFlags)
{
    const CKorUTCTime oEarly(1LL);
    const CKorUTCTime oLate = At(100001);
    EXPECT_TRUE(oEarly < oLate);
    EXPECT_FALSE(oLate < oEarly);
    EXPECT_TRUE(oLate > oEarly);
    EXPECT_TRUE(oEarly <= oLate);
    EXPECT_TRUE(oLate >= oEarly);
    EXPECT_TRUE(oEarly != oLate);
    EXPECT_FALSE(oEarly == oLate);
    EXPECT_TRUE(oEarly == At(100000));
    EXPECT_FALSE(oEarly < At(100000));
    EXPECT_TRUE(oEarly <= At(100000));
    EXPECT_TRUE(oEarly >= At(100000));
}

TEST(KorUTCTime, ComparesNegativeCountsLikeSpans)
{
    EXPECT_FALSE(At(-1) < At(1));
    EXPECT_TRUE(At(-1) > At(1));
    EXPECT_TRUE(At(-1) <= At(1));
    EXPECT_FALSE(At(-1) >= At(1));
}

TEST(KorUTCTime, GivesUnixSecondsAndMicroseconds)
{
    const timeval oTime = CKorUTCTime(2, 1, 1970, 0, 0, 1, 2, 3, 40).GetTimeval();
    EXPECT_EQ(86401, oTime.tv_sec);
    EXPECT_EQ(2003, oTime.tv_usec);
    const timeval oEpoch = Date(1970, 1, 1).GetTimeval();
    EXPECT_EQ(0, oEpoch.tv_sec);
    EXPECT_EQ(0, oEpoch.tv_usec);
}

TEST(KorUTCTime, CurrentTimeIsTheSystemClocksAndNotValid)
{
    timeval oBefore;
    timeval oAfter;
    gettimeofday(&oBefore, nullptr);
    const CKorUTCTime oNow = CKorUTCTime::CurrentTime();
    gettimeofday(&oAfter, nullptr);
    EXPECT_FALSE(oNow.IsTimeValid());
    const auto Ticks = [](const timeval& oTime) {
        return EPOCH + oTime.tv_sec * SECOND + oTime.tv_usec * 100LL;
    };
    EXPECT_LE(Ticks(oBefore), oNow.GetHighResolutionLocaltime());
    EXPECT_GE(Ticks(oAfter), oNow.GetHighResolutionLocaltime());
}

TEST(KorUTCTime, CopiesInstantAndValidFlag)
{
    const CKorUTCTime oValid(5LL);
    CKorUTCTime oCopy(oValid);
    EXPECT_EQ(oValid, oCopy);
    EXPECT_TRUE(oCopy.IsTimeValid());
    oCopy = At(7);
    EXPECT_EQ(At(7), oCopy);
    EXPECT_FALSE(oCopy.IsTimeValid());
}

/// A clock one hour ahead of UTC.
class Ahead : public CKorUTCTime
{
public:
    long long GetLocaltime() const override { return CKorUTCTime::GetLocaltime() + 3600000; }
    long long GetHighResolutionLocaltime() const override
    {
        return CKorUTCTime::GetHighResolutionLocaltime() + HOUR;
    }
    void SetHighResolutionLocaltime(long long nTicks) override
    {
        CKorUTCTime::SetHighResolutionLocaltime(nTicks - HOUR);
    }
};

TEST(KorUTCTime, EveryQueryReadsTheClockOfADerivedClass)
{
    Ahead oTime;
    oTime.SetDate(6, 3, 2024, 0, 30, 0, 0, 0, 0);
    const CKorUTCTime& oBase = oTime;
    EXPECT_EQ(YearMonthDay(2024, 3, 6), DateOf(oBase));
    EXPECT_EQ(0, oBase.GetHour());
    EXPECT_EQ(30, oBase.GetMinute());
    EXPECT_EQ(CKorUTCTime::eWednesday, oBase.GetWeekDay());
    EXPECT_EQ(Date(2024, 3, 6) + CKorTimeDiff(0, 0, 30, 0, 0, 0, 0),
              oBase + CKorTimeDiff(0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(CKorUTCTime(5, 3, 2024, 23, 30, 0, 0, 0, 0), oBase); // the instant itself
    oTime.CutOffParts(CKorUTCTime::ePartMonth);
    EXPECT_EQ(YearMonthDay(2024, 3, 1), DateOf(oBase));
    oTime += CKorTimeDiff(0, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(1, oTime.GetHour());
    oTime.AddTime(0, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(2, oTime.GetHour());
    EXPECT_EQ(CKorTimeDiff(0, 2, 0, 0, 0, 0, 0), oTime - Date(2024, 3, 1));
}

TEST(KorUTCTime, ADateBeyondTheLastTickIsAnotherValidOne)
{
    const CKorUTCTime oLast(15, 7, 5845, 23, 59, 59, 0, 0, 0);
    EXPECT_EQ("15.07.5845 23:59:59", oLast.Time2Str(CKorUTCTime::eDateTime));
    const CKorUTCTime oBeyond(17, 7, 5845, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(oBeyond.IsTimeValid());
    EXPECT_EQ(0, oBeyond.GetYear());
}

TEST(KorUTCTime, ComparisonsDisagreeAcrossOctoberOf2922)
{
    const CKorUTCTime oBefore(7, 10, 2922, 0, 0, 0, 0, 0, 0);
    const CKorUTCTime oAfter(9, 10, 2922, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(oBefore < oAfter);
    EXPECT_TRUE(oAfter <= oBefore);
    EXPECT_TRUE(oAfter < CKorUTCTime(10, 10, 2922, 0, 0, 0, 0, 0, 0));
    EXPECT_TRUE(oAfter <= CKorUTCTime(10, 10, 2922, 0, 0, 0, 0, 0, 0));
}

} // namespace
