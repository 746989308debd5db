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

int Minutes(int nSeconds)
{
    return static_cast<int>(FloorQuotient(nSeconds, SECONDS_PER_MINUTE));
}

} // namespace

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

CKorUTCTime CKorZoneTime::GetUtc() const
{
    return KorInstant::FromTicks(m_nTicks);
}

int CKorZoneTime::GetPart(EPart ePart) const
{
    const KorInstant::SClock oClock = ClockAt(m_nTicks, m_nOffsetMinutes);
    if (ePart == PART_WEEKDAY)
        return KorCalendar::IsoWeekday(oClock.nDay);
    if (ePart < PART_WEEKDAY) {
        const KorCalendar::SDate oDate = KorCalendar::DateOfDay(oClock.nDay);
        return ePart == PART_YEAR    ? static_cast<int>(oDate.nYear)
               : ePart == PART_MONTH ? oDate.nMonth
               : ePart == PART_DAY   ? oDate.nDay
                                     : KorCalendar::DayOfYear(oDate);
    }
    // What each of the others has of the one before it: of the second, and of the tick in it.
    constexpr struct
    {
        int nUnit;
        int nUnits;
    } CLOCK[] = {{3600, 24}, {60, 60}, {1, 60}, {100000, 1000}, {100, 1000}};
    if (ePart == PART_NANOSECOND)
        return oClock.nTick % 100 * 10;
    const auto& oPart = CLOCK[ePart - PART_HOUR];
    return (ePart < PART_MILLISECOND ? oClock.nSecond : oClock.nTick) / oPart.nUnit % oPart.nUnits;
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
