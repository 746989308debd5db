#include "time/KorUTCTime.h"

#include "time/KorSystemClockDetail.h"
#include "time/KorTimeTicksDetail.h"

#include <algorithm>
#include <cstdlib>

using KorTicks::Bits;
using KorTicks::Signed;

namespace
{

constexpr int MONTHS = 12;
constexpr int DaysPerMonth[MONTHS] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

constexpr int DAYS_PER_YEAR = 365;
constexpr int DAYS_PER_4_YEARS = 4 * DAYS_PER_YEAR + 1;
constexpr int DAYS_PER_100_YEARS = 25 * DAYS_PER_4_YEARS - 1;
constexpr int DAYS_PER_400_YEARS = 4 * DAYS_PER_100_YEARS + 1;

// The public functions of the same sense cannot be inlined here, because a program may replace
// what a shared library exports.
inline bool IsLeap(int nYear)
{
    return nYear % 4 == 0 && (nYear % 100 != 0 || nYear % 400 == 0);
}

inline int MonthLength(int nMonth, bool bLeapYear)
{
    return nMonth == 2 && bLeapYear ? 29 : DaysPerMonth[nMonth - 1];
}

/// The sum of the parts; nanoseconds count in whole tens.
std::uint64_t Ticks(std::uint64_t nDays, std::uint64_t nHours, std::uint64_t nMinutes,
                    std::uint64_t nSeconds, std::uint64_t nMilliSeconds,
                    std::uint64_t nMicroSeconds, std::uint64_t nNanoSeconds)
{
    return nDays * KorTicks::PER_DAY + nHours * KorTicks::PER_HOUR +
           nMinutes * KorTicks::PER_MINUTE + nSeconds * KorTicks::PER_SECOND +
           nMilliSeconds * KorTicks::PER_MILLISECOND + nMicroSeconds * KorTicks::PER_MICROSECOND +
           nNanoSeconds / 10;
}

/// Clamps the parts of a date to possible ones and puts these together.
/// @return whether all parts were possible ones
bool ClampToTicks(long long& nTicks, unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                  unsigned nMinute, unsigned nSecond, unsigned nMilliSecond, unsigned nMicroSecond,
                  unsigned nNanoSecond)
{
    const int nSignedYear = static_cast<int>(nYear);
    const int nUsedMonth = static_cast<int>(std::clamp(nMonth, 1U, 12U));
    const int nMonthDays = CKorUTCTime::GetNumOfDaysPerMonth(nSignedYear, nUsedMonth);
    const int nUsedDay = static_cast<int>(std::clamp(nDay, 1U, static_cast<unsigned>(nMonthDays)));
    const int nDays = CKorUTCTime::CalcNumOfDays(nSignedYear, nUsedMonth, nUsedDay);
    nTicks = Signed(Ticks(Bits(nDays), std::min(nHour, 23U), std::min(nMinute, 59U),
                          std::min(nSecond, 59U), std::min(nMilliSecond, 999U),
                          std::min(nMicroSecond, 999U), std::min(nNanoSecond, 999U)));
    return nMonth == static_cast<unsigned>(nUsedMonth) && nDay == static_cast<unsigned>(nUsedDay) &&
           nHour < 24 && nMinute < 60 && nSecond < 60 && nMilliSecond < 1000 &&
           nMicroSecond < 1000 && nNanoSecond < 1000;
}

} // namespace

CKorUTCTime::CKorUTCTime() : m_bValid(false) {}

CKorUTCTime::CKorUTCTime(long long nMilliSeconds) : m_oTime(nMilliSeconds), m_bValid(true) {}

CKorUTCTime::CKorUTCTime(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                         unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                         unsigned nMicroSecond, unsigned nNanoSecond)
    : m_bValid(false)
{
    long long nTicks = 0;
    m_bValid = ClampToTicks(nTicks, nDay, nMonth, nYear, nHour, nMinute, nSecond, nMilliSecond,
                            nMicroSecond, nNanoSecond);
    m_oTime.SetTimeDiff(nTicks, true);
}

CKorUTCTime::~CKorUTCTime() = default;

