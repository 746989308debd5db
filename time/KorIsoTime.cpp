#include "time/KorIsoTime.h"

#include "time/KorIsoDetail.h"
#include "time/KorTimeZone.h"
#include "time/KorUnixTime.h"

#include <algorithm>
#include <cstdlib>

using KorDigits::CCursor;
using KorInstant::SECONDS_PER_DAY;

KorInstant::SClock KorInstant::ClockAt(std::int64_t nTicks, int nOffsetMinutes)
{
    const std::int64_t nSeconds = KorCalendar::FloorQuotient(nTicks, PER_SECOND);
    const std::int64_t nReading = nSeconds + std::int64_t{nOffsetMinutes} * 60;
    const std::int64_t nDay = KorCalendar::FloorQuotient(nReading, SECONDS_PER_DAY);
    return {nDay, static_cast<std::int32_t>(nReading - nDay * SECONDS_PER_DAY),
            static_cast<std::int32_t>(KorCalendar::FloorRest(nTicks, PER_SECOND))};
}

bool KorInstant::FromText(std::int64_t nUnixSecond, bool bLeapSecond, std::int32_t nTick,
                          std::int64_t& rnTicks)
{
    if (bLeapSecond && KorCalendar::FloorRest(++nUnixSecond, SECONDS_PER_DAY) != 0)
        return false;
    return Combine(nUnixSecond + UNIX_EPOCH, nTick, rnTicks);
}

void KorInstant::Store(std::int64_t nTicks, int nOffset, CKorUTCTime& rTime, int* pnOffsetMinutes)
{
    rTime = FromTicks(nTicks);
    if (pnOffsetMinutes != nullptr)
        *pnOffsetMinutes = nOffset;
}

bool KorTakeFraction(KorDigits::CCursor& oText, std::int32_t& nTicks)
{
    constexpr unsigned MAX_DIGITS = 9;
    constexpr std::uint32_t SCALES[MAX_DIGITS] = {100000000, 10000000, 1000000, 100000, 10000,
                                                  1000,      100,      10,      1};
    nTicks = 0;
    if (!oText.Take('.') && !oText.Take(','))
        return true;
    std::uint32_t nNumber = 0;
    const unsigned nDigits = oText.TakeDigits(MAX_DIGITS, nNumber);
    if (nDigits == 0)
        return false;
    nTicks = static_cast<std::int32_t>(nNumber * SCALES[nDigits - 1] / 10); // nanoseconds
    return true;
}

namespace
{

constexpr int MAX_OFFSET = 23 * 60 + 59;

char* PutDate(char* pEnd, std::uint32_t nDay)
{
    const auto oDate = KorCalendar::DateOfDay32(nDay);
    pEnd = KorDigits::PutFour(pEnd, static_cast<std::uint32_t>(oDate.nYear));
    *pEnd++ = '-';
    pEnd = KorDigits::PutTwo(pEnd, static_cast<std::uint32_t>(oDate.nMonth));
    *pEnd++ = '-';
    return KorDigits::PutTwo(pEnd, static_cast<std::uint32_t>(oDate.nDay));
}

char* PutHoursAndMinutes(char* pEnd, std::uint32_t nMinutes)
{
    pEnd = KorDigits::PutTwo(pEnd, nMinutes / 60);
    *pEnd++ = ':';
    return KorDigits::PutTwo(pEnd, nMinutes % 60);
}

char* PutFraction(char* pEnd, std::uint32_t nTicks, unsigned nDigits)
{
    constexpr unsigned MAX_DIGITS = 9;
    if (nDigits == 0)
        return pEnd;
    *pEnd = '.';
    char* const pLast =
        KorDigits::PutFour(KorDigits::PutFour(pEnd + 1, nTicks / 10000), nTicks % 10000);
    *pLast = '0'; // a tick is 10 ns
    return pEnd + 1 + std::min(nDigits, MAX_DIGITS);
}

char* PutOffset(char* pEnd, int nOffsetMinutes)
{
    *pEnd++ = nOffsetMinutes == 0 ? 'Z' : nOffsetMinutes < 0 ? '-' : '+';
    const auto nMinutes = static_cast<std::uint32_t>(std::abs(nOffsetMinutes));
    return nMinutes == 0 ? pEnd : PutHoursAndMinutes(pEnd, nMinutes);
}

/// The Monday of week 1, which is the week with 4 January.
std::int64_t FirstMonday(std::uint32_t nYear)
{
    const std::int64_t nDay = std::int64_t{KorCalendar::DayOfYearStart(nYear)} + 3;
    return nDay + 1 - KorCalendar::IsoWeekday(nDay);
}

/// Reads one time. Each operation takes its part from the text and answers whether it is there and
/// in range.
class CIsoReader
{
public:
    explicit CIsoReader(const std::string& strText)
        : m_oText(strText.data(), strText.data() + strText.size())
    {
    }

