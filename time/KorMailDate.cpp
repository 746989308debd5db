#include "time/KorMailDate.h"

#include "time/KorDigitsDetail.h"
#include "time/KorInstantDetail.h"

#include <cstdlib>
#include <cstring>

using KorDigits::CCursor;
using KorInstant::SECONDS_PER_DAY;

namespace
{

constexpr int MAX_OFFSET = 99 * 60 + 59;

constexpr std::size_t NAME_LENGTH = 3;
constexpr char WEEKDAYS[] = "MonTueWedThuFriSatSun";
constexpr char MONTHS[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
/// The zones 4 to 8 hours behind Greenwich, each in summer time and then in standard time one hour
/// further behind.
constexpr char ZONES[] = "EdtEstCdtCstMdtMstPdtPst";

char* PutName(char* pEnd, const char* pszNames, int nNumber)
{
    memcpy(pEnd, pszNames + NAME_LENGTH * static_cast<std::size_t>(nNumber - 1), NAME_LENGTH);
    return pEnd + NAME_LENGTH;
}

char* PutTwoAnd(char* pEnd, int nNumber, char c)
{
    pEnd = KorDigits::PutTwo(pEnd, static_cast<std::uint32_t>(nNumber));
    *pEnd = c;
    return pEnd + 1;
}

/// Writes weekday and date of a day, with a blank behind them.
char* PutDate(char* pEnd, std::int64_t nDay)
{
    const auto oDate = KorCalendar::DateOfDay32(static_cast<std::uint32_t>(nDay));
    pEnd = PutName(pEnd, WEEKDAYS, KorCalendar::IsoWeekday(nDay));
    *pEnd++ = ',';
    *pEnd++ = ' ';
    pEnd = PutTwoAnd(pEnd, oDate.nDay, ' ');
    pEnd = PutName(pEnd, MONTHS, oDate.nMonth);
    *pEnd++ = ' ';
    pEnd = KorDigits::PutFour(pEnd, static_cast<std::uint32_t>(oDate.nYear));
    *pEnd++ = ' ';
    return pEnd;
}

/// A name as it is compared: a capital letter and small ones, of which only the first are kept.
struct SName
{
    std::size_t nLength;
    char acText[NAME_LENGTH];
};

/// The number of a name among names of three letters, counted from 1; 0 when it is none of them.
int NumberOf(const SName& oName, const char* pszNames)
{
    for (int n = 1; *pszNames != '\0'; ++n, pszNames += NAME_LENGTH) {
        if (oName.nLength == NAME_LENGTH && memcmp(oName.acText, pszNames, NAME_LENGTH) == 0)
            return n;
    }
    return 0;
}

bool IsLetter(int c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// Takes a comment, in which others may stand and a backslash quotes; its "(" is already taken.
bool TakeComment(CCursor& oText)
{
    int nDepth = 1;
    while (nDepth > 0 && !oText.IsAtEnd()) {
        const int c = oText.Peek();
        oText.Skip();
        if (c == '\\' && !oText.IsAtEnd())
            oText.Skip();
        nDepth += c == '(' ? 1 : c == ')' ? -1 : 0;
    }
    return nDepth == 0;
}

/// Takes a line end if the next line begins with a blank, so that the text goes on there.
bool TakeFold(CCursor& oText)
{
    CCursor oAhead = oText;
    oAhead.Take('\r');
    if (!oAhead.Take('\n') || (oAhead.Peek() != ' ' && oAhead.Peek() != '\t'))
        return false;
    oText = oAhead;
    return true;
}

/// Takes blanks, folds and comments, as many as there are.
/// @return false when a comment does not end
bool TakeGap(CCursor& oText)
{
    while (oText.Take(' ') || oText.Take('\t') || TakeFold(oText) || oText.Peek() == '(') {
        if (oText.Take('(') && !TakeComment(oText))
            return false;
    }
    return true;
}

/// Takes letters.
SName TakeName(CCursor& oText)
{
    constexpr int CASE_BIT = 0x20;
    SName oName = {};
    for (int c = oText.Peek(); IsLetter(c); c = oText.Peek()) {
        if (oName.nLength < NAME_LENGTH)
            oName.acText[oName.nLength] =
                static_cast<char>(oName.nLength == 0 ? c & ~CASE_BIT : c | CASE_BIT);
        ++oName.nLength;
        oText.Skip();
    }
    return oName;
}

/// Reads one date. Each operation takes its part from the text, with the gap in front of it, and
/// answers whether it is there and in range.
class CMailReader
{
public:
    explicit CMailReader(const std::string& strText)
        : m_oText(strText.data(), strText.data() + strText.size())
    {
    }

    bool Read();
    bool ToTicks(std::int64_t& nTicks) const;
    int GetOffset() const { return m_nOffset; }

private:
    bool TakePart(std::uint32_t nMax, std::uint32_t& nPart)
    {
        return TakeGap(m_oText) && m_oText.TakeTwo(nPart) && nPart <= nMax;
    }
    bool TakeWeekday();
    bool TakeDate();
    bool TakeYear(std::uint32_t& nYear);
    bool TakeClock();
    bool TakeZone();
    bool TakeNumericZone();

    CCursor m_oText;
    int m_nWeekday = 0; ///< 0 when the text has none
    std::int64_t m_nDay = 0;
    std::uint32_t m_nSecond = 0; ///< of the day; 59 in a leap second
    bool m_bLeapSecond = false;
    int m_nOffset = 0; ///< in minutes
};

bool CMailReader::Read()
{
    return TakeWeekday() && TakeDate() && TakeClock() && TakeZone() && TakeGap(m_oText) &&
           m_oText.IsAtEnd() && (m_nWeekday == 0 || m_nWeekday == KorCalendar::IsoWeekday(m_nDay));
}

bool CMailReader::TakeWeekday()
{
    if (!TakeGap(m_oText))
        return false;
    if (!IsLetter(m_oText.Peek()))
        return true;
    m_nWeekday = NumberOf(TakeName(m_oText), WEEKDAYS);
    return m_nWeekday != 0 && TakeGap(m_oText) && m_oText.Take(',');
}

bool CMailReader::TakeDate()
{
    std::uint32_t nDay = 0;
    std::uint32_t nYear = 0;
    if (!TakeGap(m_oText) || m_oText.TakeDigits(2, nDay) == 0 || !TakeGap(m_oText))
        return false;
    const int nMonth = NumberOf(TakeName(m_oText), MONTHS);
    if (nMonth == 0 || !TakeYear(nYear) || nDay < 1 ||
        static_cast<int>(nDay) > KorCalendar::DaysOfMonth(nMonth, KorCalendar::IsLeapYear(nYear)))
        return false;
    m_nDay = KorCalendar::DayOfDate(nYear, nMonth, static_cast<int>(nDay));
    return true;
}

bool CMailReader::TakeYear(std::uint32_t& nYear)
{
    constexpr unsigned MAX_DIGITS = 9;
    if (!TakeGap(m_oText))
        return false;
    const unsigned nDigits = m_oText.TakeDigits(MAX_DIGITS, nYear);
    if (nDigits == 2 && nYear < 50)
        nYear += 2000;
    else if (nDigits < 4)
        nYear += 1900;
    return nDigits > 1;
}

bool CMailReader::TakeClock()
{
    std::uint32_t nHour = 0;
    std::uint32_t nMinute = 0;
    std::uint32_t nSecond = 0;
    if (!TakePart(23, nHour) || !TakeGap(m_oText) || !m_oText.Take(':') || !TakePart(59, nMinute) ||
        !TakeGap(m_oText) || (m_oText.Take(':') && !TakePart(60, nSecond)))
        return false;
    m_bLeapSecond = nSecond == 60;
    m_nSecond = (nHour * 60 + nMinute) * 60 + (m_bLeapSecond ? 59 : nSecond);
    return true;
}

bool CMailReader::TakeZone()
{
    if (!TakeGap(m_oText))
        return false;
    if (!IsLetter(m_oText.Peek()))
        return TakeNumericZone();
    const SName oName = TakeName(m_oText);
    const int nZone = NumberOf(oName, ZONES);
    m_nOffset = nZone == 0 ? 0 : -60 * (4 + nZone / 2);
    return oName.nLength != 1 || oName.acText[0] != 'J'; // no zone, but the observer's own time
}

bool CMailReader::TakeNumericZone()
{
    const bool bNegative = m_oText.Peek() == '-';
    std::uint32_t nHours = 0;
    std::uint32_t nMinutes = 0;
    if (!(m_oText.Take('+') || m_oText.Take('-')) || !m_oText.TakeTwo(nHours) ||
        !m_oText.TakeTwo(nMinutes) || nMinutes > 59)
        return false;
    const auto nOffset = static_cast<int>(nHours * 60 + nMinutes);
    m_nOffset = bNegative ? -nOffset : nOffset;
    return true;
}

bool CMailReader::ToTicks(std::int64_t& nTicks) const
{
    const std::int64_t nReading = m_nDay * SECONDS_PER_DAY + m_nSecond - KorInstant::UNIX_EPOCH;
    return KorInstant::FromText(nReading - std::int64_t{m_nOffset} * 60, m_bLeapSecond, 0, nTicks);
}

} // namespace

std::string KorToMailDate(const CKorUTCTime& oTime, int nOffsetMinutes)
{
    constexpr std::size_t MAX_LENGTH = sizeof "Tue, 05 Mar 2024 19:37:09 +0530";
    const auto oClock = KorInstant::ClockAt(KorInstant::TicksOf(oTime), nOffsetMinutes);
    // No count of ticks reaches the year 10000.
    if (oClock.nDay < 0 || nOffsetMinutes < -MAX_OFFSET || nOffsetMinutes > MAX_OFFSET)
        return {};
    char aText[MAX_LENGTH];
    char* pEnd = PutDate(aText, oClock.nDay);
    pEnd = PutTwoAnd(pEnd, oClock.nSecond / 3600, ':');
    pEnd = PutTwoAnd(pEnd, oClock.nSecond / 60 % 60, ':');
    pEnd = PutTwoAnd(pEnd, oClock.nSecond % 60, ' ');
    *pEnd++ = nOffsetMinutes < 0 ? '-' : '+';
    const auto nMinutes = static_cast<std::uint32_t>(std::abs(nOffsetMinutes));
    pEnd = KorDigits::PutFour(pEnd, nMinutes / 60 * 100 + nMinutes % 60);
    return std::string(aText, static_cast<std::size_t>(pEnd - aText));
}

bool KorFromMailDate(const std::string& strText, CKorUTCTime& rTime, int* pnOffsetMinutes)
{
    CMailReader oReader(strText);
    std::int64_t nTicks = 0;
    if (!oReader.Read() || !oReader.ToTicks(nTicks))
        return false;
    KorInstant::Store(nTicks, oReader.GetOffset(), rTime, pnOffsetMinutes);
    return true;
}
