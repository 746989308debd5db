#include "app/KorLogLineDetail.h"

#include "time/KorInstantDetail.h"
#include "time/KorSystemClockDetail.h"
#include "time/KorTimeZone.h"
#include "time/KorUnixTime.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

constexpr char CUT[] = "...";
constexpr std::size_t CUT_LENGTH = sizeof CUT - 1;

struct SLocalTime
{
    KorCalendar::SDate oDate;
    int nSecondOfDay;
    int nMillisecond;
    int nOffsetMinutes;
};

SLocalTime LocalTime()
{
    const SKorClockReading oClock = KorReadSystemClock();
    const int nOffset = KorGetUtcOffset(KorFromUnixTime(oClock.nSeconds));
    const KorInstant::SClock oShown =
        KorInstant::ClockAt((oClock.nSeconds + nOffset) * KorInstant::PER_SECOND, 0);
    return {KorCalendar::DateOfDay(oShown.nDay + KorCalendar::DAY_OF_UNIX_EPOCH), oShown.nSecond,
            oClock.nMicroSeconds / 1000, nOffset / 60};
}

bool IsControl(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

/// Whether a byte goes on with a character of UTF-8, which is not cut in the middle.
bool IsContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

} // namespace

void CKorLogLine::Clear()
{
    m_nLength = 0;
    m_nCut = 0;
    m_bTooLong = false;
}

/// Adds bytes that are not to be separated.
void CKorLogLine::AddUnit(const char* pUnit, std::size_t nLength)
{
    if (m_nLength + CUT_LENGTH < MAX_LENGTH && !IsContinuation(*pUnit))
        m_nCut = m_nLength;
    m_bTooLong = m_bTooLong || m_nLength + nLength >= MAX_LENGTH;
    if (m_bTooLong)
        return;
    std::memcpy(m_acBytes + m_nLength, pUnit, nLength);
    m_nLength += nLength;
}

void CKorLogLine::Add(const char* pszText)
{
    for (; *pszText != '\0'; ++pszText)
        AddUnit(pszText, 1);
}

void CKorLogLine::AddTime()
{
    const SLocalTime oTime = LocalTime();
    const int nOffset = std::abs(oTime.nOffsetMinutes);
    char szTime[80];
    std::snprintf(szTime, sizeof szTime, "%04lld-%02d-%02d %02d:%02d:%02d.%03d %c%02d%02d ",
                  static_cast<long long>(oTime.oDate.nYear), oTime.oDate.nMonth, oTime.oDate.nDay,
                  oTime.nSecondOfDay / 3600, oTime.nSecondOfDay / 60 % 60, oTime.nSecondOfDay % 60,
                  oTime.nMillisecond, oTime.nOffsetMinutes < 0 ? '-' : '+', nOffset / 60,
                  nOffset % 60);
    Add(szTime);
}

void CKorLogLine::AddSyslogTime()
{
    static constexpr char MONTHS[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const SLocalTime oTime = LocalTime();
    char szTime[48];
    std::snprintf(szTime, sizeof szTime, "%s %2d %02d:%02d:%02d ", MONTHS[oTime.oDate.nMonth - 1],
                  oTime.oDate.nDay, oTime.nSecondOfDay / 3600, oTime.nSecondOfDay / 60 % 60,
                  oTime.nSecondOfDay % 60);
    Add(szTime);
}

void CKorLogLine::AddMessage(const char* pText, std::size_t nLength)
{
    if (nLength != 0 && pText[nLength - 1] == '\n')
        --nLength;
    for (const char* const pEnd = pText + nLength; pText != pEnd; ++pText) {
        char szVisible[8];
        if (IsControl(*pText))
            AddUnit(szVisible, static_cast<std::size_t>(std::snprintf(
                                   szVisible, sizeof szVisible, "\\x%02x",
                                   static_cast<unsigned int>(static_cast<unsigned char>(*pText)))));
        else
            AddUnit(pText, 1);
    }
}

void CKorLogLine::End()
{
    if (m_bTooLong) {
        std::memcpy(m_acBytes + m_nCut, CUT, CUT_LENGTH);
        m_nLength = m_nCut + CUT_LENGTH;
    }
    m_acBytes[m_nLength++] = '\n';
}