    bool Read();
    bool HasOffset() const { return m_bHasOffset; }
    int GetOffset() const { return m_nOffset; }
    bool ToTicks(std::int64_t& nTicks) const;
    bool ToTicks(const CKorTimeZone& oZone, std::int64_t& nTicks) const;

private:
    bool TakePart(std::uint32_t nMax, std::uint32_t& nPart)
    {
        return m_oText.TakeTwo(nPart) && nPart <= nMax;
    }
    bool TakeDate();
    bool TakeWeek();
    bool SetDayOfYear(std::uint32_t nDay);
    bool SetMonthAndDay(std::uint32_t nMonth, std::uint32_t nDay);
    bool TakeClock();
    bool TakeSecond();
    bool TakeOffset();

    CCursor m_oText;
    bool m_bExtended = false; ///< with dashes and colons
    bool m_bLeapSecond = false;
    bool m_bHasOffset = false;
    std::uint32_t m_nYear = 0;
    std::int64_t m_nDay = 0;
    std::uint32_t m_nSecond = 0; ///< of the day, 86400 at 24:00; 59 in a leap second
    std::int32_t m_nTick = 0;
    int m_nOffset = 0; ///< in minutes
};

bool CIsoReader::Read()
{
    if (!TakeDate())
        return false;
    if (m_oText.IsAtEnd())
        return true;
    return (m_oText.Take('T') || m_oText.Take(' ')) && TakeClock() && TakeOffset() &&
           m_oText.IsAtEnd();
}

bool CIsoReader::TakeDate()
{
    std::uint32_t nCentury = 0;
    if (!m_oText.TakeTwo(nCentury) || !m_oText.TakeTwo(m_nYear))
        return false;
    m_nYear += 100 * nCentury;
    m_bExtended = m_oText.Take('-');
    if (m_oText.Take('W'))
        return TakeWeek();
    std::uint32_t nNumber = 0;
    std::uint32_t nDay = 0;
    const unsigned nDigits = m_oText.TakeDigits(m_bExtended ? 3 : 4, nNumber);
    if (nDigits == 3)
        return SetDayOfYear(nNumber);
    if (!m_bExtended)
        return nDigits == 4 && SetMonthAndDay(nNumber / 100, nNumber % 100);
    return nDigits == 2 && m_oText.Take('-') && TakePart(31, nDay) && SetMonthAndDay(nNumber, nDay);
}

bool CIsoReader::TakeWeek()
{
    std::uint32_t nWeek = 0;
    std::uint32_t nDay = 0;
    if (!TakePart(53, nWeek) || nWeek == 0 || m_oText.Take('-') != m_bExtended ||
        m_oText.TakeDigits(1, nDay) != 1 || nDay < 1 || nDay > 7)
        return false;
    m_nDay = FirstMonday(m_nYear) + 7 * std::int64_t{nWeek - 1} + nDay - 1;
    return m_nDay < FirstMonday(m_nYear + 1);
}

bool CIsoReader::SetDayOfYear(std::uint32_t nDay)
{
    m_nDay = KorCalendar::DayOfYearStart(m_nYear) + std::int64_t{nDay} - 1;
    return nDay > 0 && m_nDay < KorCalendar::DayOfYearStart(m_nYear + 1);
}

bool CIsoReader::SetMonthAndDay(std::uint32_t nMonth, std::uint32_t nDay)
{
    const bool bLeapYear = KorCalendar::IsLeapYear(m_nYear);
    const auto nMonthOfYear = static_cast<int>(nMonth);
    if (nMonth < 1 || nMonth > KorCalendar::MONTHS_PER_YEAR || nDay < 1 ||
        static_cast<int>(nDay) > KorCalendar::DaysOfMonth(nMonthOfYear, bLeapYear))
        return false;
    m_nDay = std::int64_t{KorCalendar::DayOfYearStart(m_nYear)} +
             KorCalendar::DaysBeforeMonth(nMonthOfYear, bLeapYear) + nDay - 1;
    return true;
}

bool CIsoReader::TakeClock()
{
    std::uint32_t nHour = 0;
    std::uint32_t nMinute = 0;
    if (!TakePart(24, nHour) || m_oText.Take(':') != m_bExtended || !TakePart(59, nMinute))
        return false;
    m_nSecond = (nHour * 60 + nMinute) * 60;
    const bool bHasSecond = m_bExtended ? m_oText.Take(':') : KorDigits::IsDigit(m_oText.Peek());
    return (!bHasSecond || TakeSecond()) &&
           (nHour < 24 || (m_nSecond == SECONDS_PER_DAY && m_nTick == 0 && !m_bLeapSecond));
}

bool CIsoReader::TakeSecond()
{
    std::uint32_t nSecond = 0;
    if (!TakePart(60, nSecond))
        return false;
    m_bLeapSecond = nSecond == 60;
    m_nSecond += m_bLeapSecond ? 59 : nSecond;
    return KorTakeFraction(m_oText, m_nTick);
}

bool CIsoReader::TakeOffset()
{
    const bool bNegative = m_oText.Peek() == '-';
    m_bHasOffset = !m_oText.IsAtEnd();
    if (!m_bHasOffset || m_oText.Take('Z'))
        return true;
    std::uint32_t nHours = 0;
    std::uint32_t nMinutes = 0;
    if (!(m_oText.Take('+') || m_oText.Take('-')) || !TakePart(23, nHours))
        return false;
    const bool bHasMinutes = m_oText.Take(':') || KorDigits::IsDigit(m_oText.Peek());
    if (bHasMinutes && !TakePart(59, nMinutes))
        return false;
    const auto nOffset = static_cast<int>(nHours * 60 + nMinutes);
    m_nOffset = bNegative ? -nOffset : nOffset;
    return true;
}

bool CIsoReader::ToTicks(std::int64_t& nTicks) const
{
    const std::int64_t nReading = m_nDay * SECONDS_PER_DAY + m_nSecond - KorInstant::UNIX_EPOCH;
    return KorInstant::FromText(nReading - std::int64_t{m_nOffset} * 60, m_bLeapSecond, m_nTick,
                                nTicks);
}

bool CIsoReader::ToTicks(const CKorTimeZone& oZone, std::int64_t& nTicks) const
{
    const auto oDate = KorCalendar::DateOfDay(m_nDay + m_nSecond / SECONDS_PER_DAY);
    const auto nSecond = static_cast<int>(m_nSecond % SECONDS_PER_DAY);
    const CKorUTCTime oTime = oZone.ToUtc(static_cast<int>(oDate.nYear), oDate.nMonth, oDate.nDay,
                                          nSecond / 3600, nSecond / 60 % 60, nSecond % 60);
    return oTime.IsTimeValid() &&
           KorInstant::FromText(KorToUnixTime(oTime), m_bLeapSecond, m_nTick, nTicks);
}

} // namespace