long long CKorUTCTime::GetLocaltime() const
{
    return m_oTime.GetTotalMilliSeconds();
}

long long CKorUTCTime::GetHighResolutionLocaltime() const
{
    return m_oTime.m_nValue;
}

void CKorUTCTime::SetLocaltime(long long nMilliSeconds)
{
    m_oTime.SetTimeDiff(nMilliSeconds, false);
}

void CKorUTCTime::SetHighResolutionLocaltime(long long nTicks)
{
    m_oTime.SetTimeDiff(nTicks, true);
}

CKorUTCTime& CKorUTCTime::operator=(long nSeconds)
{
    SetDate(1, 1, 1970, 0, 0, 0, 0, 0, 0);
    // Wanted: the product wraps to 32 bits and counts ticks, not milliseconds.
    const auto nTicks = static_cast<std::int32_t>(static_cast<std::uint32_t>(nSeconds) * 1000U);
    m_oTime.SetTimeDiff(Signed(Bits(m_oTime.m_nValue) + Bits(nTicks)), true);
    return *this;
}

CKorUTCTime CKorUTCTime::CurrentTime()
{
    const SKorClockReading oNow = KorReadSystemClock();
    CKorUTCTime oTime; // wanted: the time stays invalid
    oTime.SetHighResolutionLocaltime(Signed(Bits(oNow.nSeconds) * KorTicks::PER_SECOND +
                                            Bits(oNow.nMicroSeconds) * KorTicks::PER_MICROSECOND +
                                            KorTicks::AT_UNIX_EPOCH));
    return oTime;
}

bool CKorUTCTime::IsClassValid() const
{
    return true;
}

bool CKorUTCTime::IsTimeValid() const
{
    return m_bValid;
}

int CKorUTCTime::GetHour() const
{
    return static_cast<int>(GetLocaltime() / 3600000 % 24);
}

int CKorUTCTime::GetMinute() const
{
    return static_cast<int>(GetLocaltime() / 60000 % 60);
}

int CKorUTCTime::GetSecond() const
{
    return static_cast<int>(GetLocaltime() / 1000 % 60);
}

int CKorUTCTime::GetMilliSecond() const
{
    return static_cast<int>(GetLocaltime() % 1000);
}

int CKorUTCTime::GetMicroSecond() const
{
    return static_cast<int>(Bits(GetHighResolutionLocaltime()) / KorTicks::PER_MICROSECOND % 1000);
}

int CKorUTCTime::GetNanoSecond() const
{
    return static_cast<int>(Bits(GetHighResolutionLocaltime()) % KorTicks::PER_MICROSECOND * 10);
}

long long CKorUTCTime::GetTotalMilliseconds() const
{
    return GetLocaltime();
}

long long CKorUTCTime::GetTotalMicroseconds() const
{
    return Signed(Bits(GetHighResolutionLocaltime()) / KorTicks::PER_MICROSECOND);
}

bool CKorUTCTime::IsLeapYear(int nYear)
{
    return IsLeap(nYear);
}

int CKorUTCTime::NumOfLeapYearsUntilYear(int nYear)
{
    // Signed and wider than int: the divisions of -1 give 0, and every year has its absolute value.
    const long long nYears = std::llabs(nYear);
    return static_cast<int>((nYears + 3) / 4 - (nYears - 1) / 100 + (nYears - 1) / 400);
}

int CKorUTCTime::GetNumOfDaysPerMonth(int nYear, int nMonth)
{
    if (nMonth < 1 || nMonth > MONTHS)
        return 0;
    return MonthLength(nMonth, IsLeap(nYear));
}

int CKorUTCTime::CalcNumOfDays(int nYear, int nMonth, int nDay)
{
    auto nDays = static_cast<std::uint32_t>(nYear) * DAYS_PER_YEAR;
    nDays += static_cast<std::uint32_t>(NumOfLeapYearsUntilYear(nYear));
    const bool bLeapYear = IsLeap(nYear);
    for (int nPassed = 1; nPassed < std::min(nMonth, MONTHS + 1); ++nPassed)
        nDays += static_cast<std::uint32_t>(MonthLength(nPassed, bLeapYear));
    return static_cast<int>(nDays + static_cast<std::uint32_t>(nDay) - 1);
}

