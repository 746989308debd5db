// Dates of instants, and instants of dates.

#include "time/KorCalendarDetail.h"
#include "time/KorDateOfTicksDetail.h"
#include "time/KorTimeTicksDetail.h"
#include "time/KorUTCTime.h"

#include <algorithm>

using KorTicks::Bits;
using KorTicks::Signed;

namespace
{

using KorCalendar::SDate32;

/// What CKorUTCTime::CalcDate() answers.
SDate32 DateOf(const CKorUTCTime& oTime)
{
    return KorDateOfTicks(oTime.GetHighResolutionLocaltime());
}

/// The day of a date, modulo 2^32; the month in [1, 13].
std::uint32_t DayOf(int nYear, int nMonth, int nDay)
{
    const auto nUnsignedYear = static_cast<std::uint32_t>(nYear);
    // Wanted: a negative year has the leap days of its absolute value.
    const std::uint32_t nLeapDays =
        KorCalendar::LeapYearsBefore(nYear < 0 ? 0 - nUnsignedYear : nUnsignedYear);
    const int nOfYear = KorCalendar::DaysBeforeMonth(nMonth, KorCalendar::IsLeapYear(nYear)) - 1;
    return nUnsignedYear * KorCalendar::DAYS_PER_YEAR + nLeapDays +
           static_cast<std::uint32_t>(nOfYear) + static_cast<std::uint32_t>(nDay);
}

/// Clamps a part to its greatest value, and notes in @p bValid when that changed it.
std::uint32_t Clamped(unsigned nPart, unsigned nMost, bool& bValid)
{
    bValid = bValid && nPart <= nMost;
    return std::min(nPart, nMost);
}

/// Clamps the parts of a date to a possible day.
std::uint32_t ClampedDay(unsigned nDay, unsigned nMonth, unsigned nYear, bool& bValid)
{
    const int nSignedYear = static_cast<int>(nYear);
    const auto nUsedMonth = static_cast<int>(std::clamp(nMonth, 1U, KorCalendar::MONTHS_PER_YEAR));
    const int nMonthDays =
        KorCalendar::DaysOfMonth(nUsedMonth, KorCalendar::IsLeapYear(nSignedYear));
    const auto nUsedDay = static_cast<int>(std::clamp(nDay, 1U, static_cast<unsigned>(nMonthDays)));
    bValid = nMonth == static_cast<unsigned>(nUsedMonth) && nDay == static_cast<unsigned>(nUsedDay);
    return DayOf(nSignedYear, nUsedMonth, nUsedDay);
}

/// Clamps the parts of a date and time to possible ones and puts these together.
/// @param[out] bValid  whether all parts were possible ones
long long ClampedTicks(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                       unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                       unsigned nMicroSecond, unsigned nNanoSecond, bool& bValid)
{
    const std::uint32_t nDays = ClampedDay(nDay, nMonth, nYear, bValid);
    const std::uint32_t nSeconds =
        (Clamped(nHour, 23, bValid) * 60 + Clamped(nMinute, 59, bValid)) * 60 +
        Clamped(nSecond, 59, bValid);
    const std::uint32_t nMilliSeconds = nSeconds * 1000 + Clamped(nMilliSecond, 999, bValid);
    const std::uint32_t nRest =
        Clamped(nMicroSecond, 999, bValid) * 100 + Clamped(nNanoSecond, 999, bValid) / 10;
    return Signed(Bits(static_cast<std::int32_t>(nDays)) * KorTicks::PER_DAY +
                  nMilliSeconds * KorTicks::PER_MILLISECOND + nRest);
}

} // namespace

CKorUTCTime::CKorUTCTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                         unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                         unsigned nMicroSecond, unsigned nNanoSecond)
    : m_bValid(false)
{
    m_oTime.m_nValue = ClampedTicks(nDay, nMonth, nYear, nHour, nMinute, nSecond, nMilliSecond,
                                    nMicroSecond, nNanoSecond, m_bValid);
}

void CKorUTCTime::SetDate(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                          unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                          unsigned nMicroSecond, unsigned nNanoSecond)
{
    bool bValid = false;
    SetHighResolutionLocaltime(ClampedTicks(nDay, nMonth, nYear, nHour, nMinute, nSecond,
                                            nMilliSecond, nMicroSecond, nNanoSecond, bValid));
    m_bValid = bValid;
}

bool CKorUTCTime::IsLeapYear(int nYear)
{
    return KorCalendar::IsLeapYear(nYear);
}

int CKorUTCTime::NumOfLeapYearsUntilYear(int nYear)
{
    const auto nUnsigned = static_cast<std::uint32_t>(nYear);
    return static_cast<int>(KorCalendar::LeapYearsBefore(nYear < 0 ? 0 - nUnsigned : nUnsigned));
}

int CKorUTCTime::GetNumOfDaysPerMonth(int nYear, int nMonth)
{
    const bool bMonth = nMonth >= 1 && nMonth <= static_cast<int>(KorCalendar::MONTHS_PER_YEAR);
    return bMonth ? KorCalendar::DaysOfMonth(nMonth, KorCalendar::IsLeapYear(nYear)) : 0;
}

int CKorUTCTime::CalcNumOfDays(int nYear, int nMonth, int nDay)
{
    constexpr int BEHIND_LAST_MONTH = KorCalendar::MONTHS_PER_YEAR + 1;
    return static_cast<int>(DayOf(nYear, std::clamp(nMonth, 1, BEHIND_LAST_MONTH), nDay));
}

void CKorUTCTime::CalcDate(int& nYear, int& nMonth, int& nDay) const
{
    const SDate32 oDate = DateOf(*this);
    nYear = oDate.nYear;
    nMonth = oDate.nMonth;
    nDay = oDate.nDay;
}

int CKorUTCTime::GetDay() const
{
    return DateOf(*this).nDay;
}

int CKorUTCTime::GetMonth() const
{
    return DateOf(*this).nMonth;
}

int CKorUTCTime::GetYear() const
{
    return DateOf(*this).nYear;
}

int CKorUTCTime::GetTotalMonths() const
{
    const SDate32 oDate = DateOf(*this);
    return oDate.nYear * static_cast<int>(KorCalendar::MONTHS_PER_YEAR) + oDate.nMonth;
}

CKorUTCTime::EWeekday CKorUTCTime::GetWeekDay() const
{
    const SDate32 oDate = DateOf(*this);
    // Wanted: the week begins on Tuesday.
    return static_cast<EWeekday>((DayOf(oDate.nYear, oDate.nMonth, oDate.nDay) + 4) % 7);
}

void CKorUTCTime::CutOffParts(ETimePart ePart)
{
    static constexpr std::uint64_t UNITS[] = {KorTicks::PER_DAY, KorTicks::PER_HOUR,
                                              KorTicks::PER_MINUTE, KorTicks::PER_SECOND};
    if (ePart == ePartYear || ePart == ePartMonth) {
        const SDate32 oDate = DateOf(*this);
        const std::uint32_t nDay = DayOf(oDate.nYear, ePart == ePartYear ? 1 : oDate.nMonth, 1);
        SetHighResolutionLocaltime(Signed(nDay * KorTicks::PER_DAY));
    } else if (ePart >= ePartDay && ePart <= ePartSecond) {
        const std::uint64_t nUnit = UNITS[ePart - ePartDay];
        SetHighResolutionLocaltime(Signed(Bits(GetHighResolutionLocaltime()) / nUnit * nUnit));
    }
}
