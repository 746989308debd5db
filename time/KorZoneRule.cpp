#include "time/KorZoneRuleDetail.h"

#include "time/KorCalendarDetail.h"
#include "time/KorDigitsDetail.h"

namespace
{

using KorDigits::CCursor;

constexpr std::int32_t SECONDS_PER_HOUR = 3600;
constexpr std::int64_t SECONDS_PER_DAY = 86400;
constexpr std::uint32_t MAX_OFFSET_HOURS = 24;
constexpr std::uint32_t MAX_CHANGE_HOURS = 167;

bool IsLetter(int c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool TakeNumber(CCursor& oText, std::uint32_t nFrom, std::uint32_t nTo, std::uint32_t& nNumber)
{
    constexpr unsigned MAX_DIGITS = 9;
    return oText.TakeDigits(MAX_DIGITS, nNumber) != 0 && nNumber >= nFrom && nNumber <= nTo;
}

bool TakeNumber(CCursor& oText, std::uint32_t nFrom, std::uint32_t nTo, int& nNumber)
{
    std::uint32_t nTaken = 0;
    const bool bTaken = TakeNumber(oText, nFrom, nTo, nTaken);
    nNumber = static_cast<int>(nTaken);
    return bTaken;
}

/// Takes letters, or between "<" and ">" also digits and signs; at least three of them.
bool TakeName(CCursor& oText, std::string& strName)
{
    constexpr std::size_t MIN_LENGTH = 3;
    const bool bQuoted = oText.Take('<');
    for (int c = oText.Peek();
         IsLetter(c) || (bQuoted && (KorDigits::IsDigit(c) || c == '+' || c == '-'));
         c = oText.Peek()) {
        strName += static_cast<char>(c);
        oText.Skip();
    }
    return strName.size() >= MIN_LENGTH && (!bQuoted || oText.Take('>'));
}

/// Takes [+|-]hh[:mm[:ss]].
bool TakeSeconds(CCursor& oText, std::uint32_t nMaxHours, std::int32_t& nSeconds)
{
    const bool bNegative = oText.Take('-');
    if (!bNegative)
        oText.Take('+');
    std::uint32_t anParts[3] = {0, 0, 0};
    if (!TakeNumber(oText, 0, nMaxHours, anParts[0]) ||
        (oText.Take(':') && (!TakeNumber(oText, 0, 59, anParts[1]) ||
                             (oText.Take(':') && !TakeNumber(oText, 0, 59, anParts[2])))))
        return false;
    nSeconds = static_cast<std::int32_t>((anParts[0] * 60 + anParts[1]) * 60 + anParts[2]);
    nSeconds = bNegative ? -nSeconds : nSeconds;
    return true;
}

/// Takes an offset, which the text counts west of Greenwich.
bool TakeOffset(CCursor& oText, std::int32_t& nOffset)
{
    const bool bTaken = TakeSeconds(oText, MAX_OFFSET_HOURS, nOffset);
    nOffset = -nOffset;
    return bTaken;
}

bool TakeWeekOfMonth(CCursor& oText, SKorZoneDay& oDay)
{
    oDay.eKind = SKorZoneDay::WEEK_OF_MONTH;
    return TakeNumber(oText, 1, 12, oDay.nMonth) && oText.Take('.') &&
           TakeNumber(oText, 1, 5, oDay.nWeek) && oText.Take('.') &&
           TakeNumber(oText, 0, 6, oDay.nDay);
}

bool TakeDay(CCursor& oText, SKorZoneDay& oDay)
{
    if (oText.Take('M'))
        return TakeWeekOfMonth(oText, oDay);
    oDay.nMonth = 1;
    oDay.eKind = oText.Take('J') ? SKorZoneDay::DAY_OF_365 : SKorZoneDay::DAY_OF_366;
    return oDay.eKind == SKorZoneDay::DAY_OF_365 ? TakeNumber(oText, 1, 365, oDay.nDay)
                                                 : TakeNumber(oText, 0, 365, oDay.nDay);
}

/// Takes "," and a day, with "/" and a time of the day or without.
bool TakeChange(CCursor& oText, SKorZoneDay& oDay)
{
    oDay.nSecond = 2 * SECONDS_PER_HOUR;
    return oText.Take(',') && TakeDay(oText, oDay) &&
           (!oText.Take('/') || TakeSeconds(oText, MAX_CHANGE_HOURS, oDay.nSecond));
}

/// The day on which a change lies, counted as the calendar does.
std::int64_t DayIn(std::int64_t nYear, const SKorZoneDay& oDay)
{
    const bool bLeapYear = KorCalendar::IsLeapYear(nYear);
    const std::int64_t nFirst = KorCalendar::DayOfDate(nYear, oDay.nMonth, 1);
    if (oDay.eKind == SKorZoneDay::DAY_OF_366)
        return nFirst + oDay.nDay;
    if (oDay.eKind == SKorZoneDay::DAY_OF_365)
        return nFirst + oDay.nDay - (bLeapYear && oDay.nDay > 31 + 28 ? 0 : 1);
    // The days of the week agree modulo 7: 0 and 7 are Sunday.
    const int nDay = (oDay.nDay - KorCalendar::IsoWeekday(nFirst) + 7) % 7 + 7 * (oDay.nWeek - 1);
    const bool bInMonth = nDay < KorCalendar::DaysOfMonth(oDay.nMonth, bLeapYear);
    return nFirst + nDay - (bInMonth ? 0 : 7);
}

std::int64_t SecondOf(std::int64_t nYear, const SKorZoneDay& oDay, std::int32_t nOffset)
{
    const std::int64_t nUnixDay = DayIn(nYear, oDay) - KorCalendar::DAY_OF_UNIX_EPOCH;
    return nUnixDay * SECONDS_PER_DAY + oDay.nSecond - nOffset;
}

} // namespace

bool CKorZoneRule::Parse(const std::string& strText)
{
    CCursor oText(strText.data(), strText.data() + strText.size());
    if (!TakeName(oText, m_oStandard.strAbbreviation) || !TakeOffset(oText, m_oStandard.nOffset))
        return false;
    m_bHasSummerTime = !oText.IsAtEnd();
    return !m_bHasSummerTime || (ParseSummerTime(oText) && oText.IsAtEnd());
}

bool CKorZoneRule::ParseSummerTime(CCursor& oText)
{
    m_oSummer.nOffset = m_oStandard.nOffset + SECONDS_PER_HOUR;
    if (!TakeName(oText, m_oSummer.strAbbreviation))
        return false;
    if (!oText.IsAtEnd() && oText.Peek() != ',' && !TakeOffset(oText, m_oSummer.nOffset))
        return false;
    return oText.IsAtEnd() || (TakeChange(oText, m_oBegin) && TakeChange(oText, m_oEnd));
}

std::int64_t CKorZoneRule::SummerBegin(std::int64_t nYear) const
{
    return SecondOf(nYear, m_oBegin, m_oStandard.nOffset);
}

std::int64_t CKorZoneRule::SummerEnd(std::int64_t nYear) const
{
    return SecondOf(nYear, m_oEnd, m_oSummer.nOffset);
}