void CKorUTCTime::CalcDate(int& nYear, int& nMonth, int& nDay) const
{
    // At most 2,135,039: every count of ticks leads to a day of the years 0 to 5845.
    const auto nDays = static_cast<int>(Bits(GetHighResolutionLocaltime()) / KorTicks::PER_DAY);
    const int nEras = nDays / DAYS_PER_400_YEARS;
    int nRest = nDays % DAYS_PER_400_YEARS;
    nYear = 0;
    // Wanted: the first day of an era keeps the year 0.
    if (nRest != 0) {
        const int nCenturies = (nRest - 1) / DAYS_PER_100_YEARS;
        if (nCenturies != 0) {
            nRest -= nCenturies * DAYS_PER_100_YEARS;
            if (nRest <= DAYS_PER_YEAR)
                --nRest;
        }
        const int nLeapCycles = nRest / DAYS_PER_4_YEARS;
        nRest -= nLeapCycles * DAYS_PER_4_YEARS;
        nYear = 400 * nEras + 100 * nCenturies + 4 * nLeapCycles;
        if (nRest != 0)
            nYear += (nRest - 1) / DAYS_PER_YEAR;
        if (nYear % 4 != 0)
            nRest -= 1 + DAYS_PER_YEAR * (nYear % 4);
    }

    nDay = nRest + 1;
    nMonth = 1;
    const bool bLeapYear = IsLeap(nYear);
    while (nDay > MonthLength(nMonth, bLeapYear))
        nDay -= MonthLength(nMonth++, bLeapYear);
}

int CKorUTCTime::GetDay() const
{
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    CalcDate(nYear, nMonth, nDay);
    return nDay;
}

int CKorUTCTime::GetMonth() const
{
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    CalcDate(nYear, nMonth, nDay);
    return nMonth;
}

int CKorUTCTime::GetYear() const
{
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    CalcDate(nYear, nMonth, nDay);
    return nYear;
}

int CKorUTCTime::GetTotalMonths() const
{
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    CalcDate(nYear, nMonth, nDay);
    return nYear * MONTHS + nMonth;
}

CKorUTCTime::EWeekday CKorUTCTime::GetWeekDay() const
{
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    CalcDate(nYear, nMonth, nDay);
    // Wanted: the week begins on Tuesday.
    return static_cast<EWeekday>((CalcNumOfDays(nYear, nMonth, nDay) + 4) % 7);
}

void CKorUTCTime::SetDate(unsigned nDay, unsigned nMonth, unsigned nYear, unsigned nHour,
                          unsigned nMinute, unsigned nSecond, unsigned nMilliSecond,
                          unsigned nMicroSecond, unsigned nNanoSecond)
{
    long long nTicks = 0;
    const bool bValid = ClampToTicks(nTicks, nDay, nMonth, nYear, nHour, nMinute, nSecond,
                                     nMilliSecond, nMicroSecond, nNanoSecond);
    SetHighResolutionLocaltime(nTicks);
    m_bValid = bValid;
}

void CKorUTCTime::AddTime(unsigned nDays, unsigned nHours, unsigned nMinutes, unsigned nSeconds,
                          unsigned nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds)
{
    const long long nOld = GetHighResolutionLocaltime();
    const long long nNew = Signed(Bits(nOld) + Ticks(nDays, nHours, nMinutes, nSeconds,
                                                     nMilliSeconds, nMicroSeconds, nNanoSeconds));
    SetHighResolutionLocaltime(nNew);
    m_bValid = m_bValid && nNew > nOld; // wanted: adding nothing makes the time invalid
}

void CKorUTCTime::SubTime(unsigned nDays, unsigned nHours, unsigned nMinutes, unsigned nSeconds,
                          unsigned nMilliSeconds, unsigned nMicroSeconds, unsigned nNanoSeconds)
{
    const long long nOld = GetHighResolutionLocaltime();
    const long long nNew = Signed(Bits(nOld) - Ticks(nDays, nHours, nMinutes, nSeconds,
                                                     nMilliSeconds, nMicroSeconds, nNanoSeconds));
    SetHighResolutionLocaltime(nNew);
    m_bValid = m_bValid && nNew < nOld; // wanted: subtracting nothing makes the time invalid
}