std::string KorToIsoString(const CKorUTCTime& oTime, int nOffsetMinutes, unsigned int nDigits)
{
    constexpr std::size_t MAX_LENGTH = sizeof "2024-03-05T14:07:09.123456789+05:30";
    const auto oClock = KorInstant::ClockAt(KorInstant::TicksOf(oTime), nOffsetMinutes);
    // No count of ticks reaches the year 10000.
    if (oClock.nDay < 0 || nOffsetMinutes < -MAX_OFFSET || nOffsetMinutes > MAX_OFFSET)
        return {};
    char aText[MAX_LENGTH];
    const auto nSecond = static_cast<std::uint32_t>(oClock.nSecond);
    char* pEnd = PutDate(aText, static_cast<std::uint32_t>(oClock.nDay));
    *pEnd++ = 'T';
    pEnd = PutHoursAndMinutes(pEnd, nSecond / 60);
    *pEnd++ = ':';
    pEnd = KorDigits::PutTwo(pEnd, nSecond % 60);
    pEnd = PutFraction(pEnd, static_cast<std::uint32_t>(oClock.nTick), nDigits);
    pEnd = PutOffset(pEnd, nOffsetMinutes);
    return std::string(aText, static_cast<std::size_t>(pEnd - aText));
}

bool KorFromIsoString(const std::string& strText, CKorUTCTime& rTime, const CKorTimeZone* pZone,
                      int* pnOffsetMinutes)
{
    CIsoReader oReader(strText);
    std::int64_t nTicks = 0;
    if (!oReader.Read())
        return false;
    const bool bInZone = pZone != nullptr && !oReader.HasOffset();
    if (!(bInZone ? oReader.ToTicks(*pZone, nTicks) : oReader.ToTicks(nTicks)))
        return false;
    std::int64_t nMinutes = oReader.GetOffset();
    if (bInZone)
        nMinutes = KorCalendar::FloorQuotient(pZone->GetOffset(KorInstant::FromTicks(nTicks)), 60);
    KorInstant::Store(nTicks, static_cast<int>(nMinutes), rTime, pnOffsetMinutes);
    return true;
}
