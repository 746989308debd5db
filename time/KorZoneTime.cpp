#include "time/KorZoneTime.h"

#include "time/KorInstantDetail.h"
#include "time/KorIsoTime.h"
#include "time/KorTimeZone.h"

#include <limits>
#include <ostream>

using KorCalendar::FloorQuotient;
using KorInstant::ClockAt;

namespace
{

constexpr int SECONDS_PER_MINUTE = 60;
constexpr int SECONDS_PER_HOUR = 3600;

int Minutes(int nSeconds)
{
    return static_cast<int>(FloorQuotient(nSeconds, SECONDS_PER_MINUTE));
}

/// The date that a clock shows.
KorCalendar::SDate DateAt(std::int64_t nTicks, int nOffsetMinutes)
{
    return KorCalendar::DateOfDay(ClockAt(nTicks, nOffsetMinutes).nDay);
}

} // namespace

CKorZoneTime::CKorZoneTime() : m_nTicks(0), m_nOffsetMinutes(0) {}

CKorZoneTime::CKorZoneTime(const CKorUTCTime& oTime)
    : CKorZoneTime(oTime, Minutes(KorGetUtcOffset(oTime)))
{
}

CKorZoneTime::CKorZoneTime(const CKorUTCTime& oTime, int nOffsetMinutes)
    : m_nTicks(KorInstant::TicksOf(oTime)), m_nOffsetMinutes(nOffsetMinutes)
{
}

CKorZoneTime::CKorZoneTime(const CKorUTCTime& oTime, const CKorTimeZone& oZone)
    : CKorZoneTime(oTime, Minutes(oZone.GetOffset(oTime)))
{
}

CKorZoneTime CKorZoneTime::CurrentTime()
{
    return CKorZoneTime(CKorUTCTime::CurrentTime());
}

CKorZoneTime CKorZoneTime::CurrentTime(const CKorTimeZone& oZone)
{
    return CKorZoneTime(CKorUTCTime::CurrentTime(), oZone);
}

CKorUTCTime CKorZoneTime::GetUtc() const
{
    return KorInstant::FromTicks(m_nTicks);
}

int CKorZoneTime::GetOffsetMinutes() const
{
    return m_nOffsetMinutes;
}

int CKorZoneTime::GetYear() const
{
    return static_cast<int>(DateAt(m_nTicks, m_nOffsetMinutes).nYear);
}

int CKorZoneTime::GetMonth() const
{
    return DateAt(m_nTicks, m_nOffsetMinutes).nMonth;
}

int CKorZoneTime::GetDay() const
{
    return DateAt(m_nTicks, m_nOffsetMinutes).nDay;
}

int CKorZoneTime::GetHour() const
{
    return ClockAt(m_nTicks, m_nOffsetMinutes).nSecond / SECONDS_PER_HOUR;
}

int CKorZoneTime::GetMinute() const
{
    return ClockAt(m_nTicks, m_nOffsetMinutes).nSecond / SECONDS_PER_MINUTE % 60;
}

int CKorZoneTime::GetSecond() const
{
    return ClockAt(m_nTicks, m_nOffsetMinutes).nSecond % SECONDS_PER_MINUTE;
}

int CKorZoneTime::GetMilliSecond() const
{
    return ClockAt(m_nTicks, 0).nTick / 100000;
}

int CKorZoneTime::GetMicroSecond() const
{
    return ClockAt(m_nTicks, 0).nTick / 100 % 1000;
}

int CKorZoneTime::GetNanoSecond() const
{
    return ClockAt(m_nTicks, 0).nTick % 100 * 10;
}

int CKorZoneTime::GetWeekDay() const
{
    return KorCalendar::IsoWeekday(ClockAt(m_nTicks, m_nOffsetMinutes).nDay);
}

int CKorZoneTime::GetDayOfYear() const
{
    return KorCalendar::DayOfYear(DateAt(m_nTicks, m_nOffsetMinutes));
}

std::string CKorZoneTime::ToString(unsigned int nDigits) const
{
    return KorToIsoString(GetUtc(), m_nOffsetMinutes, nDigits);
}

bool CKorZoneTime::FromString(const std::string& strText)
{
    CKorUTCTime oTime;
    if (!KorFromIsoString(strText, oTime, &m_nOffsetMinutes))
        return false;
    m_nTicks = KorInstant::TicksOf(oTime);
    return true;
}

CKorTimeDiff CKorZoneTime::operator-(const CKorZoneTime& oOther) const
{
    using Limits = std::numeric_limits<std::int64_t>;
    std::int64_t nTicks = 0;
    if (__builtin_sub_overflow(m_nTicks, oOther.m_nTicks, &nTicks))
        nTicks = m_nTicks < 0 ? Limits::min() : Limits::max();
    CKorTimeDiff oSpan;
    oSpan.SetTimeDiff(nTicks, true);
    return oSpan;
}

std::ostream& operator<<(std::ostream& oStream, const CKorZoneTime& oTime)
{
    return oStream << oTime.ToString().c_str();
}