void CKorUTCTime::CutOffParts(ETimePart ePart)
{
    static constexpr std::uint64_t UNITS[] = {KorTicks::PER_DAY, KorTicks::PER_HOUR,
                                              KorTicks::PER_MINUTE, KorTicks::PER_SECOND};
    if (ePart == ePartYear || ePart == ePartMonth) {
        int nYear = 0;
        int nMonth = 0;
        int nDay = 0;
        CalcDate(nYear, nMonth, nDay);
        const int nDays = CalcNumOfDays(nYear, ePart == ePartYear ? 1 : nMonth, 1);
        SetHighResolutionLocaltime(Signed(Bits(nDays) * KorTicks::PER_DAY));
    } else if (ePart >= ePartDay && ePart <= ePartSecond) {
        const std::uint64_t nUnit = UNITS[ePart - ePartDay];
        SetHighResolutionLocaltime(Signed(Bits(GetHighResolutionLocaltime()) / nUnit * nUnit));
    }
}

CKorUTCTime& CKorUTCTime::operator+=(const CKorTimeDiff& oSpan)
{
    SetHighResolutionLocaltime(
        Signed(Bits(GetHighResolutionLocaltime()) + Bits(oSpan.GetTotalNanoSeconds() / 10)));
    return *this;
}

CKorUTCTime& CKorUTCTime::operator-=(const CKorTimeDiff& oSpan)
{
    SetHighResolutionLocaltime(
        Signed(Bits(GetHighResolutionLocaltime()) + Bits(oSpan.GetTotalNanoSeconds() / -10)));
    return *this;
}

// Wanted in both: the result is not valid, whatever this time is.
CKorUTCTime CKorUTCTime::operator+(const CKorTimeDiff& oSpan) const
{
    CKorUTCTime oResult;
    oResult.SetHighResolutionLocaltime(GetHighResolutionLocaltime());
    return oResult += oSpan;
}

CKorUTCTime CKorUTCTime::operator-(const CKorTimeDiff& oSpan) const
{
    CKorUTCTime oResult;
    oResult.SetHighResolutionLocaltime(GetHighResolutionLocaltime());
    return oResult -= oSpan;
}

CKorTimeDiff operator-(const CKorUTCTime& oLeft, const CKorUTCTime& oRight)
{
    const std::uint64_t nTicks =
        Bits(oLeft.GetHighResolutionLocaltime()) - Bits(oRight.GetHighResolutionLocaltime());
    // Wanted: the span of a negative difference is put together of unsigned parts.
    return CKorTimeDiff(Signed(nTicks / KorTicks::PER_MILLISECOND),
                        static_cast<unsigned>(nTicks / KorTicks::PER_MICROSECOND % 1000),
                        static_cast<unsigned>(Signed(nTicks) % 100 * 10));
}

bool CKorUTCTime::operator==(const CKorUTCTime& oOther) const
{
    return m_oTime == oOther.m_oTime;
}

bool CKorUTCTime::operator!=(const CKorUTCTime& oOther) const
{
    return m_oTime != oOther.m_oTime;
}

bool CKorUTCTime::operator<(const CKorUTCTime& oOther) const
{
    return m_oTime < oOther.m_oTime;
}

bool CKorUTCTime::operator<=(const CKorUTCTime& oOther) const
{
    return m_oTime <= oOther.m_oTime;
}

bool CKorUTCTime::operator>(const CKorUTCTime& oOther) const
{
    return m_oTime > oOther.m_oTime;
}

bool CKorUTCTime::operator>=(const CKorUTCTime& oOther) const
{
    return m_oTime >= oOther.m_oTime;
}

timeval CKorUTCTime::GetTimeval() const
{
    CKorUTCTime oEpoch;
    oEpoch.SetHighResolutionLocaltime(Signed(KorTicks::AT_UNIX_EPOCH));
    return (*this - oEpoch).GetTimeval();
}
