#pragma once

#include <cstdint>

/// The Gregorian calendar, extended without end in both directions.
///
/// Days are counted from 0 on the first of January of year 0, as the ticks of times are; year 0 is
/// a leap year and comes before year 1. All functions are pure and without loops. They are exact:
/// what CKorUTCTime reads or computes differently on purpose is that class's own business.
///
/// Days in [-2^61, 2^61] and years in [-2^52, 2^52] cause no overflow anywhere. That covers every
/// day of a 64-bit count of seconds; a 64-bit count of ticks leads to the years -2923 to 5845.
namespace KorCalendar
{

constexpr std::uint32_t MONTHS_PER_YEAR = 12;
constexpr std::uint32_t DAYS_PER_YEAR = 365;
constexpr std::uint32_t YEARS_PER_ERA = 400; ///< after which the calendar repeats
constexpr std::uint32_t DAYS_PER_ERA = 146097;

constexpr std::int64_t DAY_OF_UNIX_EPOCH = 719528; ///< 1970-01-01

/// A date with a year of any width.
template <class TYear>
struct TDate
{
    TYear nYear;
    int nMonth; ///< 1 to 12
    int nDay;   ///< 1 to 31
};
using SDate = TDate<std::int64_t>;
using SDate32 = TDate<std::int32_t>;

/// The quotient rounded down; @p nDivisor must be positive.
constexpr std::int64_t FloorQuotient(std::int64_t nNumber, std::int64_t nDivisor)
{
    return nNumber / nDivisor - (nNumber % nDivisor < 0 ? 1 : 0);
}

/// What the quotient rounded down leaves: [0, nDivisor - 1].
constexpr std::int64_t FloorRest(std::int64_t nNumber, std::int64_t nDivisor)
{
    const std::int64_t nRest = nNumber % nDivisor;
    return nRest < 0 ? nRest + nDivisor : nRest;
}

/// Whether February of the year has 29 days.
template <class TYear>
constexpr bool IsLeapYear(TYear nYear)
{
    // Of the years divisible by 4, those divisible by 25 are the full centuries.
    return nYear % 25 == 0 ? nYear % 16 == 0 : nYear % 4 == 0;
}

/// The length of a month, which must be in [1, 12].
constexpr int DaysOfMonth(int nMonth, bool bLeapYear)
{
    // Odd and even months alternate, and the other way round from August on.
    return nMonth == 2 ? (bLeapYear ? 29 : 28) : 30 + ((nMonth + nMonth / 8) & 1);
}

/// The days of the months before @p nMonth, which must be in [1, 13]: [0, 366].
constexpr int DaysBeforeMonth(int nMonth, bool bLeapYear)
{
    // 367 / 12 days a month, as if February had 30 days.
    const int nDays = (367 * nMonth - 362) / 12;
    return nMonth <= 2 ? nDays : nDays - (bLeapYear ? 1 : 2);
}

/// The number of leap years in [0, nYear); @p nYear in [0, 2^32 - 400].
constexpr std::uint32_t LeapYearsBefore(std::uint32_t nYear)
{
    const std::uint32_t nCenturies = (nYear + 99) / 100;
    return (nYear + 3) / 4 - nCenturies + (nCenturies + 3) / 4;
}

/// The day of the first of January, modulo 2^32; @p nYear in [0, 2^32 - 400].
constexpr std::uint32_t DayOfYearStart(std::uint32_t nYear)
{
    return nYear * DAYS_PER_YEAR + LeapYearsBefore(nYear);
}

/// The day of a date. The month must be in [1, 12]; the day of the month may exceed its month, or
/// be less than 1, and then leads to another month.
constexpr std::int64_t DayOfDate(std::int64_t nYear, int nMonth, int nDay)
{
    const std::int64_t nEra = FloorQuotient(nYear, YEARS_PER_ERA);
    const auto nYearOfEra = static_cast<std::uint32_t>(FloorRest(nYear, YEARS_PER_ERA));
    const std::uint32_t nDayOfEra = DayOfYearStart(nYearOfEra); // [0, 145731]
    return nEra * DAYS_PER_ERA + nDayOfEra + DaysBeforeMonth(nMonth, IsLeapYear(nYear)) + nDay - 1;
}

/// The date of a day in [0, 2^30 - 146098], in arithmetic of 32 bits for boards that have no more.
constexpr SDate32 DateOfDay32(std::uint32_t nDay)
{
    // Counted from the first of March of year -400, so that leap days end their years, centuries
    // and eras. A century has 146097 quarters of a day, a year of it 1461.
    const std::uint32_t nMarchDay = nDay + (DAYS_PER_ERA - 60);    // [146037, 2^30 - 61]
    const std::uint32_t nQuarters = 4 * nMarchDay + 3;             // below 2^32
    const std::uint32_t nCentury = nQuarters / DAYS_PER_ERA;       // [3, 29398]
    const std::uint32_t nOfCentury = nQuarters % DAYS_PER_ERA | 3; // [3, 146099]
    const std::uint32_t nYear = nOfCentury / 1461;                 // [0, 99]
    const std::uint32_t nOfYear = nOfCentury % 1461 / 4;           // [0, 365]
    // 2141 / 2^16 months a day; the fraction is the day of the month.
    const std::uint32_t nMonths = 2141 * nOfYear + 197913; // [197913, 979378]
    const std::uint32_t nMonth = nMonths >> 16;            // [3, 14]
    const bool bNextYear = nOfYear >= 306;                 // January or February
    return {static_cast<std::int32_t>(100 * nCentury + nYear + (bNextYear ? 1 : 0)) - 400,
            static_cast<int>(bNextYear ? nMonth - 12 : nMonth),
            static_cast<int>((nMonths & 0xFFFF) / 2141 + 1)};
}

/// The date of any day.
SDate DateOfDay(std::int64_t nDay);

/// The day of the year of a date, counted from 1: [1, 366].
constexpr int DayOfYear(const SDate& oDate)
{
    return DaysBeforeMonth(oDate.nMonth, IsLeapYear(oDate.nYear)) + oDate.nDay;
}

/// The day of the week: 1 is Monday, 7 is Sunday.
constexpr int IsoWeekday(std::int64_t nDay)
{
    return static_cast<int>(FloorRest(nDay + 5, 7)) + 1; // day 0 is a Saturday
}

static_assert(DayOfDate(1970, 1, 1) == DAY_OF_UNIX_EPOCH);
static_assert(IsoWeekday(DAY_OF_UNIX_EPOCH) == 4);
static_assert(DayOfDate(0, 1, 1) == 0 && DayOfDate(-400, 1, 1) == -146097);

} // namespace KorCalendar
